// SPDX-License-Identifier: Apache-2.0
#include "simulator/Receiver.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gssip/GssipFrame.h"
#include "utility/Sleep.h"

namespace Simulator {
namespace {

using std::chrono::milliseconds;

constexpr std::uint16_t kMsgRestart = 8;
constexpr std::uint16_t kMsgWithoutReply = 2501;
constexpr std::uint16_t kMsgCommand = 5001;
constexpr std::uint16_t kMsgEvent = 5044;
constexpr std::uint16_t kMsgPortSetup = 5331;
constexpr std::uint16_t kMsgZeroizeSetup = 5402;
constexpr std::uint16_t kMsgZeroizeStatus = 5404;

constexpr std::uint16_t kFlagsReply = Gssip::kFlagFrameMarker | Gssip::kFlagReply;
constexpr std::uint16_t kFlagsReject = kFlagsReply | Gssip::kFlagReject;
constexpr std::uint16_t kFlagsReport = Gssip::kFlagFrameMarker;
// For what must not be lost; the server has to say that it came.
constexpr std::uint16_t kFlagsReportWithAck = Gssip::kFlagFrameMarker | Gssip::kFlagAckRequest;

/// What sets a report off besides its period and a request.
enum class Occasion { None, Connect, Change, ConnectOrChange };

struct Report {
    std::uint16_t msgId;
    unsigned everyEpochs;  // 0: never by itself
    Occasion occasion;
    std::uint16_t flags;

    bool onConnect() const {
        return occasion == Occasion::Connect || occasion == Occasion::ConnectOrChange;
    }
    bool onChange() const {
        return occasion == Occasion::Change || occasion == Occasion::ConnectOrChange;
    }
};
// In the order in which they go out in an epoch. The burst of 7270 is the last, so that no other
// report comes between its frames.
constexpr Report kReports[] = {{253, 5, Occasion::None, kFlagsReport},
                               {8504, 1, Occasion::None, kFlagsReport},
                               {9391, 1, Occasion::None, kFlagsReport},
                               {9405, 1, Occasion::None, kFlagsReport},
                               {8080, 1, Occasion::None, kFlagsReport},
                               {5042, 1, Occasion::None, kFlagsReport},
                               {5040, 10, Occasion::Change, kFlagsReport},
                               {8040, 10, Occasion::Change, kFlagsReport},
                               {5047, 30, Occasion::None, kFlagsReport},
                               {5048, 30, Occasion::None, kFlagsReport},
                               {30409, 60, Occasion::ConnectOrChange, kFlagsReport},
                               {5404, 0, Occasion::Connect, kFlagsReportWithAck},
                               {9225, 0, Occasion::Connect, kFlagsReportWithAck},
                               {kMsgRestart, 0, Occasion::None, kFlagsReportWithAck},
                               {7270, 1, Occasion::None, kFlagsReport}};

// The message time, which is news in every report.
constexpr std::ptrdiff_t kTimeWords = 4;

const Report* findReport(std::uint16_t msgId) {
    const auto* const found =
        std::find_if(std::begin(kReports), std::end(kReports),
                     [&](const Report& report) { return report.msgId == msgId; });
    return found == std::end(kReports) ? nullptr : found;
}

// 5001: the mode commands.
constexpr unsigned kCommandSelfTest = 0;
constexpr unsigned kModeContinuous = 1;
constexpr unsigned kModeStandby = 5;
constexpr unsigned kCommandEmergencyZeroize = 7;
constexpr unsigned kCommandCvZeroize = 8;
// 5040: the operating mode in continuous operation.
constexpr unsigned kOperatingContinuously = 0;
// 5404: what an IP zeroize has come to.
constexpr unsigned kIpDataClear = 0;
constexpr unsigned kIpDataNotClear = 1;

// 5331: validity bits, and line speeds by their code. Code 0 is any speed without a code of its
// own; the only one of them that the receiver has is 9600.
constexpr unsigned kReceiveValid = 0x8000;
constexpr unsigned kTransmitValid = 0x4000;
constexpr std::pair<unsigned, int> kSpeedCodes[] = {
    {0, 9600},  {1, 300},    {2, 600},     {3, 1200},    {4, 2400},    {5, 4800},   {6, 19200},
    {7, 76800}, {10, 38400}, {11, 115200}, {12, 230400}, {13, 460800}, {14, 921600}};

// A frame that stops in the middle for so long is not going on.
constexpr milliseconds kFrameGap{500};
constexpr milliseconds kTimeRhythm{5};

bool isAnswer(const ScannedFrame& frame) {
    return frame.headerOnly() && (frame.flags() & Gssip::kFlagsProtocolAnswer) != 0;
}

}  // namespace

// A kind of zeroize, and the events that it ends in.
struct Receiver::Zeroize {
    static const Zeroize kCv;
    static const Zeroize kEmergency;
    static const Zeroize kIp;

    ZeroizeOutcome ReceiverReports::*outcome;
    unsigned doneId;
    const char* doneText;
    unsigned failedId;
    const char* failedText;
};
const Receiver::Zeroize Receiver::Zeroize::kCv = {&ReceiverReports::cvZeroize, 3,
                                                  "CV ZEROIZE COMPLETE", 4, "CV ZEROIZE FAILED"};
const Receiver::Zeroize Receiver::Zeroize::kEmergency = {&ReceiverReports::emergencyZeroize, 17,
                                                         "EMERGENCY ZEROIZE COMPLETE", 18,
                                                         "EMERGENCY ZEROIZE FAILED"};
const Receiver::Zeroize Receiver::Zeroize::kIp = {&ReceiverReports::ipZeroize, 34,
                                                  "IP ZEROIZE COMPLETE", 35, "IP ZEROIZE FAILED"};

Receiver::Receiver(IReceiverLine& line, IFrameStamps& stamps, const ReceiverSettings& settings)
    : m_line(line),
      m_stamps(stamps),
      m_settings(settings),
      m_noise(settings.seed),
      m_speaker(line, stamps, m_ledger, m_mischief, m_noise, settings.bootSpeed),
      m_reports(settings.seed),
      m_random(settings.seed),
      m_gpsStart(settings.gpsStart.value_or(gpsNow())) {
    if (settings.prepare) {
        settings.prepare(m_reports);
    }
}

void Receiver::start() {
    m_firstEpoch = Clock::now();
    m_epoch = -1;
    m_speaker.start();
    m_timekeeper.start([this] {
        while (!m_timekeeper.stopRequested()) {
            if (keepTime()) {
                tell([](IReceiverObserver& observer) { observer.onBootDone(); });
            }
            Utility::sleepFor(kTimeRhythm);
        }
    });
}

void Receiver::stop() {
    m_timekeeper.stop();
    m_speaker.stop();
}

// Hearing.

void Receiver::hear(const std::uint8_t* bytes, std::size_t count) {
    for (ScannedFrame& frame : scan(Bytes(bytes, bytes + count))) {
        const bool isMessage = frame.kind == ScannedFrame::Kind::Intact && !isAnswer(frame);
        if (isMessage) {
            tell([&](IReceiverObserver& observer) { observer.beforeAnswer(frame); });
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_state == State::Running) {
                handle(frame);
            }
        }
        if (isMessage) {
            tell([&](IReceiverObserver& observer) { observer.afterAnswer(frame); });
        }
        m_ledger.addHeard(std::move(frame));
    }
}

std::vector<ScannedFrame> Receiver::scan(Bytes bytes) {
    const bool understood = m_line.serverSpeed() == lineSpeed();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_state != State::Running) {
        return {};
    }
    const Clock::time_point now = Clock::now();
    if (!understood || now - m_lastHeard > kFrameGap) {
        m_scanner.reset();
    }
    m_lastHeard = now;
    if (!understood) {
        m_ledger.addHeard({ScannedFrame::Kind::Stray, std::move(bytes)});
        return {};
    }
    m_noise.damage(bytes);
    return m_scanner.feed(bytes.data(), bytes.size());
}

void Receiver::handle(const ScannedFrame& frame) {
    if (frame.kind == ScannedFrame::Kind::Stray || isAnswer(frame)) {
        return;
    }
    const std::uint16_t msgId = frame.msgId();
    const std::size_t size = frame.bytes.size();
    if (frame.kind == ScannedFrame::Kind::Damaged || m_mischief.take(Trick::Nak, msgId, size)) {
        sayAnswer(msgId, Gssip::kFlagsNakAnswer);
        return;
    }
    if ((frame.flags() & Gssip::kFlagAckRequest) != 0 &&
        !m_mischief.take(Trick::DropAck, msgId, size)) {
        const auto late = m_mischief.take(Trick::DelayAck, msgId, size);
        sayAnswer(msgId, Gssip::kFlagsAckAnswer,
                  late ? Clock::now() + late->delay : Clock::time_point());
    }
    const bool rejected = m_mischief.take(Trick::Reject, msgId, size).has_value();
    if (msgId != kMsgWithoutReply && !m_mischief.take(Trick::DropReply, msgId, size)) {
        sayAnswer(msgId, rejected ? kFlagsReject : kFlagsReply);
    }
    if (!rejected) {
        act(frame);
    }
}

void Receiver::act(const ScannedFrame& frame) {
    if (frame.headerOnly()) {
        follow(frame);
    } else if (frame.msgId() == kMsgCommand) {
        onModeCommand(frame);
    } else if (frame.msgId() == kMsgPortSetup) {
        onPortSetup(frame);
    } else if (frame.msgId() == kMsgZeroizeSetup) {
        onZeroizeSetup(frame);
    }
}

void Receiver::follow(const ScannedFrame& headerOnly) {
    const std::uint16_t msgId = headerOnly.msgId();
    const std::uint16_t flags = headerOnly.flags();
    if ((flags & Gssip::kFlagDisconnect) != 0) {
        if (msgId == 0) {
            m_connected.clear();
        } else {
            m_connected.erase(msgId);
        }
    }
    if ((flags & Gssip::kFlagConnect) != 0) {
        m_connected.insert(msgId);
        const Report* const report = findReport(msgId);
        if (report != nullptr && report->onConnect()) {
            sayReport(msgId);
        }
    }
    if ((flags & Gssip::kFlagRequest) != 0) {
        sayReport(msgId);
    }
}

void Receiver::onModeCommand(const ScannedFrame& frame) {
    m_mode = frame.data(4);
    switch (m_mode) {
        case kCommandSelfTest:
            sayReport(kMsgRestart, Clock::now() + m_settings.selfTestTime);
            break;
        case kModeContinuous:
            m_reports.standby = false;
            m_reports.operatingMode = kOperatingContinuously;
            break;
        case kModeStandby:
            m_reports.standby = true;
            break;
        case kCommandEmergencyZeroize:
            zeroize(Zeroize::kEmergency);
            break;
        case kCommandCvZeroize:
            zeroize(Zeroize::kCv);
            break;
        default:
            break;  // taken note of
    }
}

void Receiver::onPortSetup(const ScannedFrame& frame) {
    const unsigned validity = frame.data(4);
    const unsigned port = frame.data(6);
    if (port != 0 || (validity & (kReceiveValid | kTransmitValid)) == 0) {
        return;
    }
    const unsigned code = (validity & kReceiveValid) != 0 ? frame.data(8) : frame.data(11);
    for (const auto& [known, speed] : kSpeedCodes) {
        if (known == code) {
            // Behind ACK and reply, which still go out at the old speed.
            Speaker::Item change;
            change.answer = true;
            change.switchTo = speed;
            m_speaker.say(std::move(change));
        }
    }
}

void Receiver::onZeroizeSetup(const ScannedFrame& frame) {
    const unsigned selection = frame.data(4);
    const unsigned validity = frame.data(5);
    if ((validity & 0x0001) != 0 && (selection & 0x0010) != 0) {
        zeroize(Zeroize::kCv);
    }
    if ((validity & 0x0020) != 0 && (selection & 0x0001) != 0) {
        zeroize(Zeroize::kIp);
    }
}

void Receiver::zeroize(const Zeroize& kind) {
    const ZeroizeOutcome outcome = m_reports.*kind.outcome;
    if (outcome == ZeroizeOutcome::Silence) {
        return;
    }
    const Clock::time_point end = Clock::now() + m_settings.zeroizeTime;
    const bool done = outcome == ZeroizeOutcome::Success;
    if (&kind != &Zeroize::kIp) {
        KeyTruth& keys = m_reports.truth.keys;
        if (done) {
            keys.erase();
        } else {
            keys.failToErase();
        }
    } else {
        m_reports.ipZeroizeStatus = done ? kIpDataClear : kIpDataNotClear;
        if (m_connected.count(kMsgZeroizeStatus) != 0) {
            sayReport(kMsgZeroizeStatus, end);
        }
    }
    sayEvent(done ? kind.doneId : kind.failedId, done ? kind.doneText : kind.failedText, end);
}

// Power.

void Receiver::setPower(bool on) {
    bool changed = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        changed = on == (m_state == State::Off);
        if (!on) {
            m_state = State::Off;
            m_speaker.reset(m_settings.bootSpeed);
            m_scanner.reset();
            m_mode = kModeContinuous;
            m_reports.standby = false;
            m_reports.operatingMode = kOperatingContinuously;
            m_reports.dataTransfer = false;
            if (!m_settings.keepsConnections) {
                m_connected.clear();
            }
        } else if (m_state == State::Off) {
            m_state = State::Starting;
            m_startDone = Clock::now() + m_settings.bootTime;
        }
        updateMute();
    }
    if (changed) {
        tell([on](IReceiverObserver& observer) { observer.onPower(on); });
    }
}

void Receiver::resetReceiver() {
    setPower(false);
    setPower(true);
}

void Receiver::followLineSpeed() {
    if (const int speed = m_line.serverSpeed()) {
        setLineSpeed(speed);
    }
}

void Receiver::silence() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_silent = true;
    updateMute();
}

void Receiver::speak() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_silent = false;
    updateMute();
}

void Receiver::updateMute() {
    m_speaker.mute(m_silent || m_state != State::Running);
}

// Speaking.

void Receiver::send(Bytes bytes, const FrameStamps& stamps) {
    Speaker::Item item;
    item.bytes = std::move(bytes);
    item.stamps = stamps;
    m_speaker.say(std::move(item));
}

void Receiver::sendEvent(unsigned eventId, const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    sayEvent(eventId, text);
}

void Receiver::sendReport(std::uint16_t msgId) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    sayReport(msgId);
}

void Receiver::garbage(std::size_t count) {
    Bytes bytes(count);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(m_random() & 0xFF);
        }
    }
    send(std::move(bytes));
}

void Receiver::sayAnswer(std::uint16_t msgId, std::uint16_t flags, Clock::time_point notBefore) {
    Speaker::Item item;
    item.bytes = makeFrame(msgId, flags);
    item.answer = true;
    item.notBefore = notBefore;
    m_speaker.say(std::move(item));
}

void Receiver::sayReport(std::uint16_t msgId, Clock::time_point notBefore) {
    const Report* const report = findReport(msgId);
    if (report == nullptr) {
        return;
    }
    const std::vector<Words> frames = m_reports.make(msgId, gpsTime());
    for (const Words& words : frames) {
        Speaker::Item item;
        item.bytes = makeFrame(msgId, report->flags, words);
        item.notBefore = notBefore;
        m_speaker.say(std::move(item));
    }
    if (report->onChange()) {
        m_told[msgId] = frames.front();
    }
}

bool Receiver::changedSinceTold(std::uint16_t msgId) const {
    const auto told = m_told.find(msgId);
    if (told == m_told.end()) {
        return false;
    }
    const Words now = m_reports.make(msgId, gpsTime()).front();
    return !std::equal(now.begin() + kTimeWords, now.end(), told->second.begin() + kTimeWords,
                       told->second.end());
}

void Receiver::sayEvent(unsigned eventId, const std::string& text, Clock::time_point notBefore) {
    if (m_connected.count(kMsgEvent) != 0) {
        const double time = std::fmod(gpsTime(), kSecondsPerWeek);
        Speaker::Item item;
        item.bytes = makeFrame(kMsgEvent, kFlagsReportWithAck, message5044(time, eventId, text));
        item.notBefore = notBefore;
        m_speaker.say(std::move(item));
    }
}

// Time.

GpsSeconds Receiver::gpsTime() const {
    return m_gpsStart + sinceFirstEpoch(std::max<std::int64_t>(m_epoch, 0));
}

double Receiver::sinceFirstEpoch(std::int64_t epoch) const {
    const std::chrono::duration<double> length = m_settings.epoch;
    return static_cast<double>(epoch) * length.count();
}

void Receiver::setGpsTime(GpsSeconds time) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_gpsStart = time - sinceFirstEpoch(m_epoch + 1);
}

bool Receiver::keepTime() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Clock::time_point now = Clock::now();
    const bool started = m_state == State::Starting && now >= m_startDone;
    if (started) {
        m_state = State::Running;
        updateMute();
        sayReport(kMsgRestart);
    }
    const std::int64_t epoch = (now - m_firstEpoch) / m_settings.epoch;
    if (epoch != m_epoch) {
        m_epoch = epoch;
        if (m_state == State::Running) {
            beginEpoch();
        }
    }
    return started;
}

void Receiver::beginEpoch() {
    m_stamps.onPulse();
    for (const Report& report : kReports) {
        if (m_connected.count(report.msgId) == 0) {
            continue;
        }
        const bool inTime = report.everyEpochs != 0 && m_epoch % report.everyEpochs == 0;
        if (inTime || (report.onChange() && changedSinceTold(report.msgId))) {
            sayReport(report.msgId);
        }
    }
}

// Looking.

std::set<std::uint16_t> Receiver::connected() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connected;
}

unsigned Receiver::mode() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_mode;
}

bool Receiver::running() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_state == State::Running;
}

}  // namespace Simulator
