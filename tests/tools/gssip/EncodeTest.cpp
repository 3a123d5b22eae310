// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/tools/gssip/Runs.h"

namespace {

using Frames::Bytes;
using Frames::operator+;
using Runs::Ended;
using Runs::Line;
using Runs::run;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Encode : public ::testing::Test {
  protected:
    std::string file(const std::string& text) const { return m_directory.file("lines", text); }
    std::string binary(const Bytes& bytes) const {
        return m_directory.file("capture", Runs::textOf(bytes));
    }

    tools_test::TemporaryDirectory m_directory;
};

TEST_F(Encode, TurnsWhatDecodeGaveIntoTheSameBytes) {
    const Bytes golden = Streams::joined(Streams::golden());
    const Bytes kStreams[] = {golden, Streams::damaged(golden, 1, 30), Streams::noise(2, 20000),
                              Bytes(golden.begin(), golden.begin() + 3000), Bytes()};
    for (const Bytes& stream : kStreams) {
        for (const char* option : {"--no-summary", "--hex"}) {
            const Ended decoded = run({"decode", "--json", option, binary(stream)});
            const Ended encoded = run({"encode", file(decoded.output)});
            EXPECT_EQ(encoded.status, 0) << encoded.errors;
            EXPECT_TRUE(encoded.output == Runs::textOf(stream));
        }
    }
}

TEST_F(Encode, ReadsStandardInputAndLinesOfAnyEnd) {
    const std::string lines = file("\n  \t\r\n{\"bytes\":\"01\"}\r\n\n{\"bytes\":\"02\"}");
    EXPECT_EQ(run({"encode"}, lines).output, "\x01\x02");
    EXPECT_EQ(run({"encode", "-"}, lines).output, "\x01\x02");
    EXPECT_EQ(run({"encode", file("")}).status, 0);
}

TEST_F(Encode, GivesARecordingTheTimesBack) {
    const std::string recording = file(
        "{\"time_ns\":1500000000,\"bytes\":\"ff81\"}\n"
        "{\"bytes\":\"00\"}\n"
        "{\"time_ns\":1600000000123456789,\"id\":8504}\n");
    const Ended encoded = run({"encode", "--recording", recording});
    EXPECT_EQ(encoded.status, 0) << encoded.errors;
    const std::string path = m_directory.file("again", encoded.output);
    const Ended decoded = run({"decode", "--json", "-q", path});
    EXPECT_EQ(decoded.output,
              "{\"type\":\"bytes\",\"offset\":0,\"time_ns\":1500000000,\"count\":3,\"faults\":[{"
              "\"fault\":\"header checksum\",\"offset\":0,\"id\":65280,\"words\":14465}],"
              "\"bytes\":\"ff8100\"}\n"
              "{\"type\":\"frame\",\"offset\":3,\"time_ns\":1600000000123456789,\"id\":8504,"
              "\"title\":\"navigation solution\",\"flags\":[\"marker\",\"ack-request\"],"
              "\"words\":0}\n");
    EXPECT_EQ(run({"encode", "-r", file(decoded.output)}).output.size(),
              encoded.output.size() - 12);
}

TEST_F(Encode, NamesTheLineAndWhatIsWrongThere) {
    const std::pair<std::string, const char*> kWrong[] = {
        {"{", "parse error at line 1, column 2"},
        {"{\"id\":1}}", "parse error"},
        {"{\"id\":1} {\"id\":2}", "parse error"},
        {"nonsense", "parse error"},
        {std::string("{\"id\":1\0}", 9), "parse error"},
        {"{\"id\":\"\xFF\"}", "ill-formed UTF-8"},
        {"{\"id\":1e999}", "number overflow"},
        {"{\"id\":1,\"id\":2}", "\"id\" stands twice in an object"},
        {"{\"id\":8040,\"fields\":{\"keys\":[{\"status\":true,\"status\":true}]}}",
         "\"status\" stands twice"},
        {std::string(200000, '['), "is nested too deeply"},
        {"{\"a\":" + std::string(30, '[') + std::string(30, ']') + "}", "is nested too deeply"},
        {"{\"id\":70000}", "id is out of range: 0 to 65535"},
        {"{\"bytes\":\"" + std::string(17 << 20, '0') + "\"}", "is longer than 16 MiB"},
        {"[1]", "wants an object"},
    };
    for (const auto& [line, why] : kWrong) {
        const std::string path = file("{\"bytes\":\"41\"}\n\n" + line + "\n{\"bytes\":\"42\"}\n");
        const Ended ended = run({"encode", path});
        EXPECT_EQ(ended.status, 1) << line.substr(0, 50);
        EXPECT_THAT(ended.errors, HasSubstr("gssip: " + path + " line 3: "));
        EXPECT_THAT(ended.errors, HasSubstr(why));
        EXPECT_EQ(ended.output, "A");
    }
}

TEST_F(Encode, RefusesAWrongTime) {
    for (const char* time : {"-1", "1.5", "\"now\"", "null"}) {
        const std::string path = file(std::string("{\"id\":1,\"time_ns\":") + time + "}\n");
        EXPECT_THAT(run({"encode", "-r", path}).errors, HasSubstr("time_ns wants a whole number"));
        EXPECT_EQ(run({"encode", path}).status, 0);  // nobody asks for it
    }
}

TEST_F(Encode, SaysWhatItCannotRead) {
    const Ended missing = run({"encode", "/no/such/file"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.errors, "gssip: /no/such/file: No such file or directory\n");
    const Ended directory = run({"encode", "/tmp"});
    EXPECT_EQ(directory.status, 2);
    EXPECT_THAT(directory.errors, HasSubstr("/tmp: cannot be read"));
}

TEST_F(Encode, GivesTheBytesOfALineAtOnceAndEndsOnASignal) {
    const std::string pipe = m_directory.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const int signal : {SIGINT, SIGTERM}) {
        Runs::Gssip program({"encode"}, pipe);
        const Runs::End writer(open(pipe.c_str(), O_WRONLY | O_CLOEXEC));
        const std::string line = "{\"bytes\":\"410a\"}\n";
        writer.write(Bytes(line.begin(), line.end()));
        EXPECT_EQ(program.line(), "A");
        program.signal(signal);
        EXPECT_EQ(program.wait(), 128 + signal);
    }
}

TEST_F(Encode, WritesNoBytesOnATerminal) {
    Line terminal;
    Runs::OnTerminal program({"encode", file("{\"id\":1}")}, STDOUT_FILENO, terminal);
    EXPECT_EQ(program.wait(), 2);
}

}  // namespace
