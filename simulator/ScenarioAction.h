// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "simulator/FpgaRegisters.h"
#include "simulator/QueueDevices.h"
#include "simulator/Receiver.h"
#include "simulator/ScenarioLine.h"
#include "simulator/SerialLine.h"

namespace Simulator {

// Those that a scenario acts on. A receiver on its own has no line, FPGA or queue devices; an
// action on one of them then throws std::logic_error.
class ScenarioStage {
  public:
    ScenarioStage(Receiver& itsReceiver) : receiver(itsReceiver) {}
    ScenarioStage(Receiver& itsReceiver, SerialLine& line, FpgaRegisters& fpga,
                  QueueDevices& queues)
        : receiver(itsReceiver), m_line(&line), m_fpga(&fpga), m_queues(&queues) {}

    SerialLine& line() const { return required(m_line); }
    FpgaRegisters& fpga() const { return required(m_fpga); }
    QueueDevices& queues() const { return required(m_queues); }

    Receiver& receiver;

  private:
    template <typename Part>
    static Part& required(Part* part) {
        if (part == nullptr) {
            throw std::logic_error("the scenario wants a whole unit");
        }
        return *part;
    }

    SerialLine* m_line = nullptr;
    FpgaRegisters* m_fpga = nullptr;
    QueueDevices* m_queues = nullptr;
};

// What a statement of a scenario does.
struct ScenarioAction {
    /// Reads an action with what belongs to it. Throws ScenarioError.
    static ScenarioAction read(ScenarioLine& line);
    /// All actions with their arguments and effects, a line each.
    static std::string help();

    /// `heard` is the message that set it off, if one did.
    std::function<void(ScenarioStage& stage, Receiver::MsgId heard)> perform;
    /// Undoes it. Empty for what passes by itself.
    std::function<void(ScenarioStage& stage)> end{};
    /// It strikes before the message that sets it off is answered.
    bool strikesFirst = false;
    /// It is about that message itself, and about no other.
    bool aboutHeard = false;
};

}  // namespace Simulator
