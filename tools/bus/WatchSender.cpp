// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchSender.h"

#include <fmt/format.h>

#include <algorithm>

namespace Bus {
namespace {

constexpr const char* kCommand = "Command";
// Longer than the bus takes to notice that a subscriber has died.
constexpr std::chrono::seconds kTaken{10};

}  // namespace

WatchSender::WatchSender(Session& session, const ConnectionsFile& file, bool hearsItself)
    : m_hearsItself(hearsItself) {
    if (file.find(kCommand) != nullptr) {
        m_publisher = &session.publish(topicOfCommands(file, kCommand));
    }
}

int WatchSender::listeners() const {
    return std::max(m_publisher->subscribers() - (m_hearsItself ? 1 : 0), 0);
}

void WatchSender::send(const std::string& text, WatchModel& model, int64_t unixNs) {
    if (m_publisher == nullptr || listeners() == 0) {
        model.note("SND", "nobody subscribes to the topic Command; nothing was sent: " + text,
                   unixNs, true);
        return;
    }
    SendOptions options;
    options.text = text;
    idl::CommandResponse message = messageOf(options);
    if (!m_publisher->write(&message)) {
        model.note("SND", "the bus library did not take the message: " + text, unixNs, true);
        return;
    }
    model.note("SND",
               fmt::format("sent {}, identifier {}, subscribers {}", text,
                           message.command_identifier(), listeners()),
               unixNs, false);
    m_isWaiting = true;
    m_deadline = Limit::Clock::now() + kTaken;
}

void WatchSender::poll(WatchModel& model, int64_t unixNs) {
    if (!m_isWaiting) {
        return;
    }
    const bool isTaken = m_publisher->waitUntilTaken(std::chrono::nanoseconds(1));
    if (isTaken) {
        model.note("SND", "every subscriber has confirmed it", unixNs, false);
    } else if (Limit::Clock::now() >= m_deadline) {
        model.note("SND", "a subscriber has not confirmed that it came", unixNs, true);
    }
    m_isWaiting = !isTaken && Limit::Clock::now() < m_deadline;
}

}  // namespace Bus
