// SPDX-License-Identifier: Apache-2.0
#include "simulator/Speaker.h"

#include <algorithm>
#include <utility>

#include "gssip/GssipFrame.h"

namespace Simulator {
namespace {

constexpr std::size_t kMaxPending = 1000;
constexpr std::chrono::milliseconds kRhythm{50};
// What a receiver at the wrong speed makes of a byte; no frame survives it.
constexpr std::uint8_t kNoise = 0xA5;
// Changes the word it is in by a power of two, so that the checksum cannot come out right.
constexpr std::uint8_t kDamage = 0x10;

}  // namespace

Speaker::Speaker(IReceiverLine& line, IFrameStamps& stamps, FrameLedger& ledger, Mischief& mischief,
                 LineNoise& noise, int bitsPerSecond)
    : m_line(line),
      m_stamps(stamps),
      m_ledger(ledger),
      m_mischief(mischief),
      m_noise(noise),
      m_speed(bitsPerSecond) {
}

void Speaker::start() {
    m_thread.start([this] { loop(); });
}

void Speaker::stop() {
    m_thread.requestStop();
    m_changed.notify_all();
    m_thread.stop();
}

void Speaker::say(Item item) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_pending.size() < kMaxPending) {
        m_pending.push_back(std::move(item));
        m_changed.notify_all();
    }
}

bool Speaker::waitUntilQuiet(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout,
                              [this] { return !m_transmitting && nextDue() == m_pending.end(); });
}

void Speaker::reset(int bitsPerSecond) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_pending.clear();
    m_speed = bitsPerSecond;
}

void Speaker::loop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_thread.stopRequested()) {
        const auto due = nextDue();
        if (due == m_pending.end()) {
            m_changed.notify_all();
            m_changed.wait_until(lock, nextWakeUp());
            continue;
        }
        Item item = std::move(*due);
        m_pending.erase(due);
        m_transmitting = true;
        lock.unlock();
        transmit(std::move(item));
        lock.lock();
        m_transmitting = false;
    }
}

std::list<Speaker::Item>::iterator Speaker::nextDue() {
    const Clock::time_point now = Clock::now();
    const auto dueAnswer = [&](const Item& item) { return item.answer && item.notBefore <= now; };
    const auto due = [&](const Item& item) { return item.notBefore <= now; };
    const auto answer = std::find_if(m_pending.begin(), m_pending.end(), dueAnswer);
    return answer != m_pending.end() ? answer
                                     : std::find_if(m_pending.begin(), m_pending.end(), due);
}

Speaker::Clock::time_point Speaker::nextWakeUp() const {
    Clock::time_point wakeUp = Clock::now() + kRhythm;
    for (const Item& item : m_pending) {
        wakeUp = std::min(wakeUp, item.notBefore);
    }
    return wakeUp;
}

void Speaker::transmit(Item item) {
    if (item.switchTo != 0) {
        m_speed = item.switchTo;
    }
    Bytes& bytes = item.bytes;
    if (m_muted || bytes.empty()) {
        return;
    }
    const std::uint16_t msgId = frameWord(bytes, Gssip::kWordMsgId);
    if (const auto damage = m_mischief.take(Trick::CorruptByte, msgId, bytes.size())) {
        bytes[damage->offset] ^= kDamage;
    }
    m_noise.damage(bytes);
    const int speed = m_speed;
    if (m_line.serverSpeed() != speed) {
        for (std::uint8_t& byte : bytes) {
            byte ^= kNoise;
        }
    }
    const bool begun = bytes.size() == 1 || m_line.say(bytes.data(), bytes.size() - 1, speed);
    m_stamps.onLastByte(item.stamps);
    // Taken before the byte goes out: what the server does upon the frame comes later than this.
    const Clock::time_point at = Clock::now();
    const bool ended = m_line.say(&bytes.back(), 1, speed);
    const bool intact = isIntact(bytes);
    m_ledger.addSaid({at, std::move(bytes), intact, begun && ended});
}

}  // namespace Simulator
