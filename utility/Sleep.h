// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace Utility {

/// Sleeps the whole of `duration`: a sleep that a signal interrupts is resumed for the time that
/// remains. A duration of zero or less returns at once.
void sleepFor(std::chrono::nanoseconds duration);

}  // namespace Utility
