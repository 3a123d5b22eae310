// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "utility/WorkerThread.h"

/// The rhythm of the processor's own thread: until `thread` is asked to stop, sleeps 20 ms and then
/// makes the checks in their order. What a check throws ends the pass, is reported under `name` as
/// an event of type 3 and on the console, and never ends the thread.
void runRovanProcessorChecks(const Utility::WorkerThread& thread, const std::string& name,
                             const std::vector<std::function<void()>>& checks);
