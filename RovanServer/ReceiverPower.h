// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <mutex>

// Switches the receiver's power by shell commands: the Power_On discrete, which is active low, goes
// off before the 3.3 V supply and comes on after it. A command that cannot be run gives a line on
// standard output, and the sequence goes on; its exit status is not looked at.
//
// Any thread may call; a sequence that has begun is finished before the next one begins.
class ReceiverPower {
  public:
    /// Runs a shell command, as std::system does: negative when that could not be tried.
    using System = std::function<int(const char* command)>;

    explicit ReceiverPower(System system);

    void off();
    void on();
    /// Off, and whoever switches on from now on does nothing: the process is about to end, and
    /// what still runs in it must not bring a sanitized receiver back.
    void offForGood();

  private:
    void switchOff();

    const System m_system;
    std::mutex m_mutex;
    bool m_offForGood = false;
};
