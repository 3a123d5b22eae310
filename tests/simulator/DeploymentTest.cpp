// SPDX-License-Identifier: Apache-2.0
// The deployment in config/, and the reading of it. The tables of keys are those that the server
// reads.
#include "simulator/Deployment.h"

#include <gmock/gmock.h>
#include <tinyxml2.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::Deployment;
using SimulatorTest::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;

const std::filesystem::path kConfig = ROVAN_SOURCE_DIR "/config";

using Parameters = std::map<std::string, std::string>;
using Containers = std::map<std::string, Parameters>;

Containers readContainers(const std::filesystem::path& file) {
    Containers containers;
    tinyxml2::XMLDocument document;
    EXPECT_EQ(document.LoadFile(file.c_str()), tinyxml2::XML_SUCCESS) << file;
    const auto* const root = document.FirstChildElement("KD_Configurations");
    EXPECT_NE(root, nullptr) << file;
    for (const auto* container = root->FirstChildElement(); container != nullptr;
         container = container->NextSiblingElement()) {
        const std::string name = container->FirstChildElement("Name")->GetText();
        EXPECT_EQ(containers.count(name), 0u) << name << " twice in " << file;
        for (const auto* parameter =
                 container->FirstChildElement("Parameters")->FirstChildElement();
             parameter != nullptr; parameter = parameter->NextSiblingElement()) {
            const char* const text = parameter->GetText();
            containers[name][parameter->Name()] = text == nullptr ? "" : text;
        }
    }
    return containers;
}

std::set<std::string> keys(const Parameters& parameters) {
    std::set<std::string> result;
    for (const auto& [key, value] : parameters) {
        result.insert(key);
    }
    return result;
}

class ShippedVariant : public testing::TestWithParam<std::pair<const char*, const char*>> {
  protected:
    const std::filesystem::path m_directory = kConfig / GetParam().first;
    Containers m_top = readContainers(m_directory / "rovan.xml");
    Containers m_bus = readContainers(m_directory / "connections.xml");
};

TEST_P(ShippedVariant, HasEveryKeyOfTheTopLevelFileAndNoOther) {
    EXPECT_EQ(m_top.size(), 2u);
    EXPECT_THAT(keys(m_top["Keldra"]), ElementsAre("Configuration", "Environment", "System"));
    EXPECT_THAT(
        keys(m_top["Rovan"]),
        ElementsAre("CPU", "Connections", "Debug", "IODevices", "PARAM_1", "PARAM_2", "PARAM_3",
                    "PARAM_4", "PARAM_5", "PARAM_6", "PARAM_7", "PARAM_8", "PARAM_9", "PRI"));
}

TEST_P(ShippedVariant, HasTheTransportAndEveryConnectionWithItsType) {
    EXPECT_THAT(keys(m_bus["FastRtps"]),
                ElementsAre("BackFillHistory", "DomainId", "HistoryDepth", "TcpAddress", "TcpPort",
                            "UseBestEffort", "UseTransport"));
    EXPECT_EQ(m_bus["FastRtps"]["UseTransport"], GetParam().second);
    EXPECT_EQ(m_bus["FastRtps"]["HistoryDepth"], "64");
    m_bus.erase("FastRtps");
    const std::map<std::string, std::string> types = {
        {"Command", "CommandResponse"},
        {"Response", "CommandResponse"},
        {"EventLog", "EventLog"},
        {"MaintenanceEvent", "MaintenanceEvent"},
        {"UtcDownlink", "UtcDownlink"},
        {"PositionVelocity", "PositionVelocity"},
        {"ReceiverStatus", "ReceiverStatus"},
        {"ChannelStatus", "ChannelStatus"},
        {"GPSTime", "GPSTime"},
        {"UTCTime", "UTCTime"},
        {"ChallengedEnvironment", "ChallengedEnvironment"},
        {"GPSCryptoStatus", "GPSCryptoStatus"},
        {"GPSLineOfSight", "GPSLineOfSight"},
        {"SVStatus", "SVStatus"}};
    EXPECT_EQ(m_bus.size(), types.size());
    for (const auto& [connection, type] : types) {
        const Parameters expected = {{"TopicType", "aspn2_msgs::idl::" + type},
                                     {"PubSubType", type + "PubSubType"}};
        EXPECT_EQ(m_bus[connection], expected) << connection;
    }
}

TEST_P(ShippedVariant, HasNoEmptyValueAndNoBlankAroundOne) {
    for (const Containers& containers :
         {m_top, m_bus, readContainers(kConfig / "io_devices.xml")}) {
        for (const auto& [name, parameters] : containers) {
            for (const auto& [key, value] : parameters) {
                EXPECT_FALSE(value.empty()) << name << ' ' << key;
                EXPECT_EQ(value.find_first_of(" \t\r\n"), std::string::npos) << name << ' ' << key;
            }
        }
    }
}

TEST_P(ShippedVariant, NamesFilesThatAreThereFromItsOwnDirectory) {
    EXPECT_TRUE(std::filesystem::exists(m_directory / m_top["Rovan"]["Connections"]));
    EXPECT_TRUE(std::filesystem::exists(m_directory / m_top["Rovan"]["IODevices"]));
}

TEST_P(ShippedVariant, DiffersFromTheOthersInTheTransportAlone) {
    EXPECT_EQ(m_top, readContainers(kConfig / "udp" / "rovan.xml"));
    Containers other = readContainers(kConfig / "udp" / "connections.xml");
    other["FastRtps"]["UseTransport"] = m_bus["FastRtps"]["UseTransport"];
    EXPECT_EQ(m_bus, other);
}

TEST_P(ShippedVariant, IsReadByTheUnit) {
    const Deployment deployment = Deployment::read(m_directory / "rovan.xml");
    EXPECT_EQ(deployment.directory, m_directory);
    EXPECT_EQ(deployment.serialChannel, 0u);
    EXPECT_EQ(deployment.serialSpeed, 115200);
    EXPECT_EQ(deployment.rovanKdPort, 10u);
    EXPECT_EQ(deployment.kdRovanPort, 11u);
    EXPECT_EQ(deployment.uart, 0u);
    EXPECT_EQ(deployment.pulse, 0u);
    EXPECT_EQ(deployment.memory.size(), 9u);
}

INSTANTIATE_TEST_SUITE_P(Config, ShippedVariant,
                         testing::Values(std::make_pair("shm", "SHM"), std::make_pair("udp", "UDP"),
                                         std::make_pair("tcp-server", "TCP_Server"),
                                         std::make_pair("tcp-client", "TCP_Client")));

TEST(ShippedDevices, HaveEveryKeyOfEveryDevice) {
    Containers devices = readContainers(kConfig / "io_devices.xml");
    EXPECT_THAT(keys(devices["Rovan"]),
                ElementsAre("Baudrate", "ChannelNum", "DataBits", "FlowControl", "Parity",
                            "SerialMode", "StopBits"));
    EXPECT_THAT(keys(devices["ROVAN_KD"]), ElementsAre("Port"));
    EXPECT_THAT(keys(devices["KD_ROVAN"]), ElementsAre("Port"));
    for (const char* const name :
         {"Processor_Interface", "Peripheral_Interface", "TimeStamp_Interface",
          "PpsSlave_Interface", "PtpClock_Interface", "Ptfe_Interface0", "PulseGen_Interface0",
          "Ptfe_Interface1", "PulseGen_Interface1"}) {
        EXPECT_THAT(keys(devices[name]), ElementsAre("BaseAddress", "Size")) << name;
    }
    EXPECT_EQ(devices.size(), 12u);
}

TEST(ShippedDevices, AgreeWithTheLineSpeedThatTheReceiverIsSetTo) {
    EXPECT_EQ(readContainers(kConfig / "io_devices.xml")["Rovan"]["Baudrate"],
              readContainers(kConfig / "udp" / "rovan.xml")["Rovan"]["PARAM_1"]);
}

TEST(ShippedDevices, HaveRegisterBlocksThatAreLargeEnoughAndApart) {
    // The end of the last register that the server touches in each.
    const std::map<std::string, std::uint32_t> needed = {
        {"Processor_Interface", 32}, {"Peripheral_Interface", 64}, {"TimeStamp_Interface", 544},
        {"PpsSlave_Interface", 36},  {"PtpClock_Interface", 120},  {"Ptfe_Interface0", 292},
        {"PulseGen_Interface0", 12}, {"Ptfe_Interface1", 292},     {"PulseGen_Interface1", 12}};
    const Deployment deployment = Deployment::read(kConfig / "udp" / "rovan.xml");
    for (const auto& [name, bytes] : needed) {
        EXPECT_GE(deployment.memory.at(name).size, bytes) << name;
    }
    // Apart from each other and from the power registers.
    std::map<std::uint64_t, std::uint64_t> taken = {{0x40000400, 0x40000500}};
    for (const auto& [name, block] : deployment.memory) {
        EXPECT_EQ(block.base % 8, 0u) << name;
        EXPECT_LE(std::uint64_t{block.base} + block.size, 0x40100000u) << name;
        taken[block.base] = std::uint64_t{block.base} + block.size;
    }
    EXPECT_EQ(taken.size(), 10u);
    std::uint64_t end = 0;
    for (const auto& [begin, blockEnd] : taken) {
        EXPECT_GE(begin, end);
        end = blockEnd;
    }
}

class DeploymentTest : public testing::Test {
  protected:
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(m_directory.path() / name)
            << "<KD_Configurations>" << content << "</KD_Configurations>";
    }
    std::string failure() const {
        try {
            Deployment::read(m_directory.path() / "top.xml");
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    const TemporaryDirectory m_directory;
};

TEST_F(DeploymentTest, SaysWhichFileIsNotThere) {
    EXPECT_THAT(failure(), HasSubstr("top.xml"));
}

TEST_F(DeploymentTest, SaysWhichKeyIsMissing) {
    write("top.xml", "<S><Name>Rovan</Name><Parameters><PARAM_3>0x1</PARAM_3></Parameters></S>");
    EXPECT_THAT(failure(), HasSubstr("no PARAM_4 in Rovan"));
    write("top.xml",
          "<S><Name>Rovan</Name><Parameters><PARAM_3>0x1</PARAM_3><PARAM_4>2</PARAM_4>"
          "<Connections>bus.xml</Connections><IODevices>io.xml</IODevices></Parameters></S>");
    EXPECT_THAT(failure(), HasSubstr("io.xml"));
    write("io.xml", "<P><Name>Rovan</Name><Parameters><ChannelNum/></Parameters></P>");
    EXPECT_THAT(failure(), HasSubstr("no ChannelNum in Rovan"));
}

TEST_F(DeploymentTest, TakesNumbersInAnyBase) {
    write("top.xml",
          "<S><Name>Rovan</Name><Parameters><PARAM_3>0x3</PARAM_3><PARAM_4>02</PARAM_4>"
          "<Connections>bus.xml</Connections><IODevices>io.xml</IODevices></Parameters></S>");
    write("io.xml",
          "<P><Name>Rovan</Name><Parameters><ChannelNum>7</ChannelNum>"
          "<Baudrate>0x1C200</Baudrate></Parameters></P>"
          "<Q><Name>ROVAN_KD</Name><Parameters><Port>0x10</Port></Parameters></Q>"
          "<Q><Name>KD_ROVAN</Name><Parameters><Port>17</Port></Parameters></Q>"
          "<M><Name>TimeStamp_Interface</Name><Parameters><BaseAddress>0x40030000</BaseAddress>"
          "<Size>1024</Size></Parameters></M>");
    const Deployment deployment = Deployment::read(m_directory.path() / "top.xml");
    EXPECT_EQ(deployment.connectionsFile, m_directory.path() / "bus.xml");
    EXPECT_EQ(deployment.uart, 3u);
    EXPECT_EQ(deployment.pulse, 2u);
    EXPECT_EQ(deployment.serialChannel, 7u);
    EXPECT_EQ(deployment.serialSpeed, 115200);
    EXPECT_EQ(deployment.rovanKdPort, 16u);
    EXPECT_EQ(deployment.kdRovanPort, 17u);
    EXPECT_EQ(deployment.memory.at("TimeStamp_Interface").base, 0x40030000u);
    EXPECT_EQ(deployment.memory.at("TimeStamp_Interface").size, 1024u);
}

}  // namespace
