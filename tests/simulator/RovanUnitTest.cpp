// SPDX-License-Identifier: Apache-2.0
// The program itself, started as a person starts it: outside of the unit's private /dev, which here
// is one more sandbox with a /dev of its own.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "tests/simulator/SimulatorTestSupport.h"
#include "tests/support/OwnBus.h"

namespace {

using SimulatorTest::TemporaryDirectory;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const std::string kProgram = ROVAN_BINARY_DIR "/bin/rovan-unit";
const std::string kConfig = " --config " ROVAN_SOURCE_DIR "/config/udp/rovan.xml ";

class RovanUnit : public testing::Test {
  protected:
    /// Runs a shell script and gives its exit status; its output is in m_output then.
    int run(const std::string& body) {
        const std::string script = m_directory.script("run", body).string();
        const std::string output = (m_directory.path() / "output").string();
        const int status = std::system(
            ("bwrap --bind / / --dev /dev --die-with-parent -- " + script + " >" + output + " 2>&1")
                .c_str());
        std::ifstream file(output);
        m_output.assign(std::istreambuf_iterator<char>(file), {});
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string server(const std::string& body) {
        return " --server " + m_directory.script("server", body).string() + ' ';
    }

    const TemporaryDirectory m_directory;
    std::string m_output;
};

TEST_F(RovanUnit, HelpFitsAScreen) {
    EXPECT_EQ(run(kProgram + " --help"), 0);
    std::istringstream help(m_output);
    int lines = 0;
    for (std::string line; std::getline(help, line); ++lines) {
        EXPECT_LE(line.size(), 80u) << line;
    }
    EXPECT_GT(lines, 10);
    EXPECT_LE(lines, 24);
}

TEST_F(RovanUnit, RefusesAnUnknownOption) {
    EXPECT_GT(run(kProgram + " --nonsense"), 100);
}

TEST_F(RovanUnit, RunsForItsTimeAndSumsUpWithoutColours) {
    EXPECT_EQ(run(kProgram + kConfig + "--no-server --duration 0.3"), 0);
    EXPECT_THAT(m_output, AllOf(HasSubstr("receiver on /dev/ttyS0, no server"),
                                HasSubstr("Simulated unit: 0."), HasSubstr("receiver sent"),
                                Not(HasSubstr("\033"))));
}

TEST_F(RovanUnit, PlaysScenariosAndSaysWhatTheyDid) {
    const std::string first = (m_directory.path() / "first.scenario").string();
    std::ofstream(first) << "rerad on\nat 100ms mode 4\n";
    const std::string second = (m_directory.path() / "second.scenario").string();
    std::ofstream(second) << "at 50ms silence\n";
    EXPECT_EQ(run(kProgram + kConfig + "--no-server --duration 0.5 --scenario " + first +
                  " --scenario " + second),
              0);
    EXPECT_THAT(m_output, ContainsRegex("scenario +0.0.. s  rerad on\n +scenario +0.... s  at 50ms "
                                        "silence\n +scenario +0.... s  at 100ms mode 4\n"));
    std::ofstream(second) << "\nat 5 explode\n";
    EXPECT_EQ(run(kProgram + kConfig + "--no-server --scenario " + second), 1);
    EXPECT_THAT(m_output, HasSubstr("rovan-unit: " + second + ":2: expected reject, nak"));
}

TEST_F(RovanUnit, IsGoodWhenTheServerEndsInOrder) {
    const std::string options =
        server("trap 'exit 0' TERM\necho hello\nwhile :; do sleep 0.01; done\n");
    EXPECT_EQ(run(kProgram + kConfig + options + "--duration 0.5"), 0);
    EXPECT_THAT(m_output, AllOf(HasSubstr("hello\n"), ContainsRegex("server +exit status 0")));
}

TEST_F(RovanUnit, IsQuietWhenToldSo) {
    const std::string options =
        server("trap 'exit 0' TERM\necho hello\nwhile :; do sleep 0.01; done\n");
    EXPECT_EQ(run(kProgram + kConfig + options + "--quiet --duration 0.5"), 0);
    EXPECT_THAT(m_output, Not(HasSubstr("hello")));
}

TEST_F(RovanUnit, TellsThatTheServerFailedOrEndedByItself) {
    EXPECT_EQ(run(kProgram + kConfig + server("exit 0\n")), 2);
    EXPECT_THAT(m_output, HasSubstr("the server has ended by itself"));
    EXPECT_EQ(run(kProgram + kConfig + server("kill -ABRT $$\n")), 2);
    EXPECT_THAT(m_output, HasSubstr("ended by signal 6"));
    const std::string failing =
        server("trap 'exit 7' TERM\necho up\nwhile :; do sleep 0.01; done\n");
    EXPECT_EQ(run(kProgram + kConfig + failing + "--duration 0.5"), 2);
    EXPECT_THAT(m_output, HasSubstr("exit status 7"));
}

TEST_F(RovanUnit, ListsItsFaults) {
    EXPECT_EQ(run(kProgram + " --list-faults"), 0);
    EXPECT_THAT(m_output, AllOf(HasSubstr("bit-errors RATE"), HasSubstr("drop-ack [ID [TIMES]]"),
                                HasSubstr("line unplugged|hung-up|break|stuck BYTE|plugged")));
}

TEST_F(RovanUnit, TakesFaultsAsOptions) {
    EXPECT_EQ(run(kProgram + kConfig +
                  "--no-server --duration 0.5 --fault drop-ack=5001,2 "
                  "--fault 'at 100ms silence for 100ms'"),
              0);
    EXPECT_THAT(m_output, ContainsRegex("scenario +0.0.. s  drop-ack 5001 2\n +scenario +0.1.. s  "
                                        "at 100ms silence for 100ms\n +scenario +0.... s  end of: "
                                        "at 100ms silence for 100ms\n"));
    EXPECT_EQ(run(kProgram + kConfig + "--no-server --fault explode=1"), 1);
    EXPECT_THAT(m_output, HasSubstr("rovan-unit: --fault explode=1: expected reject, nak"));
}

// Whatever comes in, a wrong line is told and changes nothing, and the next one is taken.
TEST_F(RovanUnit, TakesOrdersFromItsInputAndRefusesWrongOnes) {
    const std::string input =
        "printf 'silence\\n\\n# a comment\\nexplode\\nline stuck 256\\nhelp\\n'\n"
        "head -c 5000 /dev/zero | tr '\\0' a\n"
        "printf '\\nspeak\\033[2J\\n\\0\\377\\nat 1000000000000 speak\\n'\n"
        "printf 'garbage 10 \\\"\\nrerad on'\n";
    EXPECT_EQ(
        run("{\n" + input + "} | " + kProgram + kConfig + "--no-server --duration 1 --control -"),
        0);
    EXPECT_THAT(
        m_output,
        AllOf(HasSubstr("control: taken: silence\n"), HasSubstr("control: expected reject, nak"),
              HasSubstr("found \"explode\"\n"),
              HasSubstr("control: expected a byte from 0 to 255, found \"256\"\n"),
              HasSubstr("bit-errors RATE"),
              HasSubstr("expected a line of at most 1000 characters\n"),
              HasSubstr("control: expected plain text\n"),
              HasSubstr("expected a time as 2.5 (seconds) or 300ms"),
              HasSubstr("expected a \" at the end of"), HasSubstr("control: taken: rerad on\n")));
    EXPECT_THAT(m_output, ContainsRegex("scenario +[01].... s  silence\n +scenario +[01].... s  "
                                        "rerad on\n"));
    EXPECT_THAT(m_output, AllOf(Not(HasSubstr("\033")), Not(HasSubstr("taken: garbage"))));
}

// The unit on a terminal of its own, and somebody who types. A shell in between would take Ctrl-C
// for itself.
TEST_F(RovanUnit, TakesOrdersFromATerminalAndShowsHowFarItIs) {
    const std::string log = (m_directory.path() / "log").string();
    const auto seen = [&](const std::string& text) {
        return "until grep -q '" + text + "' " + log + "; do sleep 0.02; done\n";
    };
    EXPECT_EQ(run("touch " + log + "\n{\n" + seen("no server") + "echo 'rerad on'\n" +
                  seen("taken: rerad on") + "printf '\\003'\n" + seen("receiver sent") +
                  "} | script -qec 'exec " + kProgram + kConfig + "--no-server' /dev/null >" + log +
                  "\nstatus=$?\ncat " + log + "\nexit $status\n"),
              0);
    EXPECT_THAT(m_output, ContainsRegex("scenario +[0-9.]+ s  rerad on"));
    EXPECT_THAT(m_output, Not(HasSubstr("frames sent")));
    EXPECT_EQ(
        run("script -qec 'exec " + kProgram + kConfig + "--no-server -d 3' /dev/null </dev/null"),
        0);
    EXPECT_THAT(m_output, HasSubstr("1 of 3 s, 0 frames sent\033[K\r"));
    EXPECT_EQ(run(kProgram + kConfig + "--no-server -d 3 </dev/null"), 0);
    EXPECT_THAT(m_output, Not(HasSubstr("of 3 s")));
}

TEST_F(RovanUnit, TakesOrdersFromAFifoThatItMakes) {
    const std::string fifo = (m_directory.path() / "orders").string();
    EXPECT_EQ(run(kProgram + kConfig + "--no-server --duration 3 --control " + fifo +
                  " &\nuntil test -p " + fifo + "; do sleep 0.02; done\necho 'mode 4' >" + fifo +
                  "\necho 'mode 17' >" + fifo + "\nwait $!\n"),
              0);
    EXPECT_THAT(m_output, AllOf(ContainsRegex("scenario +[0-3].... s  mode 4\n"),
                                HasSubstr("control: expected an operating mode from 0 to 15")));
    EXPECT_FALSE(std::filesystem::exists(fifo));
    const std::string file = (m_directory.path() / "file").string();
    std::ofstream(file) << "mode 4\n";
    EXPECT_EQ(run(kProgram + kConfig + "--no-server --duration 1 --control " + file), 1);
    EXPECT_THAT(m_output, HasSubstr("rovan-unit: " + file + " is not a FIFO"));
}

// A server that never joins the bus: nothing that it was told has come out.
TEST_F(RovanUnit, ALedgerWithoutAServerOnTheBusDoesNotBalance) {
    // A domain that nobody else is on.
    const std::string copy = (m_directory.path() / "config").string();
    ASSERT_EQ(
        run("cp -r " ROVAN_SOURCE_DIR "/config " + copy + " && sed -i 's,<DomainId>0<,<DomainId>" +
            std::to_string(test_support::ownBus()) + "<,' " + copy + "/udp/connections.xml\n"),
        0);
    const std::string options =
        server("trap 'exit 0' TERM\nwhile :; do sleep 0.01; done\n") + "--duration 0.3 -q --json";
    EXPECT_EQ(run(kProgram + " --config " + copy + "/udp/rovan.xml" + options), 1);
    EXPECT_THAT(m_output, testing::StartsWith("{\"balances\":false,\"started\":null,"));
}

TEST_F(RovanUnit, SpeedsTheReceiverUp) {
    EXPECT_GT(run(kProgram + kConfig + "--no-server --speed 0"), 100);
    EXPECT_GT(run(kProgram + kConfig + "--no-server --speed 51"), 100);
    // A server that connects 8080 and no more: once a second comes down to once in 20 ms.
    const std::string options = server(
        "trap 'exit 0' TERM\nstty -F /dev/ttyS0 raw 115200\n"
        "printf '\\377\\201\\220\\037\\000\\000\\100\\200\\061\\336' >/dev/ttyS0\nwhile :; do "
        "sleep 0.01; done\n");
    EXPECT_EQ(run(kProgram + kConfig + options + "--speed 50 --duration 2"), 0);
    EXPECT_THAT(m_output, ContainsRegex("receiver sent +8080 x[0-9][0-9]"));
}

TEST_F(RovanUnit, SaysWhyTheUnitCannotBeMade) {
    EXPECT_EQ(run(kProgram + " --no-server --config /nowhere/rovan.xml"), 1);
    EXPECT_THAT(m_output, HasSubstr("rovan-unit: /nowhere/rovan.xml"));
    EXPECT_EQ(run(kProgram + kConfig + "--server /nowhere/server"), 1);
    EXPECT_THAT(m_output, HasSubstr("/nowhere/server"));
}

// Each signal goes to the process that the person started; what runs in the sandbox must end in
// order.
TEST_F(RovanUnit, EndsInOrderByASignal) {
    for (const std::string signal : {"TERM", "INT", "HUP"}) {
        const std::string options = server(
            "trap 'echo stopped in order; exit 0' TERM\necho server up\n"
            "while :; do sleep 0.01; done\n");
        const std::string log = (m_directory.path() / ("log." + signal)).string();
        // A shell starts background programs with SIGINT ignored.
        const int status =
            run("env --default-signal=INT " + kProgram + kConfig + options + ">" + log +
                " 2>&1 &\npid=$!\n"
                "until grep -q 'server up' " +
                log + "; do sleep 0.02; done\nkill -" + signal +
                " $pid\nwait $pid\nstatus=$?\ncat " + log + "\nexit $status\n");
        EXPECT_EQ(status, 0) << signal;
        EXPECT_THAT(m_output,
                    AllOf(HasSubstr("stopped in order"), ContainsRegex("server +exit status 0")))
            << signal;
    }
}

}  // namespace
