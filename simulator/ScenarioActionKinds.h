// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "simulator/ScenarioAction.h"

// How the readers of actions put one together.
namespace Simulator {

// What changes the receiver's reports, or does anything else.
template <typename Change>
ScenarioAction changing(Change change) {
    ScenarioAction action;
    action.perform = [change](ScenarioStage& stage, Receiver::MsgId) {
        stage.receiver.changeReports(change);
    };
    return action;
}

template <typename Operation>
ScenarioAction doing(Operation operation) {
    ScenarioAction action;
    action.perform = [operation](ScenarioStage& stage, Receiver::MsgId) { operation(stage); };
    return action;
}

// What lasts until it is undone.
template <typename Operation, typename End>
ScenarioAction lasting(Operation operation, End end) {
    ScenarioAction action = doing(operation);
    action.end = end;
    return action;
}

inline ScenarioAction first(ScenarioAction action) {
    action.strikesFirst = true;
    return action;
}

}  // namespace Simulator
