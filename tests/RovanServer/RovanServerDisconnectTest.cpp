// SPDX-License-Identifier: Apache-2.0
// In what order the server gives back what it has on the bus.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/FPGA.h"
#include "tests/RovanServer/BenchServer.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/face/TransportBus.h"
#include "tests/support/OwnBus.h"

namespace {

using RC = FACE::RETURN_CODE_TYPE;
using testing::ElementsAreArray;

// A transport that writes down what is given back, with a code that nobody should look at.
class WatchedTransport : public FACE::TSS::KD_TSS {
  public:
    WatchedTransport() : KD_TSS("Rovan") {}

    void Unregister_Sender(long long id, RC::Value& rc) override { note("sender", id, rc); }
    void Unregister_Callback(long long id, RC::Value& rc) override { note("callback", id, rc); }
    void Destroy_Connection(long long id, RC::Value& rc) override { note("connection", id, rc); }

    std::vector<std::string> given;

  private:
    void note(const std::string& what, long long id, RC::Value& rc) {
        given.push_back(what + ' ' + nameOf(id));
        rc = RC::INVALID_PARAM;
    }
    std::string nameOf(long long id) { return connectionMap_mutex_at(connectionKey(id)).topicName; }
};

// The registers' blocks, which are given back one by one: that counts once.
class WatchedDevmem : public FakeDevmem {
  public:
    explicit WatchedDevmem(std::vector<std::string>& given) : m_given(given) {
        registers["TimeStamp_Interface+0"] = 58'982'400;
    }

    void Close_Connection(long long, Code& rc) override {
        if (m_given.empty() || m_given.back() != "FPGA") {
            m_given.emplace_back("FPGA");
        }
        rc = RC::NO_ERROR;
    }

  private:
    std::vector<std::string>& m_given;
};

class DisconnectedServer : public BenchServer {
  public:
    explicit DisconnectedServer(ServerBus& bus) : BenchServer(bus) {}

    void connect(const std::shared_ptr<WatchedTransport>& transport) {
        m_tss = transport;
        m_connections.command = transport_test::connect(*transport, "Command");
        m_connections.response = transport_test::connect(*transport, "Response");
        m_connections.eventLog = transport_test::connect(*transport, "EventLog");
        m_connections.maintenance = transport_test::connect(*transport, "MaintenanceEvent");
        m_rovanProcessor =
            std::make_unique<RovanProcessor>(m_serverName, transport, m_deviceIdFactory, false);
        m_rovanProcessor->Framework_Connect();
    }
    void connectNothing() {
        m_tss = nullptr;
        m_rovanProcessor = nullptr;
    }
};

TEST(RovanServerDisconnect, GivesBackTheProcessorsConnectionsThenTheHardwareThenItsOwn) {
    const test_support::OwnBus number;
    auto containers = processor_test::containers(number.number());
    containers["Command"] = transport_test::carries("CommandResponse");
    containers["Response"] = transport_test::carries("CommandResponse");
    const transport_test::ConnectionsFile file(containers);
    const auto transport = std::make_shared<WatchedTransport>();
    ASSERT_EQ(transport_test::initialize(*transport, file.path()), RC::NO_ERROR);
    ServerBus bus;
    DisconnectedServer server(bus);
    server.connect(transport);
    FpgaFace::Instance().DoneFpga();
    FpgaFace::Instance().InitFpga(std::make_shared<WatchedDevmem>(transport->given));

    auto rc = RC::NOT_AVAILABLE;
    server.Framework_Disconnect(rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
    std::vector<std::string> expected;
    for (const char* what : {"sender ", "connection "}) {
        for (const char* topic : {"UtcDownlink", "PositionVelocity", "ReceiverStatus",
                                  "ChannelStatus", "GPSTime", "UTCTime", "ChallengedEnvironment",
                                  "GPSCryptoStatus", "GPSLineOfSight", "SVStatus"}) {
            expected.push_back(std::string(what) + topic);
        }
    }
    expected.emplace_back("FPGA");
    for (const char* what : {"callback ", "sender ", "connection "}) {
        for (const char* topic : {"Command", "Response", "EventLog"}) {
            expected.push_back(std::string(what) + topic);
        }
    }
    EXPECT_THAT(transport->given, ElementsAreArray(expected));
}

TEST(RovanServerDisconnect, IsGoodWhereNothingWasConnected) {
    ServerBus bus;
    DisconnectedServer server(bus);
    server.connectNothing();

    auto rc = RC::NOT_AVAILABLE;
    server.Framework_Disconnect(rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
}

}  // namespace
