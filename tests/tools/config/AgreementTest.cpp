// SPDX-License-Identifier: Apache-2.0
// Values that the check calls wrong, given to the server's own code: it refuses them too, or makes
// something else of them than the file says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fastdds/dds/topic/TopicDataType.hpp>
#include <memory>

#include "ASPN/SystemIds.h"
#include "MSID_messages/RovancomPortSetup.h"
#include "aspn2_msgs/EventLog.h"
#include "face/KD_TSS_Attributes.h"
#include "face/KD_Topic_Helpers.h"
#include "face/KD_TypedTS.h"
#include "platform/FPGA.h"
#include "tests/tools/config/Deployment.h"
#include "tests/tools/config/ServersReaders.h"

namespace {

using namespace tools_config_test;
using RC = FACE::RETURN_CODE_TYPE;
using EventLogTransport = FACE::TSS::Details::KD_TypedTS<aspn2_msgs::idl::EventLog>;
using testing::HasSubstr;

class Agreement : public testing::Test {
  protected:
    Agreement() { m_deployment.set("connections.xml", "FastRtps", "DomainId", "142"); }

    void spoil(const std::string& file, const std::string& container, const std::string& key,
               const std::string& value) const {
        m_deployment.set(file, container, key, value);
        const Config::CheckResult result = m_deployment.check();
        ASSERT_EQ(result.errors(), 1u) << described(result);
        EXPECT_EQ(result.findings.front().key, key);
    }

    // What the server's way to the topic "EventLog" ends with.
    RC::Value registerSender() const {
        const auto transport = std::make_shared<FACE::TSS::KD_TSS>("Rovan");
        RC::Value rc = RC::NO_ERROR;
        transport->Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
        transport->Initialize(m_deployment.path("connections.xml").c_str(), rc);
        long long id = 0;
        int size = 0;
        for (const char* const name : {"Command", "EventLog", "GPSTime"}) {
            long long each = 0;
            if (rc == RC::NO_ERROR) {
                transport->Create_Connection(name, -1, each, size, rc);
            }
            id = std::string(name) == "EventLog" ? each : id;
        }
        if (rc == RC::NO_ERROR) {
            EventLogTransport face;
            face.Set_Reference("", transport, 0, rc);
            face.Register_Sender(id, rc);
        }
        return rc;
    }

    const Deployment m_deployment;
};

TEST_F(Agreement, TheShippedTopicHasASender) {
    EXPECT_EQ(registerSender(), RC::NO_ERROR);
}

TEST_F(Agreement, ADomainBeyondThePortsIsNotJoined) {
    spoil("connections.xml", "FastRtps", "DomainId", "233");
    EXPECT_EQ(registerSender(), RC::INVALID_CONFIG);
}

TEST_F(Agreement, AHistoryWithoutASampleGetsNoSender) {
    for (const char* const depth : {"0", "-1"}) {
        spoil("connections.xml", "FastRtps", "HistoryDepth", depth);
        EXPECT_EQ(registerSender(), RC::CONNECTION_CLOSED) << depth;
    }
}

TEST_F(Agreement, AnUnknownClassMakesNoConnection) {
    spoil("connections.xml", "EventLog", "PubSubType", "EventlogPubSubType");
    EXPECT_EQ(registerSender(), RC::NO_ACTION);
}

TEST_F(Agreement, ATypeOfAnotherGetsNoSender) {
    spoil("connections.xml", "EventLog", "TopicType", "aspn2_msgs::idl::GPSTime");
    EXPECT_EQ(registerSender(), RC::CONNECTION_CLOSED);
}

TEST_F(Agreement, ATypeThatNobodyKnowsGetsNoSender) {
    spoil("connections.xml", "EventLog", "TopicType", "EventLog");
    EXPECT_EQ(registerSender(), RC::CONNECTION_CLOSED);
}

TEST_F(Agreement, ANumberIsCutToItsWidthOrToItsDigits) {
    const auto read = [this](const char* key, const char* value) {
        spoil("rovan.xml", "Rovan", key, value);
        OpenServer server;
        RC::Value rc = RC::NO_ERROR;
        server.Configure(m_deployment.path("rovan.xml").c_str(), rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        m_deployment.set("rovan.xml", "Rovan", key, "0");
        return server.m_configuration;
    };
    EXPECT_EQ(read("PARAM_3", "256").uartIndex, 0);
    EXPECT_EQ(read("PARAM_4", "4 or 5").pulseIndex, 4);
    EXPECT_FALSE(read("Debug", "yes").debug);
    EXPECT_FALSE(read("PARAM_5", " TRUE").setupRedundantPort);
}

TEST_F(Agreement, ASpeedWithoutACodeIsAnyOtherToTheReceiver) {
    spoil("rovan.xml", "Rovan", "PARAM_1", "9600");
    EXPECT_EQ(RovancomPortSetup::baudCode(9600), RovancomPortSetup::e5331_Baud_Other);
}

TEST_F(Agreement, ABlockThatIsTooSmallRefusesItsLastRegister) {
    const auto readLast = [this] {
        FakeMemoryDevice calls;
        FACE::IOSS::KD_Devmem service(calls);
        RC::Value rc = RC::NO_ERROR;
        service.Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
        service.Initialize(m_deployment.path("io_devices.xml").c_str(), rc);
        long long id = 0;
        service.Open_Connection("Processor_Interface", -1, id, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        FACE::IOSS::Devmem::READ_PAYLOAD_TYPE payload;
        payload.offset = FpgaRegisters::Processor::kRevision.offset;
        payload.width = FpgaRegisters::Processor::kRevision.width;
        service.Read(id, -1, payload, rc);
        return rc;
    };
    EXPECT_EQ(readLast(), RC::NO_ERROR);
    spoil("io_devices.xml", "Processor_Interface", "Size", "0x1F");
    EXPECT_EQ(readLast(), RC::NO_ACTION);
}

TEST_F(Agreement, ALineThatCannotBeHadIsFaulty) {
    spoil("io_devices.xml", "Rovan", "StopBits", "3");
    RecordingSerial calls;
    FACE::IOSS::KD_SerialPort service(calls);
    RC::Value rc = RC::NO_ERROR;
    service.Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
    service.Initialize(m_deployment.path("io_devices.xml").c_str(), rc);
    long long id = 0;
    service.Open_Connection("Rovan", -1, id, rc);
    FACE::IOSS::CONNECTION_STATUS_TYPE status;
    service.Get_Connection_Status(id, status, rc);
    constexpr unsigned kFaulty = 4;
    EXPECT_EQ(status.state, kFaulty);
}

// What the check takes for known is what the server knows.

TEST_F(Agreement, EachTransportThatIsNamedIsOne) {
    const auto names = FACE::TSS::Attributes::transportNames();
    EXPECT_EQ(names.size(), 4u);
    FACE::TSS::KD_TSS::Settings_t settings;
    settings.tcpAddress = "127.0.0.1";
    for (const std::string& name : names) {
        settings.useTransport = name;
        const auto attributes = FACE::TSS::Attributes::participant(settings, "Rovan");
        EXPECT_EQ(attributes.rtps.userTransports.size(), 1u) << name;
    }
    settings.useTransport = "udp";
    const auto attributes = FACE::TSS::Attributes::participant(settings, "Rovan");
    EXPECT_TRUE(attributes.rtps.userTransports.empty());
}

TEST_F(Agreement, EachClassThatIsNamedIsKnown) {
    const auto keys = FACE::TSS::Topics::pubSubTypeKeys();
    EXPECT_EQ(keys.size(), 32u);
    for (const std::string& key : keys) {
        EXPECT_NE(FACE::TSS::Topics::GetPubSubType(key), nullptr) << key;
    }
}

TEST_F(Agreement, EachSystemThatIsNamedHasAnId) {
    const auto names = ASPN2::SystemIds::names();
    EXPECT_EQ(names.size(), 3u);
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(ASPN2::SystemIds::from_string(names[i].c_str()), i + 1);
    }
}

// The order in which a name or a tag is found.
TEST_F(Agreement, ATagThatHidesANameIsWhatTheServerReads) {
    m_deployment.replace("rovan.xml", "<!-- The system that this unit belongs to. -->",
                         "<Rovan><Name>Hidden</Name><Parameters><PRI>0</PRI></Parameters></Rovan>");
    EXPECT_EQ(m_deployment.check().errors(), 13u) << described(m_deployment.check());
    EXPECT_EQ(ServersReaders(m_deployment).topLevel(), RC::INVALID_CONFIG);
}

TEST_F(Agreement, TheFirstOfTwoCounts) {
    m_deployment.replace("rovan.xml", "<PARAM_2>0</PARAM_2>",
                         "<PARAM_2>1</PARAM_2><PARAM_2>0</PARAM_2>");
    EXPECT_THAT(described(m_deployment.check()), HasSubstr("duplicate-key"));
    OpenServer server;
    RC::Value rc = RC::NO_ERROR;
    server.Configure(m_deployment.path("rovan.xml").c_str(), rc);
    EXPECT_EQ(server.m_configuration.parity, 1);
}

}  // namespace
