// SPDX-License-Identifier: Apache-2.0
// 8080: interference.
#include "MSID_messages/Rovan_8080_Msg.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"

namespace {

namespace idl = aspn2_msgs::idl;

idl::interference_type_set interference(idl::interference_type_enum type, bool present,
                                        idl::interference_signal_enum signal) {
    idl::interference_type_set set;
    set.interference_type(type);
    set.interference_value(present ? 1 : 0);
    set.interference_signal(signal);
    set.interference_band(idl::INTERFERENCE_BAND_7);
    return set;
}

}  // namespace

void RovanProcessor::process8080(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_8080_Msg message;
    if (!message.ok_set_8080_gpsip(frame.bytes, frame.size)) {
        return;
    }
    message.unpack_8080();
    const unpacked_msg8080_t& report = message.unpacked();

    idl::ChallengedEnvironment environment;
    environment.interference_types({
        interference(idl::INTERFERENCE_TYPE_1, report.interference(0), idl::INTERFERENCE_SIGNAL_15),
        interference(idl::INTERFERENCE_TYPE_1, report.interference(2), idl::INTERFERENCE_SIGNAL_4),
        interference(idl::INTERFERENCE_TYPE_1, report.interference(1), idl::INTERFERENCE_SIGNAL_3),
        interference(idl::INTERFERENCE_TYPE_0, report.interference(3), idl::INTERFERENCE_SIGNAL_15),
    });
    environment.num_interference_types(
        static_cast<int32_t>(environment.interference_types().size()));
    m_challEnv.publish(gssip.header(), environment,
                       ": process8080() ChallengedEnvironment PUBLISH ERROR");
}
