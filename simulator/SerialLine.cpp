// SPDX-License-Identifier: Apache-2.0
#include "simulator/SerialLine.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "utility/Sleep.h"

namespace Simulator {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kReadRhythm{20};
// How long a byte waits for a server that does not read; after that it is lost, as on a real line.
constexpr milliseconds kPatience{100};
constexpr std::size_t kPacedPiece = 16;
constexpr int kBitsPerCharacter = 10;

std::chrono::nanoseconds lineTime(std::size_t count, int bitsPerSecond) {
    return std::chrono::nanoseconds(static_cast<std::int64_t>(count) * kBitsPerCharacter *
                                    1'000'000'000 / bitsPerSecond);
}

}  // namespace

SerialLine::SerialLine(unsigned channel)
    : m_device("/dev/ttyS" + std::to_string(channel)),
      m_terminal(std::make_shared<PseudoTerminal>(m_device)) {
}

void SerialLine::start(Listener listener) {
    m_listener = std::move(listener);
    m_thread.start([this] { listen(); });
}

void SerialLine::stop() {
    m_thread.stop();
}

bool SerialLine::say(const std::uint8_t* bytes, std::size_t count, int bitsPerSecond) {
    const std::shared_ptr<PseudoTerminal> line = terminal();
    const bool paced = m_paced && bitsPerSecond > 0;
    const std::size_t piece = paced ? kPacedPiece : count;
    auto due = std::chrono::steady_clock::now();
    bool delivered = true;
    for (std::size_t done = 0; done < count; done += piece) {
        const std::size_t now = std::min(piece, count - done);
        if (!line || !m_plugged || m_stuck != kNotStuck) {
            delivered = false;
        } else {
            const milliseconds patience = m_full ? milliseconds(0) : kPatience;
            const std::lock_guard<std::mutex> writing(m_writing);
            m_full = line->write(bytes + done, now, patience) != now;
            delivered = delivered && !m_full;
        }
        if (paced) {
            due += lineTime(now, bitsPerSecond);
            Utility::sleepFor(due - std::chrono::steady_clock::now());
        }
    }
    return delivered;
}

int SerialLine::serverSpeed() const {
    const std::shared_ptr<PseudoTerminal> line = terminal();
    return line ? line->farEndSpeed() : 0;
}

void SerialLine::unplug() {
    m_stuck = kNotStuck;
    m_plugged = false;
}

void SerialLine::stick(std::uint8_t byte) {
    m_plugged = true;
    m_stuck = byte;
}

void SerialLine::holdBreak() {
    m_plugged = true;
    if (m_stuck.exchange(kBreak) != kBreak) {
        const std::uint8_t zero = 0;
        const std::lock_guard<std::mutex> writing(m_writing);
        if (const std::shared_ptr<PseudoTerminal> line = terminal()) {
            line->write(&zero, 1, kPatience);
        }
    }
}

void SerialLine::hangUp() {
    std::weak_ptr<PseudoTerminal> old;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        old = m_terminal;
        m_terminal.reset();
    }
    // Whoever reads or writes at this moment lets go of it soon.
    while (!old.expired()) {
        Utility::sleepFor(milliseconds(1));
    }
}

void SerialLine::plug() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_terminal) {
        m_terminal = std::make_shared<PseudoTerminal>(m_device);
    }
    m_stuck = kNotStuck;
    m_plugged = true;
}

void SerialLine::sayStuck() {
    const auto now = std::chrono::steady_clock::now();
    const auto since = std::min<std::chrono::nanoseconds>(now - m_stuckSaid, kReadRhythm);
    const int byte = m_stuck;
    const std::shared_ptr<PseudoTerminal> line = terminal();
    if (byte < 0 || !line) {
        m_stuckSaid = now;
        return;
    }
    const std::int64_t count =
        since.count() * line->farEndSpeed() / (std::int64_t{kBitsPerCharacter} * 1'000'000'000);
    if (count > 0) {
        const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(count),
                                              static_cast<std::uint8_t>(byte));
        const std::lock_guard<std::mutex> writing(m_writing);
        line->write(bytes.data(), bytes.size(), milliseconds(0));
        m_stuckSaid = now;
    }
}

void SerialLine::listen() {
    std::uint8_t buffer[4096];
    while (!m_thread.stopRequested()) {
        sayStuck();
        const std::shared_ptr<PseudoTerminal> line = terminal();
        if (!line) {
            Utility::sleepFor(kReadRhythm);
            continue;
        }
        const std::size_t count = line->read(buffer, sizeof buffer, kReadRhythm);
        if (count > 0 && m_plugged) {
            m_listener(buffer, count);
        }
    }
}

std::shared_ptr<PseudoTerminal> SerialLine::terminal() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_terminal;
}

}  // namespace Simulator
