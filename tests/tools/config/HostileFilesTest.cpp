// SPDX-License-Identifier: Apache-2.0
// Files that are no configuration, in each place of the chain.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>

#include "tests/tools/config/Deployment.h"
#include "tools/common/Output.h"
#include "tools/config/Report.h"

namespace {

using namespace tools_config_test;
using Config::CheckResult;
using Config::Severity;
using testing::HasSubstr;

std::string nested(int depth) {
    std::string text = "<KD_Configurations>";
    for (int i = 0; i < depth; ++i) {
        text += "<a>";
    }
    for (int i = 0; i < depth; ++i) {
        text += "</a>";
    }
    return text + "</KD_Configurations>";
}

std::string binary() {
    std::string text;
    for (int i = 0; i < 4096; ++i) {
        text += static_cast<char>((i * 37 + i / 256) & 0xFF);
    }
    return text;
}

struct Hostile {
    const char* name;
    std::string text;
    const char* kind;
    int line;
};

std::vector<Hostile> hostileFiles() {
    return {{"Empty", "", "broken-xml", 0},
            {"Blank", " \n \n", "broken-xml", 0},
            {"Binary", binary(), "broken-xml", -1},
            {"Zeros", std::string(4096, '\0'), "broken-xml", -1},
            {"Text", "DomainId = 0\n", "broken-xml", -1},
            {"Unclosed", "<KD_Configurations>\n<a>\n</KD_Configurations>\n", "broken-xml", -1},
            {"CutShort", "<KD_Configurations>\n<a>", "broken-xml", -1},
            {"OtherRoot", "\n<Configurations/>\n", "wrong-root", 2},
            {"DeeplyNested", nested(100'000), "broken-xml", -1}};
}

class HostileFile : public testing::TestWithParam<const char*> {};

TEST_P(HostileFile, IsNamedWithWhatIsWrong) {
    for (const Hostile& hostile : hostileFiles()) {
        SCOPED_TRACE(hostile.name);
        const Deployment deployment;
        deployment.write(GetParam(), hostile.text);

        const CheckResult result = deployment.check();

        ASSERT_EQ(result.findings.size(), 1u) << described(result);
        EXPECT_EQ(result.findings[0].severity, Severity::kError);
        EXPECT_EQ(result.findings[0].kind, hostile.kind);
        EXPECT_EQ(result.findings[0].file, deployment.path(GetParam()));
        if (hostile.line >= 0) {
            EXPECT_EQ(result.findings[0].line, hostile.line);
        }
        EXPECT_TRUE(result.isReadable);
    }
}

TEST_P(HostileFile, MayBeTenMegabytesLong) {
    const Deployment deployment;
    std::string text = contents(deployment.path(GetParam()));
    const std::string end = "</KD_Configurations>";
    std::string filling = "<!-- ";
    filling.append(10'000'000, 'x');
    deployment.write(GetParam(), text.insert(text.find(end), filling + " -->"));
    EXPECT_EQ(deployment.check().findings.size(), 0u);
}

TEST_P(HostileFile, MayHoldManyContainers) {
    const Deployment deployment;
    std::string filling;
    for (int i = 0; i < 20'000; ++i) {
        filling += "<C><Name>Other</Name></C>\n";
    }
    deployment.append(GetParam(), filling);
    const CheckResult result = deployment.check();
    EXPECT_EQ(result.errors(), 0u);
    EXPECT_EQ(result.warnings(), 20'000u);
}

INSTANTIATE_TEST_SUITE_P(InEachPlace, HostileFile,
                         testing::Values("rovan.xml", "connections.xml", "io_devices.xml"),
                         [](const auto& test) {
                             const std::string name = test.param;
                             return name.substr(0, name.find_first_of("._"));
                         });

TEST(BrokenXml, IsNamedWithItsLine) {
    const Deployment deployment;
    deployment.replace("connections.xml", "</DomainId>", "</DomainID>");
    const CheckResult result = deployment.check();
    ASSERT_EQ(result.findings.size(), 1u) << described(result);
    EXPECT_EQ(result.findings[0].problem, "is no XML: mismatched element");
    EXPECT_EQ(result.findings[0].line, 11);
}

// What is in the place of a file.
class NoFile : public testing::Test {
  protected:
    void expectProblem(const std::string& file, const std::string& problem) const {
        const CheckResult result = m_deployment.check();
        EXPECT_EQ(result.findings.size(), 1u) << described(result);
        EXPECT_THAT(described(result), HasSubstr(problem));
        EXPECT_EQ(result.isReadable, file != "rovan.xml");
    }

    const Deployment m_deployment;
};

TEST_F(NoFile, IsSaidOfEachThatIsMissing) {
    for (const char* const file : {"io_devices.xml", "connections.xml", "rovan.xml"}) {
        const std::string text = contents(m_deployment.path(file));
        fs::remove(m_deployment.path(file));
        expectProblem(file, "there is no such file");
        m_deployment.write(file, text);
    }
}

TEST_F(NoFile, IsSaidOfADirectory) {
    for (const char* const file : {"io_devices.xml", "connections.xml", "rovan.xml"}) {
        const std::string text = contents(m_deployment.path(file));
        fs::remove(m_deployment.path(file));
        fs::create_directory(m_deployment.path(file));
        expectProblem(file, "is not a file");
        fs::remove(m_deployment.path(file));
        m_deployment.write(file, text);
    }
}

TEST_F(NoFile, IsSaidOfAPipeWithoutWaitingForItsWriter) {
    fs::remove(m_deployment.path("connections.xml"));
    ASSERT_EQ(mkfifo(m_deployment.path("connections.xml").c_str(), 0600), 0);
    expectProblem("connections.xml", "is not a file");
}

TEST_F(NoFile, IsSaidOfALinkToItself) {
    fs::remove(m_deployment.path("connections.xml"));
    fs::create_symlink("connections.xml", m_deployment.path("connections.xml"));
    expectProblem("connections.xml", "file");
}

TEST(ATextThatSteersTheTerminal, IsShownHarmless) {
    const Deployment deployment;
    const std::string evil = "\x1b[31mred\x1b]0;title\x07";
    // As references, which is how such a byte comes into a file.
    deployment.set("rovan.xml", "Rovan", "Debug", "PLACE");
    deployment.replace("rovan.xml", "PLACE", "\x1b[31mred");
    deployment.set("rovan.xml", "Rovan", "PARAM_6", evil);
    deployment.set("rovan.xml", "Rovan", "Connections", evil);
    const CheckResult result = deployment.check();
    setenv("NO_COLOR", "1", 1);
    const Tools::Output output;
    std::string text;
    for (const Config::Finding& finding : result.findings) {
        text += Config::textLine(finding, output) + Config::jsonLine(finding);
    }
    ASSERT_GE(result.findings.size(), 3u) << described(result);
    EXPECT_EQ(text.find('\x1b'), std::string::npos) << text;
    EXPECT_EQ(text.find('\x07'), std::string::npos) << text;
    EXPECT_THAT(text, HasSubstr("\\x1b[31mred"));
}

}  // namespace
