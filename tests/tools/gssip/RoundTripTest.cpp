// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/tools/gssip/Streams.h"
#include "tools/gssip/Catalogue.h"

// Decode and encode are inverse, byte for byte, whatever the bytes are.
namespace {

using Frames::Bytes;
using Frames::operator+;
using GssipTool::catalogue;
using GssipTool::Message;
using Streams::throughJson;
using Tools::Json;

TEST(RoundTrip, OfEveryGoldenFrame) {
    EXPECT_EQ(Streams::golden().size(), 36u);
    for (const Bytes& frame : Streams::golden()) {
        EXPECT_EQ(throughJson(frame), frame);
        EXPECT_EQ(throughJson(frame, true), frame);
    }
}

TEST(RoundTrip, OfNoise) {
    for (unsigned seed = 0; seed < 50; ++seed) {
        const Bytes noise = Streams::noise(seed, 2000);
        ASSERT_TRUE(throughJson(noise) == noise) << seed;
    }
}

TEST(RoundTrip, OfDamagedStreams) {
    const Bytes golden = Streams::joined(Streams::golden());
    for (unsigned seed = 0; seed < 60; ++seed) {
        const Bytes stream = Streams::damaged(golden, seed, seed);
        ASSERT_TRUE(throughJson(stream) == stream) << seed;
    }
}

TEST(RoundTrip, OfAStreamCutOffAnywhere) {
    const Bytes whole = Golden::k8080[0].frame + Golden::kConnect8504 + Golden::k8040[0].frame;
    for (size_t size = 0; size <= whole.size(); ++size) {
        const Bytes stream(whole.begin(), whole.begin() + static_cast<long>(size));
        ASSERT_TRUE(throughJson(stream) == stream) << size;
    }
}

// Numbers of every kind, those without a value among them, and texts of any bytes.
TEST(RoundTrip, OfEveryMessageWithRandomWords) {
    std::mt19937 random(7);
    for (const Message& message : catalogue()) {
        for (unsigned i = 0; i < 100; ++i) {
            const Bytes frame = Frames::randomFrame(random, message.msgId, message.wdcnt);
            ASSERT_TRUE(throughJson(frame) == frame) << message.msgId << ' ' << i;
        }
    }
}

TEST(RoundTrip, OfEveryMessageWithMostWordsZeroOrAllOnes) {
    std::mt19937 random(8);
    constexpr uint16_t kWords[] = {0, 0, 0, 0xFFFF, 0x8000, 0x7F80, 0x7FF0, 0x0080, 0x0001};
    for (const Message& message : catalogue()) {
        for (unsigned i = 0; i < 100; ++i) {
            std::vector<uint16_t> data(message.wdcnt);
            for (uint16_t& word : data) {
                word = kWords[random() % std::size(kWords)];
            }
            const Bytes frame = Frames::frame(message.msgId, data, static_cast<uint16_t>(random()));
            ASSERT_TRUE(throughJson(frame) == frame) << message.msgId << ' ' << i;
        }
    }
}

TEST(RoundTrip, OfMessagesOfUnexpectedLengthAndOfUnknownOnes) {
    std::mt19937 random(9);
    for (const Message& message : catalogue()) {
        for (const unsigned wdcnt : {1u, 4u, 7u, message.wdcnt - 1u, message.wdcnt + 1u}) {
            const Bytes frame =
                Frames::randomFrame(random, message.msgId, static_cast<uint16_t>(wdcnt));
            ASSERT_TRUE(throughJson(frame) == frame) << message.msgId << ' ' << wdcnt;
        }
    }
    for (const uint16_t wdcnt : std::initializer_list<uint16_t>{1, 2, 300, 65535}) {
        const Bytes frame = Frames::randomFrame(random, 12345, wdcnt);
        ASSERT_TRUE(throughJson(frame) == frame) << wdcnt;
        const Bytes empty = Frames::frame(12345, std::vector<uint16_t>(wdcnt));
        ASSERT_TRUE(throughJson(empty) == empty) << wdcnt;
    }
}

// Where the fields tell everything, no raw word is needed beside them.
TEST(RoundTrip, NeedsNoRawWordsForWhatTheFieldsTell) {
    for (const Bytes* frame :
         {&Golden::kMistCommand, &Golden::kLineSpeed115200, &Golden::kSentences,
          &Golden::kReceiverSetup, &Golden::kCvZeroize, &Golden::kMission84}) {
        EXPECT_FALSE(Streams::jsonOf(*frame).contains("raw"));
    }
}

// A number and a text that differ from what any frame of the tests holds there.
Json changed(const Json& value) {
    if (value.is_boolean()) {
        return !value.get<bool>();
    }
    if (value.is_number_integer()) {
        return value == 1 ? 0 : 1;
    }
    if (value.is_array()) {
        return value.empty() ? Json{"0x0400"} : Json::array();
    }
    const bool isText =
        value.is_string() && value != "NaN" && value != "Infinity" && value != "-Infinity";
    return isText ? Json(value == "x" ? "y" : "x") : Json(value == 4.0 ? 2.0 : 4.0);
}

void expectEditShows(const Bytes& frame, const Json& edited, const Json::json_pointer& field) {
    const Bytes bytes = GssipTool::bytesOf(edited);
    ASSERT_TRUE(bytes != frame) << field;
    const Json again = Streams::jsonOf(bytes);  // a good frame: the checksum follows
    ASSERT_TRUE(again.contains(field)) << field;
    EXPECT_EQ(again[field], edited[field]) << field;
    // And nothing else has changed.
    Json fields = again["fields"];
    Json expected = edited["fields"];
    EXPECT_EQ(fields.dump(), expected.dump()) << field;
}

TEST(Edit, OfEveryFieldOfEveryMessageChangesTheFieldAndNothingElse) {
    std::mt19937 random(10);
    unsigned edits = 0;
    for (const Message& message : catalogue()) {
        const Bytes frame = Frames::randomFrame(random, message.msgId, message.wdcnt);
        const Json json = Streams::jsonOf(frame);
        const Json flat = json["fields"].flatten();
        for (const auto& [path, value] : flat.items()) {
            // Of a list of flags, the list is the field.
            const bool isFlag =
                json["fields"][Json::json_pointer(path).parent_pointer()].is_array();
            const Json::json_pointer within(path);
            const Json::json_pointer field =
                Json::json_pointer("/fields") / (isFlag ? within.parent_pointer() : within);
            Json edited = json;
            // All other numbers may be 2 and 4; this one stays below 1.
            edited[field] = field.back() == "deltaRangeSigma" ? Json(0.5) : changed(json[field]);
            expectEditShows(frame, edited, field);
            ++edits;
        }
    }
    EXPECT_GT(edits, 500u);
}

}  // namespace
