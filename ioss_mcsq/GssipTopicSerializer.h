// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "aspn2_msgs/GSSIP.h"
#include "aspn2_msgs/GSSIPPubSubTypes.h"

// Receiver frames as the queue devices carry them: the encapsulation and the CDR form of the
// sample, with nothing around it. For one thread at a time.
class GssipTopicSerializer {
  public:
    /// What a sample needs beside its data: 4 bytes of encapsulation, 48 of header and frame
    /// length, and 4 of the data's own length.
    static constexpr size_t kBytesAroundData = 56;

    /// In bytes, encapsulation included.
    static size_t GetSerializedSize(const aspn2_msgs::idl::GSSIP& sample);

    /// Replaces `bytes` by the serialized sample; its capacity is used again. False, and `bytes` is
    /// then without meaning, when the sample does not serialize.
    bool Serialize(const aspn2_msgs::idl::GSSIP& sample, std::vector<uint8_t>& bytes);

    /// Reads the sample at the start of the buffer; bytes behind it are not looked at. False when
    /// the buffer ends within the sample or begins with something else. May throw what the CDR
    /// library throws, which is a std::exception.
    bool Deserialize(const uint8_t* buffer, size_t length, aspn2_msgs::idl::GSSIP& sample);

  private:
    aspn2_msgs::idl::GSSIPPubSubType m_type;
};
