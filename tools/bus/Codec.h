// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/bus/Message.h"

namespace eprosima::fastdds::dds {
class TopicDataType;
}

namespace Bus {

// A type of the bus between its messages and their bytes on the wire: CDR with its encapsulation,
// in the byte order of this machine, the padding zero. No value of a field is lost on the way. One
// thread.
class Codec {
  public:
    /// Throws UsageError for an unknown type.
    explicit Codec(const std::string& typeName);
    Codec(Codec&&) noexcept;
    ~Codec();

    std::vector<uint8_t> bytesOf(Message& message) const;

    /// Null when the bytes are not those of one message, whole and with nothing behind it.
    std::unique_ptr<Message> messageOf(const std::vector<uint8_t>& bytes) const;

  private:
    std::string m_typeName;
    std::unique_ptr<eprosima::fastdds::dds::TopicDataType> m_type;
};

}  // namespace Bus
