// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Config.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <set>
#include <sstream>
#include <string>

#include "tests/RovanServer/TemporaryDirectory.h"

namespace {

using FACE::KD_Config;
using FACE::RETURN_CODE_TYPE;
using FACE::String;
using Whence = FACE::Configuration::WHENCE_TYPE;

constexpr auto kNoError = RETURN_CODE_TYPE::NO_ERROR;
constexpr auto kInvalidConfig = RETURN_CODE_TYPE::INVALID_CONFIG;
constexpr auto kInvalidParam = RETURN_CODE_TYPE::INVALID_PARAM;
constexpr auto kUntouched = RETURN_CODE_TYPE::IN_PROGRESS;

// Three connections of one tag, one of another, and containers that cannot be found.
constexpr const char* kFile = R"(<?xml version="1.0" encoding="UTF-8"?>
<KD_Configurations xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
                   xsi:noNamespaceSchemaLocation="config.xsd">
  <Connection>
    <Name>First</Name>
    <Parameters><Port>1</Port><Empty></Empty><Closed/><Blank>   </Blank></Parameters>
  </Connection>
  <Nameless><Parameters><Port>9</Port></Parameters></Nameless>
  <EmptyName><Name></Name><Parameters><Port>9</Port></Parameters></EmptyName>
  <System>
    <Name>Keldra</Name>
    <Parameters><Title>a &lt;b&gt; &amp; c</Title><Padded> x </Padded></Parameters>
  </System>
  <Connection>
    <Name>Second</Name>
    <Parameters><Port>22</Port></Parameters>
  </Connection>
  <Bare><Name>Bare</Name></Bare>
  <Connection>
    <Name>Third</Name>
    <Parameters><Port>333</Port></Parameters>
  </Connection>
</KD_Configurations>
)";

class KD_ConfigTest : public testing::Test {
  protected:
    // Loads a file of that text and gives the result.
    RETURN_CODE_TYPE::Value load(const std::string& text) {
        m_path = m_directory.write("config.xml", text);
        return initialize(m_path);
    }
    RETURN_CODE_TYPE::Value initialize(const std::string& path) {
        auto rc = kUntouched;
        m_config.Initialize(path.c_str(), rc);
        return rc;
    }
    // An open handle on the container; -1 and a failure when there is none.
    int open(const std::string& name) {
        int handle = -1;
        EXPECT_EQ(tryOpen(name, handle), kNoError) << name;
        return handle;
    }
    RETURN_CODE_TYPE::Value tryOpen(const std::string& name, int& handle) {
        auto rc = kUntouched;
        m_config.Open(name.c_str(), handle, rc);
        return rc;
    }
    RETURN_CODE_TYPE::Value close(int handle) {
        auto rc = kUntouched;
        m_config.Close(handle, rc);
        return rc;
    }
    RETURN_CODE_TYPE::Value size(int handle, const std::string& name, int& bytes) {
        auto rc = kUntouched;
        m_config.Get_Size(handle, name.c_str(), bytes, rc);
        return rc;
    }
    RETURN_CODE_TYPE::Value readCode(int handle, const std::string& name) {
        std::array<char, 8> buffer{};
        int bytesRead = -1;
        auto rc = kUntouched;
        m_config.Read(handle, name.c_str(), buffer.data(), 8, bytesRead, rc);
        if (rc != kNoError) {
            EXPECT_EQ(bytesRead, 0);
        }
        return rc;
    }
    std::string read(int handle, const std::string& name) {
        std::array<char, 64> buffer{};
        int bytesRead = -1;
        auto rc = kUntouched;
        m_config.Read(handle, name.c_str(), buffer.data(), 64, bytesRead, rc);
        EXPECT_EQ(rc, kNoError) << name;
        return {buffer.data(), static_cast<size_t>(bytesRead)};
    }
    RETURN_CODE_TYPE::Value write(int handle, const std::string& name, std::string text,
                                  int& bytesWritten) {
        auto rc = kUntouched;
        m_config.Write(handle, name.c_str(), text.data(), static_cast<int>(text.size()),
                       bytesWritten, rc);
        return rc;
    }
    RETURN_CODE_TYPE::Value seek(int handle, uint32_t whence, int offset) {
        auto rc = kUntouched;
        m_config.Seek(handle, static_cast<Whence::Value>(whence), offset, rc);
        return rc;
    }

    TemporaryDirectory m_directory;
    std::string m_path;
    KD_Config m_config;
};

// ---- Loading

TEST_F(KD_ConfigTest, LoadsAFile) {
    EXPECT_EQ(load(kFile), kNoError);
}

TEST_F(KD_ConfigTest, SaysNothingOfAMissingFile) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(initialize(m_directory.path("missing.xml")), kInvalidConfig);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(KD_ConfigTest, NamesTheFileOfAnotherRoot) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(load("<Configurations/>"), kInvalidConfig);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Configuration XML - " + m_path +
                  " Error: Unable to locate the KD_Configurations object\n");
}

TEST_F(KD_ConfigTest, RefusesWhatIsNoFile) {
    const std::string pipe = m_directory.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(initialize(pipe), kInvalidConfig);  // and does not wait for a writer
    EXPECT_EQ(initialize(m_directory.path("")), kInvalidConfig);
    EXPECT_EQ(initialize("/dev/null"), kInvalidConfig);
    EXPECT_EQ(initialize(""), kInvalidConfig);
    auto rc = kUntouched;
    m_config.Initialize(String(static_cast<const char*>(nullptr)), rc);
    EXPECT_EQ(rc, kInvalidConfig);
}

TEST_F(KD_ConfigTest, RefusesBrokenXml) {
    const std::string deep(200000, '<');
    std::string nested;
    for (int i = 0; i < 100000; ++i) {
        nested += "<a>";
    }
    const std::string whole = kFile;
    for (const std::string& text :
         {std::string(), std::string("  \n"), std::string("plain words"),
          whole.substr(0, whole.size() / 2), std::string("<KD_Configurations>"),
          std::string("<KD_Configurations></Other>"), std::string("<KD_Configurations a=1/>"),
          std::string(1000, '\0'), std::string("\xFF\xFE\x00\x01<\x80", 6), deep, nested,
          "<KD_Configurations>" + nested}) {
        EXPECT_EQ(load(text), kInvalidConfig) << text.substr(0, 60);
    }
}

TEST_F(KD_ConfigTest, RefusesEveryFileThatIsCutShort) {
    std::string whole = kFile;
    whole.erase(whole.find_last_not_of('\n') + 1);
    for (size_t length = 0; length < whole.size(); ++length) {
        ASSERT_EQ(load(whole.substr(0, length)), kInvalidConfig) << length;
    }
    EXPECT_EQ(load(whole), kNoError);
}

TEST_F(KD_ConfigTest, LoadsAfterAFailure) {
    EXPECT_EQ(initialize(m_directory.path("missing.xml")), kInvalidConfig);
    EXPECT_EQ(load("<KD_Configurations>"), kInvalidConfig);
    int handle = -1;
    EXPECT_EQ(tryOpen("First", handle), RETURN_CODE_TYPE::INVALID_MODE);
    EXPECT_EQ(load(kFile), kNoError);
    EXPECT_EQ(read(open("First"), "Port"), "1");
}

TEST_F(KD_ConfigTest, IgnoresASecondInitialize) {
    ASSERT_EQ(load(kFile), kNoError);
    EXPECT_EQ(initialize(m_directory.path("missing.xml")), kNoError);
    EXPECT_EQ(load("<KD_Configurations/>"), kNoError);
    EXPECT_EQ(read(open("First"), "Port"), "1");
}

TEST_F(KD_ConfigTest, FindsTheRootBesideOtherElements) {
    EXPECT_EQ(load("<!-- x --><Other/><KD_Configurations><A><Name>a</Name>"
                   "<Parameters><P>1</P></Parameters></A></KD_Configurations>"),
              kNoError);
    EXPECT_EQ(read(open("a"), "P"), "1");
}

TEST_F(KD_ConfigTest, DoesNotExpandEntitiesOfTheFile) {
    ASSERT_EQ(load("<!DOCTYPE x [<!ENTITY big 'bigbigbig'><!ENTITY file SYSTEM '/etc/passwd'>]>"
                   "<KD_Configurations><A><Name>a</Name><Parameters><P>&big;&file;</P>"
                   "<Q>&#65;&#x42;&quot;&apos;</Q></Parameters></A></KD_Configurations>"),
              kNoError);
    const int handle = open("a");
    EXPECT_EQ(read(handle, "P"), "&big;&file;");
    EXPECT_EQ(read(handle, "Q"), "AB\"'");
}

// ---- Opening and closing

TEST_F(KD_ConfigTest, OpensNothingBeforeItIsLoaded) {
    int handle = -7;
    EXPECT_EQ(tryOpen("First", handle), RETURN_CODE_TYPE::INVALID_MODE);
    EXPECT_EQ(handle, -7);
    int bytes = -7;
    EXPECT_EQ(size(0, "Port", bytes), kInvalidConfig);
    EXPECT_EQ(readCode(0, "Port"), kInvalidConfig);
    EXPECT_EQ(write(0, "Port", "2", bytes), kInvalidConfig);
    EXPECT_EQ(seek(0, 0, 0), kInvalidConfig);
    EXPECT_EQ(close(0), kInvalidConfig);
}

// Each test is a process of its own, so the first handle here is the first one of the process.
TEST_F(KD_ConfigTest, GivesEachHandleOfTheProcessOnce) {
    ASSERT_EQ(load(kFile), kNoError);
    KD_Config other;
    auto rc = kUntouched;
    other.Initialize(m_path.c_str(), rc);

    std::set<int> handles;
    const int first = open("First");
    handles.insert(first);
    int ofOther = -1;
    other.Open("First", ofOther, rc);
    handles.insert(ofOther);
    handles.insert(open("Keldra"));
    EXPECT_EQ(close(first), kNoError);
    const int again = open("First");
    handles.insert(again);
    EXPECT_EQ(handles.size(), 4u);
    EXPECT_GT(again, ofOther);

    other.Close(first, rc);
    EXPECT_EQ(rc, kInvalidConfig);  // a handle is known only where it was given
}

TEST_F(KD_ConfigTest, BeginsItsHandlesAtZero) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // in a process that has opened nothing yet
    EXPECT_EXIT(
        {
            load(kFile);
            _exit(open("First") == 0 && open("Keldra") == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(KD_ConfigTest, OpensANameTwiceUnderOneHandle) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("First");
    EXPECT_EQ(open("First"), handle);
    EXPECT_EQ(close(handle), kNoError);
    EXPECT_EQ(close(handle), kInvalidConfig);
    EXPECT_EQ(readCode(handle, "Port"), kInvalidConfig);
}

TEST_F(KD_ConfigTest, RedirectsTheHandleOfATag) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("First");
    EXPECT_EQ(read(handle, "Port"), "1");
    EXPECT_EQ(open("Second"), handle);
    EXPECT_EQ(read(handle, "Port"), "22");
    EXPECT_EQ(read(handle, ""), "Second");
    EXPECT_NE(open("Keldra"), handle);
    EXPECT_EQ(read(handle, "Port"), "22");
}

TEST_F(KD_ConfigTest, OpensTheNextOfATagUnderAHandleOfItsOwnOnceClosed) {
    ASSERT_EQ(load(kFile), kNoError);
    const int first = open("First");
    ASSERT_EQ(close(first), kNoError);
    const int second = open("Second");
    EXPECT_NE(second, first);
    EXPECT_EQ(read(second, "Port"), "22");
}

TEST_F(KD_ConfigTest, OpensByTagTheFirstContainerWithAName) {
    ASSERT_EQ(load(kFile), kNoError);
    EXPECT_EQ(read(open("Connection"), ""), "First");
    EXPECT_EQ(read(open("System"), "Title"), "a <b> & c");
}

TEST_F(KD_ConfigTest, PrefersNeitherNameNorTagButTheFirstInTheFile) {
    ASSERT_EQ(load("<KD_Configurations>"
                   "<Rovan><Name>other</Name><Parameters><P>tag</P></Parameters></Rovan>"
                   "<Server><Name>Rovan</Name><Parameters><P>name</P></Parameters></Server>"
                   "</KD_Configurations>"),
              kNoError);
    EXPECT_EQ(read(open("Rovan"), "P"), "tag");
}

TEST_F(KD_ConfigTest, NeverFindsAContainerWithoutAName) {
    ASSERT_EQ(load(kFile), kNoError);
    for (const char* name : {"Nameless", "EmptyName", "", "first", "First ", "Unknown",
                             "KD_Configurations", "Parameters"}) {
        int handle = -7;
        EXPECT_EQ(tryOpen(name, handle), kInvalidConfig) << name;
        EXPECT_EQ(handle, -7);
    }
}

// ---- Reading

TEST_F(KD_ConfigTest, MeasuresTextsAndNames) {
    ASSERT_EQ(load(kFile), kNoError);
    int bytes = -7;
    EXPECT_EQ(size(open("Keldra"), "Title", bytes), kNoError);
    EXPECT_EQ(bytes, 9);
    EXPECT_EQ(size(open("Keldra"), "", bytes), kNoError);
    EXPECT_EQ(bytes, 6);
    EXPECT_EQ(size(open("Keldra"), "Padded", bytes), kNoError);
    EXPECT_EQ(bytes, 3);
}

TEST_F(KD_ConfigTest, HasACodeForWhatIsMissing) {
    ASSERT_EQ(load(kFile), kNoError);
    const int connection = open("First");
    for (const char* name : {"Unknown", "Empty", "Closed", "Blank", "port", "Name"}) {
        int bytes = -7;
        EXPECT_EQ(size(connection, name, bytes), kInvalidConfig) << name;
        EXPECT_EQ(bytes, -7);
        EXPECT_EQ(readCode(connection, name), kInvalidParam) << name;
    }
    EXPECT_EQ(readCode(open("Bare"), "Port"), kInvalidParam);
    EXPECT_EQ(readCode(-1, "Port"), kInvalidConfig);
    EXPECT_EQ(readCode(INT_MAX, "Port"), kInvalidConfig);
}

TEST_F(KD_ConfigTest, FillsALongBufferWithZeroes) {
    ASSERT_EQ(load(kFile), kNoError);
    std::array<char, 6> buffer;
    buffer.fill('X');
    int bytesRead = -1;
    auto rc = kUntouched;
    m_config.Read(open("Third"), "Port", buffer.data(), 6, bytesRead, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(bytesRead, 3);
    EXPECT_EQ(buffer, (std::array<char, 6>{'3', '3', '3', '\0', '\0', '\0'}));
}

TEST_F(KD_ConfigTest, FillsAShortBufferFromTheFront) {
    ASSERT_EQ(load(kFile), kNoError);
    std::array<char, 4> buffer;
    buffer.fill('X');
    int bytesRead = -1;
    auto rc = kUntouched;
    m_config.Read(open("Keldra"), "", buffer.data(), 3, bytesRead, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(bytesRead, 3);
    EXPECT_EQ(buffer, (std::array<char, 4>{'K', 'e', 'l', 'X'}));
    m_config.Read(open("Keldra"), "", buffer.data(), 0, bytesRead, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(bytesRead, 0);
}

TEST_F(KD_ConfigTest, RefusesABufferThatIsNone) {
    ASSERT_EQ(load(kFile), kNoError);
    std::array<char, 4> buffer{};
    int bytesRead = -1;
    auto rc = kUntouched;
    m_config.Read(open("First"), "Port", nullptr, 4, bytesRead, rc);
    EXPECT_EQ(rc, kInvalidParam);
    m_config.Read(open("First"), "Port", buffer.data(), -4, bytesRead, rc);
    EXPECT_EQ(rc, kInvalidParam);
    EXPECT_EQ(bytesRead, 0);
}

TEST_F(KD_ConfigTest, ReadsAHugeText) {
    const std::string huge(5 << 20, 'v');
    ASSERT_EQ(load("<KD_Configurations><A><Name>a</Name><Parameters><P>" + huge +
                   "</P></Parameters></A></KD_Configurations>"),
              kNoError);
    int bytes = 0;
    ASSERT_EQ(size(open("a"), "P", bytes), kNoError);
    ASSERT_EQ(bytes, 5 << 20);
    std::string text(static_cast<size_t>(bytes), '\0');
    int bytesRead = 0;
    auto rc = kUntouched;
    m_config.Read(open("a"), "P", text.data(), bytes, bytesRead, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(text, huge);
}

TEST_F(KD_ConfigTest, TakesTheFirstOfARepeatedParameter) {
    ASSERT_EQ(load("<KD_Configurations><A><Name>a</Name><Parameters><P>1</P><P>2</P></Parameters>"
                   "<Parameters><P>3</P><Q>4</Q></Parameters></A></KD_Configurations>"),
              kNoError);
    EXPECT_EQ(read(open("a"), "P"), "1");
    EXPECT_EQ(readCode(open("a"), "Q"), kInvalidParam);
}

// ---- Writing

std::string contentsOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

TEST_F(KD_ConfigTest, WritesATextBackToItsFile) {
    ASSERT_EQ(load(kFile), kNoError);
    int bytesWritten = -1;
    EXPECT_EQ(write(open("Second"), "Port", "0x<&>", bytesWritten), kNoError);
    EXPECT_EQ(bytesWritten, 5);
    EXPECT_EQ(read(open("Second"), "Port"), "0x<&>");

    KD_Config again;
    auto rc = kUntouched;
    again.Initialize(m_path.c_str(), rc);
    ASSERT_EQ(rc, kNoError);
    std::array<char, 8> buffer{};
    int handle = -1;
    int bytesRead = 0;
    again.Open("Second", handle, rc);
    again.Read(handle, "Port", buffer.data(), 8, bytesRead, rc);
    EXPECT_STREQ(buffer.data(), "0x<&>");
    again.Open("Third", handle, rc);
    again.Read(handle, "Port", buffer.data(), 8, bytesRead, rc);
    EXPECT_STREQ(buffer.data(), "333");  // the rest of the file is still there
    EXPECT_NE(contentsOf(m_path).find("xsi:noNamespaceSchemaLocation=\"config.xsd\""),
              std::string::npos);
}

TEST_F(KD_ConfigTest, WritesAShorterTextWithoutLeavingTheOldOnesTail) {
    ASSERT_EQ(load(kFile + std::string(5000, '\n')), kNoError);
    int bytesWritten = -1;
    ASSERT_EQ(write(open("Third"), "Port", "4", bytesWritten), kNoError);
    EXPECT_LT(std::filesystem::file_size(m_path), 3000u);
    EXPECT_EQ(contentsOf(m_path).find("333"), std::string::npos);
    EXPECT_NE(contentsOf(m_path).find("\n"), std::string::npos);  // not the compact form
}

TEST_F(KD_ConfigTest, MakesAMissingFileAgainWithItsMode) {
    ASSERT_EQ(load(kFile), kNoError);
    ASSERT_EQ(unlink(m_path.c_str()), 0);
    const mode_t mask = umask(0);
    int bytesWritten = -1;
    EXPECT_EQ(write(open("First"), "Port", "7", bytesWritten), kNoError);
    umask(mask);
    struct stat status {};
    ASSERT_EQ(stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);
}

TEST_F(KD_ConfigTest, WritesNothingThatIsNotThereAlready) {
    ASSERT_EQ(load(kFile), kNoError);
    const std::string before = contentsOf(m_path);
    const int handle = open("First");
    int bytesWritten = -1;
    for (const char* name : {"Unknown", "Empty", "Closed", "", "Name"}) {
        EXPECT_EQ(write(handle, name, "x", bytesWritten), kInvalidParam) << name;
        EXPECT_EQ(bytesWritten, 0);
    }
    EXPECT_EQ(write(open("Bare"), "Port", "x", bytesWritten), kInvalidParam);
    EXPECT_EQ(write(-1, "Port", "x", bytesWritten), kInvalidConfig);
    char text = 'x';
    auto rc = kUntouched;
    m_config.Write(handle, "Port", nullptr, 1, bytesWritten, rc);
    EXPECT_EQ(rc, kInvalidParam);
    m_config.Write(handle, "Port", &text, -1, bytesWritten, rc);
    EXPECT_EQ(rc, kInvalidParam);
    EXPECT_EQ(contentsOf(m_path), before);
}

TEST_F(KD_ConfigTest, KeepsTheNewTextInMemoryWhenTheFileCannotBeOpened) {
    ASSERT_EQ(load(kFile), kNoError);
    ASSERT_EQ(unlink(m_path.c_str()), 0);
    ASSERT_EQ(mkdir(m_path.c_str(), 0700), 0);  // refused even to the super-user
    int bytesWritten = -1;
    EXPECT_EQ(write(open("First"), "Port", "77", bytesWritten), RETURN_CODE_TYPE::NO_ACTION);
    EXPECT_EQ(bytesWritten, 0);
    EXPECT_EQ(read(open("First"), "Port"), "77");
}

TEST_F(KD_ConfigTest, NoticesThatTheFileCouldNotBeSavedWhole) {
    ASSERT_EQ(load(kFile), kNoError);
    signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{100, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    int bytesWritten = -1;
    EXPECT_EQ(write(open("First"), "Port", "77", bytesWritten), RETURN_CODE_TYPE::NO_ACTION);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(bytesWritten, 0);
    EXPECT_EQ(read(open("First"), "Port"), "77");
}

TEST_F(KD_ConfigTest, WritesIntoACharacterDataSectionWithoutBreakingTheFile) {
    ASSERT_EQ(load("<KD_Configurations><A><Name>a</Name><Parameters><P><![CDATA[<old>]]></P>"
                   "</Parameters></A></KD_Configurations>"),
              kNoError);
    EXPECT_EQ(read(open("a"), "P"), "<old>");
    int bytesWritten = -1;
    ASSERT_EQ(write(open("a"), "P", "x]]><b>", bytesWritten), kNoError);
    KD_Config again;
    auto rc = kUntouched;
    again.Initialize(m_path.c_str(), rc);
    ASSERT_EQ(rc, kNoError);
    std::array<char, 16> buffer{};
    int handle = -1;
    int bytesRead = 0;
    again.Open("a", handle, rc);
    again.Read(handle, "P", buffer.data(), 16, bytesRead, rc);
    EXPECT_STREQ(buffer.data(), "x]]><b>");
}

// ---- Seeking: First, Second and Third stand in this order among other containers

TEST_F(KD_ConfigTest, SeeksFromTheFirst) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("Second");
    const std::array<const char*, 3> names = {"First", "Second", "Third"};
    for (int offset = 0; offset < 3; ++offset) {
        EXPECT_EQ(seek(handle, Whence::FROM_FIRST, offset), kNoError);
        EXPECT_EQ(read(handle, ""), names[static_cast<size_t>(offset)]);
    }
    EXPECT_EQ(seek(handle, Whence::FROM_FIRST, 3), kInvalidParam);
    EXPECT_EQ(seek(handle, Whence::FROM_FIRST, -1), kInvalidParam);
    EXPECT_EQ(read(handle, ""), "Third");
}

TEST_F(KD_ConfigTest, SeeksFromTheLastTowardTheFront) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("Second");
    const std::array<const char*, 3> names = {"Third", "Second", "First"};
    for (int offset = 0; offset < 3; ++offset) {
        EXPECT_EQ(seek(handle, Whence::FROM_LAST, offset), kNoError);
        EXPECT_EQ(read(handle, ""), names[static_cast<size_t>(offset)]);
    }
    EXPECT_EQ(seek(handle, Whence::FROM_LAST, 3), kInvalidParam);
    EXPECT_EQ(seek(handle, Whence::FROM_LAST, -1), kInvalidParam);
    EXPECT_EQ(read(handle, ""), "First");
}

TEST_F(KD_ConfigTest, SeeksFromTheCurrentBothWays) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("Second");
    EXPECT_EQ(seek(handle, Whence::FROM_CURRENT, 0), kNoError);
    EXPECT_EQ(read(handle, ""), "Second");
    EXPECT_EQ(seek(handle, Whence::FROM_CURRENT, 1), kNoError);
    EXPECT_EQ(read(handle, ""), "Third");
    EXPECT_EQ(seek(handle, Whence::FROM_CURRENT, 1), kInvalidParam);
    EXPECT_EQ(seek(handle, Whence::FROM_CURRENT, -2), kNoError);
    EXPECT_EQ(read(handle, "Port"), "1");
    EXPECT_EQ(seek(handle, Whence::FROM_CURRENT, -1), kInvalidParam);
    EXPECT_EQ(read(handle, ""), "First");
}

TEST_F(KD_ConfigTest, SeeksNowhereWithinATagOfOne) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("Keldra");
    EXPECT_EQ(seek(handle, Whence::FROM_FIRST, 1), kInvalidParam);
    EXPECT_EQ(read(handle, "Title"), "a <b> & c");
}

TEST_F(KD_ConfigTest, SeeksByTheLargestOffsets) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("Second");
    for (const uint32_t whence : {0u, 1u, 2u}) {
        EXPECT_EQ(seek(handle, whence, INT_MAX), kInvalidParam);
        EXPECT_EQ(seek(handle, whence, INT_MIN), kInvalidParam);
    }
    EXPECT_EQ(read(handle, ""), "Second");
}

TEST_F(KD_ConfigTest, SeeksOnlyWithAKnownHandleAndWhence) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("First");
    EXPECT_EQ(seek(handle, 3, 0), kInvalidConfig);
    EXPECT_EQ(seek(handle, 0xFFFFFFFFu, 0), kInvalidConfig);
    EXPECT_EQ(seek(handle + 1, 0, 0), kInvalidConfig);
}

TEST_F(KD_ConfigTest, TakesTheNameOfWhereItHasSought) {
    ASSERT_EQ(load(kFile), kNoError);
    const int handle = open("First");
    ASSERT_EQ(seek(handle, Whence::FROM_CURRENT, 1), kNoError);
    EXPECT_EQ(open("Second"), handle);  // known under its new name
    EXPECT_EQ(read(handle, ""), "Second");
    EXPECT_EQ(open("First"), handle);  // and redirected by its tag
    EXPECT_EQ(read(handle, ""), "First");
}

TEST_F(KD_ConfigTest, CountsASiblingWithoutANameToo) {
    ASSERT_EQ(load("<KD_Configurations>"
                   "<A><Name>one</Name><Parameters><P>1</P></Parameters></A>"
                   "<A><Parameters><P>2</P></Parameters></A>"
                   "<A><Name>three</Name><Parameters><P>3</P></Parameters></A>"
                   "</KD_Configurations>"),
              kNoError);
    const int handle = open("one");
    EXPECT_EQ(seek(handle, Whence::FROM_FIRST, 1), kNoError);
    EXPECT_EQ(read(handle, "P"), "2");
    EXPECT_EQ(readCode(handle, ""), kInvalidParam);
    EXPECT_EQ(seek(handle, Whence::FROM_CURRENT, 1), kNoError);
    EXPECT_EQ(read(handle, "P"), "3");
}

}  // namespace
