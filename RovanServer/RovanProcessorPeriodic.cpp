// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanProcessorPeriodic.h"

#include <chrono>
#include <exception>

#include "ASPN/HealthReporter.h"
#include "utility/Console.h"
#include "utility/Sleep.h"

namespace {

constexpr std::chrono::milliseconds kPass{20};

// The report itself may fail, for want of memory say; then there is nothing left to do but to go
// on.
void report(const std::string& name, const char* what) noexcept {
    try {
        const std::string text = name + ": periodicThreadFunction() EXCEPTION: " + what;
        HealthReporter::Instance().SendEvent(__FILE__, __LINE__, EventTypes::eError, text);
        Console::line(text);
    } catch (...) {}
}

}  // namespace

void runRovanProcessorChecks(const Utility::WorkerThread& thread, const std::string& name,
                             const std::vector<std::function<void()>>& checks) {
    while (!thread.stopRequested()) {
        try {
            Utility::sleepFor(kPass);
            for (const auto& check : checks) {
                check();
            }
        } catch (const std::exception& e) {
            report(name, e.what());
        } catch (...) {
            report(name, "<unknown>");
        }
    }
}
