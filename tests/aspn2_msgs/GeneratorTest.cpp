// SPDX-License-Identifier: Apache-2.0
// The script round the type generator, with a generator of the test's own in its place.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

class Generator : public testing::Test {
  protected:
    Generator() {
        write("idl/Reading.idl",
              "enum unit {\n    UNIT_0\n};\nstruct Reading {\n    header _header;\n    unit "
              "kind;\n};\n");
    }
    ~Generator() override {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    /// A generator that notes its arguments and makes `header` of every definition.
    void generatorMakes(const std::string& header) {
        write("bin/fastddsgen",
              "#!/bin/sh\n"
              "echo \"$@\" >'" +
                  path("arguments") +
                  "'\n"
                  "while [ $# -gt 1 ]; do\n"
                  "    [ \"$1\" != -d ] || out=$2\n"
                  "    [ \"$1\" != -t ] || { touch \"$2/Reading.idl.cc\" || exit 1; }\n"
                  "    shift\n"
                  "done\n"
                  "printf '" +
                  header +
                  "' >\"$out/Reading.h\"\n"
                  "touch \"$out/Reading.cxx\" \"$out/ReadingPubSubTypes.cxx\"\n");
        fs::permissions(path("bin/fastddsgen"), fs::perms::owner_all);
    }

    /// The script's exit status.
    int generate() {
        const std::string command =
            "PATH='" + path("bin") +
            "':\"$PATH\" '" ROVAN_SOURCE_DIR "/cmake/generate-bus-types' '" + path("cache") +
            "' '" + path("out") + "' '" + path("idl/Reading.idl") + "' 2>'" + path("errors") + "'";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string path(const std::string& name) const { return m_directory / name; }
    std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(path(name)).rdbuf();
        return text.str();
    }

    static constexpr const char* kComplete =
        "    enum unit : uint32_t\\n    {\\n    };\\n    class Reading\\n    {\\n    };\\n";

  private:
    static fs::path temporaryDirectory() {
        std::string path = fs::temp_directory_path() / "rovan-generator-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            throw std::runtime_error("mkdtemp");
        }
        return path;
    }
    void write(const std::string& name, const std::string& text) const {
        fs::create_directories(fs::path(path(name)).parent_path());
        std::ofstream(path(name)) << text;
    }

    const fs::path m_directory = temporaryDirectory();
};

}  // namespace

TEST_F(Generator, KeepsAndHandsOverACompleteResult) {
    generatorMakes(kComplete);

    ASSERT_EQ(generate(), 0) << read("errors");

    EXPECT_TRUE(fs::exists(path("out/Reading.h")));
    EXPECT_TRUE(fs::exists(path("out/Records.h")));
    // A second run takes what is kept.
    fs::remove(path("arguments"));
    ASSERT_EQ(generate(), 0) << read("errors");
    EXPECT_FALSE(fs::exists(path("arguments")));
}

TEST_F(Generator, RefusesAResultWithoutAllTypesAndKeepsNothingOfIt) {
    for (const char* incomplete : {"", "    enum unit : uint32_t\\n", "    class Reading\\n",
                                   "    enum unit : uint32_t\\n    class Reading;\\n"}) {
        SCOPED_TRACE(incomplete);
        generatorMakes(incomplete);

        EXPECT_NE(generate(), 0);

        EXPECT_NE(read("errors").find("The generator made no"), std::string::npos);
        EXPECT_FALSE(fs::exists(path("out")));
        EXPECT_TRUE(fs::is_empty(path("cache")));
    }
    // The next build tries again.
    generatorMakes(kComplete);
    EXPECT_EQ(generate(), 0) << read("errors");
}

TEST_F(Generator, HasATemporaryDirectoryOfItsOwn) {
    generatorMakes(kComplete);
    ASSERT_EQ(generate(), 0) << read("errors");

    const std::string arguments = read("arguments");

    EXPECT_NE(arguments.find(" -t " + path("cache") + '/'), std::string::npos) << arguments;
}
