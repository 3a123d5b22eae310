// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "simulator/ScenarioAction.h"

// Readers of the faults of the line, the time base and the queue devices. Each throws
// ScenarioError.
namespace Simulator {

ScenarioAction readBitErrors(ScenarioLine& line);
ScenarioAction readBursts(ScenarioLine& line);
ScenarioAction readLine(ScenarioLine& line);
ScenarioAction readBaud(ScenarioLine& line);
ScenarioAction readCounter(ScenarioLine& line);
ScenarioAction readQueue(ScenarioLine& line);

}  // namespace Simulator
