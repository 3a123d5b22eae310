// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "simulator/ReceiverMessages.h"
#include "tests/tools/gssip/Streams.h"

// What the simulated receiver says, by its own arithmetic, and what decode makes of it.
namespace {

using Simulator::Words;
using Tools::Json;

constexpr double kTime = 345600.625;  // no bit of it is lost in any format

Json fieldsOf(uint16_t msgId, const Words& data) {
    return Streams::jsonOf(Simulator::makeFrame(msgId, 0x9000, data)).at("fields");
}

TEST(OfTheSimulatedReceiver, EveryMessageHasItsTime) {
    EXPECT_EQ(fieldsOf(8, Simulator::messageTimeOnly(kTime)), (Json{{"time", kTime}}));
    EXPECT_EQ(fieldsOf(253, Simulator::messageTimeOnly(kTime)), (Json{{"time", kTime}}));
    EXPECT_EQ(fieldsOf(8504, Simulator::message8504({kTime}))["time"], kTime);
    EXPECT_EQ(fieldsOf(9391, Simulator::message9391({kTime}))["time"], kTime);
    EXPECT_EQ(fieldsOf(9405, Simulator::message9405({kTime}))["time"], kTime);
    EXPECT_EQ(fieldsOf(9225, Simulator::message9225({kTime}))["time"], kTime);
    EXPECT_EQ(fieldsOf(5040, Simulator::message5040({kTime}))["time"], kTime);
    EXPECT_EQ(fieldsOf(8040, Simulator::message8040({kTime}))["time"], kTime);
    EXPECT_EQ(fieldsOf(8080, Simulator::message8080({kTime}))["time"], kTime);
    Simulator::MeasurementReport measurement;
    measurement.time = kTime;
    EXPECT_EQ(fieldsOf(7270, Simulator::message7270(measurement))["time"], kTime);
    EXPECT_EQ(fieldsOf(5047, Simulator::messageSatellites(kTime, {}))["time"], kTime);
    EXPECT_EQ(fieldsOf(5042, Simulator::message5042(kTime, false))["time"], kTime);
    EXPECT_EQ(fieldsOf(5404, Simulator::message5404(kTime, 0))["time"], kTime);
    EXPECT_EQ(fieldsOf(5044, Simulator::message5044(kTime, 0, ""))["time"], kTime);
    EXPECT_EQ(fieldsOf(30409, Simulator::message30409({kTime}))["time"], kTime);
}

TEST(OfTheSimulatedReceiver, VersionIdentifiers) {
    EXPECT_EQ(fieldsOf(9225, Simulator::message9225({})),
              (Json{{"time", 0.0},
                    {"buildMonth", 9},
                    {"buildDay", 18},
                    {"buildYear", 24},
                    {"buildHour", 13},
                    {"buildMinute", 48},
                    {"buildSecond", 46},
                    {"PAP_SW_Build", "SIM-PAP-1.0"},
                    {"PAP_Boot_Build", "SIM-PAPBOOT-1.0"},
                    {"PSP_SW_Build", "SIM-PSP-1.0"},
                    {"PSP_Boot_Build", "SIM-PSPBOOT-1.0"},
                    {"bootFlag", 1},
                    {"HPN_PAP_SW", "100-1001-001"},
                    {"HPN_PAP_Boot", "100-1002-001"},
                    {"HPN_PSP_SW", "100-1003-001"},
                    {"HPN_PSP_Boot", "100-1004-001"},
                    {"HPN_Civil_Boot", "100-1005-001"},
                    {"HPN_Civil_App", "100-1006-001"},
                    {"HPN_FPGA", "100-1007-001"},
                    {"HPN_HW", "SIM-A"},
                    {"HPN_BSL", "100-1008-001"},
                    {"FCM_ID", "SIM00001"}}));
}

TEST(OfTheSimulatedReceiver, ConnectionStatus) {
    Simulator::ConnectionReport report;
    report.clockTurnOnFailed = true;
    report.invalidFpgaSignal = true;
    report.rerad = true;
    EXPECT_EQ(fieldsOf(9405, Simulator::message9405(report)),
              (Json{{"time", 0.0},
                    {"bciFailures", {"BCI_ST_BCI_CLOCK_TRUN_FAIL", "BCI_ST_INVLD_FPGA_SIG"}},
                    {"serialCableDisconnected", false},
                    {"inReRad", true}}));
    report = {};
    report.serialCableDisconnected = true;
    EXPECT_EQ(fieldsOf(9405, Simulator::message9405(report))["serialCableDisconnected"], true);
}

TEST(OfTheSimulatedReceiver, EventsAndStates) {
    EXPECT_EQ(fieldsOf(5044, Simulator::message5044(0, 34, "KEYS LOADED")),
              (Json{{"time", 0.0}, {"eventId", 34}, {"text", "KEYS LOADED"}}));
    EXPECT_EQ(fieldsOf(5404, Simulator::message5404(0, 2))["ipZeroizeStatus"], 2);
    EXPECT_EQ(fieldsOf(5042, Simulator::message5042(0, true))["isDtsCom1"], true);
    const Json keys = fieldsOf(5040, Simulator::message5040({0, 5, 77, 3}));
    EXPECT_EQ(keys["operatingMode"], 5);
    EXPECT_EQ(keys["remainingKeyTime"], 77);
    EXPECT_EQ(keys["cryptoState"], 3);
}

TEST(OfTheSimulatedReceiver, TheNavigationSolution) {
    Simulator::NavigationReport report;
    report.latitude = 0.75;
    report.longitude = -1.5;
    report.altitude = 123.5;
    report.eastVelocity = 1.25;
    report.northVelocity = -2.5;
    report.upVelocity = 0.5;
    report.verticalVelocityError = 2.03125;
    report.tdop = 1.7;
    report.noSolution = true;
    report.channels[31] = {7, 31, true, 4, 2, 1, 45, 20, 5};
    const Json fields = fieldsOf(8504, Simulator::message8504(report));
    EXPECT_EQ(fields["latitude"], 0.75);
    EXPECT_EQ(fields["longitude"], -1.5);
    EXPECT_EQ(fields["altitude"], 123.5);
    EXPECT_EQ(fields["eastVelocity"], 1.25);
    EXPECT_EQ(fields["northVelocity"], -2.5);
    EXPECT_EQ(fields["upVelocity"], 0.5);
    EXPECT_EQ(fields["verticalVelocityError"], 2.03125);
    EXPECT_EQ(fields["tdop"], 1.7);
    EXPECT_EQ(fields["noSolution"], true);
    EXPECT_EQ(fields["receiverFailure"], false);
    EXPECT_EQ(fields["channels"][31], (Json{{"prn", 7},
                                            {"channel", 31},
                                            {"usedInSolution", true},
                                            {"signalCode", 4},
                                            {"frequency", 2},
                                            {"assured", 1},
                                            {"carrierToNoise", 45},
                                            {"jammerToSignal", 40.0},
                                            {"trackingStatus", 5}}));
}

}  // namespace
