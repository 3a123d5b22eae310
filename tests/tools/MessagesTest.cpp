// SPDX-License-Identifier: Apache-2.0
#include <fastcdr/Cdr.h>
#include <fastcdr/FastBuffer.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/aspn2_msgs/SampleMessages.h"
#include "tools/bus/Json.h"
#include "tools/bus/Message.h"
#include "tools/bus/Text.h"

namespace {

namespace idl = aspn2_msgs::idl;
using Bus::Json;
using eprosima::fastcdr::Cdr;
using ::testing::HasSubstr;

// Writes a record field by field as the table has them.
template <typename T>
void putFields(Cdr& cdr, const T& value) {
    if constexpr (Bus::isRecord<T>) {
        Bus::Fields<T>::each(value,
                             [&cdr](const char*, const auto& field) { putFields(cdr, field); });
    } else if constexpr (std::is_enum_v<T>) {
        cdr << static_cast<uint32_t>(value);
    } else {
        cdr << value;
    }
}

template <typename PUT>
std::string bytesOf(PUT put) {
    std::vector<char> bytes(4096);
    eprosima::fastcdr::FastBuffer buffer(bytes.data(), bytes.size());
    Cdr cdr(buffer, Cdr::LITTLE_ENDIANNESS, Cdr::DDS_CDR);
    put(cdr);
    return std::string(bytes.data(), cdr.getSerializedDataLength());
}

template <typename T>
class FieldTable : public ::testing::Test {};
using AllTypes =
    ::testing::Types<idl::header, idl::PositionVelocity, idl::ReceiverStatus,
                     idl::channel_status_obs, idl::ChannelStatus, idl::GPSTime, idl::UTCTime,
                     idl::UtcDownlink, idl::interference_type_set, idl::ChallengedEnvironment,
                     idl::key_type_set, idl::GPSCryptoStatus, idl::gpslos_obs, idl::GPSLineOfSight,
                     idl::sv_set, idl::SVStatus, idl::CommandResponse, idl::EventLog,
                     idl::lru_comp_set, idl::MaintenanceEvent, idl::GSSIP>;
TYPED_TEST_SUITE(FieldTable, AllTypes);

// The generated code knows nothing of the table: if both write the same bytes, no field is missing,
// doubled or out of order.
TYPED_TEST(FieldTable, HasEveryFieldInTheOrderOfTheWire) {
    const auto record = samples::make<TypeParam>();
    const std::string generated = bytesOf([&record](Cdr& cdr) { record.serialize(cdr); });

    EXPECT_EQ(bytesOf([&record](Cdr& cdr) { putFields(cdr, record); }), generated);
}

TYPED_TEST(FieldTable, FillsARecordThatIsNotConst) {
    const auto source = samples::make<TypeParam>();
    std::vector<std::string> names;
    TypeParam target;
    Bus::Fields<TypeParam>::each(target, [&names](const char* name, auto& field) {
        names.emplace_back(name);
        field = {};
    });
    EXPECT_FALSE(names.empty());
    EXPECT_TRUE(target == TypeParam());
    EXPECT_FALSE(source == target);
}

const char* const kHeaderJson = R"({
    "seq_num": 72623859790382856,
    "timestamp_arrival": {"sec": 1230066625199609624, "nsec": 555885348, "time_code": 100},
    "timestamp_valid": {"sec": -2, "nsec": 1094861636, "time_code": 101},
    "device_id": 19333893})";

Json withHeader(const std::string& fields) {
    return Json::parse(std::string("{\"header\": ") + kHeaderJson + ", " + fields + '}');
}

TEST(Json, WritesNumbersAndFlags) {
    EXPECT_EQ(Bus::toJson(samples::make<idl::ReceiverStatus>()), withHeader(R"(
        "rcvr_fail": true, "num_satellites_avail": 11, "num_satellites_used": 9,
        "pdop": 1.75, "tdop": 0.875)"));
}

TEST(Json, WritesMatricesRowByRowAndInfinitiesAsText) {
    EXPECT_EQ(Bus::toJson(samples::make<idl::UTCTime>()), withHeader(R"(
        "gps_tow_sec": 604799, "gps_tow_nsec": 123456789.25, "gps_week": 2345,
        "utc_tod_sec": 86400, "utc_tod_nsec": 5e8, "a1": -4.5e-15,
        "covariance": [["Infinity", 0.0], [-0.0, "Infinity"]])"));
}

TEST(Json, WritesSequencesOfRecordsWithUnlistedEnumerations) {
    EXPECT_EQ(Bus::toJson(samples::make<idl::GPSCryptoStatus>()), withHeader(R"(
        "num_key_types": 2,
        "key_types": [
            {"key_type": 9, "remaining_key_time": 86400, "key_status": 5, "key_load_status": 2,
             "key_zeroization_status": 3},
            {"key_type": 100, "remaining_key_time": -1, "key_status": 101, "key_load_status": 102,
             "key_zeroization_status": 103}])"));
}

TEST(Json, WritesCharacterArraysUpToTheTerminator) {
    EXPECT_EQ(Bus::toJson(samples::make<idl::MaintenanceEvent>()), withHeader(R"(
        "fault_sources": [{"lru_id": 39, "component_id": -7}, {"lru_id": 1, "component_id": 2},
                          {"lru_id": 3, "component_id": 4}, {"lru_id": 0, "component_id": 0}],
        "criticality_id": 5, "category_id": 6, "location_id": 7, "outcome_id": 8,
        "repeat_in_seconds": 3600, "identity": "GPS", "description": "receiver failed")"));

    idl::MaintenanceEvent unterminated;
    unterminated.identity().fill('x');
    EXPECT_EQ(Bus::toJson(unterminated)["identity"], std::string(16, 'x'));
}

TEST(Json, WritesTextsAndBytes) {
    EXPECT_EQ(Bus::toJson(samples::make<idl::CommandResponse>()), withHeader(R"(
        "commanded_device_id": 34669056, "command_identifier": -17, "command_response_type": 1,
        "command_response": "REQUEST_CBIT_PASS")"));
    EXPECT_EQ(Bus::toJson(samples::make<idl::GSSIP>()), withHeader(R"(
        "num_bytes": 5, "data": [129, 0, 255, 127, 10])"));
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

TEST(MessageTable, MakesEachTypeByItsName) {
    for (const std::string& type : Bus::knownTypes()) {
        const auto message = Bus::makeMessage(type);
        ASSERT_NE(message, nullptr) << type;
        message->header().seq_num(7);
        EXPECT_EQ(message->json()["header"]["seq_num"], 7) << type;
        EXPECT_THAT(message->text(), HasSubstr("seq_num: 7\n")) << type;
    }
    EXPECT_GE(Bus::knownTypes().size(), 14u);
    EXPECT_EQ(Bus::makeMessage("aspn2_msgs::idl::Unheard"), nullptr);
    EXPECT_EQ(Bus::makeMessage(""), nullptr);
}

}  // namespace
