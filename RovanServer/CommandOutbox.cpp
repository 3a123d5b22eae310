// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/CommandOutbox.h"

#include <chrono>

namespace {

constexpr uint32_t kCapacity = 64;
// Also how long a stop may take to be noticed.
constexpr std::chrono::milliseconds kPopTimeout{200};
constexpr std::chrono::milliseconds kNoWait{0};

}  // namespace

CommandOutbox::CommandOutbox(Send send) : m_send(std::move(send)), m_commands(kCapacity) {
}

void CommandOutbox::start() {
    m_thread.start([this] { sendUntilStopped(); });
}

void CommandOutbox::stop() {
    m_thread.stop();
}

void CommandOutbox::post(CommandResponse command) {
    m_commands.push_back(std::move(command));
}

void CommandOutbox::sendUntilStopped() {
    CommandResponse command;
    while (!m_thread.stopRequested()) {
        if (m_commands.pop_front(command, kPopTimeout)) {
            m_send(command);
        }
    }
    sendPosted();
}

void CommandOutbox::sendPosted() {
    CommandResponse command;
    // No more than fit at one time: whoever goes on posting must not keep a stop from ending.
    for (uint32_t i = 0; i < kCapacity && m_commands.pop_front(command, kNoWait); ++i) {
        m_send(command);
    }
}
