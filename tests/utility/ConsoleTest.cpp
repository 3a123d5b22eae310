// SPDX-License-Identifier: Apache-2.0
#include "utility/Console.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

// Puts a datagram socket in the place of a standard stream: what one write writes is one datagram.
class WrittenTo {
  public:
    explicit WrittenTo(int stream) : m_stream(stream), m_saved(dup(stream)) {
        std::fflush(nullptr);
        socketpair(AF_UNIX, SOCK_DGRAM, 0, m_pair.data());
        dup2(m_pair[0], m_stream);
    }
    ~WrittenTo() {
        dup2(m_saved, m_stream);
        for (const int fd : {m_saved, m_pair[0], m_pair[1]}) {
            close(fd);
        }
    }

    /// What the next write wrote; "(nothing)" if there is none.
    std::string next() const {
        std::array<char, 65536> buffer{};
        const ssize_t count = recv(m_pair[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
        return count < 0 ? "(nothing)" : std::string(buffer.data(), static_cast<size_t>(count));
    }

  private:
    int m_stream;
    int m_saved;
    std::array<int, 2> m_pair{};
};

TEST(Console, WritesEachLineWithOneWriteAndAtOnce) {
    const WrittenTo out(STDOUT_FILENO);
    Console::line("one");
    EXPECT_EQ("one\n", out.next());
    Console::line("two, with a line end\nwithin");
    EXPECT_EQ("two, with a line end\nwithin\n", out.next());
    Console::line("");
    EXPECT_EQ("\n", out.next());
    EXPECT_EQ("(nothing)", out.next());
}

TEST(Console, WritesErrorLinesToStandardError) {
    const WrittenTo out(STDOUT_FILENO);
    const WrittenTo err(STDERR_FILENO);
    Console::errorLine("wrong");
    EXPECT_EQ("wrong\n", err.next());
    EXPECT_EQ("(nothing)", out.next());
}

TEST(Console, WritesZeroBytesAndPercentSignsAsTheyAre) {
    const WrittenTo out(STDOUT_FILENO);
    const std::string text("a\0%s%n", 6);
    Console::line(text);
    EXPECT_EQ(text + "\n", out.next());
}

TEST(Console, KeepsLinesOfSeveralThreadsApart) {
    testing::internal::CaptureStdout();
    std::vector<std::thread> threads;
    for (char c = 'a'; c < 'e'; ++c) {
        threads.emplace_back([c] {
            for (int i = 0; i < 200; ++i) {
                Console::line(std::string(50, c));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::string text = testing::internal::GetCapturedStdout();
    ASSERT_EQ(4u * 200 * 51, text.size());
    for (std::size_t begin = 0; begin < text.size(); begin += 51) {
        EXPECT_EQ(std::string(50, text[begin]) + '\n', text.substr(begin, 51));
    }
}

}  // namespace
