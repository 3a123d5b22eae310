// SPDX-License-Identifier: Apache-2.0
// 7270: a burst of frames for each epoch, one measurement in each. The receiver's frames gather the
// epoch, the processor's own thread publishes it when no more of them come.
#include <utility>

#include "ASPN/HealthReporter.h"
#include "MSID_messages/Rovan_7270_Msg.h"
#include "RovanServer/LineOfSightObservation.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"
#include "utility/Console.h"

namespace {

/// An epoch is closed by a silence that is longer.
constexpr std::chrono::milliseconds kEpochSilence{50};
/// So many measurements are a message without waiting for the silence, and no message has more: no
/// epoch of the receiver has them, and a tag that is stuck must not gather memory for ever. They
/// fit into one datagram.
constexpr size_t kFullEpoch = 400;

}  // namespace

void RovanProcessor::process7270(const GSSIP& gssip) {
    const Time now = m_clock();
    const RovanProcessorFrame frame(gssip);
    Rovan_7270_Msg message;
    if (message.ok_set_7270_gpsip(frame.bytes, frame.size)) {
        message.unpack_7270();
    }
    const unpacked_msg7270_t& report = message.unpacked();  // all zero when the frame was refused
    const uint16_t epoch = report.epochTag();
    if (epoch == 0) {
        // No measurement, but the burst is not over yet.
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        m_last7270Time = now;
        return;
    }
    aspn2_msgs::idl::gpslos_obs observation = lineOfSightObservationOf(report);
    bool late = false;
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        if (epoch != m_lineOfSightEpoch) {
            // What is left of the epoch before is of no use any more.
            m_lineOfSightObs.clear();
            m_lineOfSightEpoch = epoch;
            m_lineOfSightHeader = gssip.header();
        } else {
            // This epoch is out already: a further message of it follows.
            late = m_lineOfSightObs.empty();
        }
        m_lineOfSightObs.push_back(std::move(observation));
        m_last7270Time = now;
    }
    if (late) {
        const std::string text =
            m_name + ": process7270() multiple GPSLineOfSight messages for TOV = " +
            std::to_string(gssip.header().timestamp_valid().sec()) +
            " TOAns = " + std::to_string(gssip.header().timestamp_arrival().nsec());
        HealthReporter::Instance().SendEvent(__FILE__, __LINE__, EventTypes::eInformation, text);
        Console::line(text);
    }
}

void RovanProcessor::periodic7270Checker() {
    const Time now = m_clock();
    aspn2_msgs::idl::GPSLineOfSight message;
    aspn2_msgs::idl::header header;
    while (takeClosedEpoch(now, message, header)) {
        message.num_measurements(static_cast<int32_t>(message.obs().size()));
        m_gpsLineOfSight.publish(header, message,
                                 ": periodic7270Checker() GPSLineOfSight PUBLISH ERROR");
    }
}

bool RovanProcessor::takeClosedEpoch(Time now, aspn2_msgs::idl::GPSLineOfSight& message,
                                     aspn2_msgs::idl::header& header) {
    const std::lock_guard<std::mutex> lock(m_dataMutex);
    const bool silent = now - m_last7270Time > kEpochSilence;
    if (m_lineOfSightObs.empty() || !(silent || m_lineOfSightObs.size() >= kFullEpoch)) {
        return false;
    }
    message.obs().swap(m_lineOfSightObs);
    m_lineOfSightObs.clear();
    if (message.obs().size() > kFullEpoch) {
        const auto rest = message.obs().begin() + kFullEpoch;
        m_lineOfSightObs.assign(rest, message.obs().end());
        message.obs().erase(rest, message.obs().end());
    }
    header = m_lineOfSightHeader;
    return true;
}
