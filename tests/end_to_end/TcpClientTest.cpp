// SPDX-License-Identifier: Apache-2.0
// The server as the TCP client of a bus whose other end comes late, goes and comes again.
#include <chrono>
#include <fstream>
#include <memory>

#include "tests/end_to_end/EndToEnd.h"

using namespace Simulator;
using std::chrono::seconds;
using std::chrono::steady_clock;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class TcpClient : public EndToEnd {
  protected:
    TcpClient() : EndToEnd("tcp-client") {}

    /// The unit with the server, and no other end on the bus.
    void startAlone(const std::filesystem::path& server = serverProgram()) {
        m_unitOptions.configFile = m_deployment.topLevelFile();
        m_unitOptions.server = server;
        m_unit = std::make_unique<SimulatedUnit>(m_unitOptions);
        m_unit->start();
        ASSERT_TRUE(waitUntilSetUp());
    }
    void otherEndComes() {
        m_bus = std::make_unique<BusListener>(m_deployment.connectionsFileOf("tcp-server"));
    }
    void otherEndGoes() { m_bus.reset(); }

    /// Whether frames of the receiver's come out on the bus.
    bool framesFlow() {
        const auto before = bus().position.count();
        return waitFor([&] {
            receiver().send(frame8504(m_number++));
            return bus().position.count() > before;
        });
    }

    /// What the server itself said of its connection.
    std::vector<std::string> told() {
        std::vector<std::string> lines;
        for (const std::string& line : errors()) {
            const auto end = line.find("TCP connection to ");
            if (end != std::string::npos) {
                lines.push_back(line.substr(line.rfind(": ") + 2));
            }
        }
        return lines;
    }

  private:
    unsigned m_number = 0;
};

constexpr const char* kHeard = "another participant is heard";

}  // namespace

TEST_F(TcpClient, StartsWithoutTheOtherEndAndTellsWhenItIsHeard) {
    startAlone();
    EXPECT_THAT(told(), IsEmpty());
    otherEndComes();
    ASSERT_TRUE(framesFlow());
    EXPECT_TRUE(waitFor([&] { return !told().empty(); }));
    EXPECT_THAT(told(), ElementsAre(kHeard));
    EXPECT_TRUE(terminate().good());
    EXPECT_THAT(told(), ElementsAre(kHeard));
}

TEST_F(TcpClient, GoesOnWhenTheOtherEndIsMadeAnew) {
    startAlone();
    for (int round = 0; round < 2; ++round) {
        otherEndComes();
        EXPECT_TRUE(framesFlow()) << round;
        otherEndGoes();
        // Nothing is kept up by an end that is not there.
        for (unsigned number = 0; number < 20; ++number) {
            receiver().send(frame8504(number));
        }
    }
    EXPECT_TRUE(terminate().good());
}

TEST_F(TcpClient, EndsInOrderWhileTheOtherEndGoes) {
    startAlone();
    otherEndComes();
    ASSERT_TRUE(framesFlow());
    server().signal(SIGTERM);
    otherEndGoes();
    const ProcessEnd end = waitForEnd();
    EXPECT_TRUE(end.good()) << end.text();
    EXPECT_THAT(output().back(), HasSubstr(" has exited. Signal: 15"));
}

// The bus library hangs in the one or the other step of its end, as if for ever.
class HangingTransport : public TcpClient, public testing::WithParamInterface<const char*> {};

TEST_P(HangingTransport, IsLeftAloneAfterTenSeconds) {
    // The server by another name, with the step replaced.
    const std::filesystem::path program = m_deployment.directory() / "server";
    std::ofstream(program) << "#!/bin/sh\nLD_PRELOAD='" << ROVAN_BINARY_DIR
                           << "/lib/libhanging_transport.so' ROVAN_TEST_HANGS_IN=" << GetParam()
                           << " exec '" << serverProgram().string() << "' \"$@\"\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    startAlone(program);
    const auto asked = steady_clock::now();
    const ProcessEnd end = terminate();
    EXPECT_GE(steady_clock::now() - asked, seconds(10));
    EXPECT_TRUE(end.good()) << end.text();
    EXPECT_THAT(errors(),
                ElementsAre("The transport has not closed after 10 s, leaving without it"));
    const auto lines = output();
    EXPECT_THAT(lines.back(), HasSubstr(" has exited. Signal: 15"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), lines.back()), 1);
}

INSTANTIATE_TEST_SUITE_P(TcpClient, HangingTransport,
                         testing::Values("removeSubscriber", "removeParticipant"),
                         [](const auto& test) { return std::string(test.param); });
