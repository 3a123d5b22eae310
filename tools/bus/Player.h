// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/bus/Limit.h"
#include "tools/bus/Options.h"
#include "tools/bus/RecordingContents.h"
#include "tools/bus/Session.h"

namespace Bus {

// Publishes the samples of a recording, each at its time. When there is no time to wait for, it
// waits for its subscribers instead: a publisher that outruns them by more than its history would
// overwrite what they have not fetched. One thread; the session must outlive it.
class Player {
  public:
    /// `options` say the file, the speed, and when to end.
    Player(Session& session, const Options& options, int historyDepth);

    /// Publishes this topic from now on. Throws UsageError when that cannot be.
    void add(const Topic& topic);
    /// Whether somebody subscribes to one of the topics.
    bool hasSubscribers() const;

    /// Plays the samples of the added topics among those that the contents count. Good when all
    /// were played that were asked for and every subscriber has confirmed them.
    ExitStatus play(const RecordingContents& contents);
    uint64_t played() const { return m_limit->seen(); }

  private:
    using Clock = Limit::Clock;

    struct Voice {
        Publisher* publisher = nullptr;
        uint64_t unconfirmed = 0;  // at most, of what was written
    };

    Clock::time_point dueTime(int64_t sinceFirstNs) const;
    /// False when the play ends before that time.
    bool waitFor(Clock::time_point due) const;
    bool confirm(Voice& voice);
    bool write(Voice& voice, Message& message);

    Session& m_session;
    const Options& m_options;
    const uint64_t m_mostUnconfirmed;
    std::map<std::string, Voice> m_voices;
    std::optional<Limit> m_limit;
    Clock::time_point m_start;
};

}  // namespace Bus
