// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "simulator/SimulatedUnit.h"

namespace Simulator {

/// What `rovan-unit` tells at its end: the frames both ways, what was missing, the power switches,
/// what a scenario did and the server's end, some lines of text. With `colours`, good and bad stand
/// out on a terminal.
std::string summary(SimulatedUnit& unit, const std::optional<ProcessEnd>& serverEnd,
                    std::chrono::steady_clock::time_point started, bool colours);

}  // namespace Simulator
