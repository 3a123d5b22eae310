// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "gssip/GssipParser.h"
#include "tests/gssip/Frames.h"
#include "tests/gssip/PlainParser.h"

// The parser against the plain state machine that defines it: the same callbacks, in the same
// order, out of the same LoadBytes call, on random and on adversarial streams cut at random.
namespace {

using Frames::Bytes;
using Frames::frame;
using Frames::header;
using Frames::randomFrame;
using Frames::operator+;

class RealParser : IHandleGpsipMessages {
  public:
    RealParser() { m_parser->ProcessMessagesWithThis(this, 0); }
    void load(const unsigned char* bytes, size_t count) {
        m_parser->LoadBytes(bytes, static_cast<uint16_t>(count));
        ++m_load;
    }
    const std::vector<ParserEvent>& events() const { return m_events; }

  private:
    void OnGpsMessageReceived(unsigned char* message, unsigned length, unsigned) override {
        m_events.push_back({m_load, Bytes(message, message + length)});
    }
    void OnParserChecksumError(unsigned) override { m_events.push_back({m_load, {}}); }

    const std::unique_ptr<GssipParser> m_parser = std::make_unique<GssipParser>();
    size_t m_load = 0;
    std::vector<ParserEvent> m_events;
};

// Cuts `stream` into pieces of up to `largest` bytes, some of them empty.
template <typename Parser>
void feedInPieces(Parser& parser, const Bytes& stream, unsigned seed, size_t largest) {
    std::mt19937 random(seed);
    for (size_t at = 0; at < stream.size();) {
        const size_t count = std::min<size_t>(random() % (largest + 1), stream.size() - at);
        parser.load(stream.data() + at, count);
        at += count;
    }
}

void expectSameEvents(const Bytes& stream, unsigned seed, size_t largestPiece) {
    PlainParser plain;
    RealParser real;
    feedInPieces(plain, stream, seed, largestPiece);
    feedInPieces(real, stream, seed, largestPiece);
    ASSERT_TRUE(plain.events() == real.events())
        << "seed " << seed << ", pieces of up to " << largestPiece << ": " << plain.events().size()
        << " events expected, " << real.events().size() << " seen";
}

void damage(Bytes& bytes, std::mt19937& random) {
    if (bytes.empty()) {
        return;
    }
    const auto place = static_cast<std::ptrdiff_t>(random() % bytes.size());
    switch (random() % 3) {
        case 0:
            bytes[static_cast<size_t>(place)] ^= static_cast<unsigned char>(1 + random() % 255);
            break;
        case 1:
            bytes.erase(bytes.begin() + place);
            break;
        default:
            bytes.insert(bytes.begin() + place, static_cast<unsigned char>(random()));
    }
}

// Frames, damaged frames, headers that promise more than follows, delimiters and noise.
Bytes mixedStream(std::mt19937& random, int pieces) {
    Bytes stream;
    for (int i = 0; i < pieces; ++i) {
        const auto small = static_cast<uint16_t>(random() % 40);
        Bytes piece;
        switch (random() % 7) {
            case 0:
            case 1:
                piece = randomFrame(random, 8504, small);
                break;
            case 2:
                piece = randomFrame(random, 9225, small);
                damage(piece, random);
                break;
            case 3:
                piece = header(5001, small);
                break;
            case 4:
                piece = header(5001, small);
                damage(piece, random);
                break;
            case 5:
                piece.assign(random() % 5, 0xFF);
                piece.push_back(0x81);
                break;
            default:
                piece.resize(random() % 30);
                std::generate(piece.begin(), piece.end(),
                              [&] { return static_cast<unsigned char>(random()); });
        }
        stream = std::move(stream) + piece;
    }
    return stream;
}

// `headers` good headers that each promise `wdcnt` words, then enough noise to complete them all.
Bytes hostileStream(int headers, uint16_t wdcnt) {
    std::mt19937 random(99);
    Bytes stream;
    for (int i = 0; i < headers; ++i) {
        stream = std::move(stream) + header(static_cast<uint16_t>(i), wdcnt);
    }
    Bytes noise(2u * wdcnt + 12);
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<unsigned char>(random()); });
    return stream + noise;
}

TEST(GssipParserEquivalence, MixedStreamsInPiecesOfAnySize) {
    for (unsigned seed = 1; seed <= 150; ++seed) {
        std::mt19937 random(seed);
        const Bytes stream = mixedStream(random, 120);
        for (const size_t largestPiece : {1u, 7u, 128u, 60000u}) {
            ASSERT_NO_FATAL_FAILURE(expectSameEvents(stream, seed, largestPiece));
        }
    }
}

TEST(GssipParserEquivalence, StreamsOfDelimiterBytesOnly) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        std::mt19937 random(seed);
        Bytes stream(3000);
        const unsigned char alphabet[] = {0xFF, 0x81, 0x00, 0x01};
        std::generate(stream.begin(), stream.end(), [&] { return alphabet[random() % 4]; });
        ASSERT_NO_FATAL_FAILURE(expectSameEvents(stream, seed, 64));
    }
}

TEST(GssipParserEquivalence, GoodFramesInsideFramesThatFail) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        Bytes stream;
        for (int i = 0; i < 20; ++i) {
            stream = std::move(stream) + header(1, static_cast<uint16_t>(random() % 300)) +
                     Bytes(random() % 3, 0x42) +
                     randomFrame(random, 2, static_cast<uint16_t>(random() % 20));
        }
        ASSERT_NO_FATAL_FAILURE(expectSameEvents(stream + Bytes(700, 0), seed, 128));
    }
}

TEST(GssipParserEquivalence, HostileHeaders) {
    expectSameEvents(hostileStream(300, 5000), 1, 128);
    expectSameEvents(hostileStream(100, 20000), 2, 60000);
}

// More than one store's worth of bytes, so that what is held is moved and the store grows.
TEST(GssipParserEquivalence, LongStreamsOfLargeFrames) {
    std::mt19937 random(5);
    Bytes stream;
    for (int i = 0; i < 25; ++i) {
        stream = std::move(stream) +
                 randomFrame(random, 3, static_cast<uint16_t>(random() % 9000)) +
                 Bytes(random() % 2, 0x42);
    }
    expectSameEvents(stream, 1, 128);
    expectSameEvents(stream, 2, 3000);
    expectSameEvents(stream, 3, 60000);
}

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// The least CPU time of several runs, for each byte.
double secondsPerByte(const Bytes& stream) {
    double least = 1e9;
    for (int run = 0; run < 7; ++run) {
        const auto owner = std::make_unique<GssipParser>();
        GssipParser& parser = *owner;
        const double start = cpuSeconds();
        for (size_t at = 0; at < stream.size(); at += 128) {
            const size_t count = std::min<size_t>(128, stream.size() - at);
            parser.LoadBytes(stream.data() + at, static_cast<uint16_t>(count));
        }
        least = std::min(least, cpuSeconds() - start);
    }
    return least / static_cast<double>(stream.size());
}

// The plain machine takes hundreds of steps for each byte of this stream. What is asserted is far
// from both sides: a byte of it may cost the parser up to 50 times a byte of clean frames (it costs
// about as much), where rescanning would cost hundreds of times.
TEST(GssipParserEquivalence, HostileHeadersCostABoundedAmountOfWorkForEachByte) {
    const Bytes hostile = hostileStream(400, 32000);
    PlainParser plain;
    feedInPieces(plain, hostile, 1, 128);
    EXPECT_GT(plain.steps(), 300 * hostile.size());

    std::mt19937 random(1);
    Bytes clean;
    while (clean.size() < hostile.size()) {
        clean = std::move(clean) + randomFrame(random, 8504, 200);
    }
    EXPECT_LT(secondsPerByte(hostile), 50 * secondsPerByte(clean));
}

}  // namespace
