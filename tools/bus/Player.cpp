// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Player.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "tools/bus/Progress.h"
#include "tools/bus/RecordedSamples.h"
#include "tools/bus/RecordingReader.h"
#include "tools/common/StopSignals.h"
#include "utility/Console.h"
#include "utility/Sleep.h"

namespace Bus {
namespace {

// Longer than the bus takes to notice that a subscriber has died.
constexpr double kConfirmSeconds = 10;

}  // namespace

Player::Player(Session& session, const Options& options, int historyDepth)
    : m_session(session),
      m_options(options),
      m_mostUnconfirmed(static_cast<uint64_t>(std::max(historyDepth / 2, 1))) {
}

void Player::add(const Topic& topic) {
    m_voices[topic.name].publisher = &m_session.publish(topic);
}

bool Player::hasSubscribers() const {
    return std::any_of(m_voices.begin(), m_voices.end(),
                       [](const auto& entry) { return entry.second.publisher->subscribers() > 0; });
}

ExitStatus Player::play(const RecordingContents& contents) {
    RecordingReader reader(m_options.recording.file);
    RecordedSamples samples;
    Recorded recorded;
    std::optional<int64_t> firstNs;
    bool isGood = true;
    Progress progress;
    m_limit.emplace(m_options);
    m_start = Clock::now();
    // Not a sample more than were checked, also if the file has grown since.
    for (uint64_t i = 0; i < contents.samples && !m_limit->reached() && reader.next(recorded);
         ++i) {
        const auto voice = m_voices.find(recorded.topic);
        if (voice == m_voices.end()) {
            continue;
        }
        const auto message = samples.messageOf(recorded);
        if (message == nullptr) {
            reader.fail("not a whole message any more");
        }
        if (!firstNs) {
            firstNs = recorded.sinceStartNs;
        }
        if (!waitFor(dueTime(recorded.sinceStartNs - *firstNs))) {
            break;
        }
        isGood = write(voice->second, *message) && isGood;
        if (progress.isDue()) {
            progress.show(fmt::format("{} of {} samples", played(), contents.samples));
        }
    }
    for (auto& [topic, voice] : m_voices) {
        isGood = confirm(voice) && isGood;
    }
    return isGood ? m_limit->status() : kNothingSeen;
}

Player::Clock::time_point Player::dueTime(int64_t sinceFirstNs) const {
    if (m_options.recording.speed <= 0) {
        return m_start;
    }
    constexpr double kLongestNs = 1e18;  // decades, and within the range of the clock
    const double ns = static_cast<double>(sinceFirstNs) / m_options.recording.speed;
    return m_start +
           std::chrono::nanoseconds(static_cast<int64_t>(std::clamp(ns, 0.0, kLongestNs)));
}

bool Player::waitFor(Clock::time_point due) const {
    while (!m_limit->reached()) {
        const Clock::time_point now = Clock::now();
        if (now >= due) {
            return true;
        }
        Utility::sleepFor(std::min(m_limit->patience(), due - now));
    }
    return false;
}

bool Player::write(Voice& voice, Message& message) {
    const bool isConfirmed = voice.unconfirmed < m_mostUnconfirmed || confirm(voice);
    if (!voice.publisher->write(message.data())) {
        Console::errorLine("rovan-bus: the bus library did not take a sample");
        return false;
    }
    ++voice.unconfirmed;
    m_limit->count();
    return isConfirmed;
}

bool Player::confirm(Voice& voice) {
    Options patience;
    patience.durationSeconds = kConfirmSeconds;
    const Limit limit(patience);
    bool isTaken = voice.unconfirmed == 0;
    do {
        isTaken = isTaken || voice.publisher->waitUntilTaken(limit.patience());
    } while (!isTaken && !limit.reached());
    voice.unconfirmed = 0;
    if (!isTaken && !Tools::StopSignals::arrived()) {
        Console::errorLine(
            "rovan-bus: a subscriber has not confirmed the samples that it was sent");
    }
    return isTaken;
}

}  // namespace Bus
