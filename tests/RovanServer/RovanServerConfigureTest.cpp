// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <string>

#include "tests/RovanServer/OpenServer.h"
#include "tests/RovanServer/SchedulingRestored.h"
#include "tests/RovanServer/TemporaryDirectory.h"
#include "tests/RovanServer/TopLevelFile.h"

using FACE::RETURN_CODE_TYPE;
using FACE::toStdString;
using testing::HasSubstr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

class RovanServerConfigure : public testing::Test {
  protected:
    RETURN_CODE_TYPE::Value configure(const TopLevelFile& file) {
        return configureText(file.text());
    }

    RETURN_CODE_TYPE::Value configureText(const std::string& text) {
        const std::string path = m_directory.write("rovan.xml", text);
        auto rc = RETURN_CODE_TYPE::NO_ACTION;
        CaptureStdout();
        m_server.Configure(path.c_str(), rc);
        m_console = GetCapturedStdout();
        return rc;
    }

    SchedulingRestored m_restored;
    TemporaryDirectory m_directory;
    OpenServer m_server;
    std::string m_console;
};

TEST_F(RovanServerConfigure, ReadsEveryKey) {
    TopLevelFile file;
    TopLevelFile::set(file.server, "Connections", "c.xml");
    TopLevelFile::set(file.server, "IODevices", "d.xml");
    TopLevelFile::set(file.server, "Debug", "TRUE");
    TopLevelFile::set(file.server, "PARAM_1", "0x1C200");
    TopLevelFile::set(file.server, "PARAM_2", "2");
    TopLevelFile::set(file.server, "PARAM_3", "3");
    TopLevelFile::set(file.server, "PARAM_4", "010");
    TopLevelFile::set(file.server, "PARAM_5", "1");
    TopLevelFile::set(file.server, "PARAM_6", "9225,5404");
    TopLevelFile::set(file.server, "PARAM_7", "8504");
    TopLevelFile::set(file.server, "PARAM_8", "5001");
    TopLevelFile::set(file.server, "PARAM_9", "9391");

    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::NO_ERROR);

    const auto& c = m_server.m_configuration;
    EXPECT_EQ(toStdString(c.systemName), "TessalyPlus");
    EXPECT_EQ(toStdString(c.configurationName), "Desk");
    EXPECT_EQ(toStdString(c.environment), "SYSTEM_ENV_LIVE");
    EXPECT_EQ(toStdString(c.connectionsFile), "c.xml");
    EXPECT_EQ(toStdString(c.ioDevicesFile), "d.xml");
    EXPECT_TRUE(c.debug);
    EXPECT_EQ(c.baud, 115200);
    EXPECT_EQ(c.parity, 2);
    EXPECT_EQ(c.uartIndex, 3);
    EXPECT_EQ(c.pulseIndex, 8);
    EXPECT_TRUE(c.setupRedundantPort);
    EXPECT_EQ(toStdString(c.requestMessageList), "9225,5404");
    EXPECT_EQ(toStdString(c.connectMessageList), "8504");
    EXPECT_EQ(toStdString(c.passthroughMessageList), "5001");
    EXPECT_EQ(toStdString(c.mcsqTopicList), "9391");
    EXPECT_EQ(m_console, "");
}

TEST_F(RovanServerConfigure, CutsNumbersToTheWidthOfTheirMember) {
    TopLevelFile file;
    TopLevelFile::set(file.server, "PARAM_1", "-1");
    TopLevelFile::set(file.server, "PARAM_2", "65537");
    TopLevelFile::set(file.server, "PARAM_3", "0x105");
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::NO_ERROR);
    EXPECT_EQ(m_server.m_configuration.baud, -1);
    EXPECT_EQ(m_server.m_configuration.parity, 1);
    EXPECT_EQ(m_server.m_configuration.uartIndex, 5);
}

TEST_F(RovanServerConfigure, RefusesAMissingFile) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    m_server.Configure(m_directory.path("absent.xml").c_str(), rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::INVALID_CONFIG);
}

TEST_F(RovanServerConfigure, RefusesBrokenXml) {
    EXPECT_EQ(configureText("<KD_Configurations><System>"), RETURN_CODE_TYPE::INVALID_CONFIG);
}

TEST_F(RovanServerConfigure, RefusesAFileWithoutTheSystemContainer) {
    TopLevelFile file;
    file.systemName = "Other";
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG);
    EXPECT_EQ(toStdString(m_server.m_configuration.connectionsFile), "");
}

TEST_F(RovanServerConfigure, RefusesAFileWithoutTheServersContainer) {
    TopLevelFile file;
    file.serverName = "Other";
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG);
}

TEST_F(RovanServerConfigure, EachMissingSystemKeyEndsTheReading) {
    for (const auto& [key, value] : TopLevelFile().system) {
        TopLevelFile file;
        TopLevelFile::remove(file.system, key);
        EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG) << key;
        EXPECT_EQ(m_console, "WARNING - Parameter " + key + " not found\n");
        EXPECT_EQ(toStdString(m_server.m_configuration.connectionsFile), "");
    }
}

TEST_F(RovanServerConfigure, EachMissingServerKeyIsNamedAndTheOthersAreRead) {
    int keys = 0;
    for (const auto& [key, value] : TopLevelFile().server) {
        TopLevelFile file;
        TopLevelFile::remove(file.server, key);
        TopLevelFile::set(file.system, "Configuration", key);
        EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG) << key;
        EXPECT_EQ(m_console, "WARNING - Parameter " + key + " not found\n");
        ++keys;
    }
    EXPECT_EQ(keys, 14);
    EXPECT_EQ(toStdString(m_server.m_configuration.mcsqTopicList), "0");
}

TEST_F(RovanServerConfigure, EachEmptyServerKeyIsMissing) {
    for (const auto& [key, value] : TopLevelFile().server) {
        TopLevelFile file;
        TopLevelFile::set(file.server, key, "");
        EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG) << key;
        EXPECT_EQ(m_console, "WARNING - Parameter " + key + " not found\n");
    }
}

TEST_F(RovanServerConfigure, AllMissingServerKeysAreNamedInTheOrderOfReading) {
    TopLevelFile file;
    file.server.clear();
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG);
    std::string expected;
    for (const auto& [key, value] : TopLevelFile().server) {
        expected += "WARNING - Parameter " + key + " not found\n";
    }
    EXPECT_EQ(m_console, expected);
}

TEST_F(RovanServerConfigure, BindsTheProcessToTheFirstProcessor) {
    TopLevelFile file;
    TopLevelFile::set(file.server, "CPU", "1");
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::NO_ERROR);
    EXPECT_EQ(m_console, "Has CPU Affinity for CPU1\nSuccessfully set Rovan cpu affinity to 1\n");
}

TEST_F(RovanServerConfigure, AskingForNoProcessorByOverflowFails) {
    // Only the low 8 bits reach the system, and they are 0; the whole value decides and is printed.
    TopLevelFile file;
    TopLevelFile::set(file.server, "CPU", "256");
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG);
    EXPECT_THAT(m_console, HasSubstr("FAILED to set Rovan cpu affinity to 256\n"));
}

TEST_F(RovanServerConfigure, AMissingKeyDoesNotKeepTheAffinityFromBeingSet) {
    TopLevelFile file;
    TopLevelFile::set(file.server, "CPU", "1");
    TopLevelFile::remove(file.server, "PARAM_9");
    EXPECT_EQ(configure(file), RETURN_CODE_TYPE::INVALID_CONFIG);
    EXPECT_THAT(m_console, HasSubstr("Successfully set Rovan cpu affinity to 1\n"));
}

TEST_F(RovanServerConfigure, PrintsWhatBecameOfThePriority) {
    sched_param lowest{};
    lowest.sched_priority = 1;
    const bool allowed = sched_setscheduler(0, SCHED_FIFO, &lowest) == 0;
    TopLevelFile file;
    TopLevelFile::set(file.server, "PRI", "7");
    EXPECT_EQ(configure(file),
              allowed ? RETURN_CODE_TYPE::NO_ERROR : RETURN_CODE_TYPE::INVALID_CONFIG);
    EXPECT_EQ(m_console, std::string(allowed ? "Successfully set " : "FAILED to set ") +
                             "Rovan realtime process priority to 7\n");
    sched_param now{};
    ASSERT_EQ(sched_getparam(0, &now), 0);
    EXPECT_EQ(now.sched_priority, allowed ? 7 : 0);
}

}  // namespace
