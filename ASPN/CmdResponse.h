// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "ASPN/DeviceIdFactory.h"
#include "aspn2_msgs/CommandResponse.h"

namespace ASPN2 {

// Makes commands and responses: stamps them with the FPGA's system count of the moment, numbers
// them and signs them with this server's device id. Commands and responses are counted apart, each
// from 0. Any thread may make messages; reset() belongs to bring-up.
class CmdResponse {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;

    /// Device id 0.
    CmdResponse() = default;
    explicit CmdResponse(const DeviceIdFactory& factory);

    /// Takes a new device id; the counters go on.
    void reset(const DeviceIdFactory& factory);

    CommandResponse makeCommand(const std::string& text);
    /// The same, with the time of arrival taken from `ticks` of the FPGA.
    CommandResponse makeCommand(unsigned long long ticks, const std::string& text);

    /// A response to `command` with that text.
    CommandResponse makeResponse(const CommandResponse& command, const std::string& text);
    /// Stands here because a literal would otherwise turn into a bool. Null counts as "".
    CommandResponse makeResponse(const CommandResponse& command, const char* text);
    /// The command's text up to its first comma, and "_PASS" or "_FAIL".
    CommandResponse makeResponse(const CommandResponse& command, bool pass);
    /// The same with "_ACK" or "_NACK".
    CommandResponse makeResponseAck(const CommandResponse& command, bool ack);

    /// Replaces the sub id, the low 8 bits, of the message's device id.
    static void setTopicId(CommandResponse& message, unsigned char id);

  private:
    CommandResponse make(std::atomic<int64_t>& sequence, const std::string& text) const;

    std::atomic<int32_t> m_deviceId{0};
    std::atomic<int64_t> m_commandSequence{0};
    std::atomic<int64_t> m_responseSequence{0};
    std::atomic<uint32_t> m_commandIdentifier{0};
};

}  // namespace ASPN2
