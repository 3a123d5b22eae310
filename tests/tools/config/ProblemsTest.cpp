// SPDX-License-Identifier: Apache-2.0
// What the check finds in the values of a configuration, one by one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/tools/config/Deployment.h"

namespace {

using namespace tools_config_test;
using Config::CheckResult;
using Config::Finding;
using Config::Severity;
using testing::HasSubstr;

constexpr auto kError = Severity::kError;
constexpr auto kWarning = Severity::kWarning;

struct Case {
    const char* name;
    const char* file;
    const char* container;
    const char* key;
    const char* value;
    Severity severity;
    const char* kind;
    const char* says;  // part of what is wrong or expected
    const char* suggestion = "";
};

constexpr const char* kTop = "rovan.xml";
constexpr const char* kBus = "connections.xml";
constexpr const char* kIo = "io_devices.xml";

const Case kCases[] = {
    {"SystemUnknown", kTop, "Keldra", "System", "TesalyPlus", kWarning, "doubtful-value",
     "ARVEN, BRELD, TessalyPlus", "TessalyPlus"},
    {"EnvironmentMisspelt", kTop, "Keldra", "Environment", "SYSTEM_ENV_RERADD", kWarning,
     "doubtful-value", "ordinary operation", "SYSTEM_ENV_RERAD"},
    {"ConnectionsNotThere", kTop, "Rovan", "Connections", "conections.xml", kError, "wrong-value",
     "no such file"},
    {"DevicesNotThere", kTop, "Rovan", "IODevices", "../nowhere.xml", kError, "wrong-value",
     "no such file"},
    {"DevicesADirectory", kTop, "Rovan", "IODevices", ".", kError, "wrong-value", "not a file"},
    {"ConnectionsWithABlank", kTop, "Rovan", "Connections", "connections.xml ", kError,
     "wrong-value", "no such file"},
    {"DebugYes", kTop, "Rovan", "Debug", "yes", kError, "not-a-boolean", "TRUE or FALSE"},
    {"DebugWithABlank", kTop, "Rovan", "Debug", " TRUE", kError, "not-a-boolean", "counts as FALSE",
     "TRUE"},
    {"RedundantMisspelt", kTop, "Rovan", "PARAM_5", "FLASE", kError, "not-a-boolean",
     "TRUE or FALSE", "FALSE"},
    {"PriorityTooHigh", kTop, "Rovan", "PRI", "100", kError, "wrong-value", "1 to 99"},
    {"PriorityNegative", kTop, "Rovan", "PRI", "-1", kError, "out-of-range", "0 to 65535"},
    {"CpuTooHigh", kTop, "Rovan", "CPU", "256", kError, "wrong-value", "1 to 255"},
    {"BaudWithoutCode", kTop, "Rovan", "PARAM_1", "9600", kError, "wrong-value",
     "one of 300, 600, 1200, 2400, 4800, 19200, 38400, 115200, 230400, 460800, 921600"},
    {"BaudWithoutLine", kTop, "Rovan", "PARAM_1", "76800", kError, "wrong-value",
     "serial line does not have"},
    {"ParityUnknown", kTop, "Rovan", "PARAM_2", "3", kError, "wrong-value", "counts as 0"},
    {"UartBeyondTheStamps", kTop, "Rovan", "PARAM_3", "16", kError, "wrong-value", "0 to 15"},
    {"UartBeyondItsWidth", kTop, "Rovan", "PARAM_3", "256", kError, "out-of-range", "0 to 255"},
    {"PulseBeyondTheStamps", kTop, "Rovan", "PARAM_4", "31", kError, "wrong-value", "0 to 30"},
    {"RequestNotANumber", kTop, "Rovan", "PARAM_6", "9225,abc", kError, "wrong-value",
     "has the entry \"abc\""},
    {"RequestHexadecimal", kTop, "Rovan", "PARAM_6", "0x2409", kError, "wrong-value",
     "names no message"},
    {"RequestEmptyEntry", kTop, "Rovan", "PARAM_6", "9225,,5404", kError, "wrong-value",
     "has the entry \"\""},
    {"ConnectTooLarge", kTop, "Rovan", "PARAM_7", "8504,65537", kError, "wrong-value",
     "has the entry \"65537\""},
    {"ConnectTwice", kTop, "Rovan", "PARAM_7", "8504,253,8504", kWarning, "doubtful-value",
     "has 8504 twice"},
    {"PassthroughUnknown", kTop, "Rovan", "PARAM_8", "5001,5043", kWarning, "doubtful-value",
     "has 5043"},
    {"ExcludedUnknown", kTop, "Rovan", "PARAM_9", "8505", kWarning, "doubtful-value", "has 8505"},
    {"NumberOctal", kTop, "Rovan", "PARAM_3", "017", kWarning, "octal", "that is 15"},
    {"NumberNotOctal", kTop, "Rovan", "PARAM_3", "08", kError, "not-a-number", "whole number"},

    {"DomainTooHigh", kBus, "FastRtps", "DomainId", "233", kError, "wrong-value", "0 to 232"},
    {"HistoryEmpty", kBus, "FastRtps", "HistoryDepth", "0", kError, "wrong-value", "1 or more"},
    {"HistoryNegative", kBus, "FastRtps", "HistoryDepth", "-1", kError, "wrong-value", "1 or more"},
    {"BestEffortOn", kBus, "FastRtps", "UseBestEffort", "on", kError, "not-a-boolean",
     "TRUE or FALSE"},
    {"TransportUnknown", kBus, "FastRtps", "UseTransport", "udp", kError, "wrong-value",
     "one of SHM, UDP, TCP_Client, TCP_Server", "UDP"},
    {"PortTooHigh", kBus, "FastRtps", "TcpPort", "65536", kError, "out-of-range", "0 to 65535"},
    {"ClassUnknown", kBus, "EventLog", "PubSubType", "EventlogPubSubType", kError, "wrong-value",
     "no known class", "EventLogPubSubType"},
    {"ClassOfAnother", kBus, "EventLog", "PubSubType", "GPSTimePubSubType", kError, "wrong-value",
     "another type", "EventLogPubSubType"},
    {"TypeOfAnother", kBus, "EventLog", "TopicType", "aspn2_msgs::idl::GPSTime", kError,
     "wrong-value", "another type", "aspn2_msgs::idl::EventLog"},
    {"TypeWithoutNamespace", kBus, "EventLog", "TopicType", "EventLog", kError, "wrong-value",
     "another type", "aspn2_msgs::idl::EventLog"},

    {"ChannelTooHigh", kIo, "Rovan", "ChannelNum", "256", kError, "out-of-range", "0 to 255"},
    {"SpeedUnknown", kIo, "Rovan", "Baudrate", "115201", kError, "wrong-value", "line speed"},
    {"SpeedOfAnother", kIo, "Rovan", "Baudrate", "9600", kWarning, "doubtful-value",
     "115200, as PARAM_1"},
    {"DataBitsUnknown", kIo, "Rovan", "DataBits", "9", kError, "wrong-value", "expected 8"},
    {"DataBitsTooFew", kIo, "Rovan", "DataBits", "7", kWarning, "doubtful-value", "frames"},
    {"StopBitsUnknown", kIo, "Rovan", "StopBits", "3", kError, "wrong-value", "1 or 2"},
    {"LineParityUnknown", kIo, "Rovan", "Parity", "5", kError, "wrong-value", "4 space"},
    {"LineParityOfAnother", kIo, "Rovan", "Parity", "2", kWarning, "doubtful-value",
     "0, as PARAM_2"},
    {"FlowControlUnknown", kIo, "Rovan", "FlowControl", "3", kError, "wrong-value", "2 hardware"},
    {"FlowControlSoftware", kIo, "Rovan", "FlowControl", "1", kWarning, "doubtful-value",
     "takes bytes out"},
    {"QueuesTheSame", kIo, "KD_ROVAN", "Port", "0xA", kError, "wrong-value", "ROVAN_KD"},
    {"QueueTooHigh", kIo, "ROVAN_KD", "Port", "65536", kError, "out-of-range", "0 to 65535"},
    {"BlockMisplaced", kIo, "Ptfe_Interface0", "BaseAddress", "0x40060804", kError, "wrong-value",
     "a multiple of 8"},
    {"BlockInAnother", kIo, "Ptfe_Interface1", "BaseAddress", "0x40060100", kError, "wrong-value",
     "0x40060000 to 0x400601FF"},
    {"BlockBeyondTheEnd", kIo, "PulseGen_Interface0", "BaseAddress", "0xFFFFFFF8", kError,
     "wrong-value", "at most 0xFFFFFFF0"},
    {"BlockBeyondAnyAddress", kIo, "PulseGen_Interface0", "BaseAddress", "0x100000000", kError,
     "out-of-range", "0 to 4294967295"},
    {"BlockOverThePower", kIo, "PulseGen_Interface0", "BaseAddress", "0x40000458", kWarning,
     "doubtful-value", "0x4000045C"},
};

class Problem : public testing::TestWithParam<Case> {};

TEST_P(Problem, IsFoundWhereItIsAndNothingElse) {
    const Case& c = GetParam();
    const Deployment deployment;
    deployment.set(c.file, c.container, c.key, c.value);

    const CheckResult result = deployment.check();

    ASSERT_GE(result.findings.size(), 1u);
    const Finding& finding = result.findings.front();
    EXPECT_EQ(finding.severity, c.severity);
    EXPECT_EQ(finding.kind, c.kind);
    EXPECT_EQ(finding.file, deployment.path(c.file));
    EXPECT_EQ(finding.container, c.container);
    EXPECT_EQ(finding.key, c.key);
    EXPECT_EQ(finding.found, c.value);
    EXPECT_THAT(finding.problem + "; expected " + finding.expected, HasSubstr(c.says));
    EXPECT_EQ(finding.suggestion, c.suggestion);
    const std::string line = "<" + std::string(c.key) + ">";
    const std::string text = contents(deployment.path(c.file));
    const std::size_t at =
        text.find(line, text.find("<Name>" + std::string(c.container) + "</Name>"));
    EXPECT_EQ(finding.line,
              1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
    EXPECT_EQ(result.findings.size(), 1u) << described(result);
}

constexpr auto kNameOf = [](const auto& test) { return std::string(test.param.name); };

INSTANTIATE_TEST_SUITE_P(OfValues, Problem, testing::ValuesIn(kCases), kNameOf);

// A value that is unusual and right.
struct GoodCase {
    const char* name;
    const char* file;
    const char* container;
    const char* key;
    const char* value;
};

const GoodCase kGoodCases[] = {
    {"BooleanInAnyCase", kTop, "Rovan", "Debug", "tRuE"},
    {"BooleanAsANumber", kTop, "Rovan", "Debug", "0"},
    {"NumberHexadecimal", kTop, "Rovan", "PARAM_1", "0x1C200"},
    {"NumberWithBlanks", kTop, "Rovan", "PRI", " 99 "},
    {"ListWithBlanks", kTop, "Rovan", "PARAM_6", "9225, 5404"},
    {"EnvironmentForRerad", kTop, "Keldra", "Environment", "SYSTEM_ENV_RERAD"},
    {"EnvironmentOfItsOwn", kTop, "Keldra", "Environment", "Workshop"},
    {"LastDomain", kBus, "FastRtps", "DomainId", "232"},
    {"PortUnusedOnUdp", kBus, "FastRtps", "TcpPort", "0"},
    {"AddressUnusedOnUdp", kBus, "FastRtps", "TcpAddress", "none"},
    {"SerialModeNegative", kIo, "Rovan", "SerialMode", "-32768"},
    {"BlockJustLargeEnough", kIo, "TimeStamp_Interface", "Size", "520"},
};

class NoProblem : public testing::TestWithParam<GoodCase> {};

TEST_P(NoProblem, IsFound) {
    const GoodCase& c = GetParam();
    const Deployment deployment;
    deployment.set(c.file, c.container, c.key, c.value);
    const CheckResult result = deployment.check();
    EXPECT_EQ(result.findings.size(), 0u) << described(result);
}

INSTANTIATE_TEST_SUITE_P(OfValues, NoProblem, testing::ValuesIn(kGoodCases), kNameOf);

// ---- What takes more than one value ------------------------------------------------------------

Finding onlyFinding(const Deployment& deployment) {
    const CheckResult result = deployment.check();
    EXPECT_EQ(result.findings.size(), 1u) << described(result);
    return result.findings.empty() ? Finding() : result.findings.front();
}

TEST(Tcp, NeedsAnAddressAndAPort) {
    for (const char* const variant : {"tcp-server", "tcp-client"}) {
        for (const auto& [key, value] :
             {std::pair("TcpAddress", "127.0.0"), std::pair("TcpAddress", "127.0.0.256"),
              std::pair("TcpAddress", "localhost"), std::pair("TcpPort", "0")}) {
            const Deployment deployment(variant);
            deployment.set(kBus, "FastRtps", key, value);
            const Finding finding = onlyFinding(deployment);
            EXPECT_EQ(finding.severity, kError);
            EXPECT_EQ(finding.key, key);
            EXPECT_EQ(finding.found, value);
        }
    }
}

TEST(Tcp, ConnectsToNobodyAtZero) {
    const Deployment server("tcp-server");
    server.set(kBus, "FastRtps", "TcpAddress", "0.0.0.0");
    EXPECT_EQ(server.check().findings.size(), 0u);
    const Deployment client("tcp-client");
    client.set(kBus, "FastRtps", "TcpAddress", "0.0.0.0");
    EXPECT_EQ(onlyFinding(client).key, "TcpAddress");
}

TEST(MessageLists, MayHold59Together) {
    std::string list = "5040";
    for (int i = 1; i < 57; ++i) {
        list += ",5040";
    }
    const Deployment deployment;  // PARAM_6 has two
    deployment.set(kTop, "Rovan", "PARAM_7", list);
    EXPECT_EQ(deployment.check().errors(), 0u) << described(deployment.check());
    deployment.set(kTop, "Rovan", "PARAM_7", list + ",5040");
    const CheckResult result = deployment.check();
    ASSERT_EQ(result.errors(), 1u);
    EXPECT_THAT(described(result), HasSubstr("makes 60 messages together with PARAM_6"));
}

TEST(Processors, OfThisMachineAreEnough) {
    const long processors = sysconf(_SC_NPROCESSORS_CONF);
    ASSERT_GE(processors, 1);
    ASSERT_LT(processors, 255) << "this machine has more than the key can say";
    const Deployment deployment;
    deployment.set(kTop, "Rovan", "CPU", std::to_string(processors));
    EXPECT_EQ(deployment.check().findings.size(), 0u);
    deployment.set(kTop, "Rovan", "CPU", std::to_string(processors + 1));
    const Finding finding = onlyFinding(deployment);
    EXPECT_EQ(finding.severity, kWarning);
    EXPECT_EQ(finding.key, "CPU");
}

TEST(RegisterBlocks, AreLargeEnoughForTheChannelsInUse) {
    const Deployment deployment;
    // Time stamps of UART 15: 512 + 15 * 8, eight bytes long.
    deployment.set(kTop, "Rovan", "PARAM_3", "15");
    deployment.set(kIo, "TimeStamp_Interface", "Size", "640");
    EXPECT_EQ(deployment.check().findings.size(), 0u);
    deployment.set(kIo, "TimeStamp_Interface", "Size", "639");
    const Finding finding = onlyFinding(deployment);
    EXPECT_EQ(finding.kind, "wrong-value");
    EXPECT_EQ(finding.key, "Size");
    EXPECT_EQ(finding.expected, "at least 0x280");
}

TEST(RegisterBlocks, ComeInPairsForEachPtfe) {
    const Deployment deployment;
    deployment.append(kIo,
                      "<MemoryRegion><Name>Ptfe_Interface2</Name><Parameters>"
                      "<BaseAddress>0x40062000</BaseAddress><Size>0x200</Size>"
                      "</Parameters></MemoryRegion>");
    const Finding finding = onlyFinding(deployment);
    EXPECT_EQ(finding.severity, kError);
    EXPECT_EQ(finding.container, "PulseGen_Interface2");
}

TEST(RegisterBlocks, OfPtfesAreMissedWhenThereAreNone) {
    const Deployment deployment;
    for (const char* const name :
         {"Ptfe_Interface0", "PulseGen_Interface0", "Ptfe_Interface1", "PulseGen_Interface1"}) {
        deployment.removeContainer(kIo, name);
    }
    const Finding finding = onlyFinding(deployment);
    EXPECT_EQ(finding.severity, kWarning);
    EXPECT_EQ(finding.container, "Ptfe_Interface0");
}

// ---- What nobody reads
// ---------------------------------------------------------------------------

TEST(Unread, ContainerWithASlipOfThePenIsNamedBesideTheMissingOne) {
    const Deployment deployment;
    deployment.replace(kIo, "<Name>KD_ROVAN</Name>", "<Name>KD_ROVEN</Name>");
    const CheckResult result = deployment.check();
    ASSERT_EQ(result.findings.size(), 2u) << described(result);
    EXPECT_EQ(result.findings[0].kind, "unread-container");
    EXPECT_EQ(result.findings[0].suggestion, "KD_ROVAN");
    EXPECT_EQ(result.findings[1].kind, "missing-container");
    EXPECT_EQ(result.findings[1].container, "KD_ROVAN");
    EXPECT_EQ(result.findings[1].suggestion, "KD_ROVEN");
}

TEST(Unread, NameWithABlankIsAnotherName) {
    const Deployment deployment;
    deployment.replace(kTop, "<Name>Keldra</Name>", "<Name> Keldra</Name>");
    const CheckResult result = deployment.check();
    EXPECT_EQ(result.errors(), 1u) << described(result);
    EXPECT_THAT(described(result), HasSubstr("error missing-container rovan.xml:0 Keldra/"));
}

TEST(Unread, ConnectionsOfOthersAreLookedAtAndAllowed) {
    const auto connection = [](const std::string& type, const std::string& pubSubType) {
        return "<Connection><Name>Other</Name><Parameters><TopicType>" + type +
               "</TopicType><PubSubType>" + pubSubType + "</PubSubType></Parameters></Connection>";
    };
    const Deployment good;
    good.append(kBus, connection("aspn2_msgs::idl::GPSTime", "GPSTimePubSubType"));
    EXPECT_EQ(good.check().findings.size(), 0u) << described(good.check());
    const Deployment mixed;
    mixed.append(kBus, connection("aspn2_msgs::idl::UTCTime", "GPSTimePubSubType"));
    EXPECT_EQ(onlyFinding(mixed).suggestion, "aspn2_msgs::idl::GPSTime");
    const Deployment unknown;
    unknown.append(kBus, connection("aspn2_msgs::idl::GPSTime", "Unheard"));
    EXPECT_EQ(onlyFinding(unknown).severity, kWarning);
    EXPECT_EQ(onlyFinding(unknown).key, "PubSubType");
    const Deployment misspelt;
    misspelt.append(kBus, connection("aspn2_msgs::idl::IMU", "ImuPubSubType"));
    EXPECT_EQ(onlyFinding(misspelt).suggestion, "IMUPubSubType");
}

TEST(Unread, ContainersOfOtherServersAreAllowed) {
    const Deployment deployment;
    deployment.append(kTop, "<Server><Name>ZelmServer</Name></Server>");
    EXPECT_EQ(deployment.check().findings.size(), 0u) << described(deployment.check());
    deployment.append(kTop, "<Server><Name>Nobody</Name></Server>");
    EXPECT_EQ(onlyFinding(deployment).kind, "unread-container");
}

TEST(Duplicates, OfAContainerNameTheLineThatCounts) {
    const Deployment deployment;
    deployment.append(kTop, "<Other><Name>Keldra</Name></Other>");
    const Finding finding = onlyFinding(deployment);
    EXPECT_EQ(finding.severity, kWarning);
    EXPECT_EQ(finding.kind, "duplicate-container");
    EXPECT_THAT(finding.problem, HasSubstr("the one in line"));
}

TEST(Duplicates, OfAKeyNameTheLineThatCounts) {
    const Deployment deployment;
    deployment.replace(kTop, "<PRI>0</PRI>", "<PRI>0</PRI>\n<PRI>50</PRI>");
    const Finding finding = onlyFinding(deployment);
    EXPECT_EQ(finding.kind, "duplicate-key");
    EXPECT_EQ(finding.key, "PRI");
}

TEST(Duplicates, OfParametersAreNotRead) {
    const Deployment deployment;
    deployment.replace(kTop, "<PRI>0</PRI>", "</Parameters><Parameters><PRI>0</PRI>");
    const CheckResult result = deployment.check();
    EXPECT_THAT(described(result), HasSubstr("error missing-key rovan.xml"));
    EXPECT_THAT(described(result), HasSubstr("Rovan/Parameters: - stands twice"));
}

TEST(Duplicates, TagThatHidesANameIsTheContainerThatIsRead) {
    const Deployment deployment;
    deployment.replace(kTop, "<!-- The system that this unit belongs to. -->",
                       "<Rovan><Name>Hidden</Name></Rovan>");
    const CheckResult result = deployment.check();
    // The server finds the tag first, and none of its fourteen keys.
    EXPECT_EQ(result.errors(), 14u) << described(result);
    EXPECT_THAT(described(result), HasSubstr("found-by-tag"));
}

TEST(OneFile, MayHoldEverything) {
    const Deployment deployment;
    std::string all;
    for (const char* const file : {kTop, kBus}) {
        const std::string text = contents(deployment.path(file));
        const std::size_t begin = text.find("<KD_Configurations>") + 19;
        all += text.substr(begin, text.find("</KD_Configurations>") - begin);
    }
    deployment.write(kTop, "<KD_Configurations>" + all + "</KD_Configurations>");
    deployment.set(kTop, "Rovan", "Connections", "rovan.xml");
    const CheckResult result = deployment.check();
    EXPECT_EQ(result.findings.size(), 0u) << described(result);
    EXPECT_EQ(result.files.size(), 2u);
}

}  // namespace
