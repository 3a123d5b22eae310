// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/GssipTopicSerializer.h"

namespace {

using aspn2_msgs::idl::GSSIP;
using eprosima::fastrtps::rtps::octet;
using eprosima::fastrtps::rtps::SerializedPayload_t;

// A payload over bytes that belong to somebody else, and that it therefore does not free.
class BorrowedPayload : public SerializedPayload_t {
  public:
    BorrowedPayload(octet* bytes, size_t size) {
        data = bytes;
        max_size = length = static_cast<uint32_t>(size);
    }
    BorrowedPayload(const BorrowedPayload&) = delete;
    BorrowedPayload& operator=(const BorrowedPayload&) = delete;
    ~BorrowedPayload() { data = nullptr; }
};

}  // namespace

size_t GssipTopicSerializer::GetSerializedSize(const GSSIP& sample) {
    // The encapsulation counts as the position at which the sample begins. The first field wants a
    // multiple of 8, so the sum comes out 4 larger, which is the encapsulation's own size.
    return GSSIP::getCdrSerializedSize(sample, 4);
}

bool GssipTopicSerializer::Serialize(const GSSIP& sample, std::vector<uint8_t>& bytes) {
    bytes.resize(GetSerializedSize(sample));
    BorrowedPayload payload(bytes.data(), bytes.size());
    // The type takes its sample without const and only reads it.
    if (!m_type.serialize(const_cast<GSSIP*>(&sample), &payload)) {
        return false;
    }
    bytes.resize(payload.length);
    return true;
}

bool GssipTopicSerializer::Deserialize(const uint8_t* buffer, size_t length, GSSIP& sample) {
    BorrowedPayload payload(const_cast<octet*>(buffer), length);
    return m_type.deserialize(&payload, &sample);
}
