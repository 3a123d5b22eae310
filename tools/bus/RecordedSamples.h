// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "tools/bus/Bus.h"
#include "tools/bus/Codec.h"
#include "tools/bus/Recorded.h"

namespace Bus {

// Samples of the bus into those of a recording and back, for all types. One thread.
class RecordedSamples {
  public:
    bool knows(const std::string& typeName) const { return makeMessage(typeName) != nullptr; }

    /// Throws UsageError for an unknown type.
    Recorded recordedOf(const Sample& sample, int64_t sinceStartNs);

    /// Null when the bytes are no whole message of the type. Throws as above.
    std::unique_ptr<Message> messageOf(const Recorded& recorded);

    /// As it came from the bus. The message is null when the bytes are no whole one. Throws as
    /// above.
    Sample sampleOf(const Recorded& recorded);

  private:
    const Codec& codec(const std::string& typeName);

    std::map<std::string, Codec> m_codecs;  // no more than there are types
};

}  // namespace Bus
