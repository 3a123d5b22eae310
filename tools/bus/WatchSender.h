// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/bus/CommandMessage.h"
#include "tools/bus/Limit.h"
#include "tools/bus/Session.h"
#include "tools/bus/WatchModel.h"

namespace Bus {

// Sends the commands of the live view and tells in its log what became of them. Never waits. One
// thread; the session must outlive it.
class WatchSender {
  public:
    /// Publishes the topic of commands from now on, if the file has it: by the time that somebody
    /// wants to send one, everybody has heard of it. `hearsItself` when the session subscribes that
    /// topic too.
    WatchSender(Session& session, const ConnectionsFile& file, bool hearsItself);

    /// Sends nothing when nobody listens.
    void send(const std::string& text, WatchModel& model, int64_t unixNs);
    /// Tells once whether every subscriber has confirmed the last command.
    void poll(WatchModel& model, int64_t unixNs);

  private:
    /// How many others would get a command.
    int listeners() const;

    const bool m_hearsItself;
    Publisher* m_publisher = nullptr;
    bool m_isWaiting = false;
    Limit::Clock::time_point m_deadline;
};

}  // namespace Bus
