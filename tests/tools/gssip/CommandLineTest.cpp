// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/tools/gssip/Runs.h"
#include "tools/gssip/Catalogue.h"

namespace {

using Runs::Ended;
using Runs::run;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char* kCommands[] = {"decode", "encode", "record", "play", "messages"};

TEST(GssipCommandLine, HelpFitsAScreenAndTellsTheExitStatus) {
    std::vector<std::vector<std::string>> helps{{"--help"}};
    for (const char* command : kCommands) {
        helps.push_back({command, "--help"});
    }
    for (const auto& arguments : helps) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.errors, IsEmpty());
        EXPECT_THAT(ended.output, HasSubstr("Exit status: 0 good; 1 "));
        std::istringstream lines(ended.output);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_LE(line.size(), 90u) << line;
        }
        EXPECT_GT(count, 8);
        EXPECT_LE(count, 28) << ended.output;
    }
}

TEST(GssipCommandLine, RefusesWrongArguments) {
    const std::vector<std::vector<std::string>> kWrong = {{},
                                                          {"unheard"},
                                                          {"decode", "--unheard"},
                                                          {"decode", "a", "b"},
                                                          {"decode", "--id", "65536"},
                                                          {"decode", "--id", "x"},
                                                          {"decode", "--count", "0"},
                                                          {"decode", "--duration", "-1"},
                                                          {"decode", "--baud", "0"},
                                                          {"encode", "a", "b"},
                                                          {"encode", "--json"},
                                                          {"record"},
                                                          {"record", "a"},
                                                          {"record", "a", "b", "c"},
                                                          {"play"},
                                                          {"play", "a", "b", "c"},
                                                          {"messages", "x"}};
    for (const auto& arguments : kWrong) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 2) << ::testing::PrintToString(arguments);
        EXPECT_FALSE(ended.errors.empty());
    }
}

TEST(GssipCommandLine, ListsTheMessages) {
    const Ended ended = run({"messages"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output,
                StartsWith("    8  receiver restarted           any words from receiver\n"));
    EXPECT_THAT(ended.output,
                HasSubstr("\n 8504  navigation solution          200 words from receiver\n"));
}

TEST(GssipCommandLine, ListsTheFieldsOfAnyMessage) {
    for (const GssipTool::Message& message : GssipTool::catalogue()) {
        const Ended ended = run({"messages", std::to_string(message.msgId)});
        EXPECT_EQ(ended.status, 0);
        for (const GssipTool::Field& field : message.fields) {
            EXPECT_THAT(ended.output, HasSubstr("  " + field.name + " "));
        }
    }
    const std::string two = run({"messages", "7270", "8504"}).output;
    EXPECT_THAT(two,
                HasSubstr("  prn                              6, bits 15 to 10     unsigned\n"));
    EXPECT_THAT(two, HasSubstr("  secondRateCorrection             42, bits 15 to 1     signed, in "
                               "steps of 0.0009765625, m/s\n"));
    EXPECT_THAT(two, HasSubstr("  channels[0].usedInSolution       72, bit 15"));
    EXPECT_THAT(two, HasSubstr("  32 records, 4 words each\n"));
    EXPECT_THAT(run({"messages", "1"}).errors, HasSubstr("the message 1 is not known"));
}

}  // namespace
