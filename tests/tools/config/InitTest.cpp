// SPDX-License-Identifier: Apache-2.0
#include "tools/config/Init.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "tests/tools/Program.h"
#include "tests/tools/config/Deployment.h"
#include "tests/tools/config/ServersReaders.h"
#include "tools/config/Shipped.h"

namespace {

using namespace tools_config_test;
using testing::ElementsAre;
using testing::HasSubstr;

class Init : public testing::Test {
  protected:
    Init() { m_directory /= "new"; }

    std::string problem(bool force = false) const {
        try {
            Config::init(m_directory, "udp", force);
        } catch (const Config::InitError& error) {
            return error.what();
        }
        return "";
    }

    const Deployment m_around;  // its directory is gone at the end
    fs::path m_directory = m_around.directory();
};

TEST_F(Init, WritesEachVariantSoThatItIsClean) {
    const std::pair<const char*, const char*> kVariants[] = {
        {"udp", "UDP"}, {"shm", "SHM"}, {"tcp-server", "TCP_Server"}, {"tcp-client", "TCP_Client"}};
    EXPECT_EQ(Config::variants().size(), 4u);
    for (const auto& [variant, transport] : kVariants) {
        const fs::path directory = m_directory / variant;
        const auto paths = Config::init(directory, variant, false);
        EXPECT_THAT(paths, ElementsAre(directory / "rovan.xml", directory / "connections.xml",
                                       directory / "io_devices.xml"));
        const Config::CheckResult result = Config::check(directory / "rovan.xml", directory);
        EXPECT_EQ(result.findings.size(), 0u) << described(result);
        EXPECT_EQ(result.files.size(), 3u);
        EXPECT_THAT(contents(directory / "connections.xml"),
                    HasSubstr("<UseTransport>" + std::string(transport) + "<"));
        EXPECT_EQ(std::distance(fs::directory_iterator(directory), fs::directory_iterator()), 3);
    }
}

TEST_F(Init, WritesTheShippedFilesButForOnePath) {
    Config::init(m_directory, "tcp-client", false);
    EXPECT_EQ(contents(m_directory / "connections.xml"),
              contents(kShipped / "tcp-client" / "connections.xml"));
    EXPECT_EQ(contents(m_directory / "io_devices.xml"), contents(kShipped / "io_devices.xml"));
    std::string top = contents(kShipped / "tcp-client" / "rovan.xml");
    const std::string path = "../io_devices.xml";
    top.replace(top.find(path), path.size(), "io_devices.xml");
    EXPECT_EQ(contents(m_directory / "rovan.xml"), top);
}

TEST_F(Init, HasEveryShippedFileBuiltIn) {
    for (const Config::ShippedFile& file : Config::shippedFiles()) {
        EXPECT_EQ(file.text, contents(kShipped / file.path)) << file.path;
    }
    EXPECT_EQ(Config::shippedFiles().size(), 9u);
}

TEST_F(Init, IsAcceptedByTheServersReaders) {
    Config::init(m_directory, "udp", false);
    for (const char* const file : {"rovan.xml", "connections.xml", "io_devices.xml"}) {
        fs::copy_file(m_directory / file, m_around.path(file),
                      fs::copy_options::overwrite_existing);
    }
    m_around.set("connections.xml", "FastRtps", "DomainId", "139");
    const ServersReaders readers(m_around);
    for (const Place& place : allPlaces()) {
        EXPECT_EQ(readers.of(place), FACE::RETURN_CODE_TYPE::NO_ERROR) << place.container;
    }
}

// The server itself, in the simulated unit.
TEST_F(Init, IsWhatTheServerStartsWith) {
    Config::init(m_directory, "udp", false);
    fs::copy_file(m_directory / "connections.xml", m_around.path("connections.xml"),
                  fs::copy_options::overwrite_existing);
    m_around.set("connections.xml", "FastRtps", "DomainId", "143");
    fs::rename(m_around.path("connections.xml"), m_directory / "connections.xml");

    tools_test::Program unit({"--config", m_directory / "rovan.xml", "--duration", "5"},
                             "rovan-unit");

    EXPECT_EQ(unit.wait(), 0) << unit.output() << unit.errors();
    EXPECT_THAT(unit.output(), HasSubstr("server            exit status 0"));
    EXPECT_THAT(unit.output(), testing::Not(HasSubstr("WARNING - Parameter")));
}

TEST_F(Init, MakesFilesThatEverybodyMayRead) {
    const mode_t former = umask(022);
    Config::init(m_directory, "udp", false);
    umask(former);
    struct stat status {};
    ASSERT_EQ(stat((m_directory / "rovan.xml").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0644u);
}

TEST_F(Init, OverwritesNothingAndWritesNothingThen) {
    for (const char* const name : {"rovan.xml", "connections.xml", "io_devices.xml"}) {
        fs::remove_all(m_directory);
        fs::create_directory(m_directory);
        std::ofstream(m_directory / name) << "mine";

        EXPECT_EQ(problem(),
                  (m_directory / name).string() + " is there already; --force overwrites it");

        EXPECT_EQ(contents(m_directory / name), "mine");
        EXPECT_EQ(std::distance(fs::directory_iterator(m_directory), fs::directory_iterator()), 1);
    }
}

TEST_F(Init, DoesNotWriteThroughALinkThatLeadsNowhere) {
    fs::create_directory(m_directory);
    fs::create_symlink(m_around.path("elsewhere"), m_directory / "connections.xml");
    EXPECT_THAT(problem(), HasSubstr("is there already"));
    EXPECT_FALSE(fs::exists(m_around.path("elsewhere")));
}

TEST_F(Init, OverwritesWithForceWhatIsThereButNotWhatALinkLeadsTo) {
    fs::create_directory(m_directory);
    std::ofstream(m_directory / "rovan.xml") << "mine";
    std::ofstream(m_around.path("elsewhere")) << "mine too";
    fs::create_symlink(m_around.path("elsewhere"), m_directory / "connections.xml");

    EXPECT_EQ(problem(true), "");

    EXPECT_EQ(Config::check(m_directory / "rovan.xml", m_directory).findings.size(), 0u);
    EXPECT_EQ(contents(m_around.path("elsewhere")), "mine too");
}

TEST_F(Init, SaysWhatKeepsItFromWriting) {
    std::ofstream(m_directory) << "a file where the directory should be";
    EXPECT_THAT(problem(), HasSubstr(m_directory.string()));
    EXPECT_EQ(contents(m_directory), "a file where the directory should be");
}

TEST_F(Init, ReplacesNoDirectory) {
    fs::create_directories(m_directory / "rovan.xml" / "inside");
    EXPECT_THAT(problem(true), HasSubstr("rovan.xml: "));
    EXPECT_TRUE(fs::exists(m_directory / "rovan.xml" / "inside"));
    EXPECT_EQ(std::distance(fs::directory_iterator(m_directory), fs::directory_iterator()), 1);
}

}  // namespace
