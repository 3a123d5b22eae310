// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "RovanServer/ServerActions.h"

// Brings the receiver back to continuous operation after a time data transfer on its serial port.
// A report of a transfer arms the supervision. From then on, each second that the receiver spends
// in mode 4 with no transfer under way is counted, and every fifth one sends the command; mode 0
// with no transfer under way ends the work.
//
// Seconds that have been counted are kept over other modes and new transfers.
//
// on5040() and on5042() come from whoever delivers the receiver's frames, one at a time; tick()
// from the time data thread, once a second, armed or not. A report that arms just when a tick ends
// the work can be lost until the next such report. `actions` must outlive the object.
class TimeDataTransfer {
  public:
    /// With `debug` every step is told on standard output.
    TimeDataTransfer(ServerActions& actions, bool debug);

    /// The receiver's operating mode, as of its latest 5040.
    void on5040(int16_t opMode);
    /// Whether a transfer is under way, as of the receiver's latest 5042.
    void on5042(bool isDtsCOM1);

    void tick();
    /// What an armed tick does.
    void monitorOperationModeAfterTimeDataTxfr();

  private:
    ServerActions& m_actions;
    const bool m_debug;
    std::atomic<bool> m_isDtsCOM1{false};
    std::atomic<bool> m_threadDoWork{false};
    std::atomic<int16_t> m_opMode{0};
    std::atomic<int32_t> m_timeDataTimer{0};
};
