// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "simulator/IReceiverLine.h"
#include "simulator/PseudoTerminal.h"
#include "utility/WorkerThread.h"

namespace Simulator {

// The serial line between the server and the receiver, /dev/ttyS and a number on the server's side.
// A thread of its own reads what the server writes. The data bits, parity, stop bits and flow
// control that the server asks for have no effect on a pseudo-terminal; its line speed comes
// through.
//
// Any thread may call; say() is for one thread at a time.
class SerialLine : public IReceiverLine {
  public:
    /// What the server wrote; called on the line's thread.
    using Listener = std::function<void(const std::uint8_t* bytes, std::size_t count)>;

    /// Plugged in at once. Throws as PseudoTerminal does.
    explicit SerialLine(unsigned channel);
    ~SerialLine() override { stop(); }

    void start(Listener listener);
    void stop();

    bool say(const std::uint8_t* bytes, std::size_t count, int bitsPerSecond) override;
    /// 0 while the line is hung up.
    int serverSpeed() const override;

    /// Whether bytes take the time that they take on a real line; otherwise they go at once.
    void setPaced(bool paced) { m_paced = paced; }

    /// The plug is pulled: nothing comes through in either direction, and both ends stay open.
    void unplug();
    /// The receiver's transmit wire is shorted: the server hears `byte` over and over, as fast as
    /// the line carries it, and nothing of what is said. What the server says still comes through.
    void stick(std::uint8_t byte);
    /// The same with a wire that rests in the break: one zero, as a terminal without parity marks
    /// reads it, and then nothing.
    void holdBreak();
    /// The line goes away altogether, as an adapter that is pulled out: the server's open end is
    /// dead for good, and its device is gone. Not to be called by the listener.
    void hangUp();
    /// Undoes all of these. After a hang-up there is a new line under the same name.
    void plug();

    const std::string& device() const { return m_device; }

  private:
    static constexpr int kNotStuck = -1;
    static constexpr int kBreak = -2;

    void listen();
    /// What a stuck wire says in the time since the last call.
    void sayStuck();
    std::shared_ptr<PseudoTerminal> terminal() const;

    const std::string m_device;
    mutable std::mutex m_mutex;
    std::shared_ptr<PseudoTerminal> m_terminal;  // null while hung up; guarded by m_mutex
    std::atomic<bool> m_plugged{true};
    std::atomic<int> m_stuck{kNotStuck};  // or the byte
    std::chrono::steady_clock::time_point m_stuckSaid{};
    std::mutex m_writing;  // one writer at a time
    std::atomic<bool> m_paced{false};
    bool m_full = false;  // nobody took the bytes of the latest say()
    Listener m_listener;
    Utility::WorkerThread m_thread;
};

}  // namespace Simulator
