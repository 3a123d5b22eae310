// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Puts the calling process into the SCHED_FIFO class with `priority`, clamped into the range of
/// the class. False when the system refuses.
bool okSetRealtimeProcessPriority(int priority);

/// Binds the calling process to one processor, counted from 1, and prints the affinity that is then
/// in force. A number without a processor leaves the mask empty, which the system refuses: false.
bool okSetCpuAffinity(int cpu);
