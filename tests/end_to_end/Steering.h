// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tests/end_to_end/EndToEnd.h"

// Somebody who gives the server commands over the bus and hears its answers.
class Steering : public EndToEnd {
  protected:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;

    explicit Steering(const std::string& variant = "udp");

    /// Starts the unit and waits until a command reaches the server and its answer comes back.
    void startAndPing();

    /// A command with that text, numbered, so that its answers can be told.
    CommandResponse makeCommand(const std::string& text);
    /// Sends one and gives its number.
    int send(const std::string& text);
    /// Sends one as server 47, the accessory, sends its answers.
    void sendAsAccessory(const std::string& text);

    /// The texts of the answers to a command so far.
    std::vector<std::string> answersTo(int number);
    /// The same once there are `count`.
    std::vector<std::string> waitForAnswers(int number, std::size_t count = 1,
                                            std::chrono::seconds patience = kPatience);
    /// Sends a command and gives its first answer.
    std::string ask(const std::string& text);
    /// The server has taken every command sent so far: it answers a ping.
    void settle() { EXPECT_EQ(ask("BITSERVER_PING"), "Rovan"); }

    /// What the server sent to the receiver since the last call, as in heard().
    std::vector<std::string> newlyHeard();
    bool waitForHeard(const std::string& frame, std::chrono::seconds patience = kPatience);
    bool waitForEvent(const std::string& text, std::chrono::seconds patience = kPatience);

    static constexpr std::chrono::seconds kPatience{30};

  private:
    int m_number = 0;
    std::size_t m_heard = 0;
};
