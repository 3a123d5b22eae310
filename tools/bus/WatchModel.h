// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tools/bus/Bus.h"
#include "tools/bus/WatchLink.h"
#include "tools/bus/WatchState.h"

namespace Bus {

// What the live view knows: the latest of each kind of message, the state of the link, and the
// lines of the log. Knows no terminal. Bounded in memory. One thread.
class WatchModel {
  public:
    using Clock = WatchLink::Clock;

    struct LogLine {
        int64_t unixNs;
        std::string kind;  // three letters
        std::string text;  // printable
        bool isAlarm;
    };

    // A key with the time of the message that told of it: messages tell of some keys each.
    struct Key {
        KeyState state;
        Clock::time_point arrival;
    };

    // How fresh a pane is.
    struct Freshness {
        std::optional<double> ageSeconds;  // empty before the first sample
        bool isStale = false;
    };

    /// Topics that are shown as missing until they come.
    explicit WatchModel(const std::vector<std::string>& topics);

    /// A sample with a message.
    void take(const Sample& sample);
    /// A line of the tool's own.
    void note(const std::string& kind, const std::string& text, int64_t unixNs, bool isAlarm);

    const PositionState& position() const { return m_position; }
    const ReceiverState& receiver() const { return m_receiver; }
    const std::vector<ChannelState>& channels() const { return m_channels; }
    const std::vector<SatelliteState>& satellites() const { return m_satellites; }
    const GpsTimeState& gpsTime() const { return m_gpsTime; }
    const UtcState& utc() const { return m_utc; }
    const LeapState& leap() const { return m_leap; }
    const std::map<uint32_t, Key>& keys() const { return m_keys; }
    const std::vector<InterferenceState>& interference() const { return m_interference; }
    const std::map<std::string, WatchLink>& links() const { return m_links; }
    const std::deque<LogLine>& log() const { return m_log; }
    /// Lines ever, those forgotten among them.
    uint64_t logged() const { return m_logged; }

    /// Of the latest message of a type, for example "GPSTime".
    Freshness freshness(const std::string& type, Clock::time_point now) const;
    /// Of the key that was heard of the longest ago.
    Freshness keyFreshness(Clock::time_point now) const;

  private:
    void log(const Sample& sample, const idl::EventLog& event);
    void log(const Sample& sample, const idl::MaintenanceEvent& event);
    void log(const Sample& sample, const idl::CommandResponse& message);
    void takeKeys(const Sample& sample, const idl::GPSCryptoStatus& message);

    PositionState m_position;
    ReceiverState m_receiver;
    std::vector<ChannelState> m_channels;
    std::vector<SatelliteState> m_satellites;
    GpsTimeState m_gpsTime;
    UtcState m_utc;
    LeapState m_leap;
    std::map<uint32_t, Key> m_keys;
    std::vector<InterferenceState> m_interference;
    std::map<std::string, WatchLink> m_links;      // by topic
    std::map<std::string, std::string> m_topicOf;  // the topic of the latest message of a type
    std::deque<LogLine> m_log;
    uint64_t m_logged = 0;
};

}  // namespace Bus
