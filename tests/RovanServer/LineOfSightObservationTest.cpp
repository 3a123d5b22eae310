// SPDX-License-Identifier: Apache-2.0
// Each field of a measurement. Expected values are worked out by hand; the units are powers of two,
// so that most are exact.
#include "RovanServer/LineOfSightObservation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

using aspn2_msgs::idl::gpslos_obs;

// A report built by the byte offsets of its fields; all zero at first.
class Report {
  public:
    template <typename T>
    Report& number(unsigned offset, T value) {
        std::memcpy(m_bytes + offset, &value, sizeof value);
        return *this;
    }
    Report& byte(unsigned offset, unsigned value) {
        return number<uint8_t>(offset, static_cast<uint8_t>(value));
    }
    Report& word(unsigned offset, unsigned value) {
        return number<uint16_t>(offset, static_cast<uint16_t>(value));
    }
    gpslos_obs observation() const {
        unpacked_msg7270_t report;
        static_assert(sizeof report.words == sizeof m_bytes);
        std::memcpy(report.words, m_bytes, sizeof m_bytes);
        return lineOfSightObservationOf(report);
    }

  private:
    uint8_t m_bytes[118] = {};
};

constexpr unsigned kDeltaRangeValid = 0x02;
constexpr unsigned kPseudorangeValid = 0x04;
constexpr unsigned kTropo = 0x10;

Report pseudorange(double range, int32_t correction, int16_t sigma) {
    return Report()
        .byte(12, kPseudorangeValid)
        .number<double>(16, range)
        .number<int32_t>(78, correction)
        .number<int16_t>(114, sigma);
}

Report deltaRange(int32_t count, unsigned intervalMs, int16_t rate) {
    return Report()
        .byte(12, kDeltaRangeValid)
        .number<int32_t>(24, count)
        .word(28, intervalMs)
        .number<int16_t>(82, rate);
}

// Code and state by their fields, and C/N0.
Report& onChannel(Report& report, unsigned codeField, unsigned state, unsigned cn0) {
    return report.byte(112, codeField).word(14, cn0 << 4 | state << 12);
}

}  // namespace

TEST(LineOfSightObservation, OfAnEmptyReport) {
    const gpslos_obs obs = Report().observation();

    EXPECT_EQ(obs.prn(), 0);
    EXPECT_EQ(obs.channel_state(), 15u);
    EXPECT_EQ(obs.channel_frequency(), 1u);
    EXPECT_EQ(obs.channel_code(), 1u);
    EXPECT_EQ(obs.ere(), 2.0);
    EXPECT_EQ(obs.c_n0(), 0);
    EXPECT_EQ(obs.assurance(), 0u);
    EXPECT_FALSE(obs.pseudorange_measurement_valid());
    EXPECT_EQ(obs.pseudorange_measurement(), 0.0);
    EXPECT_EQ(obs.pseudorange_measurement_variance(), 0.0);
    EXPECT_FALSE(obs.deltarange_measurement_valid());
    EXPECT_EQ(obs.deltarange_measurement(), 0.0);
    EXPECT_EQ(obs.deltarange_measurement_variance(), 0.0);
    EXPECT_EQ(obs.deltarange_interval(), 0.0);
    EXPECT_EQ(obs.sv_position_start(), (std::array<double, 3>{}));
    EXPECT_EQ(obs.sv_position_stop(), (std::array<double, 3>{}));
    EXPECT_FALSE(obs.tropo_correction_applied());
    EXPECT_FALSE(obs.iono_correction_applied());
    EXPECT_EQ(obs.iono_correction_source(), 0u);
}

TEST(LineOfSightObservation, TellsTheChannelState) {
    const unsigned expected[16] = {15, 1, 2, 3, 4, 5, 6, 7, 15, 15, 15, 15, 15, 15, 15, 15};
    for (unsigned field = 0; field < 16; ++field) {
        EXPECT_EQ(Report().word(14, field << 12).observation().channel_state(), expected[field]);
        EXPECT_EQ(Report().word(14, field << 12 | 0x0FFF).observation().channel_state(),
                  expected[field]);
    }
}

TEST(LineOfSightObservation, TellsTheFrequency) {
    const unsigned expected[4] = {1, 2, 0, 0};
    for (unsigned field = 0; field < 4; ++field) {
        EXPECT_EQ(Report().word(14, field << 2).observation().channel_frequency(), expected[field]);
        EXPECT_EQ(Report().word(14, field << 2 | 0xFFF3).observation().channel_frequency(),
                  expected[field]);
    }
}

TEST(LineOfSightObservation, TellsTheCode) {
    const unsigned expected[8] = {1, 2, 3, 4, 0, 0, 0, 0};
    for (unsigned field = 0; field < 8; ++field) {
        EXPECT_EQ(Report().byte(112, field).observation().channel_code(), expected[field]);
        EXPECT_EQ(Report().word(112, field | 0xFFF8).observation().channel_code(), expected[field]);
    }
}

TEST(LineOfSightObservation, TellsTheExpectedRangeError) {
    const double expected[16] = {2.0,  2.8,   4.0,   5.7,   8.0,    11.3,   16.0,   32.0,
                                 64.0, 128.0, 256.0, 512.0, 1024.0, 2048.0, 4096.0, 4096.0};
    for (unsigned index = 0; index < 16; ++index) {
        EXPECT_EQ(Report().byte(12, index << 4).observation().ere(), expected[index]);
        EXPECT_EQ(Report().word(12, index << 4 | 0xFF0F).observation().ere(), expected[index]);
    }
}

TEST(LineOfSightObservation, TellsThePrn) {
    for (unsigned prn = 0; prn < 64; ++prn) {
        EXPECT_EQ(Report().byte(13, prn << 2).observation().prn(), static_cast<int>(prn));
        EXPECT_EQ(Report().byte(12, 0xFF).byte(13, prn << 2 | 3).observation().prn(),
                  static_cast<int>(prn));
    }
}

TEST(LineOfSightObservation, TellsTheCarrierToNoiseRatio) {
    for (unsigned cn0 = 0; cn0 < 256; ++cn0) {
        EXPECT_EQ(Report().word(14, cn0 << 4).observation().c_n0(), static_cast<int>(cn0));
        EXPECT_EQ(Report().word(14, cn0 << 4 | 0xF00F).observation().c_n0(), static_cast<int>(cn0));
    }
}

TEST(LineOfSightObservation, TellsTheAssurance) {
    const std::pair<unsigned, unsigned> rows[] = {{0x00, 0}, {0x02, 1}, {0x04, 1},
                                                  {0x06, 1}, {0xF9, 0}, {0xFF, 1}};
    for (const auto& [flags, expected] : rows) {
        EXPECT_EQ(Report().byte(106, flags).observation().assurance(), expected) << flags;
    }
}

TEST(LineOfSightObservation, TellsTheCorrections) {
    struct Row {
        unsigned flags;
        bool tropo;
        bool iono;
        unsigned source;
    };
    const Row rows[] = {{0x00, false, false, 0}, {0x10, true, false, 0},  {0x20, false, true, 0},
                        {0x40, false, false, 1}, {0x80, false, false, 2}, {0xC0, false, false, 0},
                        {0x0F, false, false, 0}, {0xBF, true, true, 2},   {0x6F, false, true, 1}};
    for (const Row& row : rows) {
        const gpslos_obs obs = Report().byte(107, row.flags).observation();
        EXPECT_EQ(obs.tropo_correction_applied(), row.tropo) << row.flags;
        EXPECT_EQ(obs.iono_correction_applied(), row.iono) << row.flags;
        EXPECT_EQ(obs.iono_correction_source(), row.source) << row.flags;
    }
}

TEST(LineOfSightObservation, TellsBothPositions) {
    Report report;
    for (unsigned i = 0; i < 3; ++i) {
        report.number<double>(30 + 8 * i, -2.5e7 + i).number<double>(54 + 8 * i, 1.5e-3 * (i + 1));
    }

    const gpslos_obs obs = report.observation();

    EXPECT_EQ(obs.sv_position_start(),
              (std::array<double, 3>{-25000000.0, -24999999.0, -24999998.0}));
    EXPECT_EQ(obs.sv_position_stop(), (std::array<double, 3>{1.5e-3, 1.5e-3 * 2, 1.5e-3 * 3}));
}

TEST(LineOfSightObservation, CorrectsThePseudorange) {
    struct Row {
        double range;
        int32_t correction;  // 1/1024
        int16_t sigma;       // 1/16
        double measurement;
        double variance;
    };
    const Row rows[] = {
        {20200000.5, 0, 0, 20200000.5, 0.0},
        {20200000.5, 1536, 40, 20199999.0, 6.25},
        {20200000.5, -1536, -40, 20200002.0, 6.25},
        {20200000.5, 1, 1, 20200000.4990234375, 0.00390625},
        {100.0, 0x10000, 0x7FFF, 36.0, 4194048.00390625},  // 64; 2047.9375 squared
        {0.0, INT32_MIN, INT16_MIN, 2097152.0, 4194304.0},
        {0.0, INT32_MAX, 16, -2097151.9990234375, 1.0},
        {std::numeric_limits<double>::infinity(), 1, 16, std::numeric_limits<double>::infinity(),
         1.0},
    };
    for (const Row& row : rows) {
        const gpslos_obs obs = pseudorange(row.range, row.correction, row.sigma).observation();
        EXPECT_TRUE(obs.pseudorange_measurement_valid());
        EXPECT_EQ(obs.pseudorange_measurement(), row.measurement);
        EXPECT_EQ(obs.pseudorange_measurement_variance(), row.variance);
        EXPECT_FALSE(obs.deltarange_measurement_valid());
    }
    EXPECT_TRUE(std::isnan(pseudorange(NAN, 0, 0).observation().pseudorange_measurement()));
}

TEST(LineOfSightObservation, CorrectsTheDeltaRange) {
    struct Row {
        int32_t count;  // 1/8192
        unsigned intervalMs;
        int16_t rate;  // 1/1024
        double measurement;
        double interval;
    };
    const Row rows[] = {
        {0, 0, 0, 0.0, 0.0},
        {8192, 0, 32767, 1.0, 0.0},
        {-8193, 250, 1024, -1.2501220703125, 0.25},  // -1.0001220703125 - 0.25 * 1
        {8192, 500, -512, 1.25, 0.5},
        {8192, 1000, INT16_MIN, 33.0, 1.0},
        {INT32_MIN, 2000, 32767, -262207.998046875, 2.0},  // -262144 - 2 * 31.9990234375
        {INT32_MAX, 65535, 0, 262143.9998779296875, 65.535},
        {0, 32769, 1, -0.0320009765625, 32.769},  // times 2 to the -10 is exact
    };
    for (const Row& row : rows) {
        const gpslos_obs obs = deltaRange(row.count, row.intervalMs, row.rate).observation();
        EXPECT_TRUE(obs.deltarange_measurement_valid());
        EXPECT_EQ(obs.deltarange_measurement(), row.measurement);
        EXPECT_EQ(obs.deltarange_interval(), row.interval);
        EXPECT_FALSE(obs.pseudorange_measurement_valid());
    }
}

TEST(LineOfSightObservation, SquaresTheDeltaRangeDeviation) {
    const std::pair<int16_t, double> rows[] = {{0, 0.0},
                                               {1, 9.31322574615478515625e-10},  // 2 to the -30
                                               {1000, 9.31322574615478515625e-4},
                                               {-1000, 9.31322574615478515625e-4},
                                               {16384, 0.25},
                                               {INT16_MIN, 1.0}};
    for (const auto& [sigma, expected] : rows) {
        const gpslos_obs obs = deltaRange(0, 0, 0).number<int16_t>(116, sigma).observation();
        EXPECT_EQ(obs.deltarange_measurement_variance(), expected) << sigma;
    }
}

// A rate of 1 for 0.5 s. The second term counts only with both its own flag and that of the
// tropospheric correction.
TEST(LineOfSightObservation, AddsTheSecondRateWithTheTroposphericCorrection) {
    struct Row {
        unsigned flags;   // at 107
        unsigned second;  // at 84: twice the count and the flag
        double measurement;
    };
    const Row rows[] = {
        {0, 0, -0.5},
        {kTropo, 0, -0.5},
        {0, 2 * 512 + 1, -0.5},
        {0xEF, 2 * 512 + 1, -0.5},
        {kTropo, 2 * 512, -0.5},
        {kTropo, 2 * 512 + 1, -0.75},
        {0xFF, 2 * 512 + 1, -0.75},
        {kTropo, 1, -0.5},
        {kTropo, 3, -0.50048828125},       // one count
        {kTropo, 0xFFFF, -0.49951171875},  // minus one
        {kTropo, 0xFC01, -0.25},           // minus 512
        {kTropo, 0x7FFF, -8.49951171875},  // 16383 counts
        {kTropo, 0x8001, 7.5},             // minus 16384
    };
    for (const Row& row : rows) {
        const gpslos_obs obs =
            deltaRange(0, 500, 1024).byte(107, row.flags).word(84, row.second).observation();
        EXPECT_EQ(obs.deltarange_measurement(), row.measurement) << row.flags << ' ' << row.second;
    }
}

TEST(LineOfSightObservation, HasNothingOfAMeasurementThatIsNotValid) {
    Report report = pseudorange(20200000.5, 1536, 40);
    report.number<int32_t>(24, 8192).word(28, 500).number<int16_t>(116, 1000);
    onChannel(report, 3, 3, 20);  // here both variances are replaced

    const gpslos_obs onlyPseudorange = report.byte(12, kPseudorangeValid).observation();
    const gpslos_obs onlyDeltaRange = report.byte(12, kDeltaRangeValid).observation();
    const gpslos_obs neither =
        report.byte(12, 0xFF & ~(kDeltaRangeValid | kPseudorangeValid)).observation();

    EXPECT_EQ(onlyPseudorange.pseudorange_measurement(), 20199999.0);
    EXPECT_EQ(onlyPseudorange.pseudorange_measurement_variance(), 1.0);
    EXPECT_EQ(onlyDeltaRange.deltarange_measurement(), 1.0);
    EXPECT_EQ(onlyDeltaRange.deltarange_interval(), 0.5);
    EXPECT_EQ(onlyDeltaRange.deltarange_measurement_variance(), 0.002);
    for (const gpslos_obs* obs : {&onlyDeltaRange, &neither}) {
        EXPECT_FALSE(obs->pseudorange_measurement_valid());
        EXPECT_EQ(obs->pseudorange_measurement(), 0.0);
        EXPECT_EQ(obs->pseudorange_measurement_variance(), 0.0);
    }
    for (const gpslos_obs* obs : {&onlyPseudorange, &neither}) {
        EXPECT_FALSE(obs->deltarange_measurement_valid());
        EXPECT_EQ(obs->deltarange_measurement(), 0.0);
        EXPECT_EQ(obs->deltarange_measurement_variance(), 0.0);
        EXPECT_EQ(obs->deltarange_interval(), 0.0);
    }
}

TEST(LineOfSightObservation, ReplacesVariancesByCodeStateAndCarrierToNoiseRatio) {
    struct Row {
        unsigned codeField;
        unsigned state;
        unsigned cn0;
        double pseudorangeVariance;
        double deltaRangeVariance;
    };
    const double reported = 6.25;
    const double reportedDelta = 0.25;
    const Row rows[] = {
        {0, 3, 20, reported, reportedDelta},  // code 1 never
        {0, 4, 20, reported, reportedDelta},
        {1, 3, 20, 6.9, reportedDelta},
        {1, 3, 10, 10.6, reportedDelta},
        {1, 3, 40, 2.25, reportedDelta},
        {1, 4, 20, reported, reportedDelta},
        {2, 3, 20, 6.9, reportedDelta},
        {2, 4, 20, reported, reportedDelta},
        {2, 5, 20, reported, reportedDelta},
        {3, 3, 10, 2.15, 0.17},
        {3, 3, 40, 0.12, 0.00017},
        {3, 4, 24, 0.25, 0.00033},
        {3, 5, 25, 0.2, 0.0004},
        {3, 2, 25, reported, reportedDelta},
        {3, 6, 25, reported, reportedDelta},
        {3, 11, 25, reported, reportedDelta},  // reported as state 15
        {4, 3, 20, reported, reportedDelta},   // reported as code 0
        {7, 3, 20, reported, reportedDelta},
    };
    for (const Row& row : rows) {
        Report report = pseudorange(0.0, 0, 40);
        report.byte(12, kPseudorangeValid | kDeltaRangeValid).number<int16_t>(116, 16384);
        const gpslos_obs obs = onChannel(report, row.codeField, row.state, row.cn0).observation();
        EXPECT_EQ(obs.pseudorange_measurement_variance(), row.pseudorangeVariance)
            << row.codeField << ' ' << row.state << ' ' << row.cn0;
        EXPECT_EQ(obs.deltarange_measurement_variance(), row.deltaRangeVariance)
            << row.codeField << ' ' << row.state << ' ' << row.cn0;
    }
}
