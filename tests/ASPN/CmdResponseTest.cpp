// SPDX-License-Identifier: Apache-2.0
#include "ASPN/CmdResponse.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "ASPN/CommandStrings.h"
#include "ASPN/TimeCodeHelper.h"
#include "platform/FPGA.h"

namespace {

using ASPN2::CmdResponse;
using ASPN2::DeviceIdFactory;
using aspn2_msgs::idl::CommandResponse;
namespace Devmem = FACE::IOSS::Devmem;
using RC = FACE::RETURN_CODE_TYPE::Value;

constexpr uint64_t kTicksPerSecond = 58982400;

// The registers of an FPGA without PTFEs whose system count stands still until it is set.
class StandingFpga : public Devmem::IO_Service {
  public:
    uint64_t systemCount = 0;

    void Initialize(const FACE::String&, RC& rc) override { rc = RC::NO_ERROR; }
    void Open_Connection(const FACE::String& name, long long, long long& id, RC& rc) override {
        id = FACE::toStdString(name) == "TimeStamp_Interface" ? kTimeStamp : 0;
        rc = RC::NO_ERROR;
    }
    void Close_Connection(long long, RC& rc) override { rc = RC::NO_ERROR; }
    void Read(long long id, long long, Devmem::READ_PAYLOAD_TYPE& payload, RC& rc) override {
        constexpr uint32_t kClockRate = 0;
        constexpr uint32_t kSystemCount = 128;
        payload.data = 0;
        if (id == kTimeStamp && payload.offset == kClockRate) {
            payload.data = kTicksPerSecond;
        } else if (id == kTimeStamp && payload.offset == kSystemCount) {
            payload.data = systemCount;
        }
        rc = RC::NO_ERROR;
    }
    void Write(long long, long long, const Devmem::WRITE_PAYLOAD_TYPE&, RC& rc) override {
        rc = RC::NO_ERROR;
    }
    void Configure_Connection_Parameters(long long, long long,
                                         const FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE&,
                                         RC& rc) override {
        rc = RC::NOT_AVAILABLE;
    }
    void Get_Connection_Configuration(long long, long long,
                                      FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE&, RC& rc) override {
        rc = RC::NOT_AVAILABLE;
    }
    void Configure_Bus_Parameters(long long, long long, FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE&,
                                  RC& rc) override {
        rc = RC::NOT_AVAILABLE;
    }
    void Get_Bus_Configuration(long long, long long, FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE&,
                               RC& rc) override {
        rc = RC::NOT_AVAILABLE;
    }
    void Get_Connection_Status(long long, FACE::IOSS::CONNECTION_STATUS_TYPE&, RC& rc) override {
        rc = RC::NOT_AVAILABLE;
    }
    void Get_Bus_Status(long long, uint16_t&, RC& rc) override { rc = RC::NOT_AVAILABLE; }
    void Register_Notification_Event(long long, FACE::IOSS::IO_Callback*, RC& rc) override {
        rc = RC::NOT_AVAILABLE;
    }
    void Unregister_Notification_Event(long long, RC& rc) override { rc = RC::NOT_AVAILABLE; }

  private:
    static constexpr long long kTimeStamp = 1;
};

class CmdResponseTest : public ::testing::Test {
  protected:
    CmdResponseTest() { FpgaFace::Instance().InitFpga(m_fpga); }
    ~CmdResponseTest() override { ASPN2::TimeCodeHelper::Instance().setLiveMode(); }

    void setSystemCount(uint64_t ticks) { m_fpga->systemCount = ticks; }

    std::shared_ptr<StandingFpga> m_fpga = std::make_shared<StandingFpga>();
    CmdResponse m_maker{DeviceIdFactory(1, 39)};
};

CommandResponse commandOf(const std::string& text) {
    CommandResponse command;
    command.command_response(text);
    return command;
}

void expectStamp(const aspn2_msgs::idl::timestamp& stamp, int64_t sec, int32_t nsec,
                 int32_t timeCode) {
    EXPECT_EQ(stamp.sec(), sec);
    EXPECT_EQ(stamp.nsec(), nsec);
    EXPECT_EQ(stamp.time_code(), timeCode);
}

TEST_F(CmdResponseTest, MakesACommandOfItsText) {
    const CommandResponse command = m_maker.makeCommand(Sys::CommandString::ServerStarted);

    EXPECT_EQ(command.command_response(), "SERVER_STARTED");
    EXPECT_EQ(command.header().device_id(), 0x01270200);
    EXPECT_EQ(command.header().seq_num(), 0);
    EXPECT_EQ(command.commanded_device_id(), 0);
    EXPECT_EQ(command.command_identifier(), 0);
    EXPECT_EQ(command.command_response_type(), 0u);
}

TEST_F(CmdResponseTest, StampsACommandWithTheSystemCount) {
    ASPN2::TimeCodeHelper::Instance().setSimMode();
    setSystemCount(5 * kTicksPerSecond + 4608);

    const CommandResponse command = m_maker.makeCommand("X");

    expectStamp(command.header().timestamp_valid(), 5, 78117, 101);
    expectStamp(command.header().timestamp_arrival(), 5, 78117, 101);
}

TEST_F(CmdResponseTest, TakesTheArrivalOfACommandFromTheGivenTicks) {
    setSystemCount(5 * kTicksPerSecond + 4608);

    const CommandResponse command = m_maker.makeCommand(2 * kTicksPerSecond + 9216, "X");

    expectStamp(command.header().timestamp_valid(), 5, 78117, 100);
    expectStamp(command.header().timestamp_arrival(), 2, 156242, 100);
    EXPECT_EQ(command.command_response(), "X");
    EXPECT_EQ(command.header().device_id(), 0x01270200);
}

TEST_F(CmdResponseTest, AnswersACommandWithAText) {
    CommandResponse command = commandOf("QUERY_ROVAN_STATUS");
    command.header().device_id(0x03110205);
    command.header().seq_num(77);
    command.command_identifier(-3);
    setSystemCount(kTicksPerSecond + 4608);

    const CommandResponse response =
        m_maker.makeResponse(command, std::string("CURRENT_ROVAN_STATUS,4"));

    EXPECT_EQ(response.command_response(), "CURRENT_ROVAN_STATUS,4");
    EXPECT_EQ(response.header().device_id(), 0x01270200);
    EXPECT_EQ(response.header().seq_num(), 0);
    EXPECT_EQ(response.commanded_device_id(), 0x03110205);
    EXPECT_EQ(response.command_identifier(), -3);
    EXPECT_EQ(response.command_response_type(), 1u);
    expectStamp(response.header().timestamp_valid(), 1, 78117, 100);
    expectStamp(response.header().timestamp_arrival(), 1, 78117, 100);
}

TEST_F(CmdResponseTest, AnswersWithALiteralAsText) {
    const CommandResponse command = commandOf("BITSERVER_PING");

    EXPECT_EQ(m_maker.makeResponse(command, "BITSERVER_PING").command_response(), "BITSERVER_PING");
    const char* const none = nullptr;
    EXPECT_EQ(m_maker.makeResponse(command, none).command_response(), "");
}

TEST_F(CmdResponseTest, CutsTheArgumentsOffForPassAndFail) {
    const CommandResponse command = commandOf("REQUEST_CBIT,3");

    EXPECT_EQ(m_maker.makeResponse(command, true).command_response(), "REQUEST_CBIT_PASS");
    EXPECT_EQ(m_maker.makeResponse(command, false).command_response(), "REQUEST_CBIT_FAIL");
}

TEST_F(CmdResponseTest, CutsTheArgumentsOffForAckAndNack) {
    const CommandResponse command = commandOf("ROVAN_ZEROIZE,1,2");

    EXPECT_EQ(m_maker.makeResponseAck(command, true).command_response(), "ROVAN_ZEROIZE_ACK");
    EXPECT_EQ(m_maker.makeResponseAck(command, false).command_response(), "ROVAN_ZEROIZE_NACK");
}

TEST_F(CmdResponseTest, GivesOnlyTheSuffixForACommandWithoutAFirstWord) {
    for (const char* text : {"", ",", ",REQUEST_CBIT"}) {
        const CommandResponse command = commandOf(text);
        EXPECT_EQ(m_maker.makeResponse(command, true).command_response(), "_PASS") << text;
        EXPECT_EQ(m_maker.makeResponseAck(command, false).command_response(), "_NACK") << text;
    }
}

TEST_F(CmdResponseTest, RepeatsTheCommandInEveryKindOfResponse) {
    CommandResponse command = commandOf("X");
    command.header().device_id(5);
    command.command_identifier(6);

    for (const CommandResponse& response :
         {m_maker.makeResponse(command, true), m_maker.makeResponseAck(command, true),
          m_maker.makeResponse(command, "Y")}) {
        EXPECT_EQ(response.commanded_device_id(), 5);
        EXPECT_EQ(response.command_identifier(), 6);
        EXPECT_EQ(response.command_response_type(), 1u);
        EXPECT_EQ(response.header().device_id(), 0x01270200);
    }
}

TEST_F(CmdResponseTest, CountsCommandsAndResponsesApart) {
    EXPECT_EQ(m_maker.makeCommand("A").header().seq_num(), 0);
    EXPECT_EQ(m_maker.makeCommand(1, "B").header().seq_num(), 1);
    EXPECT_EQ(m_maker.makeResponse(commandOf("C"), true).header().seq_num(), 0);
    EXPECT_EQ(m_maker.makeResponseAck(commandOf("D"), true).header().seq_num(), 1);
    EXPECT_EQ(m_maker.makeResponse(commandOf("E"), "F").header().seq_num(), 2);

    const CommandResponse third = m_maker.makeCommand("G");
    EXPECT_EQ(third.header().seq_num(), 2);
    EXPECT_EQ(third.command_identifier(), 2);
}

TEST_F(CmdResponseTest, HasDeviceIdZeroUntilItIsReset) {
    CmdResponse maker;
    EXPECT_EQ(maker.makeCommand("A").header().device_id(), 0);

    maker.reset(DeviceIdFactory("TessalyPlus", 39));
    const CommandResponse next = maker.makeCommand("B");
    EXPECT_EQ(next.header().device_id(), 0x03270200);
    EXPECT_EQ(next.header().seq_num(), 1);
}

TEST_F(CmdResponseTest, ReplacesOnlyTheSubIdForATopic) {
    CommandResponse message;
    message.header().device_id(-0x7EDCBAA9);  // 0x81234557

    CmdResponse::setTopicId(message, 0xFE);
    EXPECT_EQ(static_cast<uint32_t>(message.header().device_id()), 0x812345FEu);
    CmdResponse::setTopicId(message, 0);
    EXPECT_EQ(static_cast<uint32_t>(message.header().device_id()), 0x81234500u);
}

TEST_F(CmdResponseTest, NumbersCommandsOfSeveralThreadsWithoutGapOrRepeat) {
    constexpr int kThreads = 4;
    constexpr int kCommands = 500;
    std::vector<std::vector<CommandResponse>> made(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([this, &mine = made[static_cast<size_t>(i)]] {
            for (int n = 0; n < kCommands; ++n) {
                mine.push_back(m_maker.makeCommand("X"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::vector<int> sequences(kThreads * kCommands);
    std::vector<int> identifiers(kThreads * kCommands);
    for (const auto& commands : made) {
        for (const CommandResponse& command : commands) {
            ++sequences.at(static_cast<size_t>(command.header().seq_num()));
            ++identifiers.at(static_cast<size_t>(command.command_identifier()));
        }
    }
    EXPECT_EQ(sequences, std::vector<int>(kThreads * kCommands, 1));
    EXPECT_EQ(identifiers, std::vector<int>(kThreads * kCommands, 1));
}

}  // namespace
