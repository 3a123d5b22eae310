// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

#include "simulator/Truth.h"
#include "tests/end_to_end/Steering.h"

// The receiver with all its own reports, its truth, and the books of the line: what each sample on
// the bus should say follows from the frame that it came from. Its epochs are a tenth of a second,
// and its truth is what a test makes of m_truth before the start.
class EveryTopic : public Steering {
  protected:
    using SaidFrame = Simulator::SaidFrame;

    /// Of the first epoch: late in a week, and less than half a week away from any time here.
    static constexpr double kWeek = 2412 * Simulator::kSecondsPerWeek;
    static constexpr double kStart = kWeek + 400'000;

    EveryTopic();

    /// Changes the truth of the receiver and of this test.
    template <typename Change>
    void changeTruth(Change change) {
        change(m_truth);
        receiver().changeReports(
            [&](Simulator::ReceiverReports& reports) { change(reports.truth); });
    }

    void startAndHear();
    /// The receiver falls silent; afterwards everything that it said has arrived.
    void stopReports();

    /// Intact frames of a message that reached the line, in order; after stopReports().
    const std::vector<SaidFrame>& said(std::uint16_t msgId) { return m_said[msgId]; }
    /// Those of them that the server may have dropped while it started.
    std::size_t early(std::uint16_t msgId);
    /// The frames that the samples of a topic came from, which are all but the early ones.
    template <typename T>
    std::vector<SaidFrame> framesOf(std::uint16_t msgId, const std::vector<T>& samples) {
        const std::vector<SaidFrame>& frames = said(msgId);
        EXPECT_LE(samples.size(), frames.size()) << msgId;
        EXPECT_GE(samples.size() + early(msgId), frames.size()) << msgId;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            EXPECT_EQ(samples[i].header().seq_num(), static_cast<std::int64_t>(i)) << msgId;
        }
        const auto count = static_cast<std::ptrdiff_t>(std::min(samples.size(), frames.size()));
        return {frames.end() - count, frames.end()};
    }

    /// What was published for one frame in `every` epochs.
    void expectRate(const char* topic, std::size_t samples, double every);
    /// Each sample of these topics says what the truth is at the time in its frame.
    void expectPositions();
    void expectChannels();
    void expectTimes();
    void expectUtcDownlinks();
    void expectSatellites();
    void expectMeasurements();

    Simulator::Truth m_truth;

  private:
    void findFirstPublished();
    template <typename T>
    bool arrived(std::uint16_t msgId, const Topic<T>& topic) {
        return waitFor([&] { return topic.count() + early(msgId) >= said(msgId).size(); },
                       kPatience);
    }

    std::map<std::uint16_t, std::vector<SaidFrame>> m_said;
    std::chrono::steady_clock::time_point m_firstPublished{};
};

/// GPS time of the message in a frame, in the week that is nearest to `near`.
double gpsTime(const Simulator::SaidFrame& frame, double near);

/// Where the satellite of a 7270 is, its first coordinate: nothing changes it on the way to the
/// bus.
double satellitePosition(const Simulator::SaidFrame& frame7270);
