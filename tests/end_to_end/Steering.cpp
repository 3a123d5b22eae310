// SPDX-License-Identifier: Apache-2.0
#include "tests/end_to_end/Steering.h"

#include <algorithm>

namespace {

constexpr int32_t kOperatorDevice = 0x0321'0200;   // server 33
constexpr int32_t kAccessoryDevice = 0x032F'0200;  // server 47

}  // namespace

Steering::Steering(const std::string& variant) : EndToEnd(variant) {
}

void Steering::startAndPing() {
    startAndWait();
    ASSERT_TRUE(waitFor([&] {
        return !waitForAnswers(send("BITSERVER_PING"), 1, std::chrono::seconds(1)).empty();
    }));
    newlyHeard();
}

Steering::CommandResponse Steering::makeCommand(const std::string& text) {
    CommandResponse command;
    command.header().device_id(kOperatorDevice);
    command.command_identifier(++m_number);
    command.command_response(text);
    return command;
}

int Steering::send(const std::string& text) {
    const CommandResponse command = makeCommand(text);
    bus().command.publish(command);
    return command.command_identifier();
}

void Steering::sendAsAccessory(const std::string& text) {
    CommandResponse response;
    response.header().device_id(kAccessoryDevice);
    response.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    response.command_response(text);
    bus().response.publish(response);
}

std::vector<std::string> Steering::answersTo(int number) {
    std::vector<std::string> texts;
    for (const CommandResponse& sample : bus().response.samples()) {
        if (sample.command_identifier() == number) {
            texts.push_back(sample.command_response());
        }
    }
    return texts;
}

std::vector<std::string> Steering::waitForAnswers(int number, std::size_t count,
                                                  std::chrono::seconds patience) {
    waitFor([&] { return answersTo(number).size() >= count; }, patience);
    return answersTo(number);
}

std::string Steering::ask(const std::string& text) {
    const auto answers = waitForAnswers(send(text));
    return answers.empty() ? "no answer" : answers.front();
}

std::vector<std::string> Steering::newlyHeard() {
    std::vector<std::string> frames = heard();
    frames.erase(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(m_heard));
    m_heard += frames.size();
    return frames;
}

bool Steering::waitForHeard(const std::string& frame, std::chrono::seconds patience) {
    return waitFor(
        [&] {
            const auto frames = heard();
            return std::find(frames.begin() + static_cast<std::ptrdiff_t>(m_heard), frames.end(),
                             frame) != frames.end();
        },
        patience);
}

bool Steering::waitForEvent(const std::string& text, std::chrono::seconds patience) {
    return waitFor(
        [&] {
            const auto events = bus().eventTexts();
            return std::find(events.begin(), events.end(), text) != events.end();
        },
        patience);
}
