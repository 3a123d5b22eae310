// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/Passthrough.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "gssip/IWriteByteStreams.h"
#include "tests/RovanServer/RecordedActions.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;
using Bytes = std::vector<uint8_t>;

constexpr uint16_t kId = 6000;  // 0x1770
const std::set<uint16_t> kIds{8504, kId};

// 0x81FF + 0x1770 + 0x0003 + 0x9000 = 0x12972, so the header checksum is 0x10000 - 0x2972;
// 0x1234 + 0x5678 + 0x9ABC = 0x10368, so the data checksum is 0x10000 - 0x0368.
const Bytes kThreeWords{0xFF, 0x81, 0x70, 0x17, 0x03, 0x00, 0x00, 0x90, 0x8E,
                        0xD6, 0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A, 0x98, 0xFC};
// 0x81FF + 0x1770 + 0x0000 + 0x9010 = 0x1297F.
const Bytes kHeaderOnly{0xFF, 0x81, 0x70, 0x17, 0x00, 0x00, 0x10, 0x90, 0x81, 0xD6};

void append(Bytes& bytes, uint16_t word) {
    bytes.push_back(static_cast<uint8_t>(word & 0xFF));
    bytes.push_back(static_cast<uint8_t>(word >> 8));
}

/// A frame of `count` data words, each 0x0001, flag word 0x8000. The words of its header sum up to
/// 0x81FF + 0x1770 + 0x8000 + count = 0x1196F + count, those of its data to count.
Bytes frameOfOnes(uint16_t count) {
    Bytes frame;
    for (const uint16_t word : {uint16_t{0x81FF}, kId, count, uint16_t{0x8000}}) {
        append(frame, word);
    }
    append(frame, static_cast<uint16_t>(0x10000 - ((0x196F + count) & 0xFFFF)));
    for (uint16_t i = 0; i < count; ++i) {
        append(frame, 1);
    }
    append(frame, static_cast<uint16_t>(-count));
    return frame;
}

class Line : public IWriteByteStreams {
  public:
    int WriteBytes(const void* bytes, unsigned int count) override {
        const auto* first = static_cast<const uint8_t*>(bytes);
        written.assign(first, first + count);
        return static_cast<int>(count);
    }
    Bytes written;
};

/// What goes out for `sample`; nothing when nothing was queued.
Bytes sentFor(const Bytes& sample) {
    RecordedActions actions;
    forwardPassthrough(sample, kIds, actions);
    Line line;
    for (const GssipMessagePtr& message : actions.messages) {
        message->WriteMessage(&line);
    }
    return line.written;
}

}  // namespace

TEST(Passthrough, GoesOutAsSupplied) {
    EXPECT_EQ(sentFor(kThreeWords), kThreeWords);
    EXPECT_EQ(sentFor(kHeaderOnly), kHeaderOnly);
}

TEST(Passthrough, IsQueuedOnceAndAlone) {
    RecordedActions actions;
    forwardPassthrough(kThreeWords, kIds, actions);
    EXPECT_THAT(actions.take(), ElementsAre("queue 6000"));
    EXPECT_THAT(actions.callbacks, ElementsAre(testing::IsNull()));
}

TEST(Passthrough, TakesIdCountAndFlagWordFromTheFrame) {
    const Passthrough message(kThreeWords);
    EXPECT_EQ(message.msgId(), 6000);
    EXPECT_EQ(message.wdcnt(), 3u);
    EXPECT_EQ(message.flagWord(), 0x9000);
    EXPECT_EQ(message.data(), message.frame() + 5);
    EXPECT_EQ(message.data()[2], 0x9ABC);
    EXPECT_FALSE(message.isHeaderChecksumInserted());
}

TEST(Passthrough, KeepsWhateverFlagWordItHas) {
    Bytes frame = kThreeWords;
    frame[6] = 0x34;  // 0x1234 in place of 0x9000 lets the header checksum grow by 0x7DCC
    frame[7] = 0x12;
    frame[8] = 0x5A;
    frame[9] = 0x54;
    EXPECT_EQ(sentFor(frame), frame);
}

TEST(Passthrough, HoldsOneFrameBlock) {
    EXPECT_EQ(Passthrough::kBlockBytes, 2012u);
}

TEST(Passthrough, AThousandWordsPass) {
    const Bytes frame = frameOfOnes(1000);
    ASSERT_EQ(frame.size(), 2012u);
    // 0x196F + 0x03E8 = 0x1D57, and 0x10000 - 0x1D57 = 0xE2A9; 0x10000 - 0x03E8 = 0xFC18.
    ASSERT_THAT(Bytes(frame.begin() + 8, frame.begin() + 10), ElementsAre(0xA9, 0xE2));
    ASSERT_THAT(Bytes(frame.end() - 2, frame.end()), ElementsAre(0x18, 0xFC));
    EXPECT_EQ(sentFor(frame), frame);
}

TEST(Passthrough, MoreWordsThanAThousandAreAnError) {
    for (const uint16_t count : std::vector<uint16_t>{1001, 1002, 65535}) {
        RecordedActions actions;
        try {
            forwardPassthrough(frameOfOnes(count), kIds, actions);
            ADD_FAILURE() << count << " words were taken";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(),
                      "Passthrough() FAILED due to data word count exceeding maximum: " +
                          std::to_string(count));
        }
        EXPECT_THAT(actions.take(), IsEmpty());
    }
}

TEST(Passthrough, TheCountAloneIsTheErrorWhateverTheSampleHolds) {
    Bytes header = kHeaderOnly;
    header[4] = 0xE9;  // 1001
    header[5] = 0x03;
    RecordedActions actions;
    EXPECT_THROW(forwardPassthrough(header, kIds, actions), std::runtime_error);
}

TEST(Passthrough, AnIdThatIsNotListedIsDropped) {
    RecordedActions actions;
    forwardPassthrough(kThreeWords, {8504, 5999, 6001, 0x7017}, actions);
    EXPECT_THAT(actions.take(), IsEmpty());
}

TEST(Passthrough, AnIdThatIsNotListedIsDroppedBeforeAnythingElseIsLookedAt) {
    RecordedActions actions;
    forwardPassthrough(frameOfOnes(1001), {8504}, actions);
    Bytes tooLong = kThreeWords;
    tooLong.resize(2013);
    forwardPassthrough(tooLong, {8504}, actions);
    EXPECT_THAT(actions.take(), IsEmpty());
}

TEST(Passthrough, AnEmptyListDropsEveryFrame) {
    RecordedActions actions;
    for (const Bytes& frame : {kThreeWords, kHeaderOnly, frameOfOnes(1000)}) {
        forwardPassthrough(frame, {}, actions);
    }
    EXPECT_THAT(actions.take(), IsEmpty());
}

TEST(Passthrough, ASampleWithoutAWholeHeaderIsDropped) {
    for (size_t size = 0; size < 10; ++size) {
        EXPECT_THAT(sentFor(Bytes(kHeaderOnly.begin(), kHeaderOnly.begin() + long(size))),
                    IsEmpty())
            << size;
    }
}

TEST(Passthrough, ASampleWithoutAllItsDataWordsIsDropped) {
    for (size_t size = 10; size < 16; ++size) {
        EXPECT_THAT(sentFor(Bytes(kThreeWords.begin(), kThreeWords.begin() + long(size))),
                    IsEmpty())
            << size;
    }
}

TEST(Passthrough, ASampleThatLacksOnlyTheDataChecksumGetsIt) {
    EXPECT_EQ(sentFor(Bytes(kThreeWords.begin(), kThreeWords.end() - 2)), kThreeWords);
    EXPECT_EQ(sentFor(Bytes(kThreeWords.begin(), kThreeWords.end() - 1)), kThreeWords);
}

TEST(Passthrough, WhatFollowsTheFrameInItsSampleIsNotSent) {
    for (const size_t size : {size_t{19}, size_t{20}, size_t{2012}}) {
        Bytes longer = kThreeWords;
        longer.resize(size, 0xEE);
        EXPECT_EQ(sentFor(longer), kThreeWords) << size;
    }
}

TEST(PassthroughDeathTest, ASampleLongerThanTheBlockEndsTheProcess) {
    Bytes longer = kThreeWords;
    longer.resize(2013);
    EXPECT_EXIT(sentFor(longer), KilledBySignal(SIGABRT), "2013 bytes");
    Bytes longest = frameOfOnes(1000);
    longest.push_back(0);
    EXPECT_EXIT(sentFor(longest), KilledBySignal(SIGABRT), "2013 bytes");
}
