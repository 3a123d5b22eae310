// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/FrameJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/gssip/Streams.h"

namespace {

using Frames::Bytes;
using Frames::frame;
using Frames::header;
using Streams::bytesOfText;
using ::testing::HasSubstr;
using Tools::Json;

std::vector<uint16_t> words(unsigned count,
                            std::initializer_list<std::pair<unsigned, unsigned>> set) {
    std::vector<uint16_t> data(count);
    for (const auto& [i, value] : set) {
        data[i] = static_cast<uint16_t>(value);
    }
    return data;
}

std::string refusal(const std::string& line) {
    try {
        bytesOfText(line);
    } catch (const std::invalid_argument& problem) {
        return problem.what();
    }
    return "";
}

// --- what a person writes by hand

TEST(HandWritten, FieldsAreEnoughForAFrame) {
    EXPECT_EQ(bytesOfText(R"({"id":5001,"fields":{"command":5}})"), Golden::kStandbyCommand);
    EXPECT_EQ(
        bytesOfText(R"({"id":5402,"fields":{"selection":["cvZeroize"],"validity":["cvZeroize"]}})"),
        Golden::kCvZeroize);
}

TEST(HandWritten, AnIdAloneIsAHeader) {
    EXPECT_EQ(bytesOfText(R"({"id":8504,"flags":["marker","ack-request","connect"]})"),
              Golden::kConnect8504);
    EXPECT_EQ(bytesOfText(R"({"id":9225,"flags":"0x9010"})"), Golden::kRequest9225);
    EXPECT_EQ(bytesOfText(R"({"id":8504,"flags":34816})"), Golden::kAcknowledge8504);
}

TEST(HandWritten, FlagsDefaultToMarkerAndAckRequest) {
    EXPECT_EQ(bytesOfText(R"({"id":1})"), header(1, 0, 0x9000));
}

TEST(HandWritten, RawWordsMakeAnUnknownMessageAsLongAsTheyAre) {
    EXPECT_EQ(bytesOfText(R"({"id":77,"raw":{"1":"12ab 3","4":"FFFF"}})"),
              frame(77, {0, 0x12AB, 3, 0, 0xFFFF}, 0x9000));
    EXPECT_EQ(bytesOfText(R"({"id":77,"words":3})"), frame(77, {0, 0, 0}, 0x9000));
}

TEST(HandWritten, RawWordsMayMakeAKnownMessageLonger) {
    EXPECT_EQ(bytesOfText(R"({"id":8080,"raw":{"6":"0001"}})"),
              frame(8080, {0, 0, 0, 0, 0, 0, 1}, 0x9000));
}

TEST(HandWritten, BytesGoOutAsTheyAre) {
    EXPECT_EQ(bytesOfText(R"({"bytes":"ff81 00aB"})"), (Bytes{0xFF, 0x81, 0x00, 0xAB}));
    EXPECT_EQ(bytesOfText(R"({"type":"bytes","bytes":""})"), Bytes());
}

TEST(HandWritten, ASummaryIsNoBytes) {
    EXPECT_EQ(bytesOfText(R"({"type":"summary","anything":1})"), Bytes());
}

// --- which wins

TEST(Precedence, AFieldWinsOverRawWordsThatSayOtherwise) {
    EXPECT_EQ(bytesOfText(R"({"id":8080,"fields":{"word5":7},"raw":{"4":"ffe0 1234"}})"),
              frame(8080, words(6, {{4, 0xFFE0}, {5, 7}}), 0x9000));
}

TEST(Precedence, RawWordsStayWhereAFieldSaysTheSame) {
    // The low three bits of a PDP double are below a double: 0x4080 and a last word of 5 are 0.5...
    const Bytes exact = frame(8080, words(6, {{0, 0x4080}, {3, 5}}), 0x9000);
    const Json json = Streams::jsonOf(exact);
    EXPECT_EQ(json["fields"]["time"], 0.5 * 2);
    EXPECT_EQ(GssipTool::bytesOf(json), exact);
}

TEST(Precedence, AFieldOfSomeBitsLeavesTheOtherBitsOfItsRawWord) {
    EXPECT_EQ(bytesOfText(R"({"id":5404,"fields":{"ipZeroizeStatus":1},"raw":{"5":"ffef"}})"),
              frame(5404, words(60, {{5, 0xFFDF}}), 0x9000));
}

TEST(Precedence, ChecksumsThatAreGivenStand) {
    Bytes expected = frame(8080, {0, 0, 0, 0, 0, 1}, 0x9000);
    expected[22] = 0x34;
    expected[23] = 0x12;
    EXPECT_EQ(bytesOfText(R"({"id":8080,"fields":{"word5":1},"data_checksum":"0x1234"})"),
              expected);
    Bytes bad = header(8080, 0, 0x9000);
    bad[8] = 1;
    bad[9] = 0;
    EXPECT_EQ(bytesOfText(R"({"id":8080,"header_checksum":1})"), bad);
}

// --- what JSON says of a piece

TEST(ToJson, GivesPlaceTimeAndHeader) {
    GssipTool::Piece piece = Streams::pieces(Golden::kConnect8504).at(0);
    piece.offset = 99;
    EXPECT_EQ(
        toJson(piece, 1234567890123456789, false).dump(),
        R"({"type":"frame","offset":99,"time_ns":1234567890123456789,"id":8504,)"
        R"("title":"navigation solution","flags":["marker","ack-request","connect"],"words":0})");
}

TEST(ToJson, GivesUnnamedBitsOfTheFlagsAsANumber) {
    EXPECT_EQ(Streams::jsonOf(header(5, 0, 0x800F))["flags"], (Json{"marker", "0x000F"}));
}

TEST(ToJson, GivesRawOnlyWhatTheFieldsDoNotTell) {
    const Json json =
        Streams::jsonOf(frame(5404, words(60, {{5, 0x20}, {7, 0xAB}, {8, 1}, {30, 2}})));
    EXPECT_EQ(json["fields"]["ipZeroizeStatus"], 2);
    EXPECT_EQ(json["raw"], (Json{{"7", "00ab 0001"}, {"30", "0002"}}));
}

TEST(ToJson, GivesAllWordsOnRequest) {
    const auto piece = Streams::pieces(frame(8080, {1, 2, 3, 4, 5, 6})).at(0);
    EXPECT_EQ(toJson(piece, std::nullopt, true)["raw"],
              (Json{{"0", "0001 0002 0003 0004 0005 0006"}}));
}

TEST(ToJson, GivesSkippedBytesWithTheirFaults) {
    Bytes bad = frame(8080, {1, 2, 3, 4, 5, 6});
    bad[10] = 9;
    const Json json = toJson(Streams::pieces(bad).at(0), std::nullopt, false);
    EXPECT_EQ(json["type"], "bytes");
    EXPECT_EQ(json["count"], 24);
    EXPECT_EQ(json["faults"].dump(),
              R"([{"fault":"data checksum","offset":0,"id":8080,"words":6}])");
    EXPECT_THAT(json["bytes"].get<std::string>(), ::testing::StartsWith("ff81901f0600"));
}

TEST(ToJson, GivesTheFieldsThatLieWholeInAShortMessage) {
    const Json json = Streams::jsonOf(frame(5001, {0, 0, 0, 0, 5, 64}));
    EXPECT_EQ(json["fields"].dump(), R"({"time":0.0,"command":5,"extendedSelector":64})");
}

// --- what is refused, and with which words

TEST(Refusal, NamesWhatIsWrong) {
    const std::pair<const char*, const char*> kWrong[] = {
        {"[]", "wants an object"},
        {"5", "wants an object"},
        {"null", "wants an object"},
        {"{}", "id is missing"},
        {R"({"type":"frames"})", "none of frame, bytes and summary"},
        {R"({"type":7})", "none of frame, bytes and summary"},
        {R"({"type":"bytes"})", "bytes is missing"},
        {R"({"id":65536})", "id is out of range"},
        {R"({"id":-1})", "id is out of range"},
        {R"({"id":1.5})", "id wants a whole number"},
        {R"({"id":1e300})", "id is out of range"},
        {R"({"id":"x"})", "id wants a number"},
        {R"({"id":"010 "})", "id wants a number"},
        {R"({"id":"0x"})", "id wants a number"},
        {R"({"id":"0x-1"})", "id wants a number"},
        {R"({"id":null})", "id wants a number"},
        {R"({"id":[1]})", "id wants a number"},
        {R"({"id":1,"wrods":3})", "\"wrods\" is not known here"},
        {R"({"id":1,"bytes":"00"})", "\"id\" is not known here"},
        {R"({"id":1,"words":70000})", "words is out of range"},
        {R"({"id":1,"flags":["makrer"]})", "flags wants a number, not \"makrer\""},
        {R"({"id":1,"flags":[["marker"]]})", "flags wants a number"},
        {R"({"id":1,"flags":65536})", "flags is out of range"},
        {R"({"id":1,"raw":[]})", "raw wants an object"},
        {R"({"id":1,"raw":{"0":1}})", "raw wants texts"},
        {R"({"id":1,"raw":{"x":"00"}})", "no number of a data word"},
        {R"({"id":1,"raw":{"-1":"00"}})", "no number of a data word"},
        {R"({"id":1,"raw":{"":"00"}})", "no number of a data word"},
        {R"({"id":1,"raw":{"65535":"00"}})", "no number of a data word"},
        {R"({"id":1,"raw":{"65534":"00 00"}})", "beyond the last word"},
        {R"({"id":1,"raw":{"0":"10000"}})", "no word in hexadecimal"},
        {R"({"id":1,"raw":{"0":"-1"}})", "no word in hexadecimal"},
        {R"({"id":1,"raw":{"0":"0x1"}})", "no word in hexadecimal"},
        {R"({"id":1,"words":1,"raw":{"1":"00"}})", "beyond the last word"},
        {R"({"id":1,"fields":{"a":1}})", "no fields of this message are known"},
        {R"({"id":8504,"fields":[]})", "fields wants an object"},
        {R"({"id":8504,"fields":{"latitud":1}})", "field \"latitud\" is not known"},
        {R"({"id":8504,"fields":{"latitude":"north"}})", "field \"latitude\" wants a number"},
        {R"({"id":8504,"fields":{"latitude":1e300}})", "does not fit the number format"},
        {R"({"id":8504,"fields":{"latitude":1e-300}})", "does not fit the number format"},
        {R"({"id":8504,"fields":{"latitude":"NaN"}})", "does not fit the number format"},
        {R"({"id":8504,"fields":{"latitude":"Infinity"}})", "does not fit the number format"},
        {R"({"id":8504,"fields":{"altitude":1e39}})", "does not fit the number format"},
        {R"({"id":8504,"fields":{"altitude":1e-45}})", "does not fit the number format"},
        {R"({"id":9391,"fields":{"firstSigma":1e39}})", "does not fit the number format"},
        {R"({"id":8504,"fields":{"noSolution":1}})", "wants true or false"},
        {R"({"id":8504,"fields":{"bits48at0":16}})", "\"bits48at0\" is out of range: 0 to 15"},
        {R"({"id":8504,"fields":{"hdop":6553.6}})", "\"hdop\" is out of range: 0 to 6553.5"},
        {R"({"id":8504,"fields":{"word49":true}})", "wants a number"},
        {R"({"id":7270,"fields":{"secondRateCorrection":16}})",
         "is out of range: -16 to 15.9990234375 m/s"},
        {R"({"id":7270,"fields":{"expectedRangeError":3}})", "3 is none of 2, 2.8, 4"},
        {R"({"id":8504,"fields":{"channels":{}}})", "channels wants a list"},
        {R"({"id":8504,"fields":{"channels":[1]}})", "channels[0] wants an object"},
        {R"({"id":8504,"fields":{"channels":[{},{"prn":256}]}})",
         "channels[1] \"prn\" is out of range"},
        {R"({"id":8040,"fields":{"keys":[{},{},{},{}]}})", "keys has more records"},
        {R"({"id":8504,"words":76,"fields":{"channels":[{},{}]}})", "channels has more records"},
        {R"({"id":8504,"words":8,"fields":{"latitude":1}})", "lies beyond the last word"},
        {R"({"id":5044,"fields":{"text":5}})", "\"text\" wants a text"},
        {R"({"id":5044,"fields":{"text":"123456789012345678901234567890123"}})",
         "is longer than 32 characters"},
        {R"({"id":5044,"fields":{"text":"€"}})", "a character that is no byte"},
        {R"({"id":5044,"fields":{"text":"a\u0000b"}})", "has a zero character"},
        {R"({"id":1,"data_checksum":0})", "a frame without data has none"},
        {R"({"id":1,"header_checksum":"no"})", "header_checksum wants a number"},
        {R"({"bytes":"123"})", "odd number of digits"},
        {R"({"bytes":"0g"})", "no hexadecimal digit"},
        {R"({"bytes":5})", "wants a text"},
    };
    for (const auto& [line, why] : kWrong) {
        EXPECT_THAT(refusal(line), HasSubstr(why)) << line;
    }
}

TEST(Refusal, LeavesTheSmallestAndLargestValuesAlone) {
    EXPECT_EQ(bytesOfText(R"({"id":7270,"fields":{"secondRateCorrection":-16}})"),
              frame(7270, words(59, {{42, 0x8000}}), 0x9000));
    EXPECT_EQ(bytesOfText(R"({"id":7270,"fields":{"secondRateCorrection":15.9990234375}})"),
              frame(7270, words(59, {{42, 0x7FFE}}), 0x9000));
    EXPECT_EQ(bytesOfText(R"({"id":9391,"fields":{"gpsTimeOfWeek":-2147483648}})"),
              frame(9391, words(84, {{15, 0x8000}}), 0x9000));
    EXPECT_EQ(bytesOfText(R"({"id":8504,"fields":{"hdop":6553.5}})"),
              frame(8504, words(200, {{55, 0xFFFF}}), 0x9000));
}

TEST(Numbers, AreTakenFromTextsInHexadecimal) {
    EXPECT_EQ(bytesOfText(R"({"id":"0x1F90","fields":{"word5":"0xABCD"}})"),
              frame(8080, words(6, {{5, 0xABCD}}), 0x9000));
}

TEST(Numbers, OfIeeeFormMayBeNoNumber) {
    EXPECT_EQ(bytesOfText(R"({"id":9391,"fields":{"clockBiasError":"-Infinity"}})"),
              frame(9391, words(84, {{35, 0xFFF0}}), 0x9000));
    const Bytes infinite = frame(9391, words(84, {{37, 0x7F80}}));
    EXPECT_EQ(Streams::jsonOf(infinite)["fields"]["clockBiasErrorRate"], "Infinity");
}

TEST(Numbers, KeepTheSignOfZero) {
    EXPECT_EQ(bytesOfText(R"({"id":9391,"fields":{"clockBiasError":-0.0}})"),
              frame(9391, words(84, {{35, 0x8000}}), 0x9000));
}

TEST(Texts, GoThroughWithBytesBeyondAscii) {
    const Bytes latin = frame(5044, words(21, {{5, 0xE441}, {6, 0xFF42}}), 0x9000);
    EXPECT_EQ(Streams::jsonOf(latin)["fields"]["text"], "\u00E4A\u00FFB");
    EXPECT_EQ(bytesOfText(R"({"id":5044,"fields":{"text":"äAÿB"}})"), latin);
}

}  // namespace
