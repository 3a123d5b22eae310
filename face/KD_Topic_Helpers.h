// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace eprosima::fastdds::dds {
class TopicDataType;
}

// From the type key of a connection's configuration to the type support of the bus library.
namespace FACE::TSS::Topics {

/// A new instance of the type support class of that name, for example "EventLogPubSubType"; null
/// for an unknown key. Any thread may call.
std::unique_ptr<eprosima::fastdds::dds::TopicDataType> GetPubSubType(const std::string& key);

/// All known keys.
std::vector<std::string> pubSubTypeKeys();

}  // namespace FACE::TSS::Topics
