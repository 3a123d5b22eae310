// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchModel.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/bus/Json.h"
#include "tools/common/Quoted.h"

namespace Bus {
namespace {

constexpr size_t kLogLines = 2000;
constexpr size_t kLogText = 1000;
constexpr size_t kMaxTopics = 256;
constexpr size_t kMaxKeys = 32;
constexpr double kKeySeconds = 10;  // how often a receiver tells of each
const std::string kModules = "aspn2_msgs::idl::";

// Without what could steer a terminal, and not without end.
std::string printable(const std::string& text) {
    const std::string quoted = Tools::inQuotes(text.substr(0, kLogText));
    return quoted.substr(1, quoted.size() - 2);
}

std::string nameOf(const std::string& typeName) {
    const bool isOurs = typeName.compare(0, kModules.size(), kModules) == 0;
    return isOurs ? typeName.substr(kModules.size()) : typeName;
}

}  // namespace

WatchModel::WatchModel(const std::vector<std::string>& topics) {
    for (const std::string& topic : topics) {
        m_links[topic];
    }
}

void WatchModel::take(const Sample& sample) {
    if (m_links.size() >= kMaxTopics && m_links.count(sample.topic) == 0) {
        return;
    }
    m_links[sample.topic].add(sample);
    const std::string type = nameOf(sample.typeName);
    m_topicOf[type] = sample.topic;
    const void* const data = sample.message->data();
    if (type == "PositionVelocity") {
        m_position = stateOf(*static_cast<const idl::PositionVelocity*>(data));
    } else if (type == "ReceiverStatus") {
        m_receiver = stateOf(*static_cast<const idl::ReceiverStatus*>(data));
    } else if (type == "ChannelStatus") {
        m_channels = stateOf(*static_cast<const idl::ChannelStatus*>(data));
    } else if (type == "SVStatus") {
        m_satellites = stateOf(*static_cast<const idl::SVStatus*>(data));
    } else if (type == "GPSTime") {
        m_gpsTime = stateOf(*static_cast<const idl::GPSTime*>(data));
    } else if (type == "UTCTime") {
        m_utc = stateOf(*static_cast<const idl::UTCTime*>(data));
    } else if (type == "UtcDownlink") {
        m_leap = stateOf(*static_cast<const idl::UtcDownlink*>(data));
    } else if (type == "GPSCryptoStatus") {
        takeKeys(sample, *static_cast<const idl::GPSCryptoStatus*>(data));
    } else if (type == "ChallengedEnvironment") {
        m_interference = stateOf(*static_cast<const idl::ChallengedEnvironment*>(data));
    } else if (type == "EventLog") {
        log(sample, *static_cast<const idl::EventLog*>(data));
    } else if (type == "MaintenanceEvent") {
        log(sample, *static_cast<const idl::MaintenanceEvent*>(data));
    } else if (type == "CommandResponse") {
        log(sample, *static_cast<const idl::CommandResponse*>(data));
    }
}

void WatchModel::note(const std::string& kind, const std::string& text, int64_t unixNs,
                      bool isAlarm) {
    m_log.push_back({unixNs, kind, printable(text), isAlarm});
    ++m_logged;
    if (m_log.size() > kLogLines) {
        m_log.pop_front();
    }
}

WatchModel::Freshness WatchModel::freshness(const std::string& type, Clock::time_point now) const {
    const auto topic = m_topicOf.find(type);
    if (topic == m_topicOf.end()) {
        return {};
    }
    const WatchLink& link = m_links.at(topic->second);
    return {link.age(now), link.isStale(now)};
}

WatchModel::Freshness WatchModel::keyFreshness(Clock::time_point now) const {
    Freshness freshness;
    for (const auto& [type, key] : m_keys) {
        const double age = std::chrono::duration<double>(now - key.arrival).count();
        freshness.ageSeconds = std::max(freshness.ageSeconds.value_or(0), age);
    }
    freshness.isStale = freshness.ageSeconds.value_or(0) > 3 * kKeySeconds;
    return freshness;
}

void WatchModel::takeKeys(const Sample& sample, const idl::GPSCryptoStatus& message) {
    for (const KeyState& key : stateOf(message)) {
        if (m_keys.size() < kMaxKeys || m_keys.count(key.type) != 0) {
            m_keys[key.type] = {key, sample.arrival};
        }
    }
}

void WatchModel::log(const Sample& sample, const idl::EventLog& event) {
    const auto type = static_cast<uint32_t>(event.event_log_type());
    const std::string name = type == 2   ? "information"
                             : type == 3 ? "error"
                             : type == 4 ? "failure"
                                         : fmt::format("type {}", type);
    note("EVT", name + ": " + event.eventlog(), sample.receivedNs, type >= 3);
}

void WatchModel::log(const Sample& sample, const idl::MaintenanceEvent& event) {
    std::string sources;
    for (const auto& source : event.fault_sources()) {
        if (source.lru_id() != 0 || source.component_id() != 0) {
            sources += fmt::format(" {}/{}", source.lru_id(), source.component_id());
        }
    }
    note("MNT",
         fmt::format("{}: {} criticality {} category {} location {} outcome {} faults{}",
                     textOf(event.identity()), textOf(event.description()), event.criticality_id(),
                     event.category_id(), event.location_id(), event.outcome_id(),
                     sources.empty() ? " none" : sources),
         sample.receivedNs, true);
}

void WatchModel::log(const Sample& sample, const idl::CommandResponse& message) {
    const bool isCommand = message.command_response_type() == idl::COMMAND_RESPONSE_TYPE_0;
    note(isCommand ? "CMD" : "RSP",
         fmt::format("{}: {} (identifier {})", sample.publisher, message.command_response(),
                     message.command_identifier()),
         sample.receivedNs, false);
}

}  // namespace Bus
