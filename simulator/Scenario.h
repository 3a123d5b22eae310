// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/ScenarioAction.h"

namespace Simulator {

// What sets a statement off.
struct ScenarioTrigger {
    enum class Kind { Time, Heard, PowerOff, PowerOn, BootDone };

    static ScenarioTrigger read(ScenarioLine& line);

    Kind kind = Kind::Time;
    std::chrono::nanoseconds at{0};      // of Time: since the start
    std::uint16_t msgId = 0;             // of Heard
    std::optional<std::uint16_t> mode;   // of Heard: data word 4, the mode command of 5001
    std::optional<std::uint32_t> times;  // it goes off so often and no more
};

struct ScenarioStatement {
    std::string where;  // as "file:12"
    std::string text;
    ScenarioTrigger trigger;
    ScenarioAction action;
    std::chrono::nanoseconds after{0};                // from the trigger to the action
    std::optional<std::chrono::nanoseconds> lasts{};  // it is undone when it has lasted so long

    /// One line; `where` stands for it in errors. Throws ScenarioError.
    static ScenarioStatement parse(const std::string& where, const std::string& text);
    /// The same from a command line's option, where '=' and ',' outside of quotes stand for
    /// blanks: "drop-ack=5001,2".
    static ScenarioStatement parseOption(const std::string& text);
};

// What the receiver is to do besides its duty: a list of statements, read from a small text form
// that docs/scenarios.md describes.
class Scenario {
  public:
    /// Both throw ScenarioError. `name` stands for the file in errors.
    static Scenario read(const std::filesystem::path& file);
    static Scenario parse(const std::string& text, const std::string& name = "scenario");

    /// Adds the statements of another one behind its own.
    void append(const Scenario& other);
    void append(ScenarioStatement statement);

    const std::vector<ScenarioStatement>& statements() const { return m_statements; }

  private:
    std::vector<ScenarioStatement> m_statements;
};

}  // namespace Simulator
