// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "aspn2_msgs/CommandResponse.h"

namespace ASPN2 {

// What a response says about its command.
struct ResponseType {
    enum Value { eOther = 0, eAck = 1, eNack = 2, ePass = 3, eFail = 4 };

    /// Searches the text, anywhere in it, for the four suffixes in the order of the numbers: the
    /// first that is found wins, wherever it stands.
    static Value GetResponseType(const aspn2_msgs::idl::CommandResponse& response);
};

}  // namespace ASPN2
