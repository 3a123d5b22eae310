// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "MSID_messages/Rovan_5404_Msg.h"
#include "RovanServer/IPZ_SeqState.h"
#include "RovanServer/ReceiverMessages.h"
#include "RovanServer/ServerActions.h"
#include "RovanServer/ZeroizeCommanded.h"

// Erases the receiver's data, as far as one of three bus commands asks for, and answers it in the
// end. CV zeroize and zeroize are one receiver command each, sent again until the receiver tells
// how it went. Destroy is a sequence of nine states: it has the receiver report its condition,
// commands an emergency zeroize and an IP zeroize, and waits for the events of both.
//
// The bus thread brings the commands, the zeroize thread the passes, the thread that delivers the
// receiver's frames brings reports and passes, and the link's protocol thread the outcome of sent
// messages: any thread may call anything. The actions must outlive this object, and this object the
// link, whose queued messages call back here.
//
// Locks, in this order: the one of a pass, then the one of the pending command. A pass publishes
// and sends events under the former; nothing that comes back from the bus takes it.
class ZeroizeProcedure {
  public:
    using CommandResponse = ServerActions::CommandResponse;

    enum class Acceptance {
        accepted,  // the answer comes in the end
        ignored,   // no answer at all
        refused,   // the caller answers at once that it is not done
    };

    explicit ZeroizeProcedure(ServerActions& actions);
    ZeroizeProcedure(const ZeroizeProcedure&) = delete;
    ZeroizeProcedure& operator=(const ZeroizeProcedure&) = delete;

    // The commands. One that is replaced by a higher kind never gets its final answer.
    Acceptance acceptCvZeroize(const CommandResponse& cmd);
    Acceptance acceptZeroize(const CommandResponse& cmd);
    Acceptance acceptDestroy(const CommandResponse& cmd);

    bool isPending() const { return m_commanded.type() != zeroizeType::none; }
    /// 0: nothing reported, 2: the receiver's IP data is clear, 4: it reported status 1.
    int ipClearStatus() const { return m_ipClearStatus; }
    bool isIpDataClear() const { return m_ipClearStatus == kIpDataClear; }
    eIPZ_State getIPZstate() const { return m_sequence.getIPZstate(); }

    /// One pass: after an event of the receiver, with its id, and every 100 ms with 0. Latches the
    /// outcome that the event tells, whether or not a zeroize is pending, and goes on with what is
    /// pending. Both under one lock: a pass of the other thread between the two would go on to the
    /// next state, where the event is not reported any more.
    void handleZeroize(unsigned short id);

    /// What became of a message that the destroy sequence sent. Flags are set, never cleared.
    void gssipMessageCallback(unsigned short msgId, bool success, bool nak, bool rejected);

    // What the receiver reports, whether or not a zeroize is pending.

    /// A report of that id has come. Best called after what it holds was handed over, so that a
    /// pass on another thread does not see the report without its content.
    void onReportReceived(unsigned short msgId);
    /// The status of a 5404.
    void onIpZeroizeStatus(Rovan_5404_Msg::e5404IPZeroizeStatus status);
    /// What a 9225 tells, and that it has come.
    void onVersionRecord(bool bootFlagNormal, bool pspBootAllZeroes, bool pspSwAllZeroes);

  private:
    // What tells the two zeroizes of one command apart.
    struct Repeated;
    // A pass over the destroy sequence: the event id, and the seconds since the state was entered.
    struct Pass {
        unsigned short id;
        double seconds;
    };
    using StateFunction = void (ZeroizeProcedure::*)(const Pass& pass);
    static const StateFunction kStateTable[];

    void latch(unsigned short eventId);
    Acceptance commandReceiver(const Repeated& kind, const CommandResponse& cmd);
    void handleRepeated(const Repeated& kind, unsigned short id);
    void finish(zeroizeType handled, const std::string& text);

    void handleDestroy(unsigned short id);
    void stayIdle(const Pass& pass);
    void connectMessages(const Pass& pass);
    void waitOnConnects(const Pass& pass);
    void commandEZero(const Pass& pass);
    void waitOnEZero(const Pass& pass);
    void commandIPZ(const Pass& pass);
    void waitOnIPZero(const Pass& pass);
    void reportFail(const Pass& pass);
    void reportSuccess(const Pass& pass);
    void queueTracked(GssipMessagePtr message);

    // Values of ipClearStatus.
    static constexpr int kNothingReported = 0;
    static constexpr int kReserved = 1;  // nothing sets it
    static constexpr int kIpDataClear = 2;
    static constexpr int kStatusOneReported = 4;

    ServerActions& m_actions;
    ZeroizeCommanded m_commanded;
    IPZ_SeqState m_sequence;
    std::atomic<int> m_ipClearStatus{kNothingReported};
    // Commands may come on more than one bus thread: each sees what the one before it has left, so
    // that none replaces a destroy. Taken by the commands only, before all other locks.
    std::mutex m_acceptMutex;
};
