// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "aspn2_msgs/GSSIP.h"

// Samples of receiver frames and the bytes that stand for them on a queue device, written down here
// field by field as CDR wants them, with nothing of the code under test.

inline std::vector<uint8_t> operator+(std::vector<uint8_t> left,
                                      const std::vector<uint8_t>& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// A frame of that message id with `dataBytes` bytes, counting up, behind its ten of header.
inline std::vector<uint8_t> frameOf(unsigned msgId, size_t dataBytes = 2) {
    std::vector<uint8_t> frame = {0xFF, 0x81, static_cast<uint8_t>(msgId & 0xFF),
                                  static_cast<uint8_t>(msgId >> 8)};
    frame.resize(10);
    for (size_t i = 0; i < dataBytes; ++i) {
        frame.push_back(static_cast<uint8_t>(i));
    }
    return frame;
}

inline aspn2_msgs::idl::GSSIP sampleOf(const std::vector<uint8_t>& frame, int64_t seqNum = 0) {
    aspn2_msgs::idl::GSSIP sample;
    sample.header().seq_num(seqNum);
    sample.header().timestamp_arrival().sec(0x1112131415161718);
    sample.header().timestamp_arrival().nsec(0x21222324);
    sample.header().timestamp_arrival().time_code(100);
    sample.header().timestamp_valid().sec(-2);
    sample.header().timestamp_valid().nsec(999999999);
    sample.header().timestamp_valid().time_code(101);
    sample.header().device_id(0x31323334);
    sample.num_bytes(static_cast<int32_t>(frame.size()));
    sample.data(frame);
    return sample;
}

/// An integer of `size` bytes, least significant byte first or most significant first.
inline std::vector<uint8_t> integer(uint64_t value, unsigned size, bool bigEndian) {
    std::vector<uint8_t> bytes;
    for (unsigned i = 0; i < size; ++i) {
        bytes.push_back(static_cast<uint8_t>(value >> (8 * (bigEndian ? size - 1 - i : i))));
    }
    return bytes;
}

// What may be wrong or different about the bytes of a sample.
struct Form {
    int64_t seqNum = 0;
    int64_t numBytes = -1000;  // instead of the frame's length
    int64_t dataLength = -1;   // instead of the frame's length
    bool bigEndian = false;
};

/// The bytes of sampleOf(frame, form.seqNum).
inline std::vector<uint8_t> bytesOf(const std::vector<uint8_t>& frame, const Form& form = {}) {
    const auto length = static_cast<int64_t>(frame.size());
    const int64_t numBytes = form.numBytes == -1000 ? length : form.numBytes;
    const int64_t dataLength = form.dataLength == -1 ? length : form.dataLength;
    const auto put = [&form](auto value, unsigned size) {
        return integer(static_cast<uint64_t>(value), size, form.bigEndian);
    };
    const std::vector<uint8_t> encapsulation = {0x00, static_cast<uint8_t>(form.bigEndian ? 0 : 1),
                                                0x00, 0x00};
    return encapsulation + put(form.seqNum, 8) +                            //
           put(0x1112131415161718, 8) + put(0x21222324, 4) + put(100, 4) +  //
           put(-2, 8) + put(999999999, 4) + put(101, 4) +                   //
           put(0x31323334, 4) + put(numBytes, 4) + put(dataLength, 4) + frame;
}
inline std::vector<uint8_t> bytesOf(const std::vector<uint8_t>& frame, int64_t seqNum) {
    Form form;
    form.seqNum = seqNum;
    return bytesOf(frame, form);
}
