// SPDX-License-Identifier: Apache-2.0
// What the serial and the memory service have in common, tested on both.

#include "face/ConnectionService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "face/KD_Config.h"
#include "face/KD_Devmem.h"
#include "face/KD_SerialPort.h"
#include "tests/face/FakeConfiguration.h"
#include "tests/face/SerialFakes.h"
#include "tests/platform/FakeMemoryDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using RC = FACE::RETURN_CODE_TYPE;
using Parameters = FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE;

struct SerialUnderTest {
    using Service = FACE::IOSS::KD_SerialPort;
    using Calls = RecordingSerial;
    using ReadPayload = FACE::IOSS::Serial::READ_PAYLOAD_TYPE;
    using WritePayload = FACE::IOSS::Serial::WRITE_PAYLOAD_TYPE;
    static std::map<std::string, std::string> keys() {
        return {{"ChannelNum", "3"}, {"SerialMode", "-2"}, {"Baudrate", "9600"}, {"DataBits", "7"},
                {"StopBits", "2"},   {"Parity", "1"},      {"FlowControl", "2"}};
    }
    /// What the parameters 0, 1 and so on report, as "tag:value".
    static std::vector<std::string> reported() {
        return {"11:3", "0:-2", "1:9600", "0:7", "0:2", "3:1", "3:2"};
    }
};

struct DevmemUnderTest {
    using Service = FACE::IOSS::KD_Devmem;
    using Calls = FakeMemoryDevice;
    using ReadPayload = FACE::IOSS::Devmem::READ_PAYLOAD_TYPE;
    using WritePayload = FACE::IOSS::Devmem::WRITE_PAYLOAD_TYPE;
    static std::map<std::string, std::string> keys() {
        return {{"BaseAddress", "0x40000000"}, {"Size", "4096"}};
    }
    static std::vector<std::string> reported() { return {"4:1073741824", "4:4096"}; }
};

std::string asText(const FACE::IOSS::IO_PARAMETER_VALUE_TYPE& value) {
    FACE::IOSS::IO_PARAMETER_VALUE_TYPE v = value;
    const std::string tag = std::to_string(v.descriminator()) + ":";
    switch (v.descriminator()) {
        case 0:
            return tag + std::to_string(v.short_value());
        case 1:
            return tag + std::to_string(v.long_value());
        case 3:
            return tag + std::to_string(v.ushort_value());
        case 4:
            return tag + std::to_string(v.ulong_value());
        case 11:
            return tag + std::to_string(v.octet_value());
        default:
            return tag + "?";
    }
}

template <typename TRAITS>
class ConnectionService : public testing::Test {
  protected:
    ConnectionService() {
        configuration->containers["Known"] = TRAITS::keys();
        Code rc = RC::NO_ACTION;
        service.Set_Reference("any", configuration, 7, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        service.Initialize("io.xml", rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        EXPECT_THAT(configuration->trace, ElementsAre("initialize io.xml"));
        configuration->trace.clear();
    }

    using Code = RC::Value;

    Code open(const char* name) {
        Code rc = RC::NO_ACTION;
        id = 99;
        service.Open_Connection(name, -1, id, rc);
        return rc;
    }
    Code close() {
        Code rc = RC::NO_ACTION;
        service.Close_Connection(id, rc);
        return rc;
    }
    Code statusCode() {
        FACE::IOSS::CONNECTION_STATUS_TYPE ignored;
        Code rc = RC::NO_ACTION;
        service.Get_Connection_Status(id, ignored, rc);
        return rc;
    }
    /// Parameters with these ids, without values.
    static Parameters asking(const std::vector<uint16_t>& ids) {
        Parameters parameters;
        for (const uint16_t parameterId : ids) {
            FACE::IOSS::IO_PARAMETER_TYPE parameter;
            parameter.id = parameterId;
            parameters.parameters.append(parameter);
        }
        return parameters;
    }

    typename TRAITS::Calls calls;
    std::shared_ptr<FakeConfiguration> configuration = std::make_shared<FakeConfiguration>();
    typename TRAITS::Service service{calls};
    long long id = 99;
};

using Services = testing::Types<SerialUnderTest, DevmemUnderTest>;
TYPED_TEST_SUITE(ConnectionService, Services, );

TYPED_TEST(ConnectionService, TakesOneConfigurationForLife) {
    typename TypeParam::Service fresh(this->calls);
    RC::Value rc = RC::NO_ERROR;

    fresh.Set_Reference("any", nullptr, 0, rc);
    EXPECT_EQ(rc, RC::INVALID_PARAM);
    fresh.Set_Reference("any", std::make_shared<FakeConfiguration>(), 0, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    fresh.Set_Reference("any", std::make_shared<FakeConfiguration>(), 0, rc);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
    fresh.Set_Reference("any", nullptr, 0, rc);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
}

TYPED_TEST(ConnectionService, InitialisesOnce) {
    RC::Value rc = RC::NO_ERROR;

    this->service.Initialize("other.xml", rc);

    EXPECT_EQ(rc, RC::NO_ACTION);
    EXPECT_THAT(this->configuration->trace, IsEmpty());
}

TYPED_TEST(ConnectionService, TakesAConfigurationThatIsLoadedAlready) {
    typename TypeParam::Service fresh(this->calls);
    RC::Value rc = RC::NO_ERROR;
    fresh.Set_Reference("any", this->configuration, 0, rc);
    this->configuration->initializeCode = RC::NO_ACTION;

    fresh.Initialize("io.xml", rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
}

TYPED_TEST(ConnectionService, TriesAgainToInitialiseAfterAFailure) {
    typename TypeParam::Service fresh(this->calls);
    RC::Value rc = RC::NO_ERROR;
    fresh.Set_Reference("any", this->configuration, 0, rc);
    for (const RC::Value code : {RC::NOT_AVAILABLE, RC::INVALID_CONFIG, RC::INVALID_MODE}) {
        this->configuration->initializeCode = code;
        fresh.Initialize("io.xml", rc);
        EXPECT_EQ(rc, RC::INVALID_CONFIG);
    }
    this->configuration->initializeCode = RC::NO_ERROR;

    fresh.Initialize("io.xml", rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
}

TYPED_TEST(ConnectionService, DoesNothingWithoutAConfiguration) {
    typename TypeParam::Service fresh(this->calls);
    RC::Value rc = RC::NO_ERROR;

    fresh.Initialize("io.xml", rc);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
    fresh.Open_Connection("Known", -1, this->id, rc);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
    EXPECT_EQ(this->id, -1);
}

TYPED_TEST(ConnectionService, ReadsTheContainerOfANewConnectionOnce) {
    EXPECT_EQ(this->open("Known"), RC::NO_ERROR);
    EXPECT_EQ(this->id, 0);
    EXPECT_THAT(this->configuration->trace, ElementsAre("open Known", "close Known"));

    EXPECT_EQ(this->open("Known"), RC::NO_ERROR);
    EXPECT_EQ(this->close(), RC::NO_ERROR);
    EXPECT_EQ(this->open("Known"), RC::NO_ERROR);

    EXPECT_EQ(this->id, 0);
    EXPECT_EQ(this->configuration->trace.size(), 2u);
}

TYPED_TEST(ConnectionService, NumbersItsConnectionsInTheOrderOfTheirFirstOpen) {
    this->configuration->containers["Second"] = TypeParam::keys();

    this->open("Known");
    EXPECT_EQ(this->open("Second"), RC::NO_ERROR);
    EXPECT_EQ(this->id, 1);
    this->open("Known");
    EXPECT_EQ(this->id, 0);
}

TYPED_TEST(ConnectionService, RefusesAConnectionWithoutContainer) {
    EXPECT_EQ(this->open("Unknown"), RC::INVALID_CONFIG);
    EXPECT_EQ(this->id, -1);
    EXPECT_THAT(this->configuration->trace, ElementsAre("open Unknown"));
    EXPECT_EQ(this->open(""), RC::INVALID_CONFIG);

    this->open("Known");
    EXPECT_EQ(this->id, 0) << "nothing was added";
}

TYPED_TEST(ConnectionService, RefusesAConnectionWithAMissingKey) {
    for (const auto& entry : TypeParam::keys()) {
        this->configuration->containers["Short"] = TypeParam::keys();
        this->configuration->containers["Short"].erase(entry.first);
        this->configuration->trace.clear();
        testing::internal::CaptureStdout();
        const RC::Value rc = this->open("Short");

        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "WARNING - Parameter " + entry.first + " not found\n");
        EXPECT_EQ(rc, RC::INVALID_CONFIG) << entry.first;
        EXPECT_EQ(this->id, -1);
        EXPECT_THAT(this->configuration->trace, ElementsAre("open Short", "close Short"));
    }
    this->open("Known");
    EXPECT_EQ(this->id, 0) << "nothing was added";
}

TYPED_TEST(ConnectionService, ClosesOnce) {
    this->open("Known");

    EXPECT_EQ(this->close(), RC::NO_ERROR);
    EXPECT_EQ(this->close(), RC::CONNECTION_CLOSED);
}

TYPED_TEST(ConnectionService, TellsTheStatusOfAnOpenConnection) {
    this->open("Known");
    FACE::IOSS::CONNECTION_STATUS_TYPE status{9, 9, 9};
    RC::Value rc = RC::NO_ACTION;

    this->service.Get_Connection_Status(0, status, rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(status.timestamp, 0);
    EXPECT_EQ(status.kind, 1u);
    EXPECT_EQ(status.state, 2u);

    this->close();
    EXPECT_EQ(this->statusCode(), RC::CONNECTION_CLOSED);
    this->open("Known");
    EXPECT_EQ(this->statusCode(), RC::NO_ERROR);
}

TYPED_TEST(ConnectionService, HasABusThatIsAlwaysWell) {
    this->open("Known");
    uint16_t status = 9;
    RC::Value rc = RC::NO_ACTION;

    this->service.Get_Bus_Status(0, status, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(status, 0);

    this->close();
    status = 9;
    this->service.Get_Bus_Status(0, status, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(status, 0);
}

TYPED_TEST(ConnectionService, NotifiesNobody) {
    this->open("Known");
    RC::Value rc = RC::NO_ERROR;

    this->service.Register_Notification_Event(0, nullptr, rc);
    EXPECT_EQ(rc, RC::NO_ACTION);
    this->service.Unregister_Notification_Event(0, rc);
    EXPECT_EQ(rc, RC::NO_ACTION);

    this->close();
    this->service.Register_Notification_Event(0, nullptr, rc);
    EXPECT_EQ(rc, RC::CONNECTION_CLOSED);
    this->service.Unregister_Notification_Event(0, rc);
    EXPECT_EQ(rc, RC::NO_ACTION);
}

TYPED_TEST(ConnectionService, RefusesReadsAndWritesOfAClosedConnection) {
    this->open("Known");
    this->close();
    typename TypeParam::ReadPayload input;
    typename TypeParam::WritePayload output;
    RC::Value rc = RC::NO_ERROR;

    this->service.Read(0, 0, input, rc);
    EXPECT_EQ(rc, RC::CONNECTION_CLOSED);
    rc = RC::NO_ERROR;
    this->service.Write(0, 0, output, rc);
    EXPECT_EQ(rc, RC::CONNECTION_CLOSED);
}

TYPED_TEST(ConnectionService, ReportsItsSettingsWhetherOpenOrClosed) {
    const std::vector<std::string> expected = TypeParam::reported();
    std::vector<uint16_t> ids;  // all of them, the last first
    for (std::size_t i = expected.size(); i > 0; --i) {
        ids.push_back(static_cast<uint16_t>(i - 1));
    }
    this->open("Known");
    for (const bool isOpen : {true, false}) {
        if (!isOpen) {
            this->close();
        }
        Parameters connection = this->asking(ids);
        Parameters bus = this->asking(ids);
        RC::Value rc = RC::NO_ACTION;

        this->service.Get_Connection_Configuration(0, 0, connection, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        rc = RC::NO_ACTION;
        this->service.Get_Bus_Configuration(0, 0, bus, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);

        for (uint32_t i = 0; i < ids.size(); ++i) {
            EXPECT_EQ(asText(connection.parameters[i].value), expected[ids[i]]);
            EXPECT_EQ(asText(bus.parameters[i].value), expected[ids[i]]);
            EXPECT_EQ(connection.parameters[i].id, ids[i]);
        }
    }
}

TYPED_TEST(ConnectionService, ReportsTheOthersWhenOneParameterIsUnknown) {
    this->open("Known");
    const auto beyond = static_cast<uint16_t>(TypeParam::reported().size());
    Parameters parameters = this->asking({beyond, 1, 0xFFFF, 0});
    RC::Value rc = RC::NO_ERROR;

    this->service.Get_Connection_Configuration(0, 0, parameters, rc);

    EXPECT_EQ(rc, RC::INVALID_PARAM);
    EXPECT_EQ(asText(parameters.parameters[0].value), "0:0");
    EXPECT_EQ(asText(parameters.parameters[1].value), TypeParam::reported()[1]);
    EXPECT_EQ(asText(parameters.parameters[3].value), TypeParam::reported()[0]);
}

TYPED_TEST(ConnectionService, ReportsNothingWhenAskedForNothing) {
    this->open("Known");
    Parameters empty;
    FACE::Sequence<FACE::IOSS::IO_PARAMETER_TYPE>::RETURN_CODE made;
    Parameters invalid{0, {nullptr, 1, 1, made}};
    RC::Value rc = RC::NO_ACTION;

    this->service.Get_Connection_Configuration(0, 0, empty, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    rc = RC::NO_ACTION;
    this->service.Get_Connection_Configuration(0, 0, invalid, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
}

TYPED_TEST(ConnectionService, RefusesAnUnknownIdInEveryOperation) {
    this->open("Known");
    for (const long long unknown : {-1LL, 1LL, LLONG_MAX, LLONG_MIN, 1LL << 32}) {
        typename TypeParam::ReadPayload input;
        typename TypeParam::WritePayload output;
        Parameters parameters = this->asking({0});
        FACE::IOSS::CONNECTION_STATUS_TYPE status{9, 9, 9};
        uint16_t busStatus = 9;
        std::vector<RC::Value> codes(11, RC::NO_ERROR);

        this->service.Close_Connection(unknown, codes[0]);
        this->service.Read(unknown, 0, input, codes[1]);
        this->service.Write(unknown, 0, output, codes[2]);
        this->service.Configure_Connection_Parameters(unknown, 0, parameters, codes[3]);
        this->service.Get_Connection_Configuration(unknown, 0, parameters, codes[4]);
        this->service.Configure_Bus_Parameters(unknown, 0, parameters, codes[5]);
        this->service.Get_Bus_Configuration(unknown, 0, parameters, codes[6]);
        this->service.Get_Connection_Status(unknown, status, codes[7]);
        this->service.Get_Bus_Status(unknown, busStatus, codes[8]);
        this->service.Register_Notification_Event(unknown, nullptr, codes[9]);
        this->service.Unregister_Notification_Event(unknown, codes[10]);

        EXPECT_THAT(codes, testing::Each(RC::INVALID_PARAM)) << unknown;
        EXPECT_EQ(status.state, 9u);
        EXPECT_EQ(busStatus, 9);
    }
    EXPECT_EQ(this->statusCode(), RC::NO_ERROR) << "the real connection is untouched";
}

// As at bring-up: both services share one file, whose containers share a tag.
TEST(ConnectionServices, ShareTheConfigurationInAnXmlFile) {
    std::string directory = testing::TempDir() + "rovan-io-XXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    const std::string path = directory + "/io.xml";
    std::ofstream(path) << R"(<?xml version="1.0"?>
        <KD_Configurations>
          <Device><Name>Line</Name><Parameters>
            <ChannelNum>4</ChannelNum><SerialMode>0</SerialMode><Baudrate>57600</Baudrate>
            <DataBits>8</DataBits><StopBits>1</StopBits><Parity>2</Parity>
            <FlowControl>0</FlowControl></Parameters></Device>
          <Device><Name>Block</Name><Parameters>
            <BaseAddress>0x40002000</BaseAddress><Size>0x100</Size></Parameters></Device>
          <Device><Name>Block2</Name><Parameters>
            <BaseAddress>0x40004000</BaseAddress><Size>8</Size></Parameters></Device>
        </KD_Configurations>)";
    const auto configuration = std::make_shared<FACE::KD_Config>();
    RecordingSerial serial;
    FakeMemoryDevice memory;
    FACE::IOSS::KD_SerialPort port(serial);
    FACE::IOSS::KD_Devmem devmem(memory);
    RC::Value rc = RC::NO_ACTION;
    port.Set_Reference("", configuration, 0, rc);
    devmem.Set_Reference("", configuration, 0, rc);
    port.Initialize(path.c_str(), rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    devmem.Initialize(path.c_str(), rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    long long id = -1;

    port.Open_Connection("Line", -1, id, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(serial.trace.at(0), "open /dev/ttyS4");
    EXPECT_EQ(cfgetospeed(&serial.line), speed_t{B57600});
    devmem.Open_Connection("Block", -1, id, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    devmem.Open_Connection("Block2", -1, id, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(memory.mappings.at(0).offset, 0x4000'2000u);
    EXPECT_EQ(memory.mappings.at(1).offset, 0x4000'4000u);
    devmem.Open_Connection("Missing", -1, id, rc);
    EXPECT_EQ(rc, RC::INVALID_CONFIG);

    unlink(path.c_str());
    rmdir(directory.c_str());
}

}  // namespace
