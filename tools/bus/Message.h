// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/bus/Json.h"

namespace Bus {

// A message of any type of the bus. Belongs to one thread at a time.
class Message {
  public:
    virtual ~Message() = default;

    /// The object of the bus type, for the library to fill or to send.
    virtual void* data() = 0;
    /// The header that every message begins with.
    virtual idl::header& header() = 0;
    virtual Json json() const = 0;
    /// Lines, each ended.
    virtual std::string text() const = 0;
};

/// An empty message of a type, for example "aspn2_msgs::idl::EventLog"; null for an unknown one.
std::unique_ptr<Message> makeMessage(const std::string& typeName);

/// The types that makeMessage() knows.
std::vector<std::string> knownTypes();

}  // namespace Bus
