// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverPower.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kDiscreteOff = "devmem 0x4000045C 32 1";
constexpr const char* kSupplyOff = "devmem 0x40000460 32 0";
constexpr const char* kSupplyOn = "devmem 0x40000460 32 1";
constexpr const char* kDiscreteOn = "devmem 0x4000045C 32 0";

// A shell that writes its commands down and can be held inside one of them.
class Shell {
  public:
    int run(const std::string& command) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_commands.push_back(command);
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return command != m_held; });
        return m_result;
    }
    void hold(const std::string& command) { set(m_held, command); }
    void release() { set(m_held, std::string()); }
    void fail() { set(m_result, -1); }
    void awaitCommands(size_t count) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_commands.size() >= count; });
    }
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_commands, {});
    }

  private:
    template <typename T>
    void set(T& member, const T& value) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        member = value;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_commands;
    std::string m_held;
    int m_result = 0;
};

class ReceiverPowerTest : public testing::Test {
  protected:
    Shell shell;
    ReceiverPower power{[this](const char* command) { return shell.run(command); }};
};

TEST_F(ReceiverPowerTest, TakesTheDiscreteOffBeforeTheSupplyAndBringsItOnAfterIt) {
    power.off();
    EXPECT_THAT(shell.take(), ElementsAre(kDiscreteOff, kSupplyOff));
    power.on();
    EXPECT_THAT(shell.take(), ElementsAre(kSupplyOn, kDiscreteOn));
}

TEST_F(ReceiverPowerTest, TellsEachCommandThatCannotBeRunAndGoesOn) {
    shell.fail();
    testing::internal::CaptureStdout();
    power.off();
    power.on();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Error setting the Rovan Power_On discrete to off\n"
              "Error disabling the 3.3V power supply\n"
              "Error enabling the 3.3V power supply\n"
              "Error setting the Rovan Power_On discrete to on\n");
    EXPECT_THAT(shell.take(), ElementsAre(kDiscreteOff, kSupplyOff, kSupplyOn, kDiscreteOn));
}

TEST_F(ReceiverPowerTest, NeverComesOnAgainWhenItIsOffForGood) {
    power.offForGood();
    EXPECT_THAT(shell.take(), ElementsAre(kDiscreteOff, kSupplyOff));
    power.on();
    EXPECT_THAT(shell.take(), IsEmpty());
    power.off();
    power.on();
    EXPECT_THAT(shell.take(), ElementsAre(kDiscreteOff, kSupplyOff));
}

TEST_F(ReceiverPowerTest, GoesOffForGoodAfterASwitchingOnThatHasBegun) {
    shell.hold(kSupplyOn);
    std::thread on([this] { power.on(); });
    shell.awaitCommands(1);
    std::thread off([this] { power.offForGood(); });
    shell.release();
    on.join();
    off.join();
    EXPECT_THAT(shell.take(), ElementsAre(kSupplyOn, kDiscreteOn, kDiscreteOff, kSupplyOff));
}

}  // namespace
