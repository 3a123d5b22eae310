// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/FrameScanner.h"

#include <gtest/gtest.h>

#include <memory>

#include "gssip/GssipParser.h"
#include "tests/tools/gssip/Streams.h"

namespace {

using Frames::Bytes;
using Frames::frame;
using Frames::header;
using Frames::operator+;
using GssipTool::Fault;
using GssipTool::FrameScanner;
using GssipTool::Piece;

// What the server's parser makes of a stream.
class ServersView : IHandleGpsipMessages {
  public:
    explicit ServersView(const Bytes& stream) {
        const auto parser = std::make_unique<GssipParser>();
        parser->ProcessMessagesWithThis(this, 0);
        for (size_t at = 0; at < stream.size(); at += 1000) {
            const size_t count = std::min<size_t>(1000, stream.size() - at);
            parser->LoadBytes(stream.data() + at, static_cast<uint16_t>(count));
        }
    }

    std::vector<Bytes> frames;
    unsigned errors = 0;

  private:
    void OnGpsMessageReceived(unsigned char* message, unsigned length, unsigned) override {
        frames.emplace_back(message, message + length);
    }
    void OnParserChecksumError(unsigned) override { ++errors; }
};

std::vector<Bytes> framesOf(const std::vector<Piece>& pieces) {
    std::vector<Bytes> frames;
    for (const Piece& piece : pieces) {
        if (piece.isFrame) {
            frames.push_back(piece.bytes);
        }
    }
    return frames;
}

void expectWhole(const std::vector<Piece>& pieces, const Bytes& stream) {
    Bytes together;
    for (const Piece& piece : pieces) {
        ASSERT_EQ(piece.offset, together.size());
        ASSERT_FALSE(piece.bytes.empty());
        together = together + piece.bytes;
    }
    ASSERT_TRUE(together == stream);
}

TEST(FrameScanner, CutsGoldenFramesApartHoweverTheyCome) {
    const Bytes stream = Streams::joined(Streams::golden());
    for (const size_t largest : {1u, 3u, 100u, 5000u}) {
        const auto pieces = Streams::pieces(stream, largest);
        EXPECT_EQ(framesOf(pieces), Streams::golden());
        expectWhole(pieces, stream);
    }
}

TEST(FrameScanner, FindsTheFramesAndErrorsThatTheServersParserFinds) {
    unsigned frames = 0;
    unsigned errors = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        const Bytes stream = seed % 4 == 0
                                 ? Streams::noise(seed, 3000)
                                 : Streams::damaged(Streams::joined(Streams::golden()), seed, seed);
        const ServersView server(stream);
        std::vector<Piece> pieces;
        FrameScanner scanner([&](Piece&& piece) { pieces.push_back(std::move(piece)); });
        scanner.feed(stream.data(), stream.size());
        scanner.flush();

        ASSERT_EQ(framesOf(pieces), server.frames) << seed;
        unsigned faults = 0;
        for (const Piece& piece : pieces) {
            faults += static_cast<unsigned>(piece.faults.size());
        }
        ASSERT_EQ(faults, server.errors) << seed;
        frames += static_cast<unsigned>(server.frames.size());
        errors += faults;
    }
    EXPECT_GT(frames, 1000u);
    EXPECT_GT(errors, 1000u);
}

TEST(FrameScanner, LosesNoByteOfAnyStream) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        const Bytes golden = Streams::joined(Streams::golden());
        Bytes stream = Streams::noise(seed, seed * 20) + Streams::damaged(golden, seed, seed / 2);
        stream.resize(stream.size() - seed);
        expectWhole(Streams::pieces(stream, 500, seed), stream);
    }
}

TEST(FrameScanner, TellsAWrongDataChecksumWithItsPlaceAndMessage) {
    const Bytes good = frame(8080, {1, 2, 3, 4, 5, 6});
    Bytes bad = frame(5404, {7, 8, 9});
    bad[12] ^= 0x10;

    const auto pieces = Streams::pieces(good + bad + good);

    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_TRUE(pieces[0].isFrame);
    EXPECT_FALSE(pieces[1].isFrame);
    EXPECT_EQ(pieces[1].offset, 24u);
    EXPECT_EQ(pieces[1].bytes, bad);
    ASSERT_EQ(pieces[1].faults.size(), 1u);
    const Fault& fault = pieces[1].faults[0];
    EXPECT_EQ(fault.kind, Fault::Kind::kDataChecksum);
    EXPECT_EQ(fault.offset, 24u);
    EXPECT_EQ(fault.msgId, 5404);
    EXPECT_EQ(fault.wdcnt, 3);
    EXPECT_TRUE(pieces[2].isFrame);
    EXPECT_EQ(pieces[2].offset, 42u);
}

TEST(FrameScanner, TellsAWrongHeaderChecksumWithItsPlace) {
    Bytes bad = header(9225, 0);
    bad[6] ^= 1;

    const auto pieces = Streams::pieces(Bytes{1, 2, 3} + bad + header(9225, 0));

    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_EQ(pieces[0].bytes.size(), 13u);
    ASSERT_EQ(pieces[0].faults.size(), 1u);
    EXPECT_EQ(pieces[0].faults[0].kind, Fault::Kind::kHeaderChecksum);
    EXPECT_EQ(pieces[0].faults[0].offset, 3u);
    EXPECT_TRUE(pieces[1].isFrame);
}

TEST(FrameScanner, FindsTheFrameInsideOneThatNeverEnds) {
    const Bytes real = frame(8080, {1, 2, 3, 4, 5, 6});
    const Bytes stream = header(8504, 60000) + real + Bytes{0xFF, 0x81, 0x38};

    const auto pieces = Streams::pieces(stream);

    ASSERT_EQ(pieces.size(), 3u);
    ASSERT_EQ(pieces[0].faults.size(), 1u);
    EXPECT_EQ(pieces[0].faults[0].kind, Fault::Kind::kCutOff);
    EXPECT_EQ(pieces[0].faults[0].msgId, 8504);
    EXPECT_EQ(pieces[0].faults[0].wdcnt, 60000);
    EXPECT_EQ(pieces[1].bytes, real);
    ASSERT_EQ(pieces[2].faults.size(), 1u);
    EXPECT_EQ(pieces[2].faults[0].kind, Fault::Kind::kCutOff);
    EXPECT_EQ(pieces[2].faults[0].msgId, 0);
}

TEST(FrameScanner, TakesTheLargestFrame) {
    std::mt19937 random(3);
    const Bytes largest = Frames::randomFrame(random, 1, 65535);
    const auto pieces = Streams::pieces(largest);
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_TRUE(pieces[0].isFrame);
    EXPECT_EQ(pieces[0].bytes.size(), 131082u);
}

TEST(FrameScanner, HandsOverLongNoiseInPieces) {
    const Bytes noise(3 * FrameScanner::kMaxSkipped + 5, 0x55);
    const auto pieces = Streams::pieces(noise, 10000);
    ASSERT_EQ(pieces.size(), 4u);
    EXPECT_EQ(pieces[0].bytes.size(), FrameScanner::kMaxSkipped);
    EXPECT_EQ(pieces[3].bytes.size(), 5u);
    expectWhole(pieces, noise);
}

TEST(FrameScanner, HandsOverSkippedBytesWhenAskedAndKeepsTheBegunFrame) {
    std::vector<Piece> pieces;
    FrameScanner scanner([&](Piece&& piece) { pieces.push_back(std::move(piece)); });
    const Bytes whole = frame(8080, {1, 2, 3, 4, 5, 6});
    const Bytes start = Bytes{9, 9} + Bytes(whole.begin(), whole.begin() + 15);
    scanner.feed(start.data(), start.size());
    EXPECT_TRUE(pieces.empty());

    scanner.flush();
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].bytes, (Bytes{9, 9}));
    EXPECT_EQ(scanner.waiting(), 15u);

    scanner.feed(whole.data() + 15, whole.size() - 15);
    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_EQ(pieces[1].bytes, whole);
    EXPECT_EQ(pieces[1].offset, 2u);
}

}  // namespace
