// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "tools/bus/ConnectionsFile.h"

namespace Bus {

// A topic that the tool publishes, with the server's own quality of service. Made and owned by Bus;
// belongs to the thread of its bus.
class Publisher {
  public:
    using Connection = FACE::TSS::KD_TSS::Connection_t;

    /// The connection's type must be registered. Throws UsageError when the library refuses.
    Publisher(eprosima::fastrtps::Participant& participant,
              const ConnectionsFile::Settings& settings, Connection connection);
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /// How many subscribers would get what is written now.
    int subscribers() const;

    /// Sends an object of the topic's type. False when the library refuses.
    bool write(void* message);

    /// Waits until every subscriber has confirmed all that was written; false when `timeout` comes
    /// first. On a bus without confirmations ("UseBestEffort") there is nothing to wait for.
    bool waitUntilTaken(std::chrono::nanoseconds timeout);

  private:
    Connection m_connection;
};

}  // namespace Bus
