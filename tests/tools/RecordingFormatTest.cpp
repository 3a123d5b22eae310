// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/aspn2_msgs/Golden.h"
#include "tests/tools/TestPublisher.h"
#include "tools/bus/Codec.h"
#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/RecordingContents.h"
#include "tools/bus/RecordingFormat.h"
#include "tools/bus/RecordingReader.h"
#include "tools/bus/RecordingWriter.h"

namespace {

using Bus::Recorded;
using Bus::RecordingContents;
using Bus::RecordingReader;
using Bus::RecordingWriter;
using Bus::UsageError;
using ::testing::HasSubstr;
using Bytes = std::vector<uint8_t>;

// One sample and the end mark, packed and summed by another program.
const std::string kGoldenFile =
    "524f56414e4255530100000000000000"
    "340000009f2c938e"
    "01080706050403020"
    "1feffffffffffffff00002a36fe9c9717"
    "0700000000000000"
    "010054"
    "02005879"
    "010050"
    "05000000"
    "00010000ff"
    "09000000b63c5504"
    "020100000000000000";

Recorded goldenSample() {
    Recorded sample;
    sample.sinceStartNs = 0x0102030405060708;
    sample.sentNs = -2;
    sample.receivedNs = 1'700'000'000'000'000'000;
    sample.sequence = 7;
    sample.topic = "T";
    sample.typeName = "Xy";
    sample.publisher = "P";
    sample.bytes = {0, 1, 0, 0, 0xFF};
    return sample;
}

std::string textOf(const Bytes& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

std::string fromHex(const std::string& hex) {
    std::string text;
    for (size_t i = 0; i < hex.size(); i += 2) {
        text += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return text;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// A record with a good checksum around any body.
std::string recordOf(const Bytes& body) {
    Bytes header;
    Bus::RecordingFormat::put(header, static_cast<uint32_t>(body.size()));
    Bus::RecordingFormat::put(header, Bus::RecordingFormat::crc32(body));
    return textOf(header) + textOf(body);
}

class RecordingFormat : public ::testing::Test {
  protected:
    std::string path() const { return m_directory.file("unused", "") + ".recording"; }

    /// What reading the whole of a file with that content says; empty when it says nothing.
    std::string problemOf(const std::string& content) const {
        const std::string file = m_directory.file("hostile", content);
        RecordingContents contents;
        try {
            RecordingContents::read(file, contents);
        } catch (const UsageError& problem) {
            return problem.what();
        }
        return "";
    }

    tools_test::TemporaryDirectory m_directory;
};

TEST_F(RecordingFormat, IsWhatItsDescriptionSays) {
    RecordingWriter writer(path(), false);
    EXPECT_TRUE(writer.write(goldenSample()));
    writer.finish();

    EXPECT_EQ(contentOf(path()), fromHex(kGoldenFile));
    EXPECT_EQ(writer.size(), 93u);
    EXPECT_EQ(writer.samples(), 1u);
}

TEST_F(RecordingFormat, IsReadWithEveryField) {
    RecordingReader reader(m_directory.file("golden", fromHex(kGoldenFile)));
    Recorded sample;
    ASSERT_TRUE(reader.next(sample));

    const Recorded expected = goldenSample();
    EXPECT_EQ(sample.sinceStartNs, expected.sinceStartNs);
    EXPECT_EQ(sample.sentNs, expected.sentNs);
    EXPECT_EQ(sample.receivedNs, expected.receivedNs);
    EXPECT_EQ(sample.sequence, expected.sequence);
    EXPECT_EQ(sample.topic, expected.topic);
    EXPECT_EQ(sample.typeName, expected.typeName);
    EXPECT_EQ(sample.publisher, expected.publisher);
    EXPECT_EQ(sample.bytes, expected.bytes);
    EXPECT_FALSE(reader.next(sample));
}

TEST_F(RecordingFormat, AFileThatExistsIsReplacedOnlyOnDemand) {
    const std::string file = m_directory.file("there", "precious");
    EXPECT_THROW(RecordingWriter(file, false), UsageError);
    EXPECT_EQ(contentOf(file), "precious");

    RecordingWriter(file, true).finish();
    EXPECT_EQ(problemOf(contentOf(file)), "");
}

TEST_F(RecordingFormat, AFullDiskIsToldAndNotTakenForARecording) {
    if (!std::filesystem::exists("/dev/full")) {
        FAIL() << "this system has no /dev/full";
    }
    EXPECT_THROW(RecordingWriter("/dev/full", true), UsageError);
}

TEST_F(RecordingFormat, ASampleThatIsTooLargeIsLeftOut) {
    RecordingWriter writer(path(), false);
    Recorded sample = goldenSample();
    sample.bytes.resize(1 << 20);
    EXPECT_FALSE(writer.write(sample));
    sample.bytes.clear();
    sample.topic.assign(5000, 'x');
    EXPECT_FALSE(writer.write(sample));
    writer.finish();

    EXPECT_EQ(problemOf(contentOf(path())), "");
    EXPECT_EQ(writer.samples(), 0u);
}

TEST_F(RecordingFormat, AFileThatIsCutAnywhereIsRefused) {
    const std::string whole = fromHex(kGoldenFile);
    ASSERT_EQ(problemOf(whole), "");
    for (size_t length = 0; length < whole.size(); ++length) {
        const std::string problem = problemOf(whole.substr(0, length));
        // Magic of 16 bytes, a record of 60, the end mark behind it.
        const char* const expected = length < 16   ? "not a recording"
                                     : length < 76 ? "at byte 16: cut off"
                                                   : "at byte 76: cut off";
        EXPECT_THAT(problem, HasSubstr(expected)) << length;
    }
}

TEST_F(RecordingFormat, EveryBitThatIsTurnedIsFound) {
    const std::string whole = fromHex(kGoldenFile);
    for (size_t i = 0; i < whole.size() * 8; ++i) {
        std::string damaged = whole;
        damaged[i / 8] = static_cast<char>(damaged[i / 8] ^ (1 << i % 8));
        EXPECT_NE(problemOf(damaged), "") << "bit " << i;
    }
}

TEST_F(RecordingFormat, RandomBytesNeverPass) {
    std::mt19937 random(4711);
    const std::string whole = fromHex(kGoldenFile);
    for (int i = 0; i < 2000; ++i) {
        std::string damaged = whole;
        const size_t from = random() % whole.size();
        const size_t count = 1 + random() % 16;
        for (size_t at = from; at < std::min(from + count, whole.size()); ++at) {
            damaged[at] = static_cast<char>(random());
        }
        if (damaged != whole) {
            EXPECT_NE(problemOf(damaged), "") << i;
        }
    }
}

TEST_F(RecordingFormat, NothingMayStandBehindTheEndMark) {
    EXPECT_THAT(problemOf(fromHex(kGoldenFile) + '\0'), HasSubstr("behind the end mark"));
}

TEST_F(RecordingFormat, AnotherVersionIsNamed) {
    std::string file = fromHex(kGoldenFile);
    file[8] = 2;
    EXPECT_THAT(problemOf(file), HasSubstr("version 2"));
}

TEST_F(RecordingFormat, LengthsThatLieAreRefusedAlsoUnderAGoodChecksum) {
    const std::string magic = fromHex(kGoldenFile).substr(0, 16);
    const std::string body = fromHex(kGoldenFile).substr(24, 52);
    const Bytes good(body.begin(), body.end());
    ASSERT_EQ(problemOf(magic + recordOf(good) + recordOf({2, 1, 0, 0, 0, 0, 0, 0, 0})), "");

    // The low bytes of the lengths of topic, type, publisher and sample.
    for (const size_t at : {33u, 36u, 40u, 43u}) {
        for (const int change : {-1, 1, 100}) {
            Bytes bad = good;
            bad[at] = static_cast<uint8_t>(bad[at] + change);
            EXPECT_THAT(problemOf(magic + recordOf(bad)), HasSubstr("at byte 16: ")) << at;
        }
    }
    Bytes huge = good;
    std::fill_n(huge.begin() + 43, 4, uint8_t{0xFF});
    EXPECT_THAT(problemOf(magic + recordOf(huge)), HasSubstr("makes no sense"));
    EXPECT_THAT(problemOf(magic + std::string("\xFF\xFF\xFF\xFF", 4) + "1234"),
                HasSubstr("a record of 4294967295 bytes cannot be"));
    EXPECT_THAT(problemOf(magic + recordOf({})), HasSubstr("a record of 0 bytes cannot be"));
    EXPECT_THAT(problemOf(magic + recordOf({2, 5, 0, 0, 0, 0, 0, 0, 0})),
                HasSubstr("the end mark does not fit"));
    EXPECT_THAT(problemOf(magic + recordOf({9})), HasSubstr("makes no sense"));
}

TEST_F(RecordingFormat, ATimeBeforeTheStartIsRefused) {
    Recorded sample = goldenSample();
    sample.sinceStartNs = -1;
    RecordingWriter writer(path(), false);
    writer.write(sample);
    writer.finish();
    EXPECT_THAT(problemOf(contentOf(path())), HasSubstr("makes no sense"));
}

TEST_F(RecordingFormat, ATopicHasOneType) {
    Recorded sample = goldenSample();
    RecordingWriter writer(path(), false);
    writer.write(sample);
    sample.typeName = "Other";
    writer.write(sample);
    writer.finish();
    EXPECT_THAT(problemOf(contentOf(path())),
                HasSubstr("at byte 76: the topic \"T\" has two types"));
}

TEST_F(RecordingFormat, ASampleThatIsNoMessageOfItsTypeIsRefused) {
    Recorded sample = goldenSample();
    sample.typeName = "aspn2_msgs::idl::SVStatus";
    const Bytes whole = golden::bytes("SVStatus", "little");
    for (size_t length = 0; length <= whole.size() + 4; ++length) {
        sample.bytes = whole;
        sample.bytes.resize(length);
        RecordingWriter writer(path(), true);
        writer.write(sample);
        writer.finish();
        EXPECT_EQ(problemOf(contentOf(path())).empty(), length == whole.size()) << length;
    }
}

TEST_F(RecordingFormat, ACountOfElementsThatLiesTakesNoMemory) {
    Recorded sample = goldenSample();
    sample.typeName = "aspn2_msgs::idl::SVStatus";
    // Encapsulation, 48 bytes of header padded to 52, num_svs, then the count.
    sample.bytes = golden::bytes("SVStatus", "little");
    bool isFound = false;
    for (size_t at = 4; at + 4 <= sample.bytes.size(); at += 4) {
        Recorded hostile = sample;
        std::fill_n(hostile.bytes.begin() + static_cast<std::ptrdiff_t>(at), 4, uint8_t{0xFF});
        RecordingWriter writer(path(), true);
        writer.write(hostile);
        writer.finish();
        isFound = !problemOf(contentOf(path())).empty() || isFound;
    }
    EXPECT_TRUE(isFound);
}

TEST_F(RecordingFormat, WhatIsNoFileIsRefused) {
    RecordingContents contents;
    EXPECT_THROW(RecordingContents::read("/nonexistent/file", contents), UsageError);
    EXPECT_THROW(RecordingContents::read("/tmp", contents), UsageError);
    EXPECT_THROW(RecordingContents::read("/dev/zero", contents), UsageError);
}

TEST_F(RecordingFormat, ContentsCountWhatIsThere) {
    RecordingWriter writer(path(), false);
    Recorded sample = goldenSample();
    sample.sinceStartNs = 5;
    writer.write(sample);
    sample.sinceStartNs = 9;
    writer.write(sample);
    sample.topic = "U";
    sample.sinceStartNs = 12;
    writer.write(sample);
    writer.finish();

    RecordingContents contents;
    RecordingContents::read(path(), contents);
    EXPECT_EQ(contents.samples, 3u);
    EXPECT_EQ(contents.lastNs, 12);
    EXPECT_EQ(contents.firstReceivedNs, 1'700'000'000'000'000'000);
    ASSERT_EQ(contents.topics.size(), 2u);
    EXPECT_EQ(contents.topics["T"].samples, 2u);
    EXPECT_EQ(contents.topics["T"].bytes, 10u);
    EXPECT_EQ(contents.topics["T"].firstNs, 5);
    EXPECT_EQ(contents.topics["T"].lastNs, 9);
    EXPECT_EQ(contents.topics["U"].typeName, "Xy");
}

TEST(Codec, GivesTheBytesOfTheWireForEveryType) {
    for (const std::string& type : Bus::knownTypes()) {
        const std::string name = type.substr(type.rfind(':') + 1);
        const Bytes expected = golden::bytes(name, "little");
        ASSERT_FALSE(expected.empty()) << name;
        const Bus::Codec codec(type);
        for (const char* order : {"little", "big"}) {
            const auto message = codec.messageOf(golden::bytes(name, order));
            ASSERT_NE(message, nullptr) << name;
            EXPECT_EQ(codec.bytesOf(*message), expected) << name << ' ' << order;
        }
    }
}

TEST(Codec, RefusesAnUnknownType) {
    EXPECT_THROW(Bus::Codec("aspn2_msgs::idl::Nothing"), UsageError);
    EXPECT_THROW(Bus::Codec("EventLog"), UsageError);
}

}  // namespace
