// SPDX-License-Identifier: Apache-2.0
#include "tests/end_to_end/BusListener.h"

#include "face/KD_Config.h"

using FACE::RETURN_CODE_TYPE;

std::shared_ptr<FACE::TSS::KD_TSS> BusListener::join(const std::filesystem::path& connectionsFile) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    auto tss = std::make_shared<FACE::TSS::KD_TSS>("listener");
    tss->Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
    tss->Initialize(connectionsFile.c_str(), rc);
    FACE::Return_Code_Value_No_Error(__FILE__, __LINE__, "cannot join the bus", rc);
    return tss;
}

BusListener::BusListener(const std::shared_ptr<FACE::TSS::KD_TSS>& tss)
    : position(tss, "PositionVelocity"),
      receiverStatus(tss, "ReceiverStatus"),
      channelStatus(tss, "ChannelStatus"),
      gpsTime(tss, "GPSTime"),
      utcTime(tss, "UTCTime"),
      utcDownlink(tss, "UtcDownlink"),
      cryptoStatus(tss, "GPSCryptoStatus"),
      lineOfSight(tss, "GPSLineOfSight"),
      svStatus(tss, "SVStatus"),
      environment(tss, "ChallengedEnvironment"),
      command(tss, "Command"),
      response(tss, "Response"),
      events(tss, "EventLog"),
      maintenance(tss, "MaintenanceEvent") {
}

std::vector<std::string> BusListener::eventTexts() const {
    std::vector<std::string> result;
    for (const auto& event : events.samples()) {
        result.push_back(event.eventlog());
    }
    return result;
}

std::vector<std::string> BusListener::texts(
    const Topic<aspn2_msgs::idl::CommandResponse>& commandsOrResponses) {
    std::vector<std::string> result;
    for (const auto& sample : commandsOrResponses.samples()) {
        result.push_back(sample.command_response());
    }
    return result;
}
