// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>

#include "simulator/FrameLedger.h"
#include "simulator/IFrameStamps.h"
#include "simulator/IReceiverLine.h"
#include "simulator/LineNoise.h"
#include "simulator/Mischief.h"
#include "utility/WorkerThread.h"

namespace Simulator {

// The receiver's voice: says one frame at a time on its own thread, due answers before due reports,
// each kind in order, and enters every one in the ledger. Just before the last byte of a frame it
// has the time stamps noted. While the server's end of the line runs at another speed, only noise
// comes out there. Any thread may call; what the constructor takes must outlive it.
class Speaker {
  public:
    using Clock = std::chrono::steady_clock;

    struct Item {
        Bytes bytes;
        bool answer = false;
        Clock::time_point notBefore{};
        FrameStamps stamps{};
        /// When not 0: from here on the receiver's line runs at this speed. Needs no bytes.
        int switchTo = 0;
    };

    Speaker(IReceiverLine& line, IFrameStamps& stamps, FrameLedger& ledger, Mischief& mischief,
            LineNoise& noise, int bitsPerSecond);
    ~Speaker() { stop(); }

    void start();
    void stop();

    /// Queues an item. What is queued beyond a thousand items is lost.
    void say(Item item);
    /// Waits until everything that is due has been said. False when `timeout` comes first.
    bool waitUntilQuiet(std::chrono::milliseconds timeout);

    /// Forgets what waits, and runs the line at `bitsPerSecond`.
    void reset(int bitsPerSecond);
    /// While it is muted, what comes due is lost.
    void mute(bool muted) { m_muted = muted; }
    int lineSpeed() const { return m_speed; }
    void setLineSpeed(int bitsPerSecond) { m_speed = bitsPerSecond; }

  private:
    void loop();
    std::list<Item>::iterator nextDue();
    Clock::time_point nextWakeUp() const;
    void transmit(Item item);

    IReceiverLine& m_line;
    IFrameStamps& m_stamps;
    FrameLedger& m_ledger;
    Mischief& m_mischief;
    LineNoise& m_noise;
    std::atomic<int> m_speed;
    std::atomic<bool> m_muted{false};

    std::mutex m_mutex;  // guards the three below
    std::condition_variable m_changed;
    std::list<Item> m_pending;
    bool m_transmitting = false;

    Utility::WorkerThread m_thread;
};

}  // namespace Simulator
