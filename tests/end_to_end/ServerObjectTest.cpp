// SPDX-License-Identifier: Apache-2.0
// The server as an object in the test's own process, on the unit's devices and on a real bus: what
// the program as a whole never does, like starting twice.
#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>

#include "tests/RovanServer/OpenServer.h"
#include "tests/end_to_end/EndToEnd.h"

using namespace Simulator;
using FACE::RETURN_CODE_TYPE;
using FACE::LCM::Keldra::RequestedState;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ServerObject : public EndToEnd {
  protected:
    /// The unit without a server process, and a server that has read its files.
    void configure() {
        UnitOptions options;
        options.configFile = m_deployment.topLevelFile();
        m_unit = std::make_unique<SimulatedUnit>(options);
        m_unit->start();
        // The files name each other relative to the directory that the server runs in.
        std::filesystem::current_path(m_deployment.topLevelFile().parent_path());
        auto rc = RETURN_CODE_TYPE::NO_ACTION;
        m_server->Configure(m_deployment.topLevelFile().c_str(), rc);
        ASSERT_EQ(rc, RETURN_CODE_TYPE::NO_ERROR);
    }

    RETURN_CODE_TYPE::Value connect() {
        auto rc = RETURN_CODE_TYPE::NO_ACTION;
        m_server->Framework_Connect(m_deployment.topLevelFile().c_str(), rc);
        return rc;
    }

    RETURN_CODE_TYPE::Value request(RequestedState::Value state) {
        auto rc = RETURN_CODE_TYPE::NO_ACTION;
        m_server->Request_State_Transition(state, rc);
        return rc;
    }

    void joinBus() {
        m_bus =
            std::make_unique<BusListener>(m_deployment.backFilling(m_deployment.connectionsFile()));
    }

    /// Whether a frame of the receiver's comes out on the bus. The listeners may still have to find
    /// each other, and frames sent before the start are lost.
    bool framesFlow(unsigned number) {
        const auto before = bus().position.count();
        return waitFor([&] {
            receiver().send(frame8504(number));
            return bus().position.count() > before;
        });
    }

    std::unique_ptr<OpenServer> m_server = std::make_unique<OpenServer>();
};

std::size_t threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

}  // namespace

TEST_F(ServerObject, StartsAgainAfterAStop) {
    joinBus();
    configure();
    ASSERT_EQ(connect(), RETURN_CODE_TYPE::NO_ERROR);
    const auto connected = threads();
    // Read, write and protocol thread of the link, the processor's, and the server's own three and
    // that of its outbox.
    constexpr std::size_t kStarted = 8;
    for (unsigned round = 0; round < 3; ++round) {
        EXPECT_EQ(request(RequestedState::STOP), RETURN_CODE_TYPE::NOT_AVAILABLE);
        ASSERT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NO_ERROR);
        EXPECT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NOT_AVAILABLE);
        EXPECT_LE(threads(), connected + kStarted);
        EXPECT_GE(threads(), connected + kStarted - 1);  // the periodic thread may have ended
        EXPECT_TRUE(framesFlow(round));
        ASSERT_EQ(request(RequestedState::STOP), RETURN_CODE_TYPE::NO_ERROR);
        EXPECT_EQ(threads(), connected);
    }
    EXPECT_TRUE(waitFor([&] {
        const auto events = bus().eventTexts();
        return std::count(events.begin(), events.end(), "Rovan stopped successfully.") == 3 &&
               std::count(events.begin(), events.end(), "Rovan started successfully.") == 3;
    }));
    EXPECT_THAT(BusListener::texts(bus().command),
                ElementsAre("SERVER_STARTED", "SERVER_STARTED", "SERVER_STARTED"));
    auto rc = RETURN_CODE_TYPE::INVALID_MODE;
    m_server->Framework_Disconnect(rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ERROR);
}

TEST_F(ServerObject, CommandsBeforeTheStartAndAfterTheStopAreNotAnswered) {
    joinBus();
    configure();
    ASSERT_EQ(connect(), RETURN_CODE_TYPE::NO_ERROR);
    aspn2_msgs::idl::CommandResponse ping;
    ping.command_response("BITSERVER_PING");
    m_server->cbCmd(ping);
    ASSERT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NO_ERROR);
    ASSERT_TRUE(framesFlow(1));
    // Over the bus, so that both directions are known to work.
    ASSERT_TRUE(waitFor([&] {
        bus().command.publish(ping);
        return bus().response.count() > 0;
    }));
    ASSERT_EQ(request(RequestedState::STOP), RETURN_CODE_TYPE::NO_ERROR);
    const auto answered = bus().response.count();
    m_server->cbCmd(ping);
    ASSERT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NO_ERROR);
    m_server->cbCmd(ping);
    ASSERT_TRUE(waitFor([&] { return bus().response.count() > answered; }));
    EXPECT_EQ(bus().response.count(), answered + 1);
    for (const auto& response : bus().response.samples()) {
        EXPECT_EQ(response.command_response(), "Rovan");
    }
    ASSERT_EQ(request(RequestedState::STOP), RETURN_CODE_TYPE::NO_ERROR);
}

TEST_F(ServerObject, OneThatIsDestroyedWithoutADisconnectIsCalledNoMoreAndLeavesRoomForTheNext) {
    joinBus();
    configure();
    ASSERT_EQ(connect(), RETURN_CODE_TYPE::NO_ERROR);
    ASSERT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NO_ERROR);
    aspn2_msgs::idl::CommandResponse ping;
    ping.command_response("BITSERVER_PING");
    const auto isAnswered = [&] {
        const auto before = bus().response.count();
        return waitFor([&] {
            bus().command.publish(ping);
            return bus().response.count() > before;
        });
    };
    ASSERT_TRUE(isAnswered());
    ASSERT_EQ(request(RequestedState::STOP), RETURN_CODE_TYPE::NO_ERROR);
    std::atomic<bool> ended{false};
    std::thread others([&] {
        while (!ended) {
            bus().command.publish(ping);
            bus().response.publish(ping);
        }
    });

    m_server.reset();

    ended = true;
    others.join();
    m_server = std::make_unique<OpenServer>();
    auto rc = RETURN_CODE_TYPE::NO_ACTION;
    m_server->Configure(m_deployment.topLevelFile().c_str(), rc);
    ASSERT_EQ(connect(), RETURN_CODE_TYPE::NO_ERROR);
    ASSERT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NO_ERROR);
    EXPECT_TRUE(isAnswered());
    EXPECT_TRUE(framesFlow(1));
    ASSERT_EQ(request(RequestedState::STOP), RETURN_CODE_TYPE::NO_ERROR);
}

TEST_F(ServerObject, AMissingConnectionDoesNotKeepTheOthersFromBeingMade) {
    const char* const names[] = {"Command", "Response", "EventLog", "MaintenanceEvent"};
    for (const std::string missing : names) {
        SCOPED_TRACE(missing);
        m_server = std::make_unique<OpenServer>();
        const ContainerRemoved removed(m_deployment.connectionsFile(), missing);
        configure();
        EXPECT_EQ(connect(), RETURN_CODE_TYPE::INVALID_CONFIG);
        const auto& made = m_server->m_connections;
        const long long connections[] = {made.command, made.response, made.eventLog,
                                         made.maintenance};
        for (std::size_t i = 0; i < std::size(names); ++i) {
            EXPECT_EQ(connections[i] == -1, names[i] == missing) << names[i];
        }
        EXPECT_EQ(request(RequestedState::START), RETURN_CODE_TYPE::NOT_AVAILABLE);
        m_server.reset();
        m_unit.reset();
    }
}
