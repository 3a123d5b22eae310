// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>

#include "MSID_messages/Rovan_5404_Msg.h"

/// The steps of the destroy sequence: EZero is the emergency zeroize, IPZ the IP zeroize.
enum eIPZ_State : uint32_t {
    eIPZ_Idle = 0,
    eIPZ_ConnectMessages = 1,
    eIPZ_WaitOnConnects = 2,
    eIPZ_CommandEZero = 3,
    eIPZ_WaitOnEZero = 4,
    eIPZ_CommandIPZ = 5,
    eIPZ_WaitOnIPZero = 6,
    eIPZ_ReportFail = 7,
    eIPZ_ReportSuccess = 8,
};

// What the destroy sequence knows: its state and since when, what the receiver has reported, and
// what became of the messages that the sequence sent.
//
// The flags are written by the thread that reads the receiver's frames and by the link's protocol
// thread, and polled by the one that drives the sequence. Each is atomic and has one meaning;
// nothing here takes a lock. The state is changed by one thread at a time, which the owner sees to.
class IPZ_SeqState {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Clock = std::function<TimePoint()>;
    using Status = Rovan_5404_Msg::e5404IPZeroizeStatus;

    // One of the messages that the sequence depends on.
    struct TrackingRecord {
        std::atomic<TimePoint> sendTime{TimePoint()};
        std::atomic<TimePoint> reportTime{TimePoint()};
        std::atomic<bool> done{false};      // the link has finished with it
        std::atomic<bool> rejected{false};  // the receiver refused it
        std::atomic<bool> success{false};   // the receiver took it
        std::atomic<bool> received{false};  // the receiver's report has come
        std::atomic<bool> retried{false};   // sent again after a refusal
    };

    /// In the state after reset(), and the times of the 5402 record set as well.
    explicit IPZ_SeqState(Clock clock);

    /// Back to idle, with every latch and record at its first value but for the 5402 record: a
    /// refused IP zeroize and its retry are remembered for the life of the process.
    void reset();

    void setNextIPZstate(eIPZ_State next);
    /// Leaves the idle state; what was latched before stays.
    void startSequence() { setNextIPZstate(eIPZ_ConnectMessages); }
    eIPZ_State getIPZstate() const { return m_state; }
    /// Seconds since the latest setNextIPZstate(), cut to whole milliseconds.
    double secondsInState() const;

    /// The state's name and a blank.
    static const char* getStateStr(eIPZ_State state);

    void set5404IPzeroizationStatus(Status status) { ipZeroizeStatus = status; }

    /// Null for a message that the sequence does not depend on.
    TrackingRecord* record(unsigned short msgId);

    std::atomic<Status> ipZeroizeStatus;
    // Set by the event of a success, cleared by that of a failure.
    std::atomic<bool> eZeroizeSuccess;
    std::atomic<bool> ipZeroizeSuccess;
    std::atomic<bool> cvZeroizeSuccess;
    // From the version record.
    std::atomic<bool> bootFlagNormal;
    std::atomic<bool> pspBootAllZeroes;
    std::atomic<bool> pspSwAllZeroes;

    TrackingRecord msg9225;
    TrackingRecord msg5404;
    TrackingRecord msg5044;
    TrackingRecord msg5001;
    TrackingRecord msg5402;

  private:
    const Clock m_clock;
    std::atomic<eIPZ_State> m_state;
    std::atomic<TimePoint> m_stateTime;
};
