// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "simulator/FileDescriptor.h"
#include "simulator/ScenarioPlayer.h"
#include "utility/WorkerThread.h"

namespace Simulator {

// Orders for a unit that runs: statements of a scenario, a line each, from standard input or from a
// FIFO. What is carried out and what is wrong goes to standard error. A line that is wrong changes
// nothing. "help" lists the actions.
class ControlInput {
  public:
    /// "-" is standard input; anything else is a FIFO, which is made when it is not there and then
    /// removed with this object. Throws std::runtime_error for anything but a FIFO,
    /// std::system_error when it cannot be made or opened. The player must outlive it and have
    /// been started.
    ControlInput(const std::string& source, ScenarioPlayer& player);
    ControlInput(const ControlInput&) = delete;
    ControlInput& operator=(const ControlInput&) = delete;
    ~ControlInput();

  private:
    void loop();
    /// False at the end of the input.
    bool take();
    void takeByte(char byte);
    void execute(const std::string& line);

    ScenarioPlayer& m_player;
    std::filesystem::path m_madeHere;  // empty without one
    FileDescriptor m_fifo;
    int m_fd;
    std::string m_line;
    bool m_tooLong = false;
    Utility::WorkerThread m_thread;
};

}  // namespace Simulator
