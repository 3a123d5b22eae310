// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_30409_Msg.h"

static_assert(Msid::wordCount(9409) == Msid::wordCount(30409), "both ids have one layout");

Rovan_30409_Msg::Rovan_30409_Msg() : RovanMessage(kMsgId) {
}

msg30409_t Rovan_30409_Msg::contents() const {
    return words().littleEndian<msg30409_t>(0);
}

bool Rovan_30409_Msg::isUtc_Valid(const msg30409_t& message) {
    return message.utcDataValid() && (message.sourceOneValid() || message.sourceTwoValid());
}

bool Rovan_30409_Msg::isUtc_Valid() const {
    return isUtc_Valid(contents());
}
