// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/rtps/common/SerializedPayload.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// The expected bytes and fields of one sample of each type, as golden/make_golden.py worked them
// out.
namespace golden {

using Bytes = std::vector<uint8_t>;

// A payload of that capacity, zeroed so that padding compares.
class Payload : public eprosima::fastrtps::rtps::SerializedPayload_t {
  public:
    explicit Payload(size_t capacity) : SerializedPayload_t(static_cast<uint32_t>(capacity)) {
        std::fill_n(data, capacity, uint8_t{0});
    }
    explicit Payload(const Bytes& bytes) : Payload(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), data);
        length = static_cast<uint32_t>(bytes.size());
    }
    Bytes bytes() const { return Bytes(data, data + length); }
};

inline std::ifstream open(const std::string& file) {
    return std::ifstream(ROVAN_SOURCE_DIR "/tests/aspn2_msgs/golden/" + file);
}

/// The bytes of a type, for example "GPSTime", in the order "little" or "big"; empty if there are
/// none.
inline Bytes bytes(const std::string& type, const std::string& order) {
    std::ifstream file = open(type + ".hex");
    Bytes found;
    bool wanted = false;
    for (std::string line; std::getline(file, line);) {
        if (line == "little" || line == "big") {
            wanted = line == order;
        } else if (wanted) {
            std::istringstream words(line);
            for (unsigned byte = 0; words >> std::hex >> byte;) {
                found.push_back(static_cast<uint8_t>(byte));
            }
        }
    }
    return found;
}

/// Every field of a type's sample by its name, as one line of JSON.
inline std::string json(const std::string& type) {
    std::ifstream file = open(type + ".json");
    std::string line;
    std::getline(file, line);
    return line;
}

}  // namespace golden
