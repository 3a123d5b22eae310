// SPDX-License-Identifier: Apache-2.0
#include "tests/end_to_end/EndToEnd.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

#include "gssip/GssipFrame.h"
#include "simulator/ReceiverMessages.h"

using namespace Simulator;

EndToEnd::EndToEnd(const std::string& variant) : m_deployment(variant) {
    // Nothing is connected or requested: 0 names no message.
    m_deployment.setServer("PARAM_6", "0");
    m_deployment.setServer("PARAM_7", "0");
}

void EndToEnd::startUnit(const std::filesystem::path& listenerConnections) {
    m_bus = std::make_unique<BusListener>(m_deployment.backFilling(
        listenerConnections.empty() ? m_deployment.connectionsFile() : listenerConnections));
    m_unitOptions.configFile = m_deployment.topLevelFile();
    m_unitOptions.server = serverProgram();
    m_unit = std::make_unique<SimulatedUnit>(m_unitOptions);
    m_unit->start();
}

void EndToEnd::startAndWait() {
    startUnit();
    ASSERT_TRUE(waitUntilStarted());
}

bool EndToEnd::waitUntilStarted() {
    return waitUntilSetUp() && waitFor([&] { return bus().command.count() > 0; });
}

bool EndToEnd::waitUntilSetUp() {
    // The command to go to continuous operation, or in a rerad setup the one before it, ends the
    // setup; the receiver answers it, so that the link is free after it.
    return receiver()
        .ledger()
        .said()
        .waitFor(
            [](const SaidFrame& frame) {
                return frame.msgId() == 5001 && (frame.flags() & Gssip::kFlagReply) != 0;
            },
            std::chrono::seconds(30))
        .has_value();
}

ProcessEnd EndToEnd::terminate(int signal) {
    server().signal(signal);
    return waitForEnd();
}

ProcessEnd EndToEnd::waitForEnd() {
    const auto end = server().waitFor(std::chrono::seconds(30));
    EXPECT_TRUE(end.has_value()) << "the server goes on";
    return end.value_or(ProcessEnd{true, 0});
}

std::vector<std::string> EndToEnd::output() {
    return console(false);
}

std::vector<std::string> EndToEnd::errors() {
    return console(true);
}

std::vector<std::string> EndToEnd::console(bool error) {
    std::vector<std::string> lines;
    for (const ConsoleLine& line : server().console().entries()) {
        if (line.error == error) {
            lines.push_back(line.text);
        }
    }
    return lines;
}

std::vector<HeardFrame> EndToEnd::heardFrames() {
    auto frames = receiver().ledger().heard().entries();
    frames.erase(std::remove_if(frames.begin(), frames.end(),
                                [](const HeardFrame& entry) {
                                    return entry.frame.flags() == Gssip::kFlagsAckAnswer;
                                }),
                 frames.end());
    return frames;
}

std::vector<std::string> EndToEnd::heard() {
    std::vector<std::string> frames;
    for (const HeardFrame& entry : heardFrames()) {
        const ScannedFrame& frame = entry.frame;
        char text[64];
        std::snprintf(text, sizeof text, "%u/%04X", unsigned{frame.msgId()},
                      unsigned{frame.flags()});
        frames.emplace_back(frame.kind == ScannedFrame::Kind::Intact ? text : "no frame");
        if (frame.msgId() == 5001) {
            frames.back() += " mode " + std::to_string(frame.data(4));
        } else if (frame.msgId() == 5331) {
            frames.back() += " valid " + std::to_string(frame.data(4)) + " port " +
                             std::to_string(frame.data(6));
        }
    }
    return frames;
}

std::filesystem::path serverProgram() {
    return std::filesystem::path(ROVAN_BINARY_DIR) / "bin" / "RovanServer";
}

double frameAltitude(unsigned number) {
    return 100.0 + number % 1000;
}

Bytes frame8504(unsigned number) {
    NavigationReport report;
    report.time = number;
    report.latitude = 0.5 + number * 1e-6;
    report.longitude = -1.25 + number * 1e-6;
    report.altitude = frameAltitude(number);
    report.eastVelocity = 3.0;
    report.northVelocity = -4.0;
    report.upVelocity = 0.5;
    report.horizontalPositionError = 2 + number % 7;
    report.verticalPositionError = 3;
    report.horizontalVelocityError = 0.25;
    report.verticalVelocityError = 0.5;
    report.hdop = 1.1;
    report.vdop = 1.7;
    report.tdop = 0.9;
    for (unsigned i = 0; i < report.channels.size(); ++i) {
        ChannelReport& channel = report.channels[i];
        channel.prn = i < 12 ? i + 1 : 0;
        channel.channel = i;
        channel.used = i < 9;
        channel.signalCode = 2;
        channel.frequency = 1;
        channel.carrierToNoise = 40;
        channel.tracking = i < 12 ? 5 : 0;
    }
    return makeFrame(8504, Gssip::kFlagFrameMarker, message8504(report));
}
