// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/tools/gssip/Runs.h"
#include "tools/gssip/Recording.h"

namespace {

using Frames::Bytes;
using Frames::operator+;
using Runs::Clock;
using Runs::End;
using Runs::Ended;
using Runs::Gssip;
using Runs::Line;
using Runs::run;
using Runs::waitUntil;
using std::chrono::milliseconds;
using ::testing::HasSubstr;

struct Block {
    int64_t timeNs;
    Bytes bytes;
};

std::vector<Block> blocksOf(const std::string& path) {
    const std::string text = Runs::contentsOf(path);
    std::vector<Block> blocks;
    if (text.rfind("GSSIP recording 1\n", 0) != 0) {
        return blocks;
    }
    GssipTool::RecordingReader reader;
    const Bytes bytes(text.begin() + 18, text.end());
    reader.feed(bytes.data(), bytes.size(), [&](const uint8_t* from, size_t count, int64_t timeNs) {
        blocks.push_back({timeNs, Bytes(from, from + count)});
    });
    return blocks;
}

Bytes bytesOf(const std::vector<Block>& blocks) {
    Bytes bytes;
    for (const Block& block : blocks) {
        bytes = bytes + block.bytes;
    }
    return bytes;
}

/// "A" and, so many milliseconds later, "B".
std::string recordingWithAGap(int64_t gapMs) {
    const Bytes blocks = GssipTool::blockHeader(5'000'000'000, 1) + Bytes{'A'} +
                         GssipTool::blockHeader(5'000'000'000 + gapMs * 1'000'000, 1) + Bytes{'B'};
    return "GSSIP recording 1\n" + Runs::textOf(blocks);
}

class OfGssip : public ::testing::Test {
  protected:
    std::string capture(const Bytes& bytes) const {
        return m_directory.file("capture", Runs::textOf(bytes));
    }
    std::string path(const char* name) const { return m_directory.path(name); }
    size_t sizeOf(const std::string& file) const {
        std::error_code error;
        const auto size = std::filesystem::file_size(file, error);
        return error ? 0 : size;
    }

    const Bytes m_golden = Streams::joined(Streams::golden());
    tools_test::TemporaryDirectory m_directory;
};

// --- record

class Record : public OfGssip {
  protected:
    Line m_line;
};

TEST_F(Record, KeepsEveryByteWithTheTimeOfItsComing) {
    const std::string file = path("line.rec");
    Gssip program({"record", m_line.path, file});
    m_line.near.write({1, 2, 3});
    ASSERT_TRUE(waitUntil([&] { return sizeOf(file) >= 18 + 12 + 3; }));
    std::this_thread::sleep_for(milliseconds(60));
    m_line.near.write(Golden::kConnect8504);
    ASSERT_TRUE(waitUntil([&] { return sizeOf(file) >= 18 + 24 + 13; }));
    program.signal(SIGINT);

    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.errors(), HasSubstr("recorded 13 bytes, 1 frames, 3 bytes skipped in "));
    const auto blocks = blocksOf(file);
    EXPECT_EQ(bytesOf(blocks), (Bytes{1, 2, 3}) + Golden::kConnect8504);
    ASSERT_GE(blocks.size(), 2u);
    EXPECT_GE(blocks.back().timeNs - blocks.front().timeNs, 60'000'000);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto age = now - std::chrono::nanoseconds(blocks.front().timeNs);
    EXPECT_LT(std::chrono::abs(age), std::chrono::minutes(2));
}

TEST_F(Record, KeepsALongStreamWhole) {
    Bytes stream;
    for (unsigned i = 0; i < 20; ++i) {
        stream = stream + Streams::damaged(m_golden, i, 5);
    }
    const std::string file = path("line.rec");
    Gssip program({"record", m_line.path, file});
    m_line.near.write(stream);
    ASSERT_TRUE(waitUntil([&] { return bytesOf(blocksOf(file)).size() == stream.size(); }));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(bytesOf(blocksOf(file)) == stream);
}

TEST_F(Record, IsGoodUpToTheLastBlockWhenKilled) {
    const std::string file = path("line.rec");
    Gssip program({"record", m_line.path, file});
    m_line.near.write(Golden::kConnect8504);
    ASSERT_TRUE(waitUntil([&] { return sizeOf(file) >= 18 + 12 + 10; }));
    program.signal(SIGKILL);
    EXPECT_EQ(program.wait(), 128 + SIGKILL);
    EXPECT_EQ(run({"decode", file}).status, 0);
}

TEST_F(Record, EndsAfterItsDurationAndWithOneWhenNothingCame) {
    const auto start = Clock::now();
    const Ended ended = run({"record", "--duration", "0.3", m_line.path, path("line.rec")});
    EXPECT_EQ(ended.status, 1);
    EXPECT_GE(Clock::now() - start, milliseconds(300));
    EXPECT_THAT(ended.errors, HasSubstr("recorded 0 bytes"));
}

TEST_F(Record, KeepsWhatCameWhenTheLineIsHungUpAndEndsWithTwo) {
    const std::string file = path("line.rec");
    Gssip program({"record", m_line.path, file});
    m_line.near.write(Golden::kConnect8504);
    ASSERT_TRUE(waitUntil([&] { return sizeOf(file) >= 18 + 12 + 10; }));
    m_line.hangUp();
    EXPECT_EQ(program.wait(), 2);
    EXPECT_THAT(program.errors(), HasSubstr("the line was hung up"));
    EXPECT_EQ(bytesOf(blocksOf(file)), Golden::kConnect8504);
}

TEST_F(Record, WritesOverAFileOnlyWhenToldTo) {
    const std::string file = m_directory.file("kept", "precious");
    const Ended refused = run({"record", "-d", "0.1", m_line.path, file});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, HasSubstr("is there already; --force writes over it"));
    EXPECT_EQ(Runs::contentsOf(file), "precious");
    run({"record", "-d", "0.1", "--force", m_line.path, file});
    EXPECT_EQ(Runs::contentsOf(file), "GSSIP recording 1\n");
}

TEST_F(Record, WritesToStandardOutput) {
    m_line.near.write(Golden::kConnect8504);
    const Ended ended = run({"record", "-d", "0.5", m_line.path, "-"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output.size(), 18u + 12 + 10);
}

TEST_F(Record, SetsTheSpeedAndRawMode) {
    Gssip program({"record", "-b", "460800", m_line.path, path("line.rec")});
    ASSERT_TRUE(waitUntil([&] {
        const termios settings = m_line.near.settings();
        return cfgetospeed(&settings) == B460800;
    }));
    EXPECT_EQ(m_line.near.settings().c_lflag & (ICANON | ECHO | ISIG), 0u);
    program.signal(SIGINT);
    program.wait();
}

TEST_F(Record, ShowsItsProgressOnATerminal) {
    Line terminal;
    Runs::OnTerminal program({"record", m_line.path, path("line.rec")}, STDERR_FILENO, terminal);
    EXPECT_EQ(Runs::textOf(terminal.near.read(20)), "\r0 bytes, 0 frames, ");
    EXPECT_EQ(program.controllingTerminal(), 0);
    EXPECT_EQ(program.stop(SIGINT), 1);
}

TEST_F(Record, LeavesNoFileWhenThereIsNoLine) {
    const Ended ended = run({"record", "/no/such/line", path("line.rec")});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("/no/such/line: No such file or directory"));
    EXPECT_FALSE(std::filesystem::exists(path("line.rec")));
    EXPECT_THAT(run({"record", m_line.path, "/no/such/place"}).errors,
                HasSubstr("/no/such/place: No such file"));
}

// --- play

class Play : public OfGssip {
  protected:
    /// Opens the pseudo-terminal that the program has made.
    static int reader(Gssip& program) {
        const auto path = program.line();
        return path ? Runs::openRaw(*path) : -1;
    }
};

TEST_F(Play, GivesEveryByteToWhoOpensItsPseudoTerminal) {
    Bytes stream;
    for (unsigned i = 0; i < 20; ++i) {
        stream = stream + m_golden;
    }
    Gssip program({"play", "--speed", "max", capture(stream)});
    const End far(reader(program));
    EXPECT_TRUE(far.read(stream.size()) == stream);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.errors(),
                HasSubstr("played " + std::to_string(stream.size()) + " bytes in "));
}

TEST_F(Play, WaitsForAReaderUntilASignal) {
    Gssip program({"play", capture(m_golden)});
    ASSERT_TRUE(program.line());
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.errors(), HasSubstr("played 0 bytes"));
}

TEST_F(Play, DoesNotWaitOnRequestAndCountsWhatNobodyHeard) {
    const Ended ended = run({"play", "--no-wait", "-s", "max", capture(Golden::kConnect8504)});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("played 10 bytes"));
    EXPECT_THAT(ended.errors, HasSubstr("10 of them while nobody listened"));
}

TEST_F(Play, KeepsTheTimesOfARecording) {
    const std::string recording = m_directory.file("line.rec", recordingWithAGap(400));
    for (const auto& [speed, least] : std::vector<std::pair<const char*, milliseconds>>{
             {"1", milliseconds(400)}, {"2", milliseconds(200)}, {"0.5", milliseconds(800)}}) {
        Gssip program({"play", "--speed", speed, recording});
        const End far(reader(program));
        EXPECT_EQ(far.read(1), Bytes{'A'});
        const auto first = Clock::now();
        EXPECT_EQ(far.read(1), Bytes{'B'});
        // The first byte may have been on its way for a while.
        EXPECT_GE(Clock::now() - first, least - milliseconds(150)) << speed;
        EXPECT_EQ(program.wait(), 0);
    }
}

TEST_F(Play, ForgetsTheTimesAtFullSpeed) {
    const std::string recording = m_directory.file("line.rec", recordingWithAGap(3'600'000));
    Gssip program({"play", "--speed", "max", recording});
    const End far(reader(program));
    EXPECT_EQ(far.read(2), (Bytes{'A', 'B'}));
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Play, SendsARawCaptureAtTheSpeedOfTheLine) {
    const std::string file = capture(Bytes(1000, 0x55));
    Gssip program({"play", "--baud", "20000", file});  // 2000 bytes a second
    const End far(reader(program));
    const auto start = Clock::now();
    EXPECT_EQ(far.read(1000).size(), 1000u);
    EXPECT_GE(Clock::now() - start, milliseconds(350));
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Play, GoesOnAgainAndAgainUntilASignal) {
    Gssip program({"play", "--loop", "-s", "max", capture(Golden::kConnect8504)});
    const End far(reader(program));
    Bytes expected;
    for (unsigned i = 0; i < 50; ++i) {
        expected = expected + Golden::kConnect8504;
    }
    EXPECT_TRUE(far.read(expected.size()) == expected);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Play, EndsAfterItsDuration) {
    Gssip program({"play", "--loop", "-d", "0.5", m_directory.file("r", recordingWithAGap(5))});
    const auto start = Clock::now();
    const End far(reader(program));
    EXPECT_NE(program.wait(), -1);
    EXPECT_GE(Clock::now() - start, milliseconds(300));
}

TEST_F(Play, LinksItsPseudoTerminalForAsLongAsItRuns) {
    namespace fs = std::filesystem;
    const std::string link = path("receiver");
    fs::create_symlink("/no/longer/there", link);  // left behind by one who was killed
    Gssip program({"play", "--link", link, capture(Golden::kConnect8504)});
    const auto device = program.line();
    ASSERT_TRUE(device);
    EXPECT_EQ(fs::read_symlink(link), *device);
    const End far(Runs::openRaw(link));
    EXPECT_EQ(far.read(10), Golden::kConnect8504);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_FALSE(fs::is_symlink(link));
}

TEST_F(Play, LeavesWhatIsThereAloneWhenItMakesItsLink) {
    const std::string taken = m_directory.file("taken", "precious");
    const Ended ended = run({"play", "--link", taken, capture(m_golden)});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("taken: File exists"));
    EXPECT_EQ(Runs::contentsOf(taken), "precious");
}

TEST_F(Play, GoesToALineThatIsThere) {
    Line line;
    Gssip program({"play", "-s", "max", "--baud", "57600", capture(m_golden), line.path});
    EXPECT_TRUE(line.near.read(m_golden.size()) == m_golden);
    EXPECT_EQ(program.wait(), 0) << program.errors();
    const termios settings = line.near.settings();
    EXPECT_EQ(cfgetospeed(&settings), B57600);
}

TEST_F(Play, ThrowsAwayWhatTheOtherSideSends) {
    Gssip program({"play", "--loop", "--speed", "1", capture(Golden::kConnect8504)});
    const End far(reader(program));
    far.write(Bytes(100000, 0x42));  // would block if nobody read it
    EXPECT_EQ(far.read(10), Golden::kConnect8504);
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Play, ReadsStandardInput) {
    Gssip program({"play", "-"}, capture(Golden::kConnect8504));
    const End far(reader(program));
    EXPECT_EQ(far.read(10), Golden::kConnect8504);
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Play, RefusesWhatItCannotPlay) {
    Line line;
    const std::string file = capture(m_golden);
    const std::pair<std::vector<std::string>, const char*> kWrong[] = {
        {{"play", "/no/such/file"}, "/no/such/file: No such file"},
        {{"play", line.path}, "is a live line: record it first"},
        {{"play", capture({}), line.path}, "holds nothing to play"},
        {{"play", "--loop", "-"}, "--loop wants a file"},
        {{"play", "--speed", "0", file}, "--speed wants a number above 0, or max"},
        {{"play", "--speed", "-1", file}, "--speed wants"},
        {{"play", "--speed", "nan", file}, "--speed wants"},
        {{"play", "--speed", "fast", file}, "--speed wants"},
        {{"play", "--speed", "2x", file}, "--speed wants"},
        {{"play", "--link", path("link"), file, line.path}, "--link is for a pseudo-terminal"},
        {{"play", file, file}, "is no serial line"},
        {{"play", "-b", "12345", file, line.path}, "no speed of a serial line"},
        {{"play", file, "/no/such/line"}, "/no/such/line: No such file"},
    };
    for (const auto& [arguments, why] : kWrong) {
        if (arguments[1] == capture({})) {
            m_directory.file("capture", "");
        } else {
            capture(m_golden);
        }
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 2) << why;
        EXPECT_THAT(ended.errors, HasSubstr(why));
    }
}

// --- all together

TEST_F(OfGssip, WhatIsPlayedAndRecordedDecodesAndEncodesToTheSameBytes) {
    const Bytes stream = Streams::damaged(m_golden, 3, 20);
    const std::string file = path("line.rec");
    Gssip player({"play", "-s", "max", capture(stream)});
    const auto device = player.line();
    ASSERT_TRUE(device);
    Gssip recorder({"record", *device, file});
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(recorder.wait(), 2);  // the player hung up
    const Ended decoded = run({"decode", "--json", file});
    const Ended raw = run({"encode", m_directory.file("lines", decoded.output)});
    EXPECT_TRUE(raw.output == Runs::textOf(stream));
    const Ended again = run({"encode", "-r", m_directory.file("lines", decoded.output)});
    EXPECT_EQ(run({"decode", "--json", m_directory.file("r2", again.output)}).output,
              decoded.output);
}

}  // namespace
