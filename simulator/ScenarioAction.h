// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "simulator/Receiver.h"
#include "simulator/ScenarioLine.h"

namespace Simulator {

// What a statement of a scenario does to the receiver.
struct ScenarioAction {
    /// Reads an action with what belongs to it. Throws ScenarioError.
    static ScenarioAction read(ScenarioLine& line);

    /// `heard` is the message that set it off, if one did.
    std::function<void(Receiver& receiver, Receiver::MsgId heard)> perform;
    /// It strikes before the message that sets it off is answered.
    bool strikesFirst = false;
    /// It is about that message itself, and about no other.
    bool aboutHeard = false;
};

}  // namespace Simulator
