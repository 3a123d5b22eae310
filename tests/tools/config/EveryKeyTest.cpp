// SPDX-License-Identifier: Apache-2.0
// Every key and every container of the shipped files, taken away or spoilt one by one: the check
// finds it, and the server's own readers refuse it too.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/tools/config/Deployment.h"
#include "tests/tools/config/ServersReaders.h"

namespace {

using namespace tools_config_test;
using Config::CheckResult;
using Config::Finding;
using Config::Severity;
using RC = FACE::RETURN_CODE_TYPE;
using testing::HasSubstr;

std::string nameOf(const testing::TestParamInfo<Place>& info) {
    std::string name = info.param.container + "_" + info.param.key;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

class EveryKey : public testing::TestWithParam<Place> {
  protected:
    EveryKey() {
        // A bus of its own, that nobody else is on.
        m_deployment.set("connections.xml", "FastRtps", "DomainId", "137");
    }

    void expectOnlyFinding(const char* kind) {
        const CheckResult result = m_deployment.check();
        ASSERT_EQ(result.findings.size(), 1u) << described(result);
        const Finding& finding = result.findings.front();
        EXPECT_EQ(finding.severity, Severity::kError);
        EXPECT_EQ(finding.kind, kind);
        EXPECT_EQ(finding.file, m_deployment.path(GetParam().file));
        EXPECT_EQ(finding.container, GetParam().container);
        EXPECT_EQ(finding.key, GetParam().key);
        EXPECT_GT(finding.line, 0);
        EXPECT_NE(finding.expected, "");
    }

    Deployment m_deployment;
};

TEST_P(EveryKey, IsReadByTheServerAsItIsShipped) {
    EXPECT_EQ(ServersReaders(m_deployment).of(GetParam()), RC::NO_ERROR);
    EXPECT_EQ(m_deployment.check().findings.size(), 0u) << described(m_deployment.check());
}

TEST_P(EveryKey, IsMissedByTheCheckAndByTheServer) {
    m_deployment.removeKey(GetParam());

    expectOnlyFinding("missing-key");
    EXPECT_EQ(ServersReaders(m_deployment).of(GetParam()), RC::INVALID_CONFIG);
}

TEST_P(EveryKey, CountsAsMissingWithoutAValue) {
    m_deployment.set(GetParam().file, GetParam().container, GetParam().key, "");

    expectOnlyFinding("missing-key");
    EXPECT_EQ(ServersReaders(m_deployment).of(GetParam()), RC::INVALID_CONFIG);
}

TEST_P(EveryKey, IsFoundUnderAMisspeltName) {
    const std::string wrong = GetParam().key + "X";
    m_deployment.renameKey(GetParam(), wrong);

    const CheckResult result = m_deployment.check();

    EXPECT_EQ(result.errors(), 1u) << described(result);
    ASSERT_EQ(result.warnings(), 1u) << described(result);
    const auto warning =
        std::find_if(result.findings.begin(), result.findings.end(),
                     [](const Finding& finding) { return finding.severity == Severity::kWarning; });
    EXPECT_EQ(warning->kind, "unread-key");
    EXPECT_EQ(warning->key, wrong);
    EXPECT_EQ(warning->suggestion, GetParam().key);
}

class EveryNumber : public EveryKey {};

TEST_P(EveryNumber, IsNoneWithALetterBehind) {
    m_deployment.set(GetParam().file, GetParam().container, GetParam().key, GetParam().value + "z");
    expectOnlyFinding("not-a-number");
}

TEST_P(EveryNumber, IsOutOfRangeWithTwentyDigits) {
    m_deployment.set(GetParam().file, GetParam().container, GetParam().key, "99999999999999999999");
    expectOnlyFinding("out-of-range");
}

std::vector<Place> allNumbers() {
    std::vector<Place> numbers;
    for (const Place& place : allPlaces()) {
        const bool isList = place.key >= "PARAM_6" && place.key <= "PARAM_9";
        if (!isList && place.value.find_first_not_of("0123456789xABCDEF") == std::string::npos) {
            numbers.push_back(place);
        }
    }
    return numbers;
}

INSTANTIATE_TEST_SUITE_P(Shipped, EveryKey, testing::ValuesIn(allPlaces()), nameOf);
INSTANTIATE_TEST_SUITE_P(Shipped, EveryNumber, testing::ValuesIn(allNumbers()), nameOf);

TEST(EveryKeyOfTheShippedFiles, Are79In29Containers) {
    std::set<std::string> containers;
    std::map<std::string, int> keys;
    for (const Place& place : allPlaces()) {
        containers.insert(place.file + place.container);
        ++keys[place.file];
    }
    EXPECT_EQ(containers.size(), 2u + 15u + 12u);
    EXPECT_EQ(keys["rovan.xml"], 3 + 14);
    EXPECT_EQ(keys["connections.xml"], 7 + 14 * 2);
    EXPECT_EQ(keys["io_devices.xml"], 7 + 2 + 9 * 2);
    EXPECT_EQ(allNumbers().size(), 6u + 3u + 27u);
}

TEST(EveryContainerOfTheShippedFiles, IsMissedByTheCheckAndByTheServer) {
    std::set<std::string> done;
    for (const Place& place : allPlaces()) {
        if (!done.insert(place.file + place.container).second) {
            continue;
        }
        SCOPED_TRACE(place.container);
        const Deployment deployment;
        deployment.set("connections.xml", "FastRtps", "DomainId", "138");
        deployment.removeContainer(place.file, place.container);

        const CheckResult result = deployment.check();

        ASSERT_EQ(result.findings.size(), 1u) << described(result);
        EXPECT_EQ(result.findings[0].severity, Severity::kError);
        EXPECT_EQ(result.findings[0].kind, "missing-container");
        EXPECT_EQ(result.findings[0].container, place.container);
        EXPECT_EQ(result.findings[0].file, deployment.path(place.file));
        const RC::Value rc = ServersReaders(deployment).of(place);
        EXPECT_EQ(rc, place.container == "FastRtps" ? RC::NOT_AVAILABLE : RC::INVALID_CONFIG);
    }
    EXPECT_EQ(done.size(), 29u);
}

}  // namespace
