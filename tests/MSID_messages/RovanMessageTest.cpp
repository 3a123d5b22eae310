// SPDX-License-Identifier: Apache-2.0
// What holds for every message class alike.
#include "MSID_messages/RovanMessage.h"

#include <gtest/gtest.h>

#include <numeric>

#include "AllMessages.h"
#include "Frames.h"
#include "gssip/GssipParser.h"
#include "gssip/IHandleGpsipMessages.h"

namespace {

using AllMessages::Row;
using Frames::Bytes;

class EveryMessage : public testing::TestWithParam<Row> {};

INSTANTIATE_TEST_SUITE_P(RovanMessage, EveryMessage, testing::ValuesIn(AllMessages::rows()),
                         [](const auto& test) { return test.param.name; });

class ParserOutcome : public IHandleGpsipMessages {
  public:
    void OnGpsMessageReceived(unsigned char*, unsigned int, unsigned int) override { ++frames; }
    void OnParserChecksumError(unsigned int) override { ++errors; }

    int frames = 0;
    int errors = 0;
};

ParserOutcome parse(Bytes bytes) {
    ParserOutcome outcome;
    const auto parser = std::make_unique<GssipParser>();
    parser->ProcessMessagesWithThis(&outcome, 0);
    // Bytes behind the frame, so that the parser need not wait for more to decide.
    bytes.resize(bytes.size() + 64);
    parser->LoadBytes(bytes.data(), static_cast<uint16_t>(bytes.size()));
    return outcome;
}

Bytes bytesOf(const GssipMessage& message) {
    const auto words = Frames::wordsOf(message);
    Bytes bytes(2 * words.size());
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return bytes;
}

/// A buffer of exactly `size` bytes on the heap, so that the sanitizer sees one byte too many read.
std::unique_ptr<uint8_t[]> countingBytes(unsigned size) {
    std::unique_ptr<uint8_t[]> bytes(new uint8_t[size]);
    std::iota(bytes.get(), bytes.get() + size, uint8_t{1});
    return bytes;
}

}  // namespace

TEST(RovanMessage, HasNineteenKindsInTheTests) {
    EXPECT_EQ(AllMessages::rows().size(), 19u);
}

TEST(RovanMessage, TakesItsSizeFromTheOneTable) {
    unsigned checked = 0;
    for (const Row& row : AllMessages::rows()) {
        if (row.wdcnt != 0) {
            EXPECT_EQ(Msid::wordCount(row.msgId), row.wdcnt) << row.name;
            ++checked;
        }
    }
    EXPECT_EQ(Msid::wordCount(9409), 32);
    EXPECT_EQ(checked + 1, Msid::kMessageSizes.size());
    EXPECT_THROW(Msid::wordCount(9999), std::out_of_range);
}

TEST_P(EveryMessage, StartsAsAZeroFrameWithItsHeader) {
    const auto message = GetParam().make();

    EXPECT_EQ(message->msgId(), GetParam().msgId);
    EXPECT_EQ(message->wdcnt(), GetParam().wdcnt);
    EXPECT_EQ(message->flagWord(), GetParam().flagWord);
    EXPECT_FALSE(message->isHeaderChecksumInserted());
    EXPECT_FALSE(message->isDataChecksumInserted());
    std::vector<uint16_t> expected(GetParam().wdcnt == 0 ? 5 : GetParam().wdcnt + 6);
    expected[0] = 0x81FF;
    expected[1] = GetParam().msgId;
    expected[2] = static_cast<uint16_t>(GetParam().wdcnt);
    expected[3] = GetParam().flagWord;
    EXPECT_EQ(Frames::wordsOf(*message), expected);
}

TEST_P(EveryMessage, PointsTheBaseAtItsFrameAndData) {
    const auto message = GetParam().make();

    ASSERT_NE(message->frame(), nullptr);
    if (GetParam().wdcnt == 0) {
        EXPECT_EQ(message->data(), nullptr);
    } else {
        EXPECT_EQ(message->data(), message->frame() + 5);
    }
}

TEST_P(EveryMessage, FailsTheParserUntilItsChecksumsAreInserted) {
    const auto message = GetParam().make();
    const ParserOutcome fresh = parse(bytesOf(*message));
    const ParserOutcome written = parse(Frames::onTheLine(*message));

    EXPECT_EQ(fresh.frames, 0);
    EXPECT_EQ(fresh.errors, 1);
    EXPECT_EQ(written.frames, 1);
    EXPECT_EQ(written.errors, 0);
}

TEST_P(EveryMessage, PrintsNothingBeforeItIsSentUnlessItIs7270) {
    const auto message = GetParam().make();

    testing::internal::CaptureStdout();
    message->debugPrintMessage();

    EXPECT_EQ(testing::internal::GetCapturedStdout().empty(), GetParam().msgId != 7270);
}

TEST_P(EveryMessage, RefusesEveryWrongLengthAndThenIsUnchanged) {
    const auto message = GetParam().make();
    const auto before = Frames::wordsOf(*message);
    const unsigned right = 2 * (GetParam().wdcnt + 6);
    unsigned refused = 0;
    for (unsigned size = 0; size <= right + 300; ++size) {
        if (size == right || size == right + 1) {
            continue;
        }
        const auto bytes = countingBytes(size);
        ASSERT_FALSE(GetParam().load(*message, bytes.get(), size)) << size;
        ASSERT_FALSE(message->OkSetContent(bytes.get(), size)) << size;
        ++refused;
    }
    for (const unsigned size : {65536u + right, 131082u, 0x80000000u + right, 0xFFFFFFFFu}) {
        // Nothing may be read: there are no such bytes.
        ASSERT_FALSE(GetParam().load(*message, nullptr, size)) << size;
    }

    EXPECT_EQ(Frames::wordsOf(*message), before);
    EXPECT_EQ(refused, right + 299);
}

TEST_P(EveryMessage, LoadsAFrameOfItsLengthWhole) {
    const unsigned right = 2 * (GetParam().wdcnt + 6);
    // The length test halves, so that one odd byte passes; it must not do any harm.
    for (const unsigned size : {right, right + 1}) {
        const auto message = GetParam().make();
        const auto bytes = countingBytes(size);

        ASSERT_TRUE(GetParam().load(*message, bytes.get(), size));

        const unsigned frame = Gssip::frameBytes(GetParam().wdcnt);
        EXPECT_EQ(std::memcmp(message->frame(), bytes.get(), frame), 0);
        EXPECT_EQ(message->msgId(), GetParam().msgId);
        EXPECT_EQ(message->wdcnt(), GetParam().wdcnt);
    }
}

TEST_P(EveryMessage, GoesOnTheLineTheSameTwice) {
    const auto message = GetParam().make();

    const Bytes first = Frames::onTheLine(*message);
    const Bytes second = Frames::onTheLine(*message);

    EXPECT_EQ(first.size(), Gssip::frameBytes(GetParam().wdcnt));
    EXPECT_EQ(first, second);
}
