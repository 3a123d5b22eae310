// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>

// Gives the process its scheduling back at the end: what a test asks for must not rule the next
// one.
class SchedulingRestored {
  public:
    SchedulingRestored() { sched_getaffinity(0, sizeof(m_processors), &m_processors); }
    SchedulingRestored(const SchedulingRestored&) = delete;
    SchedulingRestored& operator=(const SchedulingRestored&) = delete;
    ~SchedulingRestored() {
        const sched_param ordinary{};
        sched_setscheduler(0, SCHED_OTHER, &ordinary);
        sched_setaffinity(0, sizeof(m_processors), &m_processors);
    }

  private:
    cpu_set_t m_processors{};
};
