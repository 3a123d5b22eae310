// SPDX-License-Identifier: Apache-2.0
#include "simulator/BusLedger.h"

#include <algorithm>
#include <iterator>

#include "gssip/GssipFrame.h"
#include "simulator/LedgerKeys.h"
#include "utility/Sleep.h"

namespace Simulator {
namespace {

using std::chrono::milliseconds;

// Messages of which each intact frame gives one sample, with their length in data words.
struct Message {
    std::uint16_t msgId;
    std::size_t words;
    Words (*key)(const Bytes& frame);
};
constexpr Message kMessages[] = {{8504, 200, &LedgerKeys::position},
                                 {9391, 84, &LedgerKeys::time},
                                 {30409, 32, nullptr},
                                 {9409, 32, nullptr},
                                 {5040, 88, nullptr},
                                 {8040, 25, nullptr},
                                 {8080, 6, nullptr}};

struct Topic {
    const char* name;
    std::vector<std::uint16_t> from;
    bool keyed;
    bool pausesInTests;
};
const Topic kTopics[] = {{"PositionVelocity", {8504}, true, true},
                         {"ReceiverStatus", {8504}, false, true},
                         {"ChannelStatus", {8504}, false, true},
                         {"GPSTime", {9391}, true, false},
                         {"UTCTime", {9391}, true, false},
                         {"UtcDownlink", {30409, 9409}, false, false},
                         {"GPSCryptoStatus", {5040, 8040}, false, false},
                         {"ChallengedEnvironment", {8080}, false, false}};

// How much later than the server a listener may hear that a test begins or ends.
constexpr std::chrono::seconds kTestMargin{1};
// Measurements wait for the end of their epoch, which is 50 ms without another one, and some.
constexpr milliseconds kMeasurementsWait{500};
constexpr milliseconds kRhythm{20};

// The receiver marks the parameters and one of their sources as valid.
bool isValidUtc(const Bytes& frame) {
    const auto bit0 = [&](std::size_t word) {
        return (frameWord(frame, Gssip::kWordData + word) & 1) != 0;
    };
    return bit0(30) && (bit0(6) || bit0(9));
}

const Message* findMessage(const SaidFrame& frame) {
    const std::uint16_t msgId = frame.msgId();
    const auto* const found =
        std::find_if(std::begin(kMessages), std::end(kMessages),
                     [&](const Message& message) { return message.msgId == msgId; });
    // Header, data and their checksum.
    if (found == std::end(kMessages) ||
        frame.bytes.size() != Gssip::kHeaderBytes + 2 * found->words + 2) {
        return nullptr;
    }
    const bool isUtc = msgId == 30409 || msgId == 9409;
    return isUtc && !isValidUtc(frame.bytes) ? nullptr : found;
}

}  // namespace

bool LedgerBalance::hasFrames() const {
    return std::any_of(topics.begin(), topics.end(),
                       [](const TopicBalance& topic) { return topic.due > 0; });
}

bool LedgerBalance::balances() const {
    return started && unseen == 0 && hasFrames() &&
           std::all_of(topics.begin(), topics.end(),
                       [](const TopicBalance& topic) { return topic.balances(); });
}

BusLedger::BusLedger(SimulatedUnit& unit) : m_unit(unit), m_ear(unit.deployment().connectionsFile) {
}

void BusLedger::collect() {
    const std::uint64_t before = m_next;
    const std::vector<SaidFrame> said = m_unit.receiver().ledger().said().entriesFrom(m_next);
    m_totals.unseen += m_next - before - said.size();
    for (const SaidFrame& frame : said) {
        if (!frame.intact) {
            ++m_totals.damaged;
            continue;
        }
        if (!frame.delivered) {
            ++m_totals.undelivered;
            continue;
        }
        ++m_totals.intact;
        const std::uint16_t msgId = frame.msgId();
        if (frame.bytes.size() > Gssip::kHeaderBytes) {
            m_totals.measurementFrames += msgId == 7270 ? 1 : 0;
            m_totals.satelliteFrames += msgId == 5047 || msgId == 5048 ? 1 : 0;
        }
        if (const Message* const message = findMessage(frame)) {
            m_entries.push_back(
                {frame.at, msgId, message->key == nullptr ? Words() : message->key(frame.bytes)});
        }
    }
}

bool BusLedger::isDue(const Entry& entry, bool pausesInTests) const {
    const std::optional<LedgerTime> started = m_ear.started();
    if (!started || entry.at < *started) {
        return false;
    }
    if (!pausesInTests) {
        return true;
    }
    const std::vector<BusTest> tests = m_ear.tests();
    return std::none_of(tests.begin(), tests.end(), [&](const BusTest& test) {
        return entry.at >= test.begin - kTestMargin &&
               (!test.end || entry.at <= *test.end + kTestMargin);
    });
}

LedgerBalance BusLedger::balance() const {
    LedgerBalance balance = m_totals;
    balance.begin = m_begin;
    balance.started = m_ear.started();
    for (const Topic& topic : kTopics) {
        std::vector<LedgerFrame> frames;
        for (const Entry& entry : m_entries) {
            if (std::find(topic.from.begin(), topic.from.end(), entry.msgId) != topic.from.end()) {
                frames.push_back({entry.at, topic.keyed ? entry.key : Words(),
                                  isDue(entry, topic.pausesInTests)});
            }
        }
        balance.topics.push_back(match(topic.name, frames, m_ear.samples(topic.name)));
    }
    balance.measurements = m_ear.measurements();
    balance.satelliteSamples = m_ear.samples("SVStatus").size();
    return balance;
}

LedgerBalance BusLedger::close(milliseconds patience) {
    m_unit.receiver().silence();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    m_unit.receiver().waitUntilQuiet(patience);
    collect();
    LedgerBalance result = balance();
    const auto measured = std::chrono::steady_clock::now() + kMeasurementsWait;
    const auto isOpen = [&] {
        const auto now = std::chrono::steady_clock::now();
        const bool waits = result.measurements < result.measurementFrames && now < measured;
        return (waits || !result.balances()) && now < deadline;
    };
    while (isOpen()) {
        Utility::sleepFor(kRhythm);
        result = balance();
    }
    return result;
}

}  // namespace Simulator
