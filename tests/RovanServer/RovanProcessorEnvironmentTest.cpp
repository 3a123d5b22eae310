// SPDX-License-Identifier: Apache-2.0
// What 8080 becomes on the bus.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "aspn2_msgs/ChallengedEnvironmentPubSubTypes.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/RovanServer/RovanProcessorSatellitesGolden.h"
#include "tests/support/OwnBus.h"

using namespace processor_test;
using aspn2_msgs::idl::ChallengedEnvironment;
using testing::ElementsAre;

namespace {

namespace golden = SatellitesGolden;

Frame report(unsigned indications) {
    return Frame(8080, 6).word(4, indications);
}

// The bus with a subscriber to the environment.
class EnvironmentBus {
  private:
    const test_support::OwnBus m_domain;

  public:
    ChallengedEnvironment environmentOf(const Frame& frame) {
        return environmentOf(frame.sample());
    }
    ChallengedEnvironment environmentOf(const GSSIP& sample) {
        const size_t before = environments.count();
        bus.processor.process8080(sample);
        if (!transport_test::eventually([&] { return environments.count() == before + 1; })) {
            throw std::runtime_error("the message did not come");
        }
        return environments.messages().back();
    }

    transport_test::Inbox<ChallengedEnvironment> environments;
    ProcessorOnBus bus{m_domain.number()};

  private:
    const std::unique_ptr<transport_test::Face<ChallengedEnvironment>> m_face =
        listen(bus, "ChallengedEnvironment", environments);
};

}  // namespace

TEST(RovanProcessorEnvironment, BringsTheGoldenFrameToTheBus) {
    EnvironmentBus environment;
    const ChallengedEnvironment first = environment.environmentOf(sampleOf(golden::kFrame8080));
    const ChallengedEnvironment second = environment.environmentOf(sampleOf(golden::kFrame8080));

    EXPECT_EQ(cdrOf<aspn2_msgs::idl::ChallengedEnvironmentPubSubType>(second),
              golden::kChallengedEnvironmentCdr);
    EXPECT_EQ(first.header().seq_num(), 0);
    EXPECT_EQ(first.header().device_id(), 0x03272B00) << "system 3, server 39, code 43";
    expectGoldenStamps(first.header());
}

TEST(RovanProcessorEnvironment, TellsEachIndication) {
    struct Row {
        unsigned indications;
        std::array<int, 4> values;
    };
    const Row rows[] = {
        {0x00, {0, 0, 0, 0}}, {0x01, {1, 0, 0, 0}}, {0x02, {0, 0, 1, 0}},   {0x04, {0, 1, 0, 0}},
        {0x08, {0, 0, 0, 1}}, {0x10, {0, 0, 0, 1}}, {0x18, {0, 0, 0, 1}},   {0xFFE0, {0, 0, 0, 0}},
        {0x1F, {1, 1, 1, 1}}, {0x1E, {0, 1, 1, 1}}, {0xFFFF, {1, 1, 1, 1}}, {0xFFE7, {1, 1, 1, 0}},
    };
    EnvironmentBus environment;
    for (const Row& row : rows) {
        const ChallengedEnvironment message = environment.environmentOf(report(row.indications));

        EXPECT_EQ(message.num_interference_types(), 4);
        std::vector<std::array<int64_t, 4>> sets;
        for (const auto& set : message.interference_types()) {
            sets.push_back({set.interference_type(), set.interference_value(),
                            set.interference_signal(), set.interference_band()});
        }
        using Set = std::array<int64_t, 4>;
        EXPECT_THAT(sets, ElementsAre(Set{1, row.values[0], 15, 7}, Set{1, row.values[1], 4, 7},
                                      Set{1, row.values[2], 3, 7}, Set{0, row.values[3], 15, 7}))
            << row.indications;
    }
}

TEST(RovanProcessorEnvironment, ReportsAPublishThatFailsAndGoesOnCounting) {
    EnvironmentBus environment;
    environment.bus.processor.Framework_Disconnect();

    environment.bus.processor.process8080(report(0).sample());

    EXPECT_THAT(linesOf(environment.bus.newEvents()),
                ElementsAre(publishError("process8080() ChallengedEnvironment", 0)));
    environment.bus.processor.Framework_Connect();
    EXPECT_EQ(environment.environmentOf(report(0)).header().seq_num(), 1);
}

TEST(RovanProcessorEnvironment, DropsFramesOfAnotherLengthInSilence) {
    EnvironmentBus environment;
    RovanProcessor& processor = environment.bus.processor;

    processor.process8080(Frame(8080, 5).sample());
    processor.process8080(Frame(8080, 7).sample());
    processor.process8080(sampleOf({}));

    EXPECT_THAT(linesOf(environment.bus.newEvents()), ElementsAre());
    EXPECT_EQ(environment.environmentOf(report(0)).header().seq_num(), 0);
    EXPECT_EQ(environment.environments.count(), 1u);
}
