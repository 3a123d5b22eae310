// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>

#include "RovanServer/ServerActions.h"

// The commanded BIT: waits for the accessory's own BIT and acknowledges the command, switches the
// receiver off and on, waits for its restart, and judges it by the first report that follows.
//
// It has no thread and no clock of its own. The server thread, one for each BIT, calls
// enterThread() and then step() once a second until that says no; a thread that is stopped before
// leaves the BIT in progress, unanswered, with the receiver's power as it is. begin() and
// onAccessoryDone() come from the bus, onMessage8(), takes8504() and on8504Processed() from
// whoever delivers the receiver's frames; all of these only set or read flags. What is given to
// the constructor must outlive the object.
class CommandedBit {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;

    // The steps of the server thread.
    enum eBitState : int32_t {
        eNoStep = 0,
        eWaitForAccessory = 1,
        ePowerOff = 2,
        ePowerOn = 3,
        eWaitForRestart = 4,
        eJudge = 5,
    };

    /// `currentRcvrFail` says whether the receiver's last report tells of a fault, and
    /// `clearBciCable` forgets that the BCI cable was seen disconnected.
    CommandedBit(ServerActions& actions, std::function<bool()> currentRcvrFail,
                 std::function<void()> clearBciCable);

    bool isRunning() const { return m_bitRunning; }
    /// True from the end of a BIT to the beginning of the next.
    bool isDone() const { return m_bitDone; }
    eBitState bitState() const { return m_bitState; }

    /// Takes the command; not while a BIT is in progress. The server thread is started next.
    void begin(const CommandResponse& command);

    // Of the server thread.

    /// First thing on the thread.
    void enterThread();
    /// One pass; the passes follow each other by 1 s, the first comes at once. False when the BIT
    /// has ended and with it the thread. An exception of the actions comes through; the next pass
    /// then tries the same step again.
    bool step();
    /// Ends the BIT when the report after the restart is there, or 180 s after the command.
    void handleCommandedBIT();

    /// The receiver has sent message 8.
    void onMessage8();
    /// Whether an 8504 is to be processed now. During a BIT those from before the restart are not.
    bool takes8504() const { return !m_bitRunning || m_bitDataWanted; }
    /// An 8504 has been processed.
    void on8504Processed();
    /// The accessory has finished its BIT.
    void onAccessoryDone();

  private:
    void act();
    bool isReportOverdue(std::chrono::steady_clock::time_point now) const;
    CommandResponse command() const;

    ServerActions& m_actions;
    const std::function<bool()> m_currentRcvrFail;
    const std::function<void()> m_clearBciCable;

    std::atomic<bool> m_bitRunning{false};
    std::atomic<bool> m_bitDone{false};
    std::atomic<bool> m_zelmCbitDone{false};
    std::atomic<bool> m_restartSeen{false};
    // Message 8 makes the server want a report, an 8504 is that report. A beginning BIT leaves both
    // as they are, the step to eJudge clears the first: the receiver has to send message 8 again
    // after the command that follows its restart.
    std::atomic<bool> m_bitDataWanted{false};
    std::atomic<bool> m_bitDataSeen{false};
    std::atomic<eBitState> m_bitState{eNoStep};
    std::atomic<bool> m_serverThreadEnds{false};

    // Of the server thread: passes so far, and the one that a time limit ends with.
    int32_t m_ticks = 0;
    int32_t m_deadline = 0;

    mutable std::mutex m_bitMutex;  // guards the rest, and the beginning and end of a BIT
    std::chrono::steady_clock::time_point m_bitStartTime;
    CommandResponse m_bitCommand;
};
