// SPDX-License-Identifier: Apache-2.0
// The program as the shell sees it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tools/Program.h"
#include "tests/tools/config/Deployment.h"

namespace {

using namespace tools_config_test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct Ended {
    int status;
    std::string output;
    std::string errors;
};

Ended run(const std::vector<std::string>& arguments) {
    tools_test::Program program(arguments, "rovan-config");
    const int status = program.wait();
    return {status, program.output(), program.errors()};
}

TEST(ConfigProgram, HasHelpThatFitsAScreen) {
    const std::vector<std::vector<std::string>> kHelps = {
        {"--help"}, {"check", "--help"}, {"init", "--help"}};
    for (const auto& arguments : kHelps) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.errors, IsEmpty());
        std::istringstream lines(ended.output);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_LE(line.size(), 90u) << line;
        }
        EXPECT_GT(count, 5);
        EXPECT_LE(count, 24) << ended.output;
        EXPECT_THAT(ended.output, HasSubstr("Exit status"));
    }
}

TEST(ConfigProgram, RefusesWrongArguments) {
    const std::vector<std::vector<std::string>> kWrong = {
        {},
        {"unheard"},
        {"check"},
        {"check", "a.xml", "b.xml"},
        {"check", "--unheard", "a.xml"},
        {"check", "a.xml", "--started-in", "/no/such/directory"},
        {"init"},
        {"init", "/tmp/never", "--transport", "UDP"}};
    for (const auto& arguments : kWrong) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 2) << testing::PrintToString(arguments);
        EXPECT_FALSE(ended.errors.empty());
    }
}

TEST(ConfigProgram, FindsTheShippedVariantsClean) {
    for (const char* const variant : {"udp", "shm", "tcp-server", "tcp-client"}) {
        const fs::path directory = kShipped / variant;
        const Ended text = run({"check", "--strict", directory / "rovan.xml"});
        EXPECT_EQ(text.status, 0);
        EXPECT_EQ(text.output,
                  "clean in 3 files; the server is to be started in " + directory.string() + "\n");
        EXPECT_THAT(text.errors, IsEmpty());
        const Ended json = run({"check", "--strict", "--json", directory / "rovan.xml"});
        EXPECT_EQ(json.status, 0);
        EXPECT_THAT(json.output, IsEmpty());
    }
}

TEST(ConfigProgram, EndsWithOneForErrorsAndForWarningsOnlyWhenStrict) {
    const Deployment wrong;
    wrong.set("rovan.xml", "Rovan", "PARAM_1", "9600");
    EXPECT_EQ(run({"check", wrong.path("rovan.xml")}).status, 1);
    const Deployment doubtful;
    doubtful.set("rovan.xml", "Rovan", "PARAM_8", "5043");
    EXPECT_EQ(run({"check", doubtful.path("rovan.xml")}).status, 0);
    EXPECT_EQ(run({"check", "--strict", doubtful.path("rovan.xml")}).status, 1);
}

TEST(ConfigProgram, EndsWithTwoWithoutAFileToCheck) {
    const Ended ended = run({"check", "/no/such/file.xml"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "/no/such/file.xml: error: there is no such file\n");
}

TEST(ConfigProgram, EndsWithTwoWhenItsOutputIsNotTaken) {
    const std::string program = ROVAN_BINARY_DIR "/bin/rovan-config";
    const std::string file = kShipped / "udp" / "rovan.xml";
    const int status =
        std::system((program + " check " + file + " > /dev/full 2> /dev/null").c_str());
    EXPECT_EQ(WEXITSTATUS(status), 2);
}

TEST(ConfigProgram, WritesALineThatEditorsUnderstand) {
    const Deployment deployment;
    deployment.set("connections.xml", "FastRtps", "UseTransport", "udp");
    const Ended ended = run({"check", deployment.path("rovan.xml")});
    EXPECT_EQ(ended.output,
              deployment.path("connections.xml").string() +
                  ":18: error: FastRtps, UseTransport: \"udp\" is no transport; expected one of "
                  "SHM, UDP, TCP_Client, TCP_Server; did you mean \"UDP\"?\n"
                  "1 error, 0 warnings in 3 files; the server is to be started in " +
                  deployment.directory().string() + "\n");
}

TEST(ConfigProgram, WritesOneJsonObjectALine) {
    const Deployment deployment;
    deployment.set("connections.xml", "FastRtps", "UseTransport", "udp");
    deployment.removeContainer("io_devices.xml", "KD_ROVAN");
    const Ended ended = run({"check", "--json", deployment.path("rovan.xml")});
    EXPECT_EQ(ended.status, 1);
    std::istringstream lines(ended.output);
    std::vector<nlohmann::json> objects;
    for (std::string line; std::getline(lines, line);) {
        objects.push_back(nlohmann::json::parse(line));
    }
    ASSERT_EQ(objects.size(), 2u) << ended.output;
    EXPECT_EQ(objects[0], nlohmann::json({{"severity", "error"},
                                          {"kind", "wrong-value"},
                                          {"file", deployment.path("connections.xml").string()},
                                          {"line", 18},
                                          {"container", "FastRtps"},
                                          {"key", "UseTransport"},
                                          {"problem", "is no transport"},
                                          {"found", "udp"},
                                          {"expected", "one of SHM, UDP, TCP_Client, TCP_Server"},
                                          {"suggestion", "UDP"}}));
    EXPECT_EQ(objects[1]["kind"], "missing-container");
    EXPECT_TRUE(objects[1]["line"].is_null());
    EXPECT_TRUE(objects[1]["key"].is_null());
    EXPECT_TRUE(objects[1]["found"].is_null());
}

TEST(ConfigProgram, TakesRelativePathsFromWhereTheServerIsStarted) {
    const Deployment deployment;
    fs::create_directory(deployment.path("inside"));
    fs::rename(deployment.path("rovan.xml"), deployment.path("inside/rovan.xml"));
    EXPECT_EQ(run({"check", deployment.path("inside/rovan.xml")}).status, 1);
    for (const std::string& file :
         {deployment.path("inside/rovan.xml").string(), std::string("inside/rovan.xml")}) {
        const Ended ended = run({"check", file, "--started-in", deployment.directory()});
        EXPECT_EQ(ended.status, 0) << ended.output;
    }
}

TEST(ConfigProgram, SaysNothingOfADirectoryWhenAllPathsAreAbsolute) {
    const Deployment deployment;
    for (const auto& [key, file] :
         {std::pair("Connections", "connections.xml"), std::pair("IODevices", "io_devices.xml")}) {
        deployment.set("rovan.xml", "Rovan", key, deployment.path(file));
    }
    EXPECT_EQ(run({"check", deployment.path("rovan.xml")}).output, "clean in 3 files\n");
}

TEST(ConfigProgram, WritesADeploymentAndSaysWhatIsNext) {
    const Deployment around;
    const std::string directory = around.path("new/deep");
    const Ended ended = run({"init", directory, "--transport", "shm"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.output,
              "wrote " + directory + "/rovan.xml\nwrote " + directory + "/connections.xml\nwrote " +
                  directory + "/io_devices.xml\nNext: edit them, then\n  rovan-config check " +
                  directory + "/rovan.xml\n  cd " + directory + " && RovanServer rovan.xml\n");
    EXPECT_EQ(run({"check", "--strict", directory + "/rovan.xml"}).status, 0);

    const Ended again = run({"init", directory});
    EXPECT_EQ(again.status, 2);
    EXPECT_THAT(again.output, IsEmpty());
    EXPECT_THAT(again.errors, StartsWith("rovan-config: " + directory + "/rovan.xml is there"));
    EXPECT_EQ(run({"init", directory, "--force"}).status, 0);
}

}  // namespace
