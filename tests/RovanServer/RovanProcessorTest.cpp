// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanProcessor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "tests/RovanServer/RovanProcessorBus.h"

using namespace processor_test;

namespace {

RovanProcessor unconnected() {
    return {"Rovan", nullptr, ASPN2::DeviceIdFactory("TessalyPlus", 39), false};
}

/// The threads of this process.
long threads() {
    // A sanitizer adds a thread of its own to the first that a process starts.
    static const bool started = (std::thread([] {}).join(), true);
    static_cast<void>(started);
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

// A 9225 whose texts tell the fields apart.
Frame versionFrame(const std::string& suffix) {
    Frame frame(9225, 416);
    frame.text(20, {11, 22, 23, 10, 20, 30});
    const std::pair<unsigned, const char*> fields[] = {
        {24, "papsw"}, {84, "papboot"}, {164, "pspsw"}, {224, "pspboot"}, {338, "h1"},
        {346, "h2"},   {354, "h3"},     {362, "h4"},    {370, "civil"},   {378, "app"},
        {386, "h5"},   {394, "h6"},     {402, "h7"},    {410, "fcm"}};
    for (const auto& [word, text] : fields) {
        frame.text(word, text + suffix);
    }
    return frame;
}

}  // namespace

TEST(RovanProcessor, ConnectsAndDisconnectsInSilenceWithoutATransport) {
    RovanProcessor processor = unconnected();

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    processor.Framework_Connect();
    processor.Framework_Disconnect();

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(RovanProcessor, TakesFramesWithoutATransport) {
    RovanProcessor processor = unconnected();

    processor.process8504(sampleOf(RovanProcessorGolden::kFrame));

    EXPECT_TRUE(processor.getCurrentRcvrFail());
}

TEST(RovanProcessor, RunsOneThreadHoweverOftenItIsStarted) {
    RovanProcessor processor = unconnected();
    const long before = threads();

    processor.start();
    processor.start();
    processor.start();

    // A joined thread may take a moment to leave the process's list.
    EXPECT_TRUE(transport_test::eventually([&] { return threads() == before + 1; }));
    processor.stop();
    EXPECT_TRUE(transport_test::eventually([&] { return threads() == before; }));
}

TEST(RovanProcessor, StopsWithoutAThread) {
    RovanProcessor processor = unconnected();

    processor.stop();
    processor.start();
    processor.stop();
    processor.stop();
}

TEST(RovanProcessor, StopsItsThreadWhenItEnds) {
    const long before = threads();
    {
        RovanProcessor processor = unconnected();
        processor.start();
    }
    EXPECT_TRUE(transport_test::eventually([&] { return threads() == before; }));
}

TEST(RovanProcessor, StartsWithNothingKnownOfTheReceiver) {
    const RovanProcessor processor = unconnected();

    EXPECT_EQ(processor.getOpMode(), 0);
    EXPECT_FALSE(processor.getIsDtsCom1());
    EXPECT_FALSE(processor.getCurrentRcvrFail());
}

TEST(RovanProcessor, KeepsTheFlagOfTheLatest5042) {
    RovanProcessor processor = unconnected();

    processor.process5042(Frame(5042, 100).word(48, 0x0002).sample());
    EXPECT_TRUE(processor.getIsDtsCom1());
    processor.process5042(Frame(5042, 99).sample());
    processor.process5042(Frame(5042, 101).sample());
    EXPECT_TRUE(processor.getIsDtsCom1());
    processor.process5042(Frame(5042, 100).word(48, 0xFFFD).sample());
    EXPECT_FALSE(processor.getIsDtsCom1());
}

TEST(RovanProcessor, RefusesASampleThatClaimsMoreThanItCarries) {
    RovanProcessor processor = unconnected();
    GSSIP sample = Frame(5042, 100).word(48, 0x0002).sample();
    // The frame's length is claimed, but its last byte is not there.
    sample.data().pop_back();
    sample.data().shrink_to_fit();
    processor.process5042(sample);
    EXPECT_FALSE(processor.getIsDtsCom1());

    sample.num_bytes(-1);
    processor.process5042(sample);
    sample.num_bytes(0);
    sample.data().clear();
    processor.process5042(sample);
    EXPECT_FALSE(processor.getIsDtsCom1());
}

TEST(RovanProcessor, GoesByTheClaimedLengthOfALongerSample) {
    RovanProcessor processor = unconnected();
    GSSIP sample = Frame(5042, 100).word(48, 0x0002).sample();
    sample.data().resize(sample.data().size() + 10);

    processor.process5042(sample);

    EXPECT_TRUE(processor.getIsDtsCom1());
}

TEST(RovanProcessor, ReportsTheVersionsOnce) {
    ProcessorOnBus bus(190);

    bus.processor.process9225(Frame(9225, 415).sample());
    bus.processor.process9225(versionFrame("-1").sample());
    bus.processor.process9225(versionFrame("-2").sample());

    std::vector<std::string> texts;
    for (const EventLog& event : bus.newEvents()) {
        EXPECT_EQ(event.event_log_type(), 2u);
        texts.push_back(event.eventlog());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "GPS BuildTime YMD HMS: 23/11/22 - 10:20:30",
                         "GPS PAP_Prog_Build_ID: papsw-1", "GPS PAP_Boot_Build_ID: papboot-1",
                         "GPS PSP_Prog_Build_ID: pspsw-1", "GPS PSP_Boot_Build_ID: pspboot-1",
                         "GPS PAP_SW_HPN: h1-1", "GPS PAP_Boot_HPN: h2-1", "GPS PSP_SW_HPN: h3-1",
                         "GPS PSP_Boot_HPN: h4-1", "GPS FPGA_HPN: h5-1", "GPS HW_Version: h6-1",
                         "GPS BSL_HPN: h7-1", "GPS FCM_ID: fcm-1"}));
}
