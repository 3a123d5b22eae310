// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/tools/gssip/Runs.h"
#include "tools/gssip/Recording.h"

namespace {

using Frames::Bytes;
using Frames::frame;
using Frames::header;
using Frames::operator+;
using Runs::Ended;
using Runs::Gssip;
using Runs::Line;
using Runs::run;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using Tools::Json;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

Bytes block(int64_t timeNs, const Bytes& bytes) {
    return GssipTool::blockHeader(timeNs, bytes.size()) + bytes;
}

Bytes recordingOf(const Bytes& blocks) {
    const std::string magic = "GSSIP recording 1\n";
    return Bytes(magic.begin(), magic.end()) + blocks;
}

class Decode : public ::testing::Test {
  protected:
    std::string file(const Bytes& bytes) const {
        return m_directory.file("capture", Runs::textOf(bytes));
    }
    /// A frame with a flipped bit between two good ones.
    static Bytes withDamage() {
        Bytes bad = frame(5404, {7, 8, 9});
        bad[12] ^= 0x10;
        return header(9225, 0) + bad + header(8504, 0);
    }

    tools_test::TemporaryDirectory m_directory;
};

TEST_F(Decode, ShowsAFrameWithItsFields) {
    const Ended ended = run({"decode", file(Golden::kStandbyCommand)});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.errors, IsEmpty());
    EXPECT_THAT(
        ended.output,
        StartsWith("5001 mode command  to receiver, 31 words, marker ack-request, at byte 0\n"
                   "  time                       0.0 s\n"
                   "  command                    5  (standby)\n"));
    EXPECT_THAT(ended.output, Not(HasSubstr("\033")));
}

TEST_F(Decode, ShowsUnitsFlagsTextsAndRecords) {
    std::vector<uint16_t> text(21);
    text[4] = 34;
    text[5] = 0x4F4B;
    text[6] = 0x1B00;
    std::vector<uint16_t> keys(25);
    keys[5] = 0x2003;
    const Bytes stream = frame(7270, std::vector<uint16_t>(59, 0x0101)) + frame(5044, text) +
                         frame(8040, keys) + Golden::kLineSpeed115200 +
                         frame(9405, std::vector<uint16_t>(104, 6));
    const std::string output = run({"decode", file(stream)}).output;
    for (const char* line :
         {"  deltaRange                 2056.0313720703125 m\n",
          "  deltaRangeIntervalMs       257 ms\n", "  eventId                    34\n",
          "  text                       \"OK\\x1b\"\n",
          "  keys[1]                    status yes, loadStatus yes, remainingTime 0, "
          "zeroizationStatus 2  (1 on the bus)\n",
          "  keys                       2 of 3 empty\n",
          "  validity                   receive transmit\n",
          "  receiveBaud                11  (115200 bit/s)\n",
          "  bciFailures                BCI_ST_BCI_CLOCK_TRUN_FAIL BCI_ST_CABLE_LOSS\n"}) {
        EXPECT_THAT(output, HasSubstr(line));
    }
}

TEST_F(Decode, ShowsWhereBytesWereSkippedAndWhy) {
    const Ended ended = run({"decode", file(withDamage())});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.output,
                HasSubstr("skipped 18 bytes  at byte 10\n"
                          "  wrong data checksum of 5404 (3 words) at byte 10\n\n"
                          "8504 navigation solution  header only, marker, at byte 28\n"));
    EXPECT_THAT(ended.output, HasSubstr("       2 frames, 38 bytes\n"
                                        "       1 of 8504 navigation solution, 1 header only\n"
                                        "       1 of 9225 version identifiers, 1 header only\n"
                                        "      18 bytes skipped at 1 places, 1 resynchronisations\n"
                                        "       0 wrong header checksum\n"
                                        "       1 wrong data checksum\n"
                                        "       0 cut off\n"));
}

TEST_F(Decode, ShowsMessagesOfUnexpectedLengthAndUnknownOnes) {
    const Bytes stream = frame(5001, {0, 0, 0, 0, 7}) + frame(12345, {1});
    const std::string output = run({"decode", file(stream)}).output;
    EXPECT_THAT(output, HasSubstr("5001 mode command  to receiver, 5 words instead of 31"));
    EXPECT_THAT(output, HasSubstr("command                    7  (emergency zeroize)"));
    EXPECT_THAT(output, HasSubstr("12345 unknown message  data, 1 words"));
}

TEST_F(Decode, ShowsRawWordsAndSkippedBytesInHexadecimal) {
    const Bytes stream = Bytes{0xAB, 0xCD} + frame(8080, {1, 2, 3, 4, 0xBEEF, 6});
    const std::string output = run({"decode", "--hex", file(stream)}).output;
    EXPECT_THAT(output, HasSubstr("           0: AB CD\n"));
    EXPECT_THAT(output, HasSubstr("        0: 0001 0002 0003 0004 BEEF 0006\n"));
    EXPECT_THAT(run({"decode", file(stream)}).output, Not(HasSubstr("BEEF")));
}

TEST_F(Decode, GivesAJsonObjectALineAndTheSummaryLast) {
    const Ended ended = run({"decode", "--json", file(withDamage())});
    EXPECT_EQ(ended.status, 1);
    const auto lines = linesOf(ended.output);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], R"({"type":"frame","offset":0,"id":9225,"title":"version identifiers",)"
                        R"("flags":["marker"],"words":0})");
    EXPECT_EQ(Json::parse(lines[1])["faults"][0]["offset"], 10);
    EXPECT_EQ(Json::parse(lines[2])["offset"], 28);
    EXPECT_EQ(lines[3], R"({"type":"summary","bytes":38,"frames":2,"messages":[)"
                        R"({"id":8504,"title":"navigation solution","frames":1,"header_only":1},)"
                        R"({"id":9225,"title":"version identifiers","frames":1,"header_only":1}],)"
                        R"("skipped_bytes":18,"skipped_places":1,"resynchronisations":1,)"
                        R"("faults":{"header checksum":0,"data checksum":1,"cut off":0}})");
}

TEST_F(Decode, GivesAllWordsRawInJsonWithHex) {
    const Ended ended = run({"decode", "-j", "-x", "-q", file(frame(8080, {1, 2, 3, 4, 5, 6}))});
    EXPECT_EQ(Json::parse(ended.output)["raw"]["0"], "0001 0002 0003 0004 0005 0006");
}

TEST_F(Decode, ShowsOnlyTheMessagesAskedForAndEverySkippedByte) {
    const Bytes stream = withDamage() + header(8080, 0) + header(8504, 0);
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"decode", "--json", "-q", "--id", "8504,8080", file(stream)},
             {"decode", "--json", "-q", "-i", "8504", "-i", "8080", file(stream)}}) {
        std::vector<int> ids;
        for (const std::string& line : linesOf(run(arguments).output)) {
            ids.push_back(Json::parse(line).value("id", -1));
        }
        EXPECT_EQ(ids, (std::vector<int>{-1, 8504, 8080, 8504}));
    }
}

TEST_F(Decode, ShowsOnlyTheSummaryOrLeavesItOut) {
    const std::string path = file(withDamage());
    EXPECT_THAT(run({"decode", "--summary", path}).output, StartsWith("       2 frames"));
    EXPECT_THAT(run({"decode", "--no-summary", path}).output, Not(HasSubstr("2 frames")));
    EXPECT_EQ(linesOf(run({"decode", "-s", "-j", path}).output).size(), 1u);
    EXPECT_EQ(run({"decode", "-s", "-q", path}).status, 2);
}

TEST_F(Decode, EndsAfterSoManyFrames) {
    const std::string path = file(withDamage() + header(8504, 0) + header(8504, 0));
    const auto lines = linesOf(run({"decode", "-j", "-q", "-i", "8504", "-n", "2", path}).output);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(Json::parse(lines[2])["offset"], 38);
}

TEST_F(Decode, ReadsStandardInput) {
    const std::string path = file(Golden::kConnect8504);
    EXPECT_THAT(run({"decode"}, path).output, StartsWith("8504"));
    EXPECT_THAT(run({"decode", "-"}, path).output, StartsWith("8504"));
}

TEST_F(Decode, ReadsARecordingWithItsTimes) {
    const Bytes first = frame(8080, {1, 2, 3, 4, 5, 6});
    // The second frame comes in two parts: its time is that of its last byte.
    const Bytes recording =
        recordingOf(block(1'500'000'000, first + Bytes(first.begin(), first.begin() + 5)) +
                    block(1'600'000'000'123'456'789, Bytes(first.begin() + 5, first.end())));
    const auto lines = linesOf(run({"decode", "-j", file(recording)}).output);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(Json::parse(lines[0])["time_ns"], 1'500'000'000);
    EXPECT_EQ(Json::parse(lines[0])["offset"], 0);
    EXPECT_EQ(Json::parse(lines[1])["time_ns"], 1'600'000'000'123'456'789);
    EXPECT_EQ(Json::parse(lines[1])["offset"], 24);
    EXPECT_THAT(run({"decode", file(recording)}).output,
                HasSubstr("at byte 24  2020-09-13T12:26:40.123456Z\n"));
}

TEST_F(Decode, SaysThatARecordingIsCutOff) {
    Bytes recording = recordingOf(block(1, Golden::kConnect8504) + block(2, Golden::kConnect8504));
    recording.pop_back();
    const Ended ended = run({"decode", file(recording)});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("the recording is cut off"));
    EXPECT_THAT(ended.output, HasSubstr("1 frames, 19 bytes"));
}

TEST_F(Decode, RefusesADamagedRecordingWithThePlace) {
    Bytes recording = recordingOf(block(1, Golden::kConnect8504));
    recording[18 + 11] = 0xFF;
    const Ended ended = run({"decode", file(recording)});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("the recording is damaged before its byte 30"));
}

TEST_F(Decode, TakesAFileThatOnlyBeginsLikeARecordingForACapture) {
    EXPECT_THAT(run({"decode", m_directory.file("short", "GSSIP rec")}).output,
                HasSubstr("9 bytes skipped"));
    EXPECT_THAT(run({"decode", m_directory.file("other", "GSSIP recording 2\n....")}).output,
                HasSubstr("22 bytes skipped"));
}

TEST_F(Decode, SaysWhatItCannotRead) {
    EXPECT_EQ(run({"decode", file({})}).status, 1);
    const Ended missing = run({"decode", "/no/such/file"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.errors, "gssip: /no/such/file: No such file or directory\n");
    EXPECT_THAT(run({"decode", "/tmp"}).errors, HasSubstr("is a directory"));
    EXPECT_THAT(run({"decode", "-b", "9600", file({})}).errors, HasSubstr("no serial line"));
}

TEST_F(Decode, EndsQuietlyWhenNobodyReadsItsOutputAnyMore) {
    const std::string path = file(Streams::joined(Streams::golden()));
    Gssip program({"decode", path});
    program.closeOutput();
    EXPECT_EQ(program.wait(), 2);
    EXPECT_THAT(program.errors(), IsEmpty());
}

TEST_F(Decode, SaysThatItsOutputCannotBeWritten) {
    const std::string path = file(Golden::kConnect8504);
    const std::string errors = m_directory.path("errors");
    const std::string command =
        ROVAN_BINARY_DIR "/bin/gssip decode " + path + " > /dev/full 2> " + errors;
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 2);
    EXPECT_EQ(Runs::contentsOf(errors), "gssip: standard output: No space left on device\n");
}

TEST_F(Decode, IsInColourOnATerminalOnly) {
    Line terminal;
    Runs::OnTerminal program({"decode", file(Golden::kConnect8504)}, STDOUT_FILENO, terminal);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(Runs::textOf(terminal.near.read(20)), StartsWith("\033[1;36m8504"));
}

// --- on a live line

class DecodeLive : public ::testing::Test {
  protected:
    static Json next(Gssip& program) {
        const auto line = program.line();
        return line ? Json::parse(*line) : Json();
    }

    Line m_line;
};

TEST_F(DecodeLive, ShowsFramesAsTheyComeAndEndsOnASignal) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Gssip program({"decode", "--json", m_line.path});
        for (unsigned i = 0; i < 3; ++i) {
            m_line.near.write(Golden::kConnect8504);
            const Json frame = next(program);
            EXPECT_EQ(frame["offset"], 10 * i);
            EXPECT_GT(frame["time_ns"], 1'600'000'000'000'000'000);
        }
        program.signal(signal);
        EXPECT_EQ(program.wait(), 0) << program.errors();
        EXPECT_EQ(next(program)["frames"], 3);
    }
}

TEST_F(DecodeLive, TakesComingAndGoingWithinAFrameForNoError) {
    Gssip program({"decode", "--json", m_line.path});
    const Bytes whole = Golden::kStandbyCommand;
    m_line.near.write(Bytes(whole.begin() + 30, whole.end()) + whole +
                      Bytes(whole.begin(), whole.begin() + 20));
    EXPECT_EQ(next(program)["type"], "bytes");
    EXPECT_EQ(next(program)["type"], "frame");
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    const Json summary = next(program);
    EXPECT_EQ(summary["lead_in_bytes"], whole.size() - 30);
    EXPECT_EQ(summary["unfinished_bytes"], 20);
}

TEST_F(DecodeLive, EndsWithOneAfterDamageAndWithoutAFrame) {
    for (const Bytes& bytes :
         {Golden::kConnect8504 + Bytes{1} + Golden::kConnect8504, Bytes{1, 2}}) {
        Gssip program({"decode", "--json", m_line.path});
        m_line.near.write(bytes);
        for (Json piece = next(program); piece["type"] != "bytes"; piece = next(program)) {
            ASSERT_FALSE(piece.is_null());
        }
        program.signal(SIGINT);
        EXPECT_EQ(program.wait(), 1);
    }
}

TEST_F(DecodeLive, EndsAfterItsDurationOrCount) {
    Gssip timed({"decode", "-d", "0.3", m_line.path});
    const auto start = Runs::Clock::now();
    EXPECT_EQ(timed.wait(), 1);  // it saw nothing
    EXPECT_GE(Runs::Clock::now() - start, std::chrono::milliseconds(200));
    Gssip counted({"decode", "-n", "1", m_line.path});
    m_line.near.write(Golden::kConnect8504);
    EXPECT_EQ(counted.wait(), 0);
}

TEST_F(DecodeLive, EndsWithTwoWhenTheLineIsHungUp) {
    Gssip program({"decode", "--json", m_line.path});
    m_line.near.write(Golden::kConnect8504);
    EXPECT_EQ(next(program)["id"], 8504);
    m_line.hangUp();
    EXPECT_EQ(program.wait(), 2);
    EXPECT_THAT(program.errors(), HasSubstr("the line was hung up"));
    EXPECT_EQ(next(program)["frames"], 1);
}

TEST_F(DecodeLive, SetsTheSpeedOfTheLineOnRequestOnly) {
    termios before = m_line.near.settings();
    cfsetspeed(&before, B4800);
    tcsetattr(m_line.near.fd(), TCSANOW, &before);
    for (const auto& [arguments, speed] : std::vector<std::pair<std::vector<std::string>, speed_t>>{
             {{"decode", "-n", "1", m_line.path}, B4800},
             {{"decode", "-n", "1", "--baud", "230400", m_line.path}, B230400}}) {
        Gssip program(arguments);
        m_line.near.write(Golden::kConnect8504);
        EXPECT_EQ(program.wait(), 0);
        const termios after = m_line.near.settings();
        EXPECT_EQ(cfgetospeed(&after), speed);
        EXPECT_EQ(after.c_lflag & (ICANON | ECHO | ISIG), 0u);
    }
    EXPECT_THAT(run({"decode", "-b", "12345", m_line.path}).errors,
                HasSubstr("12345 bit/s is no speed of a serial line"));
}

TEST_F(DecodeLive, NeverTakesTheLineAsItsControllingTerminal) {
    Line output;
    Runs::OnTerminal program({"decode", "--json", m_line.path}, STDOUT_FILENO, output);
    m_line.near.write(Golden::kConnect8504);
    EXPECT_THAT(Runs::textOf(output.near.read(16)), StartsWith("{\"type\":\"frame\""));
    EXPECT_EQ(program.controllingTerminal(), 0);
    EXPECT_EQ(program.stop(SIGTERM), 0);
}

TEST_F(DecodeLive, RefusesATerminalAsStandardInput) {
    const Ended ended = run({"decode"}, m_line.path);
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("standard input is a terminal"));
}

}  // namespace
