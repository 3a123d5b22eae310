// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

#include "aspn2_msgs/CommandResponse.h"

/// How far a zeroize goes; a higher kind replaces a pending lower one.
enum class zeroizeType : uint32_t {
    none = 0,
    cvZeroize = 1,
    zeroize = 2,
    destroy = 3,
};

// The zeroize command that waits for its final answer. A bus command makes it pending, the
// procedure completes it, and both happen on different threads: any thread may call anything. The
// type can be read without the lock, everything else lies under it.
//
// Finishing one command and starting the next touch more than this object (the destroy sequence is
// reset by the one and started by the other). Pending and CompleteIf therefore take a step that
// runs under the lock too, so that the two never interleave. Such a step must not come back here.
class ZeroizeCommanded {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;
    using TimePoint = std::chrono::steady_clock::time_point;
    using Clock = std::function<TimePoint()>;
    using Step = std::function<void()>;

    explicit ZeroizeCommanded(Clock clock);

    zeroizeType type() const { return m_type; }
    /// False at all times: it is the type that says whether a command is pending.
    bool pending() const;

    /// Takes `command` as the pending one and starts its time. `first`, if given, runs before the
    /// type can be seen.
    void Pending(zeroizeType type, CommandResponse command, const Step& first = nullptr);

    /// Ends what is pending and gives the last command that was.
    CommandResponse Complete();

    /// Complete() and then `step`, if `handled` is pending still. If another command has replaced
    /// it, nothing happens and there is nothing to answer.
    std::optional<CommandResponse> CompleteIf(zeroizeType handled, const Step& step);

    /// Starts the time again, if `handled` is pending still; otherwise false and nothing happens.
    bool restart(zeroizeType handled);

    /// Whole seconds since the command was taken or its time was started again.
    std::chrono::seconds elapsed() const;

  private:
    CommandResponse completeLocked();

    const Clock m_clock;
    TimePoint m_startTime;
    CommandResponse m_command;
    bool m_pending = false;
    std::atomic<zeroizeType> m_type{zeroizeType::none};
    mutable std::mutex m_mutex;
};
