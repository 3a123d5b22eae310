// SPDX-License-Identifier: Apache-2.0
// 8504: position, receiver status and channels. The hottest path of the process: everything is
// built on the stack, and the list of channels is the one allocation.
#include <array>
#include <limits>

#include "ASPN/HealthReporter.h"
#include "MSID_messages/Rovan_8504_Msg.h"
#include "RovanServer/ReceiverFault.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"
#include "utility/RSS.h"

namespace {

namespace idl = aspn2_msgs::idl;

constexpr unsigned kChannels = 32;
/// One count of a velocity error estimate, in m/s.
constexpr double kVelocityErrorUnit = 0.03125;

const char* const kFaultText = "RCVR Fail Detected During BIT or Self Test";

// Rows and columns of the covariance: position, then velocity, each north, east, down.
using Covariance = std::array<std::array<double, 6>, 6>;

Covariance diagonal(const std::array<double, 6>& variances) {
    Covariance covariance{};
    for (size_t i = 0; i < variances.size(); ++i) {
        covariance[i][i] = variances[i];
    }
    return covariance;
}

Covariance covarianceOf(const unpacked_msg8504_t& report) {
    const double horizontal = report.horizontalPositionError;
    const double vertical = report.verticalPositionError;
    const double horizontalVelocity = report.horizontalVelocityError * kVelocityErrorUnit;
    const double verticalVelocity = report.verticalVelocityError * kVelocityErrorUnit;
    // A horizontal estimate is split evenly over its two axes.
    const double positionAxis = horizontal * horizontal * 0.5;
    const double velocityAxis = horizontalVelocity * horizontalVelocity * 0.5;
    return diagonal({positionAxis, positionAxis, vertical * vertical, velocityAxis, velocityAxis,
                     verticalVelocity * verticalVelocity});
}

Covariance noSolutionCovariance() {
    std::array<double, 6> infinite;
    infinite.fill(std::numeric_limits<double>::infinity());
    return diagonal(infinite);
}

idl::rinex3_band_enum bandOf(const channel_record_8504_t& record) {
    switch (record.frequency()) {
        case 1:
            return idl::RINEX3_BAND_0;
        case 2:
            return idl::RINEX3_BAND_1;
        default:
            return idl::RINEX3_BAND_7;
    }
}

idl::rinex3_attribute_enum attributeOf(const channel_record_8504_t& record) {
    switch (record.signalCode()) {
        case 2:
            return idl::RINEX3_ATTRIBUTE_1;
        case 3:
            return idl::RINEX3_ATTRIBUTE_0;
        case 4:
            return idl::RINEX3_ATTRIBUTE_3;
        case 5:
        case 6:
            return idl::RINEX3_ATTRIBUTE_4;
        default:
            return idl::RINEX3_ATTRIBUTE_15;
    }
}

idl::gnss_tracking_status_enum trackingStatusOf(const channel_record_8504_t& record) {
    const unsigned status = record.trackingStatus();
    return static_cast<idl::gnss_tracking_status_enum>(status <= 7 ? status : 0);
}

// The same for all channels of a report.
idl::gnss_corrections_used_enum correctionsOf(const unpacked_msg8504_t& report) {
    if (report.corrections58at11 == 2) {
        return idl::GNSS_CORRECTIONS_USED_8;
    }
    return report.corrections58at9 != 0 ? idl::GNSS_CORRECTIONS_USED_7
                                        : idl::GNSS_CORRECTIONS_USED_0;
}

idl::channel_status_obs observationOf(const channel_record_8504_t& record,
                                      idl::gnss_corrections_used_enum corrections) {
    idl::channel_status_obs obs;
    obs.prn(static_cast<int32_t>(record.prn()));
    obs.channel(static_cast<int32_t>(record.channel()));
    obs.rinex3_satellite_system(idl::RINEX3_SATELLITE_SYSTEM_0);
    obs.rinex3_band(bandOf(record));
    obs.rinex3_attribute(attributeOf(record));
    obs.gnss_tracking_status(trackingStatusOf(record));
    obs.carrier_to_noise(static_cast<float>(record.carrierToNoise()));
    obs.jammer_to_signal(static_cast<float>(record.jammerToSignal()));
    obs.used_in_solution(record.usedInSolution());
    obs.gnss_corrections_used(corrections);
    obs.assurance_level(record.assured() ? idl::ASSURANCE_LEVEL_1 : idl::ASSURANCE_LEVEL_2);
    return obs;
}

}  // namespace

void RovanProcessor::process8504(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_8504_Msg message;
    if (!message.ok_set_8504_gpsip(frame.bytes, frame.size)) {
        return;
    }
    message.unpack_8504();
    const bool failed = message.recieverFailureDetected();
    if (failed) {
        // Marked with the server instead of a source file.
        reportReceiverFault(kFaultText, "RCVR_FAILURE", m_name.c_str(), __LINE__);
    }
    followReceiverState(failed);
    publishPositionVelocity(gssip, message.unpacked());
    publishReceiverStatus(gssip, message.unpacked());
    publishChannelStatus(gssip, message.unpacked());
}

void RovanProcessor::followReceiverState(bool failed) {
    m_currentRcvrFail = failed;
    bool report = false;
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        // A failure is reported with every frame, a good state only when it is news.
        report = failed || m_lastRcvrFail || m_reportRcvrStateOnce;
        m_lastRcvrFail = failed;
        m_reportRcvrStateOnce = false;
    }
    if (!report) {
        return;
    }
    if (failed) {
        HealthReporter::Instance().SendEvent(__FILE__, __LINE__, EventTypes::eFailure,
                                             m_name + ": process8504() ROVAN 8504 Receiver Fail.");
    } else {
        HealthReporter::Instance().SendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                                             "ROVAN 8504 Receiver Ok.");
    }
}

void RovanProcessor::publishPositionVelocity(const GSSIP& gssip, const unpacked_msg8504_t& report) {
    idl::PositionVelocity message;
    if (report.noSolution) {
        message.covariance(noSolutionCovariance());
    } else {
        message.position().latitude(report.latitude);
        message.position().longitude(report.longitude);
        message.position().altitude(static_cast<double>(report.altitude));
        message.velocity({static_cast<double>(report.northVelocity),
                          static_cast<double>(report.eastVelocity),
                          -static_cast<double>(report.upVelocity)});
        message.covariance(covarianceOf(report));
    }
    m_pv.publish(gssip.header(), message, ": process8504() PositionVelocity PUBLISH ERROR",
                 report.bits48at6 != 0 ? m_pvSecondDeviceId : m_pv.deviceId());
}

void RovanProcessor::publishReceiverStatus(const GSSIP& gssip, const unpacked_msg8504_t& report) {
    int32_t available = 0;
    int32_t used = 0;
    for (const channel_record_8504_t& record : report.channels) {
        available += record.satelliteAvailable() ? 1 : 0;
        used += record.usedInSolution() ? 1 : 0;
    }
    idl::ReceiverStatus message;
    message.rcvr_fail(report.receiverFailure);
    message.num_satellites_avail(available);
    message.num_satellites_used(used);
    if (!report.noSolution) {
        message.pdop(RSS::Rss(report.hdop / 10.0, report.vdop / 10.0));
        message.tdop(report.tdop / 10.0);
    }
    m_rcvrStatus.publish(gssip.header(), message, ": process8504() ReceiverStatus PUBLISH ERROR");
}

void RovanProcessor::publishChannelStatus(const GSSIP& gssip, const unpacked_msg8504_t& report) {
    const idl::gnss_corrections_used_enum corrections = correctionsOf(report);
    idl::ChannelStatus message;
    message.num_channels(kChannels);
    message.channels().reserve(kChannels);
    for (const channel_record_8504_t& record : report.channels) {
        message.channels().push_back(observationOf(record, corrections));
    }
    m_chanStatus.publish(gssip.header(), message, ": process8504() ChannelStatus PUBLISH ERROR");
}
