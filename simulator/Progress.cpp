// SPDX-License-Identifier: Apache-2.0
#include "simulator/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

namespace Simulator {
namespace {

constexpr std::chrono::seconds kRhythm{1};
constexpr double kShortRun = 2;

void show(const std::string& text) {
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace

Progress::Progress(const FrameLedger& ledger, Clock::time_point begin,
                   std::chrono::duration<double> duration)
    : m_ledger(ledger),
      m_begin(begin),
      m_duration(duration),
      m_shown(duration.count() > kShortRun && isatty(STDERR_FILENO) != 0),
      m_next(begin + kRhythm) {
}

Progress::~Progress() {
    if (m_shown) {
        show("\033[K");
    }
}

void Progress::update() {
    const Clock::time_point now = Clock::now();
    if (!m_shown || now < m_next) {
        return;
    }
    m_next = now + kRhythm;
    const FrameLedger::Totals totals = m_ledger.totals();
    show(fmt::format("{:.0f} of {:.0f} s, {} frames sent\033[K\r",
                     std::chrono::duration<double>(now - m_begin).count(), m_duration.count(),
                     totals.saidIntact + totals.saidDamaged));
}

}  // namespace Simulator
