// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <string>

#include "RovanServer/ServerActions.h"

// Asks on the bus, in a rerad setup, whether passthrough is enabled, and tells the receiver once it
// is. The periodic thread calls check() once a second; enable() may come from any thread and lasts:
// a thread that is started again tells the receiver again. `actions` must outlive the object.
class PassthroughQuery {
  public:
    /// `environment` as configured; only "SYSTEM_ENV_RERAD" is a rerad setup.
    PassthroughQuery(ServerActions& actions, const std::string& environment);

    /// Passthrough was granted, by a command or by an answer to the query.
    void enable() { m_passthroughEnabled = true; }

    /// One run: asks, and tells the receiver if passthrough is enabled by then. False when the
    /// periodic thread is to end, because that is done or, outside a rerad setup, never will be.
    /// An exception of the actions comes through; the next run does everything again.
    bool check();

  private:
    ServerActions& m_actions;
    const bool m_isRerad;
    std::atomic<bool> m_passthroughEnabled{false};
};
