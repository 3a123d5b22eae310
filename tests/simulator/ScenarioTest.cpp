// SPDX-License-Identifier: Apache-2.0
#include "simulator/Scenario.h"

#include <gmock/gmock.h>

#include <fstream>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using namespace Simulator;
using namespace std::chrono_literals;
using Kind = ScenarioTrigger::Kind;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

ScenarioStatement only(const std::string& text) {
    const Scenario scenario = Scenario::parse(text);
    EXPECT_THAT(scenario.statements(), SizeIs(1));
    return scenario.statements().at(0);
}

std::string errorOf(const std::string& text) {
    try {
        Scenario::parse(text, "file");
    } catch (const ScenarioError& error) {
        return error.what();
    }
    return "no error";
}

TEST(Scenario, IsEmptyWithoutStatements) {
    EXPECT_THAT(Scenario::parse("").statements(), IsEmpty());
    EXPECT_THAT(Scenario::parse("\n  \t\r\n# only words, at 5\n   # rerad on").statements(),
                IsEmpty());
}

TEST(Scenario, KnowsWhereEachStatementStands) {
    const Scenario scenario =
        Scenario::parse("# first\n\n  at 5\tmode 4   # comment\r\nevent 3 \"a # b\"", "x.scenario");
    ASSERT_THAT(scenario.statements(), SizeIs(2));
    EXPECT_EQ(scenario.statements()[0].where, "x.scenario:3");
    EXPECT_EQ(scenario.statements()[0].text, "at 5 mode 4");
    EXPECT_EQ(scenario.statements()[1].where, "x.scenario:4");
    EXPECT_EQ(scenario.statements()[1].text, "event 3 \"a # b\"");
}

TEST(Scenario, ReadsTimes) {
    EXPECT_EQ(only("silence").trigger.at, 0ns);
    EXPECT_EQ(only("at 0 silence").trigger.at, 0ns);
    EXPECT_EQ(only("at 2 silence").trigger.at, 2s);
    EXPECT_EQ(only("at 2.5 silence").trigger.at, 2500ms);
    EXPECT_EQ(only("at 2.5s silence").trigger.at, 2500ms);
    EXPECT_EQ(only("at 300ms silence").trigger.at, 300ms);
    EXPECT_EQ(only("at 0.5ms silence").trigger.at, 500us);
    EXPECT_EQ(only("at 1000000 silence").trigger.at, 1'000'000s);
    EXPECT_EQ(only("at 2 silence").trigger.kind, Kind::Time);
}

TEST(Scenario, ReadsEvents) {
    const ScenarioTrigger heard = only("on 5402 reject").trigger;
    EXPECT_EQ(heard.kind, Kind::Heard);
    EXPECT_EQ(heard.msgId, 5402);
    EXPECT_EQ(heard.mode, std::nullopt);
    EXPECT_EQ(heard.times, std::nullopt);
    const ScenarioTrigger mode = only("on 5001:7 reject").trigger;
    EXPECT_EQ(mode.msgId, 5001);
    EXPECT_EQ(mode.mode, 7);
    EXPECT_EQ(only("on power-off speak").trigger.kind, Kind::PowerOff);
    EXPECT_EQ(only("on power-on speak").trigger.kind, Kind::PowerOn);
    EXPECT_EQ(only("on boot-done speak").trigger.kind, Kind::BootDone);
}

TEST(Scenario, ReadsHowOftenAndHowMuchLater) {
    const ScenarioStatement once = only("on 5001:7 once event 17 \"DONE\" after 300ms");
    EXPECT_EQ(once.trigger.times, 1u);
    EXPECT_EQ(once.after, 300ms);
    EXPECT_EQ(only("on 5402 3 times reject").trigger.times, 3u);
    EXPECT_EQ(only("on power-on reset after 2").after, 2s);
    EXPECT_EQ(only("on power-on reject 5001 after 1").after, 1s);
}

TEST(Scenario, KnowsWhatStrikesBeforeTheAnswer) {
    for (const char* text : {"reject", "nak 5001", "drop-ack 5001 2", "drop-reply any",
                             "delay-ack 50ms", "corrupt-byte 12", "silence", "speak"}) {
        EXPECT_TRUE(only(text).action.strikesFirst) << text;
    }
    for (const char* text : {"event 17", "report 8", "reset", "mode 4", "rerad on"}) {
        EXPECT_FALSE(only(text).action.strikesFirst) << text;
    }
}

TEST(Scenario, ReadsEveryActionOfTheManual) {
    const Scenario scenario = Scenario::parse(
        "reject\nreject 5001\nreject any 3\nnak 5001 2\ndrop-ack\ndrop-reply 5402\n"
        "delay-ack 1.5 5001 2\ncorrupt-byte 12 8504 2\ngarbage 300\nsilence\nspeak\nreset\n"
        "event 17\nevent 34 \"12345678901234567890123456789012\"\nevent 35 \"\"\nreport 8\n"
        "report 30409\nrerad on\nbci-cable off\nserial-cable on\nfault fpga-power on\n"
        "fault bci-power on\nfault fpga-signal on\nfault bci-clock off\nfault receiver on\n"
        "solution off\nmode 15\ntransfer on\nboot-flag abnormal\nboot-flag normal\n"
        "zeroize-status 3\nzeroize cv succeeds\nzeroize emergency fails\nzeroize ip silent\n");
    EXPECT_THAT(scenario.statements(), SizeIs(34));
}

TEST(Scenario, SaysWhereWhatWasExpectedAndWhatStandsThere) {
    EXPECT_EQ(errorOf("\n\nat two mode 4"),
              "file:3: expected a time as 2.5 (seconds) or 300ms, found \"two\"");
    EXPECT_EQ(errorOf("mode"),
              "file:1: expected an operating mode from 0 to 15, found the end of the line");
    EXPECT_EQ(errorOf("rerad yes"), "file:1: expected on or off, found \"yes\"");
    EXPECT_EQ(errorOf("rerad on off"), "file:1: expected the end of the line, found \"off\"");
    EXPECT_EQ(errorOf("zeroize ip explodes"),
              "file:1: expected succeeds, fails or silent, found \"explodes\"");
    EXPECT_EQ(errorOf("event 17 \"open"), "file:1: expected a \" at the end of \"open");
    EXPECT_EQ(errorOf("on 5402 reject after 1"),
              "file:1: expected a message id or the end of the line, since it is too late for this "
              "message then, found \"after\"");
    EXPECT_THAT(errorOf("explode"), HasSubstr("file:1: expected reject, nak, drop-ack,"));
    EXPECT_THAT(errorOf("explode"), HasSubstr("or boot-flag, found \"explode\""));
}

TEST(Scenario, RefusesEveryWrongLine) {
    for (const char* text : {"at",
                             "at 5",
                             "at -1 speak",
                             "at 5min speak",
                             "at 5 s speak",
                             "at 1e3 speak",
                             "at 1000001 speak",
                             "at inf speak",
                             "at 5 speak after 1",
                             "at 5 once speak",
                             "on",
                             "on speak",
                             "on 0 speak",
                             "on 65536 speak",
                             "on 5001: speak",
                             "on :7 speak",
                             "on 5001:x speak",
                             "on 5001:7:7 speak",
                             "on 5001:65536 speak",
                             "on 5001x speak",
                             "on 5001 0 times speak",
                             "on 5001 2 speak",
                             "on 5001 speak once",
                             "on 5001 speak after",
                             "on 5001 speak after 1 2",
                             "on power speak",
                             "reject x",
                             "reject 5001 0",
                             "reject 65536",
                             "reject 5001 2 3",
                             "delay-ack any",
                             "delay-ack",
                             "corrupt-byte",
                             "garbage",
                             "garbage 0",
                             "event",
                             "event \"text\"",
                             "event 65536",
                             "event 17 text",
                             "event 17 \"123456789012345678901234567890123\"",
                             "report",
                             "report 5001",
                             "report 0",
                             "fault on",
                             "fault wheel on",
                             "fault fpga-power",
                             "mode 16",
                             "mode -1",
                             "zeroize",
                             "zeroize all fails",
                             "zeroize-status 4",
                             "boot-flag on",
                             "\"speak\"",
                             "speak \"loud\""}) {
        EXPECT_NE(errorOf(text), "no error") << text;
    }
}

TEST(Scenario, NamesAFileThatCannotBeRead) {
    for (const char* file : {"/no/such.scenario", "/tmp"}) {
        try {
            Scenario::read(file);
            ADD_FAILURE() << file;
        } catch (const ScenarioError& error) {
            EXPECT_EQ(error.what(),
                      std::string(file) + ": expected a scenario file, cannot read it");
        }
    }
}

TEST(Scenario, ReadsAFileAndNamesItInErrors) {
    const SimulatorTest::TemporaryDirectory directory;
    const auto file = directory.path() / "a.scenario";
    std::ofstream(file) << "rerad on\nat 5 rerad\n";
    try {
        Scenario::read(file);
        FAIL();
    } catch (const ScenarioError& error) {
        EXPECT_THAT(error.what(), HasSubstr(file.string() + ":2: expected on or off"));
    }
    std::ofstream(file) << "";
    EXPECT_THAT(Scenario::read(file).statements(), IsEmpty());
}

TEST(Scenario, TakesTheStatementsOfAnother) {
    Scenario scenario = Scenario::parse("speak");
    scenario.append(Scenario::parse("silence\nreset"));
    ASSERT_THAT(scenario.statements(), SizeIs(3));
    EXPECT_EQ(scenario.statements()[2].text, "reset");
}

TEST(Scenario, TheShippedOnesAreInOrder) {
    std::size_t files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(ROVAN_SOURCE_DIR "/config/scenarios")) {
        EXPECT_EQ(entry.path().extension(), ".scenario");
        EXPECT_THAT(Scenario::read(entry.path()).statements(), testing::Not(IsEmpty()));
        ++files;
    }
    EXPECT_EQ(files, 6u);
}

}  // namespace
