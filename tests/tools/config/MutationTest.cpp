// SPDX-License-Identifier: Apache-2.0
// Shipped files with random damage: whatever the server's readers refuse, the check calls an error.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fastdds/dds/topic/TopicDataType.hpp>
#include <random>

#include "ASPN/ServerConnections.h"
#include "ASPN/ServerSettings.h"
#include "face/DevmemConnection.h"
#include "face/KD_Config.h"
#include "face/KD_Config_Row.h"
#include "face/KD_TSS_Settings.h"
#include "face/KD_Topic_Helpers.h"
#include "face/SerialSettings.h"
#include "ioss_mcsq/KD_MCSQ_Settings.h"
#include "platform/FpgaRegisters.h"
#include "tests/tools/config/Deployment.h"

namespace {

using namespace tools_config_test;
using FACE::KD_Config_Row;
using RC = FACE::RETURN_CODE_TYPE;

// The server's readers, one file after the other; nothing is opened or joined. Empty when they
// accept all, else what they do not.
class Readers {
  public:
    explicit Readers(const fs::path& directory) : m_directory(directory) {}

    std::string refusal() {
        ASPN2::ServerSettings settings;
        ASPN2::ServerScheduling scheduling;
        FACE::KD_Config top;
        if (!load(top, "rovan.xml")) {
            return "rovan.xml";
        }
        read(top, "Keldra", [&](auto& row) { ASPN2::readSystemSettings(row, settings); });
        read(top, "Rovan",
             [&](auto& row) { ASPN2::readServerSettings(row, settings, scheduling); });
        if (m_refused.empty()) {
            readConnections(FACE::toStdString(settings.connectionsFile));
            readDevices(FACE::toStdString(settings.ioDevicesFile));
        }
        return m_refused;
    }

  private:
    bool load(FACE::KD_Config& config, const std::string& file) const {
        RC::Value rc = RC::NO_ERROR;
        config.Initialize((m_directory / file).c_str(), rc);
        return rc == RC::NO_ERROR;
    }

    template <typename Function>
    void read(FACE::KD_Config& config, const std::string& container, Function function) {
        KD_Config_Row row(config, container.c_str());
        function(row);
        if (row.code() != RC::NO_ERROR) {
            m_refused = container;
        }
    }

    void readConnections(const std::string& file) {
        FACE::KD_Config config;
        if (!load(config, file)) {
            m_refused = "Connections";
            return;
        }
        FACE::TSS::KD_TSS::Settings_t settings;
        read(config, "FastRtps", [&](auto& row) { FACE::TSS::readSettings(row, settings); });
        for (const auto& connection : ASPN2::ServerConnections::kBus) {
            std::string typeName;
            std::string pubSubType;
            read(config, connection.name,
                 [&](auto& row) { FACE::TSS::readConnection(row, typeName, pubSubType); });
            if (FACE::TSS::Topics::GetPubSubType(pubSubType) == nullptr) {
                m_refused = connection.name;
            }
        }
    }

    void readDevices(const std::string& file) {
        FACE::KD_Config config;
        if (!load(config, file)) {
            m_refused = "IODevices";
            return;
        }
        FACE::IOSS::SerialSettings line;
        read(config, "Rovan", [&](auto& row) { FACE::IOSS::readSettings(row, line); });
        for (const char* const queue : {"ROVAN_KD", "KD_ROVAN"}) {
            uint16_t port = 0;
            read(config, queue, [&](auto& row) { FACE::IOSS::readQueueSettings(row, port); });
        }
        for (const char* const block :
             {FpgaRegisters::Processor::kConnection, FpgaRegisters::Peripheral::kConnection,
              FpgaRegisters::TimeStamp::kConnection, FpgaRegisters::PpsSlave::kConnection,
              FpgaRegisters::PtpClock::kConnection}) {
            FACE::IOSS::DevmemSettings memory;
            read(config, block, [&](auto& row) { FACE::IOSS::readSettings(row, memory); });
        }
    }

    const fs::path m_directory;
    std::string m_refused;
};

// One random damage: a byte changed, a piece taken out, doubled, or moved.
std::string damaged(std::string text, std::mt19937& random) {
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    const std::size_t at = below(text.size());
    const std::string piece = text.substr(at, 1 + below(60));
    switch (below(4)) {
        case 0:
            text[at] = static_cast<char>(below(256));
            break;
        case 1:
            text.erase(at, piece.size());
            break;
        case 2:
            text.insert(at, piece);
            break;
        default:
            text.erase(at, piece.size());
            text.insert(below(text.size() + 1), piece);
    }
    return text;
}

TEST(Damage, ThatTheServersReadersRefuseIsAnErrorOfTheCheck) {
    const char* const rounds = std::getenv("ROVAN_CONFIG_DAMAGES");
    const int wanted = rounds != nullptr ? std::atoi(rounds) : 1500;
    const std::string files[] = {"rovan.xml", "connections.xml", "io_devices.xml"};
    const Deployment deployment;
    // Without the comments, where most damage does none.
    for (const std::string& file : files) {
        std::string text = contents(deployment.path(file));
        for (std::size_t at = 0; (at = text.find("<!--")) != std::string::npos;) {
            text.erase(at, text.find("-->", at) + 3 - at);
        }
        deployment.write(file, text);
    }
    std::mt19937 random(4711);
    int refused = 0;
    int errors = 0;
    testing::internal::CaptureStdout();
    for (int round = 0; round < wanted; ++round) {
        const std::string& file = files[round % 3];
        const std::string good = contents(deployment.path(file));
        const std::string bad = damaged(good, random);
        deployment.write(file, bad);
        const std::string refusal = Readers(deployment.directory()).refusal();
        const Config::CheckResult result = deployment.check();
        refused += refusal.empty() ? 0 : 1;
        errors += result.errors() > 0 ? 1 : 0;
        EXPECT_TRUE(refusal.empty() || result.errors() > 0)
            << "round " << round << ", refused: " << refusal << '\n'
            << bad << '\n'
            << described(result);
        deployment.write(file, good);
    }
    testing::internal::GetCapturedStdout();
    // Far from all damage can be seen by the readers, and the check sees more than they.
    EXPECT_GT(refused, wanted / 4);
    EXPECT_GT(errors, refused);
}

}  // namespace
