// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "simulator/FrameLedger.h"

namespace Simulator {

// One line on a terminal that says how far a run is, renewed once a second; whatever is printed
// next overwrites it. One thread.
class Progress {
  public:
    using Clock = std::chrono::steady_clock;

    /// A run of `duration`. Says nothing unless that is longer than two seconds and standard error
    /// is a terminal.
    Progress(const FrameLedger& ledger, Clock::time_point begin,
             std::chrono::duration<double> duration);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Clears the line.
    ~Progress();

    /// To be called several times a second.
    void update();

  private:
    const FrameLedger& m_ledger;
    const Clock::time_point m_begin;
    const std::chrono::duration<double> m_duration;
    const bool m_shown;
    Clock::time_point m_next;
};

}  // namespace Simulator
