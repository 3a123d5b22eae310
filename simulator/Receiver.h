// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "simulator/FrameLedger.h"
#include "simulator/FrameScanner.h"
#include "simulator/IFrameStamps.h"
#include "simulator/IReceiverLine.h"
#include "simulator/IReceiverObserver.h"
#include "simulator/LineNoise.h"
#include "simulator/Mischief.h"
#include "simulator/ReceiverReports.h"
#include "simulator/Speaker.h"
#include "utility/WorkerThread.h"

namespace Simulator {

struct ReceiverSettings {
    /// Line speed after power on, in bits per second.
    int bootSpeed = 115200;
    /// From power on to message 8, and from the self-test command to message 8.
    std::chrono::milliseconds bootTime{1000};
    std::chrono::milliseconds selfTestTime{1000};
    /// From a zeroize command to the event that says it is done.
    std::chrono::milliseconds zeroizeTime{500};
    /// The rhythm of the pulse. All periods of the reports are counted in it, so that a tenth of it
    /// makes all of them ten times as short. GPS time goes on as the clock does.
    std::chrono::milliseconds epoch{1000};
    /// GPS time when it is made; by the machine's clock when empty.
    std::optional<GpsSeconds> gpsStart{};
    /// Called once on what it is to tell, before it tells anything.
    std::function<void(ReceiverReports&)> prepare{};
    /// Whether the connected messages outlast a power cycle. The server counts on it: after the
    /// power cycle of a commanded BIT it waits for reports, and it connects nothing again.
    bool keepsConnections = true;
    std::uint32_t seed = 1;
};

// The simulated receiver on its serial line. It answers the server's frames with ACK and reply or
// with NAK, follows connect, disconnect, request, mode, port and zeroize commands, and sends what
// is connected: 8504, 9391, 9405, 8080, 5042 and a burst of 7270 every epoch, 253 every fifth, 5040
// and 8040 every tenth, 5047 and 5048 every thirtieth, 30409 every sixtieth and when it is
// connected, 9225 and 5404 when they are connected. 5040, 8040 and 30409 also come in the epoch in
// which something else is to be told by them than the last time, and any of them when it is
// requested. Message 8 goes out after every start and after the self-test command.
//
// It hears on the line's thread, keeps time on one thread of its own and speaks on another. The
// last group of operations makes it do wrong. Any thread may call anything; line and stamps must
// outlive it.
class Receiver {
  public:
    Receiver(IReceiverLine& line, IFrameStamps& stamps, const ReceiverSettings& settings);
    ~Receiver() { stop(); }

    /// From here on it speaks and keeps time; it has been switched on for a while then.
    void start();
    void stop();

    /// Tells `observer` what happens, from now on; null for nobody any more. An observer must stay
    /// until nobody drives the receiver: its line, power and timekeeper are at rest.
    void setObserver(IReceiverObserver* observer) { m_observer = observer; }

    /// What came over the line. For one thread at a time.
    void hear(const std::uint8_t* bytes, std::size_t count);

    /// Off: silent and deaf, and it forgets its mode and line speed. On: starts, and then says so.
    void setPower(bool on);

    /// Says a frame, or any bytes, behind the reports that wait already.
    void send(Bytes bytes, const FrameStamps& stamps = {});
    /// Says event 5044, if that is connected.
    void sendEvent(unsigned eventId, const std::string& text);
    /// Says a report that it makes, connected or not.
    void sendReport(std::uint16_t msgId);
    /// Waits until everything that is due has been said. False when `timeout` comes first.
    bool waitUntilQuiet(std::chrono::milliseconds timeout) {
        return m_speaker.waitUntilQuiet(timeout);
    }

    const FrameLedger& ledger() const { return m_ledger; }
    /// GPS time goes on from `time` at the next epoch.
    void setGpsTime(GpsSeconds time);
    std::set<std::uint16_t> connected() const;
    int lineSpeed() const { return m_speaker.lineSpeed(); }
    /// Speaks and hears at this speed until it loses its power or is told another.
    void setLineSpeed(int bitsPerSecond) { m_speaker.setLineSpeed(bitsPerSecond); }
    /// At the speed that the server's end has now; as before when that has none.
    void followLineSpeed();
    /// What the line does to all that it says and hears.
    LineNoise& noise() { return m_noise; }
    /// The latest mode command of 5001; 1, continuous operation, after a start.
    unsigned mode() const;
    /// False without power and while it starts.
    bool running() const;

    /// Calls `change` with the reports, for a test to set what the receiver tells.
    template <typename Change>
    void changeReports(Change change) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change(m_reports);
    }

    // Wrongs, for the next `times` frames, of one message id where one is given.
    using MsgId = std::optional<std::uint16_t>;

    /// Says no ACK, or says it late.
    void dropAck(unsigned times = 1, MsgId msgId = {}) {
        m_mischief.order({Trick::DropAck, times, msgId});
    }
    void delayAck(std::chrono::milliseconds delay, unsigned times = 1, MsgId msgId = {}) {
        m_mischief.order({Trick::DelayAck, times, msgId, delay});
    }
    /// Says of an intact frame that it was damaged.
    void nak(unsigned times = 1, MsgId msgId = {}) { m_mischief.order({Trick::Nak, times, msgId}); }
    /// Refuses the message and does nothing of what it says.
    void reject(unsigned times = 1, MsgId msgId = {}) {
        m_mischief.order({Trick::Reject, times, msgId});
    }
    void dropReply(unsigned times = 1, MsgId msgId = {}) {
        m_mischief.order({Trick::DropReply, times, msgId});
    }
    /// Damages the byte at `offset` of the next frames that it says and that reach so far.
    void corruptByte(std::size_t offset, unsigned times = 1, MsgId msgId = {}) {
        m_mischief.order({Trick::CorruptByte, times, msgId, {}, offset});
    }
    /// Says random bytes.
    void garbage(std::size_t count);
    /// Says nothing at all, answers included, until speak().
    void silence();
    void speak();
    /// As power off and on.
    void resetReceiver();

  private:
    using Clock = std::chrono::steady_clock;
    enum class State { Off, Starting, Running };

    std::vector<ScannedFrame> scan(Bytes bytes);
    /// Gives true when the receiver has just started.
    bool keepTime();
    template <typename News>
    void tell(News news) {
        if (IReceiverObserver* const observer = m_observer) {
            news(*observer);
        }
    }

    // All below are called with m_mutex held.
    void handle(const ScannedFrame& frame);
    void act(const ScannedFrame& frame);
    void follow(const ScannedFrame& headerOnly);
    void onModeCommand(const ScannedFrame& frame);
    void onPortSetup(const ScannedFrame& frame);
    void onZeroizeSetup(const ScannedFrame& frame);
    struct Zeroize;
    void zeroize(const Zeroize& kind);

    void sayAnswer(std::uint16_t msgId, std::uint16_t flags, Clock::time_point notBefore = {});
    void sayReport(std::uint16_t msgId, Clock::time_point notBefore = {});
    void sayEvent(unsigned eventId, const std::string& text, Clock::time_point notBefore = {});
    /// A report tells something else now, apart from its time.
    bool changedSinceTold(std::uint16_t msgId) const;
    GpsSeconds gpsTime() const;
    double sinceFirstEpoch(std::int64_t epoch) const;
    void updateMute();

    void beginEpoch();

    IReceiverLine& m_line;
    IFrameStamps& m_stamps;
    const ReceiverSettings m_settings;
    FrameLedger m_ledger;
    Mischief m_mischief;
    LineNoise m_noise;
    Speaker m_speaker;
    std::atomic<IReceiverObserver*> m_observer{nullptr};

    mutable std::mutex m_mutex;  // guards all below but the thread
    State m_state = State::Running;
    Clock::time_point m_startDone{};
    bool m_silent = false;
    unsigned m_mode = 1;
    std::set<std::uint16_t> m_connected;
    FrameScanner m_scanner;
    Clock::time_point m_lastHeard{};
    ReceiverReports m_reports;
    std::mt19937 m_random;
    Clock::time_point m_firstEpoch{};
    std::int64_t m_epoch = -1;              // none yet
    GpsSeconds m_gpsStart;                  // of epoch 0
    std::map<std::uint16_t, Words> m_told;  // the latest of those that come upon a change

    Utility::WorkerThread m_timekeeper;
};

}  // namespace Simulator
