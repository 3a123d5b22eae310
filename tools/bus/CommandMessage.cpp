// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/CommandMessage.h"

#include <fmt/format.h>

#include <chrono>

#include "ASPN/TimeConversion.h"

namespace Bus {
namespace {

constexpr const char* kType = "aspn2_msgs::idl::CommandResponse";

// A number that no other command of the last three weeks had: milliseconds, in 31 bits.
int32_t newIdentifier() {
    using std::chrono::milliseconds;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<int32_t>(std::chrono::duration_cast<milliseconds>(now).count() & 0x7FFFFFFF);
}

int32_t deviceIdOf(const SendOptions& options) {
    constexpr uint32_t kServerMask = 0xFF0000;
    const auto id = static_cast<uint32_t>(options.deviceId);
    const uint32_t ofServer = options.server ? (id & ~kServerMask) | *options.server << 16 : id;
    return static_cast<int32_t>(ofServer);
}

}  // namespace

const Topic& topicOfCommands(const ConnectionsFile& file, const char* name) {
    const Topic& topic = file.get(name);
    if (topic.typeName != kType) {
        throw UsageError(fmt::format("{}: the topic {} has the type {}, not {}", file.path(), name,
                                     topic.typeName, kType));
    }
    return topic;
}

idl::CommandResponse messageOf(const SendOptions& options) {
    idl::CommandResponse message;
    message.header().device_id(deviceIdOf(options));
    ASPN2::setToVandToA_fromNSec(std::chrono::system_clock::now().time_since_epoch(),
                                 message.header());
    message.commanded_device_id(static_cast<int32_t>(options.to));
    message.command_identifier(options.identifier ? static_cast<int32_t>(*options.identifier)
                                                  : newIdentifier());
    message.command_response_type(options.asResponse ? idl::COMMAND_RESPONSE_TYPE_1
                                                     : idl::COMMAND_RESPONSE_TYPE_0);
    message.command_response(options.text);
    return message;
}

bool isAnswer(const idl::CommandResponse& response, const idl::CommandResponse& command) {
    return response.command_response_type() == idl::COMMAND_RESPONSE_TYPE_1 &&
           response.command_identifier() == command.command_identifier() &&
           response.commanded_device_id() == command.header().device_id();
}

}  // namespace Bus
