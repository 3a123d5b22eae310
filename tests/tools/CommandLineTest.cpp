// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/TestPublisher.h"

namespace {

using test_support::ownBus;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using tools_test::connectionsXml;
using tools_test::Program;

struct Ended {
    int status;
    std::string output;
    std::string errors;
};

Ended run(const std::vector<std::string>& arguments) {
    Program program(arguments);
    const int status = program.wait();
    return {status, program.output(), program.errors()};
}

class CommandLine : public ::testing::Test {
  protected:
    const std::string& file() const { return m_file; }

    tools_test::TemporaryDirectory m_directory;

  private:
    const std::string m_file = m_directory.file("connections.xml", connectionsXml(ownBus(), "UDP"));
};

TEST_F(CommandLine, HelpFitsAScreen) {
    const std::vector<std::vector<std::string>> kHelps = {
        {"--help"}, {"echo", "--help"}, {"hz", "--help"}, {"list", "--help"}, {"send", "--help"}};
    for (const auto& arguments : kHelps) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.errors, IsEmpty());
        std::istringstream lines(ended.output);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_LE(line.size(), 100u) << line;
        }
        EXPECT_GT(count, 5);
        EXPECT_LE(count, 30) << ended.output;
    }
}

TEST_F(CommandLine, HelpTellsHowWhatIsNoNumberIsWritten) {
    const std::string help = run({"echo", "--help"}).output;
    for (const char* word : {"\"Infinity\"", "\"-Infinity\"", "\"NaN\"", "Exit status"}) {
        EXPECT_THAT(help, HasSubstr(word));
    }
}

TEST_F(CommandLine, RefusesWrongArguments) {
    const std::vector<std::vector<std::string>> kWrong = {{},
                                                          {"unheard"},
                                                          {"echo", "--unheard"},
                                                          {"echo", "--count", "0"},
                                                          {"echo", "--count", "many"},
                                                          {"echo", "--duration", "-1"},
                                                          {"hz", "--every", "0"},
                                                          {"list", "TOPIC"},
                                                          {"send"},
                                                          {"send", "A", "B"},
                                                          {"send", "A", "--server", "256"},
                                                          {"send", "A", "--to", "0x100000000"},
                                                          {"send", "A", "--wait", "soon"},
                                                          {"send", "A", "--until", "_PASS"},
                                                          {"send", "A", "--count", "1"},
                                                          {"send", "A", "-r", "--wait"}};
    for (const auto& arguments : kWrong) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 2) << ::testing::PrintToString(arguments);
        EXPECT_FALSE(ended.errors.empty());
    }
}

TEST_F(CommandLine, NamesTheFileThatIsNotThere) {
    const std::vector<std::vector<std::string>> kCommands = {
        {"echo"}, {"hz"}, {"list"}, {"send", "TEXT"}};
    for (std::vector<std::string> arguments : kCommands) {
        arguments.insert(arguments.end(), {"-c", "/no/such/file.xml"});
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.errors, "rovan-bus: /no/such/file.xml: no such file\n");
        EXPECT_THAT(ended.output, IsEmpty());
    }
}

TEST_F(CommandLine, NamesTheUnknownTopicAndTheKnownOnes) {
    for (const char* command : {"echo", "hz"}) {
        const Ended ended = run({command, "-c", file(), "Comand"});
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.errors, HasSubstr("unknown topic Comand"));
        EXPECT_THAT(ended.errors, HasSubstr("Command, Response, EventLog"));
    }
}

TEST_F(CommandLine, RefusesATopicWhoseTypeNobodyKnows) {
    std::string text = connectionsXml(ownBus(), "UDP");
    const std::string end = "</KD_Configurations>";
    text.insert(text.find(end), tools_test::connection("Odd", "Unheard"));

    const Ended ended = run({"echo", "-c", m_directory.file("odd.xml", text), "Odd"});

    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("the topic Odd has the unknown type"));
}

TEST_F(CommandLine, RefusesATransportThatIsNone) {
    const Ended ended =
        run({"list", "-c", m_directory.file("none.xml", connectionsXml(ownBus(), "udp"))});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("unknown transport \"udp\""));
}

TEST_F(CommandLine, RefusesADomainBeyondThePorts) {
    const Ended ended =
        run({"list", "-c", m_directory.file("far.xml", connectionsXml(233, "UDP"))});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("no such domain: 233"));
}

TEST_F(CommandLine, TakesTheFileFromTheEnvironment) {
    setenv("ROVAN_CONNECTIONS", "/named/by/environment.xml", 1);
    const Ended ended = run({"list"});
    unsetenv("ROVAN_CONNECTIONS");

    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("/named/by/environment.xml: no such file"));
}

TEST_F(CommandLine, EndsWithOneWhenNothingIsSeenInTime) {
    for (const char* command : {"echo", "hz", "list"}) {
        const Ended ended = run({command, "-c", file(), "--duration", "0.2"});
        EXPECT_EQ(ended.status, 1) << command << ended.errors;
    }
}

}  // namespace
