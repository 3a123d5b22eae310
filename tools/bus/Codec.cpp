// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Codec.h"

#include <fastdds/rtps/common/SerializedPayload.h>
#include <fmt/format.h>

#include <algorithm>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include "face/KD_Topic_Helpers.h"
#include "tools/bus/Bus.h"

namespace Bus {

using eprosima::fastrtps::rtps::SerializedPayload_t;

Codec::Codec(const std::string& typeName)
    : m_typeName(typeName),
      m_type(FACE::TSS::Topics::GetPubSubType(topicOf({"", typeName, {}, {}}).pubSubType)) {
    if (m_type == nullptr || makeMessage(typeName) == nullptr) {
        throw UsageError(fmt::format("unknown type {}", typeName));
    }
}

Codec::Codec(Codec&&) noexcept = default;
Codec::~Codec() = default;

std::vector<uint8_t> Codec::bytesOf(Message& message) const {
    SerializedPayload_t payload(m_type->getSerializedSizeProvider(message.data())());
    std::fill_n(payload.data, payload.max_size, uint8_t{0});
    if (!m_type->serialize(message.data(), &payload)) {
        throw std::runtime_error(fmt::format("a message of {} that cannot be encoded", m_typeName));
    }
    return std::vector<uint8_t>(payload.data, payload.data + payload.length);
}

std::unique_ptr<Message> Codec::messageOf(const std::vector<uint8_t>& bytes) const {
    constexpr size_t kEncapsulation = 4;
    if (bytes.size() < kEncapsulation) {
        return nullptr;
    }
    SerializedPayload_t payload(static_cast<uint32_t>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), payload.data);
    payload.length = payload.max_size;
    auto message = makeMessage(m_typeName);
    const bool isWhole =
        m_type->deserialize(&payload, message->data()) && bytesOf(*message).size() == bytes.size();
    return isWhole ? std::move(message) : nullptr;
}

}  // namespace Bus
