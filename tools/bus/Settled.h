// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "tools/bus/Directory.h"

namespace Bus {

/// Waits up to `seconds` until the condition holds and for a moment nobody more has come: somebody
/// who listens is seldom alone. False when the time or a stop signal comes first. The condition is
/// asked at least once.
bool waitUntilSettled(const Directory& directory, const std::function<bool()>& condition,
                      double seconds);

}  // namespace Bus
