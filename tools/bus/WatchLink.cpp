// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchLink.h"

#include <algorithm>
#include <limits>

namespace Bus {
namespace {

constexpr size_t kArrivals = 9;
constexpr size_t kEnoughIntervals = 4;
constexpr size_t kMaxPublishers = 64;
constexpr double kStalePeriods = 3;
// The bus and the scheduler may hold a sample up for that long.
constexpr double kStaleMarginSeconds = 0.5;

struct Usual {
    const char* typeName;
    double seconds;  // 0: now and then
};

// Until a topic has shown its own period.
constexpr Usual kUsual[] = {
    {"aspn2_msgs::idl::CommandResponse", 0},  {"aspn2_msgs::idl::EventLog", 0},
    {"aspn2_msgs::idl::MaintenanceEvent", 0}, {"aspn2_msgs::idl::UtcDownlink", 60},
    {"aspn2_msgs::idl::GPSCryptoStatus", 10}, {"aspn2_msgs::idl::SVStatus", 30},
};

double usualPeriod(const std::string& typeName) {
    const auto found = std::find_if(std::begin(kUsual), std::end(kUsual),
                                    [&](const Usual& row) { return typeName == row.typeName; });
    return found != std::end(kUsual) ? found->seconds : 1;
}

double secondsOf(WatchLink::Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

void WatchLink::add(const Sample& sample) {
    m_typeName = sample.typeName;
    m_publisher = sample.publisher;
    ++m_count;
    m_arrivals.push_back(sample.arrival);
    if (m_arrivals.size() > kArrivals) {
        m_arrivals.pop_front();
    }
    if (m_lastNumbers.size() >= kMaxPublishers && m_lastNumbers.count(sample.writer) == 0) {
        m_lastNumbers.clear();
    }
    const int64_t number = sample.message->header().seq_num();
    const auto [last, isFirst] = m_lastNumbers.try_emplace(sample.writer, number);
    if (!isFirst && number > last->second) {
        // Without sign the difference of any two numbers fits.
        const uint64_t gap =
            static_cast<uint64_t>(number) - static_cast<uint64_t>(last->second) - 1;
        m_missing += std::min(gap, std::numeric_limits<uint64_t>::max() - m_missing);
    }
    last->second = number;
}

std::optional<double> WatchLink::hz(Clock::time_point now) const {
    if (m_arrivals.size() < 2) {
        return std::nullopt;
    }
    // A stream that has stopped loses its rate.
    const double span = secondsOf(m_arrivals.back() - m_arrivals.front());
    const auto intervals = static_cast<double>(m_arrivals.size() - 1);
    const double silent = secondsOf(now - m_arrivals.back());
    const double seconds = std::max(span, silent > span / intervals ? span + silent : span);
    return seconds > 0 ? std::optional<double>(intervals / seconds) : std::nullopt;
}

std::optional<double> WatchLink::age(Clock::time_point now) const {
    if (m_arrivals.empty()) {
        return std::nullopt;
    }
    return std::max(0.0, secondsOf(now - m_arrivals.back()));
}

bool WatchLink::isStale(Clock::time_point now) const {
    const auto seconds = age(now);
    const auto usual = period();
    return seconds && usual && *seconds > kStalePeriods * *usual + kStaleMarginSeconds;
}

std::optional<double> WatchLink::period() const {
    const double usual = usualPeriod(m_typeName);
    if (usual <= 0) {
        return std::nullopt;
    }
    const size_t intervals = m_arrivals.size() - 1;
    if (m_arrivals.empty() || intervals < kEnoughIntervals) {
        return usual;
    }
    // Without the longest one: a pause is no reason to be patient with the next.
    Clock::duration longest{};
    for (size_t i = 1; i < m_arrivals.size(); ++i) {
        longest = std::max(longest, m_arrivals[i] - m_arrivals[i - 1]);
    }
    return secondsOf(m_arrivals.back() - m_arrivals.front() - longest) /
           static_cast<double>(intervals - 1);
}

}  // namespace Bus
