// SPDX-License-Identifier: Apache-2.0
// 5047 and 5048: the two halves of one report on the satellites in view.
#include <cmath>

#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"

namespace {

namespace idl = aspn2_msgs::idl;

/// Halves whose time tags differ by less belong together.
constexpr double kTagTolerance = 0.5;

idl::sv_set satelliteOf(const sv_rise_record_t& record) {
    idl::sv_set satellite;
    satellite.svid(record.svid);
    satellite.rinex3_gnss_enum(idl::RINEX3_GNSS_ENUM_0);
    satellite.healthy(record.healthy());
    satellite.azimuth(record.azimuth);
    satellite.elevation(record.elevation);
    satellite.rising(record.rising());
    return satellite;
}

}  // namespace

void RovanProcessor::process5047(const GSSIP& gssip) {
    latchSVRise(gssip, 5047, m_svRiseFirst);
}

void RovanProcessor::process5048(const GSSIP& gssip) {
    latchSVRise(gssip, 5048, m_svRiseSecond);
}

void RovanProcessor::latchSVRise(const GSSIP& gssip, uint16_t msgId, SVRiseLatch& latch) {
    const RovanProcessorFrame frame(gssip);
    Rovan_SVRise_Msg message(msgId);
    if (!message.ok_set_SVRiseMsg_gpsip(frame.bytes, frame.size)) {
        return;
    }
    message.unpack_SVRiseMsg();
    bool complete = false;
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        latch.record = message.unpacked();
        latch.ready = true;
        if (m_svRiseFirst.ready && m_svRiseSecond.ready) {
            // Halves of different reports are dropped both. So are tags that are no numbers.
            complete =
                std::fabs(m_svRiseFirst.record.time - m_svRiseSecond.record.time) < kTagTolerance;
            m_svRiseFirst.ready = false;
            m_svRiseSecond.ready = false;
        }
    }
    if (complete) {
        sendSVStatusMsg(gssip);
    }
}

// `gssip` is the frame that completed the pair, whichever half it is.
void RovanProcessor::sendSVStatusMsg(const GSSIP& gssip) {
    idl::SVStatus message;
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        for (const SVRiseLatch* half : {&m_svRiseFirst, &m_svRiseSecond}) {
            for (const sv_rise_record_t& record : half->record.records) {
                if (record.svid != 0) {
                    message.svs().push_back(satelliteOf(record));
                }
            }
        }
    }
    message.num_svs(static_cast<int32_t>(message.svs().size()));
    m_svStatus.publish(gssip.header(), message, ": process5047() SVStatus PUBLISH ERROR");
}
