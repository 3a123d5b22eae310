// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Publisher.h"

#include <fastrtps/Domain.h>
#include <fastrtps/participant/Participant.h>
#include <fastrtps/publisher/Publisher.h>
#include <fmt/format.h>
#include <fastdds/dds/topic/TopicDataType.hpp>
#include <utility>

#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Listeners.h"

namespace Bus {

Publisher::Publisher(eprosima::fastrtps::Participant& participant,
                     const ConnectionsFile::Settings& settings, Connection connection)
    : m_connection(std::move(connection)) {
    auto attributes = FACE::TSS::Attributes::publisher(settings, m_connection);
    // Subscribers confirm when they are asked, which by default is every three seconds.
    attributes.times.heartbeatPeriod = {0, 100'000'000};
    auto listener = std::make_unique<FACE::TSS::Listeners::PublisherListenerBase>("");
    auto* const endpoint =
        eprosima::fastrtps::Domain::createPublisher(&participant, attributes, listener.get());
    if (endpoint == nullptr) {
        throw UsageError(fmt::format("cannot publish the topic {} of type {}",
                                     m_connection.topicName, m_connection.typeName));
    }
    m_connection.setPublisher(std::move(listener), endpoint);
}

int Publisher::subscribers() const {
    return m_connection.publisherListener->matched();
}

bool Publisher::write(void* message) {
    return m_connection.publisher.load()->write(message);
}

bool Publisher::waitUntilTaken(std::chrono::nanoseconds timeout) {
    using std::chrono::seconds;
    const auto whole = std::chrono::duration_cast<seconds>(timeout);
    return m_connection.publisher.load()->wait_for_all_acked(
        {static_cast<int32_t>(whole.count()), static_cast<uint32_t>((timeout - whole).count())});
}

}  // namespace Bus
