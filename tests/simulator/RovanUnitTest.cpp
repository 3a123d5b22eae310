// SPDX-License-Identifier: Apache-2.0
// The program itself, started as a person starts it: outside of the unit's private /dev, which here
// is one more sandbox with a /dev of its own.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "tests/simulator/SimulatorTestSupport.h"

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

TEST_F(RovanUnit, ScalesThePeriodsOfTheReceiver) {
    EXPECT_GT(run(kProgram + kConfig + "--no-server --period-scale 0"), 100);
    // A server that connects 8080 and no more: once a second comes down to once in 20 ms.
    const std::string options = server(
        "trap 'exit 0' TERM\nstty -F /dev/ttyS0 raw 115200\n"
        "printf '\\377\\201\\220\\037\\000\\000\\100\\200\\061\\336' >/dev/ttyS0\nwhile :; do "
        "sleep 0.01; done\n");
    EXPECT_EQ(run(kProgram + kConfig + options + "--period-scale 0.02 --duration 2"), 0);
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
