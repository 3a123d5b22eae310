// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/IPZ_SeqState.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Record = IPZ_SeqState::TrackingRecord;

class IPZ_SeqStateTest : public testing::Test {
  protected:
    using TimePoint = IPZ_SeqState::TimePoint;

    std::vector<std::pair<unsigned short, Record*>> records() {
        return {{9225, &sequence.msg9225},
                {5404, &sequence.msg5404},
                {5044, &sequence.msg5044},
                {5001, &sequence.msg5001},
                {5402, &sequence.msg5402}};
    }

    void setEverything(TimePoint time) {
        sequence.setNextIPZstate(eIPZ_WaitOnIPZero);
        sequence.set5404IPzeroizationStatus(Rovan_5404_Msg::e5404_IPZeroize_1);
        sequence.eZeroizeSuccess = true;
        sequence.ipZeroizeSuccess = true;
        sequence.cvZeroizeSuccess = true;
        sequence.bootFlagNormal = false;
        sequence.pspBootAllZeroes = true;
        sequence.pspSwAllZeroes = true;
        for (const auto& [id, record] : records()) {
            record->sendTime = time;
            record->reportTime = time;
            record->done = true;
            record->rejected = true;
            record->success = true;
            record->received = true;
            record->retried = true;
        }
    }

    void expectFirstValues() {
        EXPECT_EQ(sequence.getIPZstate(), eIPZ_Idle);
        EXPECT_EQ(sequence.secondsInState(), 0.0);
        EXPECT_EQ(sequence.ipZeroizeStatus.load(), 3u);
        EXPECT_FALSE(sequence.eZeroizeSuccess);
        EXPECT_FALSE(sequence.ipZeroizeSuccess);
        EXPECT_FALSE(sequence.cvZeroizeSuccess);
        EXPECT_TRUE(sequence.bootFlagNormal);
        EXPECT_FALSE(sequence.pspBootAllZeroes);
        EXPECT_FALSE(sequence.pspSwAllZeroes);
    }

    static void expectRecord(const Record& record, TimePoint time, bool flags) {
        EXPECT_EQ(record.sendTime.load(), time);
        EXPECT_EQ(record.reportTime.load(), time);
        EXPECT_EQ(record.done, flags);
        EXPECT_EQ(record.rejected, flags);
        EXPECT_EQ(record.success, flags);
        EXPECT_EQ(record.received, flags);
        EXPECT_EQ(record.retried, flags);
    }

    TimePoint now{1h};
    IPZ_SeqState sequence{[this] { return now; }};
};

}  // namespace

TEST_F(IPZ_SeqStateTest, StartsIdleWithTheTimeOfItsMaking) {
    expectFirstValues();
    for (const auto& [id, record] : records()) {
        SCOPED_TRACE(id);
        expectRecord(*record, TimePoint(1h), false);
    }
}

TEST_F(IPZ_SeqStateTest, AResetLeavesTheIpZeroizeMessageAlone) {
    setEverything(TimePoint(30min));
    now += 5s;

    sequence.reset();

    expectFirstValues();
    for (const auto& [id, record] : records()) {
        SCOPED_TRACE(id);
        if (id == 5402) {
            expectRecord(*record, TimePoint(30min), true);
        } else {
            expectRecord(*record, TimePoint(1h + 5s), false);
        }
    }
}

TEST_F(IPZ_SeqStateTest, TheStartLeavesIdleAndKeepsWhatIsLatched) {
    setEverything(now);
    sequence.setNextIPZstate(eIPZ_Idle);
    now += 7s;

    sequence.startSequence();

    EXPECT_EQ(sequence.getIPZstate(), eIPZ_ConnectMessages);
    EXPECT_EQ(sequence.secondsInState(), 0.0);
    EXPECT_TRUE(sequence.eZeroizeSuccess);
    EXPECT_EQ(sequence.ipZeroizeStatus.load(), 1u);
    EXPECT_TRUE(sequence.msg9225.received);
}

TEST_F(IPZ_SeqStateTest, TimeInAStateCountsFromItsEntryInWholeMilliseconds) {
    now += 1h;
    sequence.setNextIPZstate(eIPZ_WaitOnConnects);

    now += 6000ms + 999us;
    EXPECT_EQ(sequence.secondsInState(), 6.0);
    now += 1us;
    EXPECT_EQ(sequence.secondsInState(), 6.001);

    // The same state, entered again.
    sequence.setNextIPZstate(eIPZ_WaitOnConnects);
    EXPECT_EQ(sequence.secondsInState(), 0.0);
}

TEST_F(IPZ_SeqStateTest, EveryStateHasItsNumberAndItsNameWithABlank) {
    static_assert(sizeof(eIPZ_State) == 4);
    const std::vector<std::pair<eIPZ_State, std::string>> names = {
        {eIPZ_Idle, "eIPZ_Idle "},
        {eIPZ_ConnectMessages, "eIPZ_ConnectMessages "},
        {eIPZ_WaitOnConnects, "eIPZ_WaitOnConnects "},
        {eIPZ_CommandEZero, "eIPZ_CommandEZero "},
        {eIPZ_WaitOnEZero, "eIPZ_WaitOnEZero "},
        {eIPZ_CommandIPZ, "eIPZ_CommandIPZ "},
        {eIPZ_WaitOnIPZero, "eIPZ_WaitOnIPZero "},
        {eIPZ_ReportFail, "eIPZ_ReportFail "},
        {eIPZ_ReportSuccess, "eIPZ_ReportSuccess "},
    };
    ASSERT_EQ(names.size(), 9u);
    for (std::size_t number = 0; number < names.size(); ++number) {
        EXPECT_EQ(names[number].first, number);
        EXPECT_EQ(IPZ_SeqState::getStateStr(names[number].first), names[number].second);
    }
}

TEST_F(IPZ_SeqStateTest, AnyOtherNumberIsAnUnknownState) {
    EXPECT_STREQ(IPZ_SeqState::getStateStr(static_cast<eIPZ_State>(9)), "UNKNOWN!!! ");
    EXPECT_STREQ(IPZ_SeqState::getStateStr(static_cast<eIPZ_State>(0xFFFFFFFF)), "UNKNOWN!!! ");
}

TEST_F(IPZ_SeqStateTest, FiveMessagesHaveARecord) {
    for (const auto& [id, record] : records()) {
        EXPECT_EQ(sequence.record(id), record) << id;
    }
    for (const unsigned short id :
         std::vector<unsigned short>{0, 5000, 5002, 5043, 5045, 5401, 5403, 5405, 9224, 9226}) {
        EXPECT_EQ(sequence.record(id), nullptr) << id;
    }
}
