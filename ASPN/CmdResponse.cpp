// SPDX-License-Identifier: Apache-2.0
#include "ASPN/CmdResponse.h"

#include "ASPN/CommandStrings.h"
#include "ASPN/TimeConversion.h"
#include "platform/FPGA.h"

namespace ASPN2 {
namespace {

constexpr unsigned char kMessageCode = 2;
constexpr unsigned char kSubId = 0;
constexpr uint32_t kSubIdMask = 0xFF;

// The command without its arguments.
std::string firstWordOf(const CmdResponse::CommandResponse& command) {
    const std::string& text = command.command_response();
    return text.substr(0, text.find(','));
}

}  // namespace

CmdResponse::CmdResponse(const DeviceIdFactory& factory) {
    reset(factory);
}

void CmdResponse::reset(const DeviceIdFactory& factory) {
    m_deviceId = factory.makeDeviceId(kMessageCode, kSubId);
}

CmdResponse::CommandResponse CmdResponse::makeCommand(const std::string& text) {
    CommandResponse command = make(m_commandSequence, text);
    command.commanded_device_id(0);
    command.command_identifier(static_cast<int32_t>(m_commandIdentifier++));
    command.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_0);
    return command;
}

CmdResponse::CommandResponse CmdResponse::makeCommand(unsigned long long ticks,
                                                      const std::string& text) {
    CommandResponse command = makeCommand(text);
    setToA_fromFpgaTicks(ticks, command.header());
    return command;
}

CmdResponse::CommandResponse CmdResponse::makeResponse(const CommandResponse& command,
                                                       const std::string& text) {
    CommandResponse response = make(m_responseSequence, text);
    response.commanded_device_id(command.header().device_id());
    response.command_identifier(command.command_identifier());
    response.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    return response;
}

CmdResponse::CommandResponse CmdResponse::makeResponse(const CommandResponse& command,
                                                       const char* text) {
    return makeResponse(command, std::string(text != nullptr ? text : ""));
}

CmdResponse::CommandResponse CmdResponse::makeResponse(const CommandResponse& command, bool pass) {
    return makeResponse(command, firstWordOf(command) + (pass ? Sys::ResponseString::Pass
                                                              : Sys::ResponseString::Fail));
}

CmdResponse::CommandResponse CmdResponse::makeResponseAck(const CommandResponse& command,
                                                          bool ack) {
    return makeResponse(command, firstWordOf(command) +
                                     (ack ? Sys::ResponseString::Ack : Sys::ResponseString::Nack));
}

void CmdResponse::setTopicId(CommandResponse& message, unsigned char id) {
    const auto former = static_cast<uint32_t>(message.header().device_id());
    message.header().device_id(static_cast<int32_t>((former & ~kSubIdMask) | id));
}

CmdResponse::CommandResponse CmdResponse::make(std::atomic<int64_t>& sequence,
                                               const std::string& text) const {
    CommandResponse message;
    message.header().device_id(m_deviceId);
    message.header().seq_num(sequence++);
    setToVandToA_fromFpgaTicks(FpgaFace::Instance().fpga_get_SystemCount(), message.header());
    message.command_response(text);
    return message;
}

}  // namespace ASPN2
