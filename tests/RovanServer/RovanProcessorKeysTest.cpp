// SPDX-License-Identifier: Apache-2.0
// What 8040 and 5040 become on the bus, and in the maintenance log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "aspn2_msgs/GPSCryptoStatusPubSubTypes.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/RovanServer/RovanProcessorTimeAndKeysGolden.h"

using namespace processor_test;
using aspn2_msgs::idl::GPSCryptoStatus;
using testing::ElementsAre;

namespace {

namespace golden = TimeAndKeysGolden;

const char* const kSuccess[] = {
    "2 Last M Key load was a success", "2 Last BCVm Key load was a success",
    "2 Last BGUV2 Key load was a success", "2 Last BBKAUPD Key load was a success"};

/// 5040 in that crypto state; the bits round the state are set.
Frame statusReport(unsigned cryptoState) {
    return Frame(5040, 88).word(77, 0xFFF0 | cryptoState);
}
/// 8040 with that first key word and that word of further keys.
Frame keyReport(unsigned firstKey = 0, unsigned furtherKeys = 0) {
    return Frame(8040, 25).word(4, firstKey).word(9, furtherKeys);
}

/// "type remaining status load zeroization" of each key.
std::vector<std::string> keysOf(const GPSCryptoStatus& message) {
    EXPECT_EQ(message.num_key_types(), static_cast<int32_t>(message.key_types().size()));
    std::vector<std::string> keys;
    for (const auto& key : message.key_types()) {
        keys.push_back(
            std::to_string(key.key_type()) + ' ' + std::to_string(key.remaining_key_time()) + ' ' +
            std::to_string(key.key_status()) + ' ' + std::to_string(key.key_load_status()) + ' ' +
            std::to_string(key.key_zeroization_status()));
    }
    return keys;
}

void expectKeyLoader(const MaintenanceEvent& record) {
    EXPECT_STREQ(record.identity().data(), "Key Loader");
    EXPECT_EQ(record.criticality_id(), 2);
    EXPECT_EQ(record.location_id(), 39);
    EXPECT_EQ(record.category_id(), 12);
    EXPECT_EQ(record.repeat_in_seconds(), 0);
    const std::pair<int, int> sources[] = {{1, 4}, {0, 0}, {0, 0}, {0, 0}};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(record.fault_sources()[i].lru_id(), sources[i].first) << i;
        EXPECT_EQ(record.fault_sources()[i].component_id(), sources[i].second) << i;
    }
}

// The bus with a subscriber to the state of the keys, and a look into the maintenance log.
class KeysBus {
  public:
    explicit KeysBus(int domain) : bus(domain) {}

    GPSCryptoStatus statusOf5040(const Frame& frame) { return statusOf5040(frame.sample()); }
    GPSCryptoStatus statusOf5040(const GSSIP& sample) {
        return published([&] { bus.processor.process5040(sample); });
    }
    GPSCryptoStatus statusOf8040(const Frame& frame) { return statusOf8040(frame.sample()); }
    GPSCryptoStatus statusOf8040(const GSSIP& sample) {
        return published([&] { bus.processor.process8040(sample); });
    }

    /// "outcome text" of each record of the key loader since the last call. All are there: a
    /// process hears its own messages on the publishing thread.
    std::vector<std::string> newRecords() {
        std::vector<std::string> lines;
        const auto records = bus.maintenance.messages();
        for (; m_seen < records.size(); ++m_seen) {
            expectKeyLoader(records[m_seen]);
            lines.push_back(std::to_string(records[m_seen].outcome_id()) + ' ' +
                            records[m_seen].description().data());
        }
        return lines;
    }

    /// The message that comes of what `process` does.
    GPSCryptoStatus published(const std::function<void()>& process) {
        const size_t before = statuses.count();
        process();
        if (!transport_test::eventually([&] { return statuses.count() == before + 1; })) {
            throw std::runtime_error("the message did not come");
        }
        return statuses.messages().back();
    }

    transport_test::Inbox<GPSCryptoStatus> statuses;
    ProcessorOnBus bus;

  private:
    const std::unique_ptr<transport_test::Face<GPSCryptoStatus>> m_face =
        listen(bus, "GPSCryptoStatus", statuses);
    size_t m_seen = 0;
};

}  // namespace

TEST(RovanProcessorKeys, BringsTheGolden5040ToTheBus) {
    KeysBus keys(115);
    const GPSCryptoStatus first = keys.statusOf5040(sampleOf(golden::kFrame5040));
    const GPSCryptoStatus second = keys.statusOf5040(sampleOf(golden::kFrame5040));

    EXPECT_EQ(cdrOf<aspn2_msgs::idl::GPSCryptoStatusPubSubType>(second),
              golden::kCryptoStatus5040Cdr);
    EXPECT_EQ(first.header().seq_num(), 0);
    expectGoldenStamps(first.header());
    EXPECT_EQ(first.header().device_id(), 0x03273300) << "system 3, server 39, code 51";
    EXPECT_EQ(keys.bus.processor.getOpMode(), 10);
}

TEST(RovanProcessorKeys, BringsTheGolden8040ToTheBus) {
    KeysBus keys(116);
    const GPSCryptoStatus first = keys.statusOf8040(sampleOf(golden::kFrame8040));
    const GPSCryptoStatus second = keys.statusOf8040(sampleOf(golden::kFrame8040));

    EXPECT_EQ(cdrOf<aspn2_msgs::idl::GPSCryptoStatusPubSubType>(second),
              golden::kCryptoStatus8040Cdr);
    EXPECT_EQ(first.header().seq_num(), 0);
}

TEST(RovanProcessorKeys, NumbersTheMessagesOfBothReportsTogether) {
    KeysBus keys(117);

    EXPECT_EQ(keys.statusOf5040(statusReport(0)).header().seq_num(), 0);
    EXPECT_EQ(keys.statusOf8040(keyReport()).header().seq_num(), 1);
    EXPECT_EQ(keys.statusOf5040(statusReport(0)).header().seq_num(), 2);
}

// Each state, from several that went before.
TEST(RovanProcessorKeys, FollowsTheCryptoState) {
    KeysBus keys(118);
    const std::pair<unsigned, const char*> steps[] = {
        {8, "9 0 5 2 3"},  // nothing known yet
        {15, "9 0 5 2 3"}, {0, "9 0 1 2 3"},  {4, "9 0 4 2 3"},  {1, "9 0 1 2 3"},
        {2, "9 0 2 2 3"},  {3, "9 0 1 2 3"},  {4, "9 0 4 2 3"},  {6, "9 0 4 2 1"},
        {2, "9 0 2 2 1"},  {5, "9 0 1 2 2"},  // stays until state 6, nothing returns it to 3
        {0, "9 0 1 2 2"},  {1, "9 0 1 2 2"},  {2, "9 0 2 2 2"},  {3, "9 0 1 2 2"},
        {4, "9 0 4 2 2"},  {7, "9 0 4 0 2"},  // stays for ever
        {6, "9 0 4 0 1"},  {8, "9 0 4 0 1"},  {9, "9 0 4 0 1"},  {10, "9 0 4 0 1"},
        {11, "9 0 4 0 1"}, {12, "9 0 4 0 1"}, {13, "9 0 4 0 1"}, {14, "9 0 4 0 1"},
        {15, "9 0 4 0 1"}, {5, "9 0 1 0 2"},  {2, "9 0 2 0 2"},
    };
    for (const auto& [state, expected] : steps) {
        EXPECT_THAT(keysOf(keys.statusOf5040(statusReport(state))), ElementsAre(expected)) << state;
    }
}

TEST(RovanProcessorKeys, FollowsEachStateFromTheStart) {
    const char* const expected[16] = {"9 0 1 2 3", "9 0 1 2 3", "9 0 2 2 3", "9 0 1 2 3",
                                      "9 0 4 2 3", "9 0 1 2 2", "9 0 5 2 1", "9 0 5 0 3",
                                      "9 0 5 2 3", "9 0 5 2 3", "9 0 5 2 3", "9 0 5 2 3",
                                      "9 0 5 2 3", "9 0 5 2 3", "9 0 5 2 3", "9 0 5 2 3"};
    KeysBus keys(119);
    keys.bus.processor.Framework_Disconnect();
    for (unsigned state = 0; state < 16; ++state) {
        RovanProcessor fresh("Rovan", keys.bus.tss, keys.bus.ids, false);
        fresh.Framework_Connect();
        const GPSCryptoStatus status =
            keys.published([&] { fresh.process5040(statusReport(state).sample()); });
        fresh.Framework_Disconnect();

        EXPECT_THAT(keysOf(status), ElementsAre(expected[state])) << state;
    }
}

TEST(RovanProcessorKeys, TakesTheRemainingTimeOf5040Unsigned) {
    KeysBus keys(120);

    EXPECT_THAT(keysOf(keys.statusOf5040(statusReport(8).word(75, 0xFFFF))),
                ElementsAre("9 65535 5 2 3"));
    EXPECT_THAT(keysOf(keys.statusOf5040(statusReport(8).word(75, 1))), ElementsAre("9 1 5 2 3"));
}

TEST(RovanProcessorKeys, KeepsTheOperatingModeOfTheLatest5040) {
    KeysBus keys(121);
    const RovanProcessor& processor = keys.bus.processor;

    keys.statusOf5040(statusReport(0).word(49, 0xFFF5));
    EXPECT_EQ(processor.getOpMode(), 5);
    keys.statusOf5040(statusReport(0).word(49, 0x000F));
    EXPECT_EQ(processor.getOpMode(), 15);
    keys.bus.processor.process5040(Frame(5040, 87).word(49, 3).sample());
    EXPECT_EQ(processor.getOpMode(), 15) << "refused";
    keys.statusOf5040(statusReport(0).word(49, 0xFFF0));
    EXPECT_EQ(processor.getOpMode(), 0);
}

TEST(RovanProcessorKeys, LogsANewKeyOnceForEachTimeItIsLoaded) {
    KeysBus keys(122);
    const auto recordsOf = [&](unsigned state) {
        keys.statusOf5040(statusReport(state));
        return keys.newRecords();
    };
    const char* const kLoaded = "2 New Key Loaded";

    EXPECT_THAT(recordsOf(7), ElementsAre(kLoaded));
    EXPECT_THAT(recordsOf(7), ElementsAre());
    for (const unsigned between : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 8u, 15u}) {
        EXPECT_THAT(recordsOf(between), ElementsAre()) << between;
        EXPECT_THAT(recordsOf(7), ElementsAre(kLoaded)) << between;
        EXPECT_THAT(recordsOf(7), ElementsAre()) << between;
    }
    keys.bus.processor.start();
    keys.bus.processor.stop();
    EXPECT_THAT(recordsOf(7), ElementsAre()) << "a restart forgets nothing";
    EXPECT_TRUE(keys.bus.newEvents().empty());
}

// The fields of each of the three key words, one filled at a time and then all but that one; the
// other two words are the other way.
TEST(RovanProcessorKeys, TranslatesEachKeyWordOf8040) {
    struct Row {
        unsigned word;
        const char* key;
    };
    const Row rows[] = {
        {0x0000, "0 1 0 0"},    {0x0001, "0 2 0 0"},    {0x0002, "0 1 1 0"},
        {0x0004, "1 1 0 0"},    {0x0800, "512 1 0 0"},  {0x0FFC, "1023 1 0 0"},
        {0x1000, "0 1 0 2"},    {0x2000, "0 1 0 1"},    {0x3000, "0 1 0 3"},
        {0xC000, "0 1 0 0"},    {0xFFFE, "1023 1 1 3"}, {0xFFFD, "1023 2 0 3"},
        {0xF003, "0 2 1 3"},    {0xCFFF, "1023 2 1 0"}, {0xDFFF, "1023 2 1 2"},
        {0xEFFF, "1023 2 1 1"},
    };
    KeysBus keys(123);
    for (unsigned key = 0; key < 3; ++key) {
        for (const Row& row : rows) {
            const bool zeros = (row.word & 1) != 0;
            Frame frame = keyReport();
            for (unsigned i = 0; i < 3; ++i) {
                frame.word(4 + i, i == key ? row.word : zeros ? 0u : 0xFFFFu);
            }

            const auto got = keysOf(keys.statusOf8040(frame));

            ASSERT_EQ(got.size(), 7u);
            for (unsigned i = 0; i < 3; ++i) {
                const std::string expected = i == key ? row.key : zeros ? "0 1 0 0" : "1023 2 1 3";
                EXPECT_EQ(got[i], std::to_string(i) + ' ' + expected) << row.word;
            }
            EXPECT_EQ(got[3], "5 0 1 0 3");
        }
    }
}

TEST(RovanProcessorKeys, TranslatesTheWordOfTheFurtherKeys) {
    struct Row {
        unsigned word;
        std::array<const char*, 4> further;
    };
    const Row rows[] = {
        {0x0000, {"5 0 1 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x0001, {"5 0 2 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x0002, {"5 0 1 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x0003, {"5 0 1 0 3", "6 0 2 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x0004, {"5 0 1 1 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x0008, {"5 0 1 0 3", "6 0 1 1 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x0010, {"5 0 1 0 3", "6 0 1 0 3", "7 0 5 1 3", "8 0 5 0 3"}},
        {0x0020, {"5 0 1 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 1 3"}},
        {0x0040, {"5 1 1 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x2000, {"5 128 1 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x3FC0, {"5 255 1 0 3", "6 0 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0x4000, {"5 0 1 0 3", "6 1 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0xC000, {"5 0 1 0 3", "6 3 1 0 3", "7 0 5 0 3", "8 0 5 0 3"}},
        {0xFFFD, {"5 255 2 1 3", "6 3 1 1 3", "7 0 5 1 3", "8 0 5 1 3"}},
        {0xFFFF, {"5 255 1 1 3", "6 3 2 1 3", "7 0 5 1 3", "8 0 5 1 3"}},
    };
    KeysBus keys(124);
    for (const Row& row : rows) {
        EXPECT_THAT(keysOf(keys.statusOf8040(keyReport(0, row.word))),
                    ElementsAre("0 0 1 0 0", "1 0 1 0 0", "2 0 1 0 0", row.further[0],
                                row.further[1], row.further[2], row.further[3]))
            << row.word;
    }
}

TEST(RovanProcessorKeys, LogsWhatTheFirst8040SaysIsTrueAndARepeatNot) {
    KeysBus keys(125);

    EXPECT_EQ(keys.statusOf8040(keyReport()).num_key_types(), 7);
    EXPECT_THAT(keys.newRecords(), testing::ElementsAreArray(kSuccess));
    EXPECT_EQ(keys.statusOf8040(keyReport()).num_key_types(), 7);
    EXPECT_THAT(keys.newRecords(), ElementsAre());
    EXPECT_TRUE(keys.bus.newEvents().empty());
}

TEST(RovanProcessorKeys, LogsNothingOfAFirst8040InWhichNothingIsTrue) {
    KeysBus keys(126);

    keys.statusOf8040(keyReport(0x0002, 0x001C));

    EXPECT_THAT(keys.newRecords(), ElementsAre());
}

TEST(RovanProcessorKeys, LogsEachFactThatChanges) {
    struct Row {
        unsigned firstKey;
        unsigned furtherKeys;
        const char* changed;
        const char* back;
    };
    const Row rows[] = {
        {0x0001, 0x0000, "2 M Key loaded and Active", "3 M Key Deactivated"},
        {0x0000, 0x0001, "2 CVD Key Loaded and Active", "3 CVD Key Deactivated"},
        {0x0000, 0x0003, "2 CVD Key Loaded and Active", "3 CVD Key Deactivated"},
        {0x0002, 0x0000, "3 Last M key load Failed", kSuccess[0]},
        {0x0000, 0x0004, "3 Last BCVm key load Failed", kSuccess[1]},
        {0x0000, 0x0008, "3 Last BGUV2 key load Failed", kSuccess[2]},
        {0x0000, 0x0010, "3 Last BBKAUPD key load Failed", kSuccess[3]},
    };
    KeysBus keys(127);
    keys.statusOf8040(keyReport());
    keys.newRecords();
    for (const Row& row : rows) {
        keys.statusOf8040(keyReport(row.firstKey, row.furtherKeys));
        EXPECT_THAT(keys.newRecords(), ElementsAre(row.changed));
        keys.statusOf8040(keyReport());
        EXPECT_THAT(keys.newRecords(), ElementsAre(row.back));
    }
    // What the log does not follow: all other bits, and the other words.
    Frame others = keyReport(0xFFFC, 0xFFE2);
    for (unsigned i = 0; i < 25; ++i) {
        if (i != 4 && i != 9) {
            others.word(i, 0xFFFF);
        }
    }
    keys.statusOf8040(others);
    EXPECT_THAT(keys.newRecords(), ElementsAre());
}

TEST(RovanProcessorKeys, LogsSeveralChangesInTheirOrder) {
    KeysBus keys(128);

    keys.statusOf8040(keyReport(0x0001, 0x0001));
    EXPECT_THAT(keys.newRecords(),
                ElementsAre("2 M Key loaded and Active", "2 CVD Key Loaded and Active", kSuccess[0],
                            kSuccess[1], kSuccess[2], kSuccess[3]));
    keys.statusOf8040(keyReport(0x0002, 0x001C));
    EXPECT_THAT(keys.newRecords(),
                ElementsAre("3 M Key Deactivated", "3 CVD Key Deactivated",
                            "3 Last M key load Failed", "3 Last BCVm key load Failed",
                            "3 Last BGUV2 key load Failed", "3 Last BBKAUPD key load Failed"));
}

TEST(RovanProcessorKeys, RemembersWhatIsLoggedAcrossARestart) {
    KeysBus keys(129);
    keys.statusOf8040(keyReport());
    keys.statusOf5040(statusReport(5));
    keys.newRecords();

    keys.bus.processor.start();
    keys.bus.processor.stop();
    keys.bus.processor.start();
    keys.statusOf8040(keyReport());

    EXPECT_THAT(keys.newRecords(), ElementsAre());
    EXPECT_THAT(keysOf(keys.statusOf5040(statusReport(8))), ElementsAre("9 0 1 2 2"));
}

TEST(RovanProcessorKeys, LogsThoughThePublishFails) {
    KeysBus keys(219);
    auto rc = RC::NO_ERROR;
    keys.bus.tss->Unregister_Sender(keys.bus.id("GPSCryptoStatus"), rc);

    keys.bus.processor.process8040(keyReport().sample());
    keys.bus.processor.process5040(statusReport(7).word(49, 5).sample());

    EXPECT_THAT(linesOf(keys.bus.newEvents()),
                ElementsAre(publishError("process8040() GPSCryptoStatus", 0),
                            publishError("process5040() GPSCryptoStatus", 1)));
    EXPECT_THAT(keys.newRecords(), ElementsAre(kSuccess[0], kSuccess[1], kSuccess[2], kSuccess[3],
                                               "2 New Key Loaded"));
    EXPECT_EQ(keys.bus.processor.getOpMode(), 5);
    EXPECT_EQ(keys.statuses.count(), 0u);
}

TEST(RovanProcessorKeys, DropsFramesOfAnotherLengthOrIdInSilence) {
    KeysBus keys(220);
    RovanProcessor& processor = keys.bus.processor;

    processor.process5040(Frame(5040, 87).word(77, 7).sample());
    processor.process5040(Frame(5040, 89).word(77, 7).sample());
    processor.process5040(sampleOf({}));
    processor.process8040(Frame(8040, 24).sample());
    processor.process8040(Frame(8040, 26).sample());
    processor.process8040(sampleOf(Bytes(10)));
    processor.process8040(Frame(8041, 25).sample());
    processor.process8040(Frame(0x8000 | 8040, 25).sample());

    EXPECT_THAT(keys.newRecords(), ElementsAre());
    EXPECT_TRUE(keys.bus.newEvents().empty());
    EXPECT_EQ(keys.statusOf5040(statusReport(8)).header().seq_num(), 0);
    EXPECT_EQ(keys.statusOf8040(keyReport()).header().seq_num(), 1);
    EXPECT_THAT(keys.newRecords(), testing::ElementsAreArray(kSuccess));
}

// A process hears its own messages on the publishing thread: how many records there are when the
// state of the keys comes tells which went out first.
TEST(RovanProcessorKeys, LogsANewKeyBeforeAndChangesAfterTheMessage) {
    ProcessorOnBus bus(221);
    std::vector<size_t> recordsBefore;
    transport_test::Face<GPSCryptoStatus> face(bus.tss);
    face.registerCallback(bus.id("GPSCryptoStatus"),
                          [&](auto&&...) { recordsBefore.push_back(bus.maintenance.count()); });

    bus.processor.process5040(statusReport(7).sample());
    bus.processor.process8040(keyReport().sample());
    bus.processor.process8040(keyReport().sample());

    EXPECT_THAT(recordsBefore, ElementsAre(1u, 1u, 5u));
}
