// SPDX-License-Identifier: Apache-2.0
#include "ASPN/ResponseType.h"

#include "ASPN/CommandStrings.h"

namespace ASPN2 {

ResponseType::Value ResponseType::GetResponseType(
    const aspn2_msgs::idl::CommandResponse& response) {
    const auto contains = [&text = response.command_response()](const std::string& suffix) {
        return text.find(suffix) != std::string::npos;
    };
    if (contains(Sys::ResponseString::Ack)) {
        return eAck;
    }
    if (contains(Sys::ResponseString::Nack)) {
        return eNack;
    }
    if (contains(Sys::ResponseString::Pass)) {
        return ePass;
    }
    if (contains(Sys::ResponseString::Fail)) {
        return eFail;
    }
    return eOther;
}

}  // namespace ASPN2
