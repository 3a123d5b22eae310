// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "tools/bus/Bus.h"
#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/Options.h"
#include "tools/bus/Tally.h"
#include "utility/SyncQueue.h"

namespace Bus {

// The samples of the topics that a command asks for, one after the other. Without topics in the
// options that is all of the file and whatever else turns up on the bus. The bus never waits for
// the command: what it does not fetch in time is dropped and counted. One thread.
class Session {
  public:
    /// Joins the bus. Throws UsageError, also for a topic that the file does not know.
    explicit Session(const Options& options);

    /// The same for exactly these topics of the file, perhaps none.
    Session(const Options& options, const ConnectionsFile& file,
            const std::vector<std::string>& topics);

    /// Publishes a topic from now on. The publisher is valid as long as this object.
    Publisher& publish(const Topic& topic) { return m_bus.publish(topic); }
    const Directory& directory() const { return m_bus.directory(); }

    /// Waits up to `timeout` for a sample that can be read. False without one; `sample` is then
    /// untouched. The first unreadable one of a topic is reported on standard error.
    bool next(Sample& sample, std::chrono::nanoseconds timeout);

    /// Samples that this command did not fetch in time.
    uint64_t dropped() const { return m_dropped; }

    /// Says on standard error what was lost, unreadable or dropped, and with `summary` what came.
    void report(bool summary) const;

  private:
    Session(const Options& options, const ConnectionsFile& file);
    Session(const Options& options, const ConnectionsFile& file, const std::vector<Topic>& topics,
            bool wantsAll);
    void subscribe(const Topic& topic);
    void subscribeNewTopics();
    bool isReadable(const Sample& sample);

    static constexpr uint32_t kCapacity = 4096;

    const bool m_wantsAll;
    std::set<std::string> m_subscribed;
    uint64_t m_changesSeen = 0;
    Tally m_tally;
    std::atomic<uint64_t> m_dropped{0};
    Utility::SyncQueue<Sample> m_samples{kCapacity};
    Bus m_bus;  // the last: its handlers use what stands above
};

}  // namespace Bus
