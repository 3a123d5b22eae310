// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipParser.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/gssip/Frames.h"

namespace {

using Frames::Bytes;
using Frames::frame;
using Frames::header;
using Frames::operator+;

struct Recorder : IHandleGpsipMessages {
    void OnGpsMessageReceived(unsigned char* message, unsigned length, unsigned cookie) override {
        frames.emplace_back(message, message + length);
        cookies.push_back(cookie);
        if (onFrame) {
            onFrame();
        }
    }
    void OnParserChecksumError(unsigned cookie) override {
        ++errors;
        cookies.push_back(cookie);
        if (onError) {
            onError();
        }
    }
    std::vector<Bytes> frames;
    std::vector<unsigned> cookies;
    int errors = 0;
    std::function<void()> onFrame;
    std::function<void()> onError;
};

class GssipParserTest : public testing::Test {
  protected:
    GssipParserTest() { m_parser->ProcessMessagesWithThis(&m_recorder, 7); }

    void feed(const Bytes& bytes) {
        m_parser->LoadBytes(bytes.data(), static_cast<uint16_t>(bytes.size()));
    }

    const std::unique_ptr<GssipParser> m_parser = std::make_unique<GssipParser>();
    Recorder m_recorder;
};

const Bytes kFrame = frame(8504, {1, 2, 3});
const Bytes kHeaderOnly = frame(5001, {}, 0x8800);

TEST_F(GssipParserTest, PostsAFrameWithItsHeaderAndChecksums) {
    feed(kFrame);
    ASSERT_EQ(m_recorder.frames.size(), 1u);
    EXPECT_EQ(m_recorder.frames[0], kFrame);
    EXPECT_EQ(m_recorder.frames[0].size(), 18u);
    EXPECT_EQ(m_recorder.errors, 0);
}

TEST_F(GssipParserTest, PostsAHeaderOnlyFrameOfTenBytes) {
    feed(kHeaderOnly);
    ASSERT_EQ(m_recorder.frames.size(), 1u);
    EXPECT_EQ(m_recorder.frames[0], kHeaderOnly);
    EXPECT_EQ(m_recorder.frames[0].size(), 10u);
}

TEST_F(GssipParserTest, PassesItsCookieWithFramesAndErrors) {
    Bytes damaged = kFrame;
    damaged[10] ^= 1;
    feed(kFrame + damaged);
    EXPECT_EQ(m_recorder.cookies, (std::vector<unsigned>{7, 7}));
}

TEST_F(GssipParserTest, AnEmptyLoadChangesNothing) {
    feed({});
    EXPECT_TRUE(m_recorder.frames.empty());
    feed(Bytes(kFrame.begin(), kFrame.begin() + 7));
    m_parser->LoadBytes(nullptr, 0);
    feed(Bytes(kFrame.begin() + 7, kFrame.end()));
    EXPECT_EQ(m_recorder.frames.size(), 1u);
    EXPECT_EQ(m_recorder.errors, 0);
}

TEST_F(GssipParserTest, PostsAFrameFedByteByByteAtItsLastByte) {
    for (size_t i = 0; i + 1 < kFrame.size(); ++i) {
        feed({kFrame[i]});
        ASSERT_TRUE(m_recorder.frames.empty()) << i;
    }
    feed({kFrame.back()});
    ASSERT_EQ(m_recorder.frames.size(), 1u);
    EXPECT_EQ(m_recorder.frames[0], kFrame);
}

TEST_F(GssipParserTest, PostsTwoFramesOfOneLoadInOrder) {
    feed(kFrame + kHeaderOnly);
    EXPECT_EQ(m_recorder.frames, (std::vector<Bytes>{kFrame, kHeaderOnly}));
}

TEST_F(GssipParserTest, GarbageIsDiscardedSilently) {
    feed(Bytes{0x00, 0x81, 0xFF, 0x80, 0xFF, 0x00, 0x12, 0xFE} + kFrame + Bytes{0x33, 0xFF});
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
    EXPECT_EQ(m_recorder.errors, 0);
}

TEST_F(GssipParserTest, SynchronisesOnTheSecondOfTwoFirstBytes) {
    feed(Bytes{0xFF} + kFrame);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
    EXPECT_EQ(m_recorder.errors, 0);
}

TEST_F(GssipParserTest, ABadHeaderGivesOneErrorAndIsSearchedForTheNextFrame) {
    Bytes badHeader = header(8504, 200);
    badHeader[8] ^= 1;
    feed(badHeader + kFrame);
    EXPECT_EQ(m_recorder.errors, 1);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
}

TEST_F(GssipParserTest, ABadHeaderIsReportedAtItsTenthByte) {
    Bytes badHeader = header(8504, 200);
    badHeader[8] ^= 1;
    feed(Bytes(badHeader.begin(), badHeader.begin() + 9));
    EXPECT_EQ(m_recorder.errors, 0);
    feed({badHeader[9]});
    EXPECT_EQ(m_recorder.errors, 1);
}

TEST_F(GssipParserTest, BadDataGivesOneErrorAtTheFrameSLastByte) {
    Bytes damaged = kFrame;
    damaged[12] ^= 0x10;
    feed(Bytes(damaged.begin(), damaged.end() - 1));
    EXPECT_EQ(m_recorder.errors, 0);
    feed({damaged.back()});
    EXPECT_EQ(m_recorder.errors, 1);
    feed(kFrame);
    EXPECT_EQ(m_recorder.errors, 1);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
}

TEST_F(GssipParserTest, FindsAGoodFrameInsideADamagedOne) {
    // The outer frame claims 30 data words, which reach over the inner frame.
    feed(header(8504, 30) + Bytes(6, 0x55) + kFrame + Bytes(48, 0x55));
    EXPECT_EQ(m_recorder.errors, 1);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
}

TEST_F(GssipParserTest, FindsAGoodFrameAtAnOddPlaceInsideADamagedOne) {
    feed(header(8504, 30) + Bytes(7, 0x55) + kFrame + Bytes(48, 0x55));
    EXPECT_EQ(m_recorder.errors, 1);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
}

TEST_F(GssipParserTest, ADelimiterInsideGoodDataIsData) {
    const Bytes withDelimiter = frame(8504, {0x81FF, 0xFF81, 0x81FF});
    feed(withDelimiter);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{withDelimiter});
    EXPECT_EQ(m_recorder.errors, 0);
}

TEST_F(GssipParserTest, ADelimiterInsideBadDataIsASecondError) {
    Bytes damaged = frame(8504, {0x1111, 0x81FF, 0x2222, 0x3333, 0x4444, 0x5555});
    damaged[10] ^= 1;
    feed(damaged);
    EXPECT_EQ(m_recorder.errors, 2);
    EXPECT_TRUE(m_recorder.frames.empty());
}

TEST_F(GssipParserTest, TakesTheLargestFrameTheFormatAllows) {
    const Bytes largest = frame(9999, std::vector<uint16_t>(65535, 0x1357));
    ASSERT_EQ(largest.size(), 131082u);
    feed(Bytes(largest.begin(), largest.begin() + 65535));
    feed(Bytes(largest.begin() + 65535, largest.begin() + 131070));
    feed(Bytes(largest.begin() + 131070, largest.end() - 1));
    EXPECT_TRUE(m_recorder.frames.empty());
    feed({largest.back()});
    ASSERT_EQ(m_recorder.frames.size(), 1u);
    EXPECT_TRUE(m_recorder.frames[0] == largest);
}

TEST_F(GssipParserTest, TakesTheLargestCountOfBytesAtOnce) {
    // 6553 frames of 10 bytes are 65530 bytes.
    Bytes bytes;
    for (int i = 0; i < 6553; ++i) {
        bytes = std::move(bytes) + kHeaderOnly;
    }
    feed(bytes + Bytes(5, 0x00));
    EXPECT_EQ(m_recorder.frames.size(), 6553u);
}

TEST_F(GssipParserTest, ResetForgetsAPartialFrame) {
    feed(Bytes(kFrame.begin(), kFrame.end() - 1));
    m_parser->reset();
    feed({kFrame.back()});
    EXPECT_TRUE(m_recorder.frames.empty());
    feed(kFrame);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
    EXPECT_EQ(m_recorder.cookies, std::vector<unsigned>{7});
}

TEST_F(GssipParserTest, ANullHandlerIsIgnoredWithItsCookie) {
    m_parser->ProcessMessagesWithThis(nullptr, 99);
    feed(kFrame);
    EXPECT_EQ(m_recorder.cookies, std::vector<unsigned>{7});
}

TEST_F(GssipParserTest, AnotherHandlerTakesTheNextFrames) {
    Recorder other;
    feed(kFrame);
    m_parser->ProcessMessagesWithThis(&other, 8);
    feed(kHeaderOnly);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kFrame});
    EXPECT_EQ(other.frames, std::vector<Bytes>{kHeaderOnly});
    EXPECT_EQ(other.cookies, std::vector<unsigned>{8});
}

TEST_F(GssipParserTest, WithoutAHandlerFramesAndFailuresAreConsumed) {
    const auto parser = std::make_unique<GssipParser>();
    Bytes damaged = kFrame;
    damaged[10] ^= 1;
    const Bytes bytes = kFrame + damaged;
    parser->LoadBytes(bytes.data(), static_cast<uint16_t>(bytes.size()));
    parser->ProcessMessagesWithThis(&m_recorder, 0);
    parser->LoadBytes(kHeaderOnly.data(), 10);
    EXPECT_EQ(m_recorder.frames, std::vector<Bytes>{kHeaderOnly});
    EXPECT_EQ(m_recorder.errors, 0);
}

TEST_F(GssipParserTest, AHandlerThatThrowsGetsEachFrameAndFailureOnce) {
    m_recorder.onFrame = [] { throw std::runtime_error("frame"); };
    m_recorder.onError = [] { throw std::runtime_error("error"); };
    Bytes damaged = kFrame;
    damaged[10] ^= 1;
    EXPECT_THROW(feed(kFrame + damaged + kHeaderOnly), std::runtime_error);
    EXPECT_THROW(feed({}), std::runtime_error);
    EXPECT_THROW(feed({}), std::runtime_error);
    feed({});
    EXPECT_EQ(m_recorder.frames, (std::vector<Bytes>{kFrame, kHeaderOnly}));
    EXPECT_EQ(m_recorder.errors, 1);
}

TEST_F(GssipParserTest, DumpsDamagedDataOnStandardErrorInDebug) {
    m_parser->doDebug(1);
    Bytes damaged = frame(5044, {0x0102, 0x0304});
    damaged[10] = 0x07;  // 0102 becomes 0107: the sum is 5 off
    testing::internal::CaptureStderr();
    feed(damaged);
    // 81FF + 13B4 + 0002 + 8000 = 115B5; 0102 + 0304 = 0406
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "81FF 13B4 0002 8000 EA4B 0107 0304 FBFA \nSum:0005\n");
    EXPECT_EQ(m_recorder.errors, 1);
}

TEST_F(GssipParserTest, DumpsNeitherBadHeadersNorAnythingWithoutDebug) {
    Bytes badHeader = header(8504, 200);
    badHeader[8] ^= 1;
    Bytes badData = kFrame;
    badData[10] ^= 1;
    testing::internal::CaptureStderr();
    feed(badData);
    m_parser->doDebug(1);
    feed(badHeader);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(m_recorder.errors, 2);
}

}  // namespace
