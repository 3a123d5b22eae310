// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "simulator/LedgerMatch.h"

namespace Simulator {

/// A time in which the server tests the receiver.
struct BusTest {
    LedgerTime begin;
    std::optional<LedgerTime> end;
};

// Somebody on the server's bus who writes down every sample of every topic that comes from the
// receiver. Joins before the server does and hears nothing of what went before. Any thread may
// look. Must be gone before the process's static objects.
class BusEar {
  public:
    /// Joins by a copy of the server's connections file, which lies in the private /dev: with it
    /// nothing is lost while both are still finding each other, and of the two ends of a TCP
    /// connection it is the other one. Throws std::runtime_error when it cannot.
    explicit BusEar(const std::filesystem::path& connectionsFile);
    BusEar(const BusEar&) = delete;
    BusEar& operator=(const BusEar&) = delete;
    ~BusEar();

    std::vector<LedgerSample> samples(const std::string& topic) const;
    /// How many measurements all samples of GPSLineOfSight held.
    std::size_t measurements() const;
    /// When the server said that it takes commands; from then on it takes frames.
    std::optional<LedgerTime> started() const;
    std::vector<BusTest> tests() const;

  private:
    template <typename T>
    class Topic;

    void add(const std::string& topic, LedgerSample sample);
    void onCommand(const std::string& text);
    void onResponse(const std::string& text);

    mutable std::mutex m_mutex;  // guards the four below
    std::map<std::string, std::vector<LedgerSample>> m_samples;
    std::size_t m_measurements = 0;
    std::optional<LedgerTime> m_started;
    std::vector<BusTest> m_tests;

    std::vector<std::shared_ptr<void>> m_topics;  // the last: they use what stands above
};

}  // namespace Simulator
