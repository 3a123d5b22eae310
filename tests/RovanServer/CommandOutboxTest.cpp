// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/CommandOutbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

CommandOutbox::CommandResponse command(const std::string& text) {
    CommandOutbox::CommandResponse command;
    command.command_response(text);
    return command;
}

// What is sent, and where sending can be held up.
class CommandOutboxTest : public testing::Test {
  protected:
    ~CommandOutboxTest() override {
        hold(false);
        outbox.stop();
    }

    void hold(bool held) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_held = held;
        m_changed.notify_all();
    }
    /// The texts, as soon as there are so many; all of them if that does not come to be.
    std::vector<std::string> sent(size_t count) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, 10s, [&] { return m_sent.size() >= count; });
        return m_sent;
    }
    std::thread::id sender() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_sender;
    }

  private:
    void send(const CommandOutbox::CommandResponse& message) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_sent.push_back(message.command_response());
        m_sender = std::this_thread::get_id();
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_held; });
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_sent;
    std::thread::id m_sender;
    bool m_held = false;

  protected:
    CommandOutbox outbox{[this](const auto& message) { send(message); }};
};

TEST_F(CommandOutboxTest, SendsInTheOrderOfThePostsOnAThreadOfItsOwn) {
    outbox.start();
    outbox.post(command("one"));
    outbox.post(command("two"));
    outbox.post(command("three"));
    EXPECT_THAT(sent(3), ElementsAre("one", "two", "three"));
    EXPECT_NE(sender(), std::this_thread::get_id());
}

TEST_F(CommandOutboxTest, NeverMakesAPostWait) {
    outbox.start();
    hold(true);
    outbox.post(command("held"));
    sent(1);
    // Far more than it keeps: the rest is dropped.
    for (int i = 0; i < 1'000; ++i) {
        outbox.post(command(std::to_string(i)));
    }
    hold(false);
    const std::vector<std::string> texts = sent(65);
    ASSERT_GE(texts.size(), 65u);
    EXPECT_EQ(texts[1], "0");
    EXPECT_EQ(texts[64], "63");
}

TEST_F(CommandOutboxTest, SendsBeforeItStopsWhatWasPosted) {
    outbox.start();
    hold(true);
    outbox.post(command("one"));
    sent(1);
    outbox.post(command("two"));
    outbox.post(command("three"));
    std::thread stopping([this] { outbox.stop(); });
    hold(false);
    stopping.join();
    EXPECT_THAT(sent(3), ElementsAre("one", "two", "three"));
}

TEST_F(CommandOutboxTest, KeepsForTheNextStartWhatIsPostedWithoutAThread) {
    outbox.post(command("one"));
    EXPECT_THAT(sent(0), IsEmpty());
    outbox.start();
    EXPECT_THAT(sent(1), ElementsAre("one"));
    outbox.stop();
    outbox.post(command("two"));
    EXPECT_THAT(sent(0), ElementsAre("one"));
    outbox.start();
    EXPECT_THAT(sent(2), ElementsAre("one", "two"));
}

}  // namespace
