// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fastdds/dds/topic/TopicDataType.hpp>

#include <iterator>
#include <limits>

#include "face/KD_Topic_Helpers.h"
#include "tests/aspn2_msgs/Golden.h"
#include "tests/aspn2_msgs/SampleMessages.h"
#include "tools/bus/Json.h"
#include "tools/bus/Message.h"
#include "tools/bus/Text.h"

namespace {

namespace idl = aspn2_msgs::idl;
using Bus::Json;
using ::testing::HasSubstr;

// The message types of the bus, without their modules.
const char* const kTypes[] = {"Altitude",
                              "AssuranceState",
                              "BitEntryStatus",
                              "BitReport",
                              "ChallengedEnvironment",
                              "ChannelStatus",
                              "CommandResponse",
                              "DeltaTimeAndFrequency",
                              "EventLog",
                              "ForwardReverseStatus",
                              "GNSS",
                              "GNSSSubframe",
                              "GPSCryptoStatus",
                              "GPSLineOfSight",
                              "GPSTime",
                              "GSSIP",
                              "IMU",
                              "KeldraPNT",
                              "MaintenanceEvent",
                              "MeasurementIncorporationStatus",
                              "NavigationMode",
                              "PlatformDynamics",
                              "PositionVelocity",
                              "PositionVelocityAttitude",
                              "ReceiverStatus",
                              "SVStatus",
                              "ThreeAxisMagnetometer",
                              "TimeAtTheTone",
                              "TimeSync",
                              "UTCTime",
                              "UtcDownlink",
                              "Velocity3D"};
static_assert(std::size(kTypes) == 32);

class EveryType : public ::testing::TestWithParam<const char*> {
  protected:
    /// A message with every field set, as it comes off the bus.
    std::unique_ptr<Bus::Message> received() const {
        auto message = Bus::makeMessage(std::string("aspn2_msgs::idl::") + GetParam());
        const auto type = FACE::TSS::Topics::GetPubSubType(std::string(GetParam()) + "PubSubType");
        golden::Payload payload(golden::bytes(GetParam(), "little"));
        EXPECT_TRUE(type->deserialize(&payload, message->data()));
        return message;
    }
    Json expected() const { return Json::parse(golden::json(GetParam())); }
};
INSTANTIATE_TEST_SUITE_P(Messages, EveryType, ::testing::ValuesIn(kTypes),
                         [](const auto& type) { return std::string(type.param); });

TEST_P(EveryType, IsKnown) {
    EXPECT_THAT(Bus::knownTypes(),
                ::testing::Contains(std::string("aspn2_msgs::idl::") + GetParam()));
}

TEST_P(EveryType, IsJsonWithEveryFieldInTheOrderOfTheWire) {
    EXPECT_EQ(Bus::toLine(received()->json()), Bus::toLine(expected()));
}

// What the text must show of a value: in objects and lists of them every field on its own.
void expectShown(const std::string& text, const std::string& name, const Json& value);

std::string shown(const Json& value) {
    if (value == "Infinity") {
        return "inf";
    }
    if (value.is_number_float()) {
        return fmt::format("{}", value.get<double>());
    }
    return value.dump();
}

void expectListShown(const std::string& text, const std::string& name, const Json& list) {
    if (list.front().is_structured()) {
        for (size_t i = 0; i < list.size(); ++i) {
            expectShown(text, fmt::format("[{}]", i), list[i]);
        }
        return;
    }
    const bool isBytes = list.front().is_number_integer();
    std::string elements;
    for (const Json& element : list) {
        elements += elements.empty() ? "" : isBytes ? " " : ", ";
        elements += isBytes ? fmt::format("{:02x}", element.get<int>()) : shown(element);
    }
    EXPECT_THAT(
        text, HasSubstr(isBytes ? fmt::format("{}: {} bytes\n    {}\n", name, list.size(), elements)
                                : fmt::format("{}: [{}]", name, elements)));
}

void expectShown(const std::string& text, const std::string& name, const Json& value) {
    EXPECT_THAT(text, HasSubstr(name + ':'));
    if (value.is_object()) {
        for (const auto& [field, fieldValue] : value.items()) {
            expectShown(text, field, fieldValue);
        }
    } else if (value.is_array()) {
        expectListShown(text, name, value);
    } else {
        EXPECT_THAT(text, HasSubstr(name + ": " + shown(value)));
    }
}

TEST_P(EveryType, IsTextWithEveryField) {
    const std::string text = received()->text();
    const Json message = expected();
    for (const auto& [name, value] : message.items()) {
        expectShown(text, name, value);
    }
}

TEST_P(EveryType, BeginsWithAHeaderThatCanBeSet) {
    const auto message = Bus::makeMessage(std::string("aspn2_msgs::idl::") + GetParam());

    message->header().seq_num(7);

    EXPECT_EQ(message->json()["header"]["seq_num"], 7);
    EXPECT_THAT(message->text(), HasSubstr("seq_num: 7\n"));
}

TEST(MessageTable, KnowsNoOtherType) {
    EXPECT_EQ(Bus::knownTypes().size(), std::size(kTypes));
    for (const char* name : {"", "EventLog", "aspn2_msgs::idl::Unheard", "aspn2_msgs::idl::header",
                             "aspn2_msgs::idl::sv_set"}) {
        EXPECT_EQ(Bus::makeMessage(name), nullptr) << name;
    }
}

TEST(Fields, FillARecordThatIsNotConst) {
    const auto source = samples::make<idl::ReceiverStatus>();
    idl::ReceiverStatus target = source;

    Bus::Fields<idl::ReceiverStatus>::each(target, [](const char*, auto& field) { field = {}; });

    EXPECT_FALSE(target == source);
    EXPECT_TRUE(target == idl::ReceiverStatus());
}

TEST(Json, WritesCharacterArraysWithoutATerminatorWhole) {
    idl::MaintenanceEvent unterminated;
    unterminated.identity().fill('x');
    EXPECT_EQ(Bus::toJson(unterminated)["identity"], std::string(16, 'x'));
}

TEST(Json, KeepsTheOrderOfTheFields) {
    EXPECT_EQ(Bus::toLine(Bus::toJson(samples::make<idl::sv_set>())),
              R"({"svid":31,"rinex3_gnss_enum":0,"healthy":true,"azimuth":359,"elevation":-5,)"
              R"("rising":false})");
}

TEST(Json, HasAWordForEachNumberThatIsNone) {
    EXPECT_EQ(Bus::numberToJson(std::numeric_limits<double>::infinity()), "Infinity");
    EXPECT_EQ(Bus::numberToJson(-std::numeric_limits<double>::infinity()), "-Infinity");
    EXPECT_EQ(Bus::numberToJson(std::numeric_limits<double>::quiet_NaN()), "NaN");
    EXPECT_EQ(Bus::numberToJson(0.1).dump(), "0.1");
}

TEST(Json, StaysOneValidLineWhateverATextHolds) {
    idl::EventLog message;
    message.eventlog("a\"b\nc\\ \xff\x80");
    const std::string line = Bus::toLine(Bus::toJson(message));

    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_THAT(Json::parse(line)["eventlog"].get<std::string>(), HasSubstr("a\"b\nc\\ "));
}

TEST(Text, ShowsEveryFieldOnALine) {
    EXPECT_EQ(Bus::toText(samples::make<idl::ReceiverStatus>(), 2),
              "  header:\n"
              "    seq_num: 72623859790382856\n"
              "    timestamp_arrival: {sec: 1230066625199609624, nsec: 555885348, time_code: 100}\n"
              "    timestamp_valid: {sec: -2, nsec: 1094861636, time_code: 101}\n"
              "    device_id: 19333893  (0x01270305: system 1, server 39 Rovan, code 3, sub id 5)\n"
              "  rcvr_fail: true\n"
              "  num_satellites_avail: 11\n"
              "  num_satellites_used: 9\n"
              "  pdop: 1.75\n"
              "  tdop: 0.875\n");
}

TEST(Text, ShowsMatricesRowByRow) {
    const std::string text = Bus::toText(samples::make<idl::UTCTime>(), 0);
    EXPECT_THAT(text, HasSubstr("covariance: 2 elements\n  [0]: [inf, 0]\n  [1]: [-0, inf]\n"));
}

TEST(Text, ShowsBytesInHexadecimal) {
    idl::GSSIP message;
    for (uint8_t i = 0; i < 18; ++i) {
        message.data().push_back(i);
    }
    EXPECT_THAT(Bus::toText(message, 0),
                HasSubstr("data: 18 bytes\n"
                          "  00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f\n"
                          "  10 11\n"));
}

TEST(Text, WrapsRecordsThatAreTooLongForALine) {
    const std::string text = Bus::toText(samples::make<idl::ChannelStatus>(), 2);

    EXPECT_THAT(text, HasSubstr("    [0]: {prn: 7, channel: 1, rinex3_satellite_system: 0, "));
    EXPECT_THAT(text, HasSubstr("\n          "));
    EXPECT_THAT(text, HasSubstr("assurance_level: 4294967294}\n"));
    size_t begin = 0;
    for (size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        EXPECT_LE(end - begin, 102u) << text.substr(begin, end - begin);
    }
}

TEST(Text, LetsNoTextSteerTheTerminal) {
    EXPECT_EQ(Bus::inQuotes("plain, 100%"), "\"plain, 100%\"");
    EXPECT_EQ(Bus::inQuotes("\x1b[2J\n\"\\\x7f\xc2\x9b"), R"("\x1b[2J\x0a\"\\\x7f\xc2\x9b")");
}

}  // namespace
