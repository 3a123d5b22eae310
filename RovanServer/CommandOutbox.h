// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <utility>

#include "aspn2_msgs/CommandResponse.h"
#include "utility/SyncQueue.h"
#include "utility/WorkerThread.h"

// The commands that a callback of the bus has to send, sent by a thread of its own.
//
// A callback of the topic "Command" must not publish on "Command" itself: it runs with the reader
// of that topic held, and publishing takes the writer and then the reader, because the server hears
// its own commands. Another thread that publishes at that moment holds the writer and waits for the
// reader, and neither ever goes on.
//
// Any thread may post; nothing there waits. The owner starts and stops. The thread calls `send`
// with no lock held, in the order of the posts.
class CommandOutbox {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;
    using Send = std::function<void(const CommandResponse& command)>;

    /// `send` may not throw.
    explicit CommandOutbox(Send send);

    void start();
    /// Returns when what was posted before has been sent and the thread is gone. What is posted
    /// later waits for the next start.
    void stop();

    void post(CommandResponse command);
    /// Sends what waits, on this thread.
    void sendPosted();

  private:
    void sendUntilStopped();

    const Send m_send;
    Utility::SyncQueue<CommandResponse> m_commands;
    Utility::WorkerThread m_thread;
};
