// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Recording.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using GssipTool::blockHeader;
using GssipTool::Bytes;
using GssipTool::RecordingReader;

struct Taken {
    int64_t timeNs;
    Bytes bytes;
    bool operator==(const Taken& other) const {
        return timeNs == other.timeNs && bytes == other.bytes;
    }
};

// Fed in pieces of that size; stretches of one time are put together.
std::vector<Taken> taken(RecordingReader& reader, const Bytes& stream, size_t piece) {
    std::vector<Taken> all;
    for (size_t at = 0; at < stream.size(); at += piece) {
        reader.feed(stream.data() + at, std::min(piece, stream.size() - at),
                    [&all](const uint8_t* bytes, size_t count, int64_t timeNs) {
                        if (all.empty() || all.back().timeNs != timeNs) {
                            all.push_back({timeNs, {}});
                        }
                        all.back().bytes.insert(all.back().bytes.end(), bytes, bytes + count);
                    });
    }
    return all;
}

// 1.5 s and "abc", an empty block, 2 s and "d".
const Bytes kBlocks = {0x00, 0x2F, 0x68, 0x59, 0,    0, 0, 0, 3, 0, 0, 0,  'a', 'b',
                       'c',  0x01, 0x2F, 0x68, 0x59, 0, 0, 0, 0, 0, 0, 0,  0,   0x00,
                       0x94, 0x35, 0x77, 0,    0,    0, 0, 1, 0, 0, 0, 'd'};

TEST(Recording, IsReadInPiecesOfAnySize) {
    const std::vector<Taken> kExpected{{1'500'000'000, {'a', 'b', 'c'}}, {2'000'000'000, {'d'}}};
    for (const size_t piece : {1u, 2u, 7u, 100u}) {
        RecordingReader reader;
        EXPECT_TRUE(taken(reader, kBlocks, piece) == kExpected) << piece;
        EXPECT_TRUE(reader.isAtEnd());
    }
}

TEST(Recording, IsWrittenLowByteFirst) {
    EXPECT_EQ(blockHeader(1'500'000'000, 0x010203),
              (Bytes{0x00, 0x2F, 0x68, 0x59, 0, 0, 0, 0, 0x03, 0x02, 0x01, 0}));
}

TEST(Recording, ThatIsCutOffGivesWhatThereIsAndSaysSo) {
    for (size_t size = 0; size < kBlocks.size(); ++size) {
        RecordingReader reader;
        const Bytes part(kBlocks.begin(), kBlocks.begin() + static_cast<long>(size));
        const auto all = taken(reader, part, 100);
        EXPECT_EQ(reader.isAtEnd(), size == 0 || size == 15 || size == 27) << size;
        if (size == 14) {
            EXPECT_EQ(all.at(0).bytes, (Bytes{'a', 'b'}));
        }
    }
}

TEST(Recording, WithAnImpossibleBlockIsRefusedWithThePlace) {
    Bytes tooLong = kBlocks;
    tooLong[26] = 0x7F;  // the length of the second block
    RecordingReader reader;
    try {
        taken(reader, tooLong, 100);
        FAIL() << "accepted";
    } catch (const std::runtime_error& problem) {
        EXPECT_STREQ(problem.what(), "the recording is damaged before its byte 45");
    }
    Bytes beforeTime = kBlocks;
    beforeTime[7] = 0x80;
    RecordingReader other;
    EXPECT_THROW(taken(other, beforeTime, 100), std::runtime_error);
}

TEST(Recording, TakesTheLongestBlock) {
    RecordingReader reader;
    Bytes stream = blockHeader(1, GssipTool::kMaxBlockBytes);
    stream.resize(stream.size() + GssipTool::kMaxBlockBytes, 0x55);
    EXPECT_EQ(taken(reader, stream, 4096).at(0).bytes.size(), GssipTool::kMaxBlockBytes);
    EXPECT_THROW(taken(reader, blockHeader(1, GssipTool::kMaxBlockBytes + 1), 100),
                 std::runtime_error);
}

}  // namespace
