// SPDX-License-Identifier: Apache-2.0
// What is installed, and what bash completes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

const std::string kSource = ROVAN_SOURCE_DIR;
const std::string kBinaries = ROVAN_BINARY_DIR;
const std::vector<std::string> kTools{"gssip", "rovan-bus", "rovan-config", "rovan-unit"};

/// The lines that a shell command prints.
std::vector<std::string> linesOf(const std::string& command) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get())) {
        text.append(buffer.data(), count);
    }
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// What bash offers for the last of these words.
std::vector<std::string> completions(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) {
        list += " '" + word + "'";
    }
    return linesOf("PATH='" + kBinaries + "/bin':$PATH bash -c '. \"" + kSource +
                   "/packaging/rovan.bash\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _rovan; "
                   "printf \"%s\\n\" \"${COMPREPLY[@]}\"' bash" +
                   list + " | grep .");
}

TEST(Completion, OffersTheSubcommandsOfATool) {
    EXPECT_THAT(completions({"rovan-bus", ""}),
                IsSupersetOf({"echo", "hz", "list", "send", "watch", "record", "play", "--help"}));
    EXPECT_THAT(completions({"rovan-config", "ch"}), ElementsAre("check"));
    EXPECT_THAT(completions({"gssip", "e"}), ElementsAre("encode"));
}

TEST(Completion, OffersTheOptionsOfASubcommandAndOfAToolWithoutAny) {
    EXPECT_THAT(completions({"rovan-bus", "echo", "--c"}), ElementsAre("--count", "--connections"));
    EXPECT_THAT(completions({"rovan-config", "check", "-"}),
                AllOf(Contains("--strict"), Contains("-s"), Not(Contains("--force"))));
    EXPECT_THAT(completions({"rovan-unit", "--sc"}), ElementsAre("--scenario"));
}

TEST(Completion, OffersTheChoicesOfAnOption) {
    EXPECT_THAT(completions({"rovan-config", "init", "--transport", "tcp"}),
                ElementsAre("tcp-server", "tcp-client"));
}

TEST(Completion, LeavesOtherWordsToTheFiles) {
    EXPECT_THAT(completions({"rovan-config", "check", "con"}), IsEmpty());
    EXPECT_THAT(completions({"rovan-bus", "echo", "-c", "con"}), IsEmpty());
}

TEST(Completion, IsThereForEachTool) {
    for (const std::string& tool : kTools) {
        EXPECT_THAT(completions({tool, "--he"}), ElementsAre("--help")) << tool;
        EXPECT_THAT(linesOf("bash -c '. \"" + kSource + "/packaging/rovan.bash\"; complete -p " +
                            tool + "'"),
                    ElementsAre("complete -o default -F _rovan " + tool));
    }
}

TEST(Install, PutsProgramsManualsCompletionAndDeploymentInPlace) {
    std::string prefix = std::filesystem::temp_directory_path() / "rovan-install-XXXXXX";
    ASSERT_NE(mkdtemp(prefix.data()), nullptr);
    linesOf("cmake --install '" + kBinaries + "' --prefix '" + prefix + "'");

    const auto there = [&](const std::string& path) {
        return std::filesystem::is_regular_file(prefix + "/" + path);
    };
    std::vector<std::string> programs = kTools;
    programs.emplace_back("RovanServer");
    for (const std::string& program : programs) {
        EXPECT_TRUE(there("bin/" + program)) << program;
        EXPECT_EQ(access((prefix + "/bin/" + program).c_str(), X_OK), 0) << program;
        EXPECT_TRUE(there("share/man/man1/" + program + ".1")) << program;
    }
    for (const std::string& tool : kTools) {
        EXPECT_TRUE(there("share/bash-completion/completions/" + tool)) << tool;
    }
    for (const char* file :
         {"share/rovan/config/udp/rovan.xml", "share/rovan/config/io_devices.xml",
          "share/rovan/idl/PositionVelocity.idl"}) {
        EXPECT_TRUE(there(file)) << file;
    }
    EXPECT_THAT(linesOf("'" + prefix + "/bin/rovan-config' check '" + prefix +
                        "/share/rovan/config/udp/rovan.xml' >/dev/null && echo clean"),
                ElementsAre("clean"));
    std::filesystem::remove_all(prefix);
}

}  // namespace
