// SPDX-License-Identifier: Apache-2.0
#include "tools/common/StopSignals.h"

#include <signal.h>

#include <atomic>

namespace Tools {
namespace {

std::atomic<bool> g_arrived{false};
static_assert(std::atomic<bool>::is_always_lock_free, "used in a signal handler");

void note(int) {
    g_arrived = true;
}

}  // namespace

void StopSignals::install() {
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = note;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

bool StopSignals::arrived() {
    return g_arrived;
}

}  // namespace Tools
