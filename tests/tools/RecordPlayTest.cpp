// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>

#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/PositionVelocity.h"
#include "tests/aspn2_msgs/Golden.h"
#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/TestPublisher.h"
#include "tools/bus/Codec.h"
#include "tools/bus/RecordingReader.h"
#include "tools/bus/RecordingWriter.h"

namespace {

using aspn2_msgs::idl::CommandResponse;
using aspn2_msgs::idl::EventLog;
using aspn2_msgs::idl::PositionVelocity;
using Bus::Recorded;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using tools_test::Program;
using tools_test::TestServer;
using tools_test::waitUntil;
using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;

constexpr std::chrono::seconds kSoon{30};
const std::string kModules = "aspn2_msgs::idl::";

class RecordPlay : public ::testing::Test {
  protected:
    std::string connections() const {
        return m_directory.file("connections.xml",
                                tools_test::connectionsXml(m_domain.number(), "UDP"));
    }
    std::string path(const std::string& name) const { return m_directory.file("x", "") + name; }

    static Recorded sampleOf(const std::string& topic, const std::string& type, int64_t ms) {
        Recorded sample;
        sample.topic = topic;
        sample.typeName = kModules + type;
        sample.publisher = "Rovan";
        sample.sequence = 1;
        sample.sinceStartNs = ms * 1'000'000;
        sample.receivedNs = 1'700'000'000'000'000'000 + sample.sinceStartNs;
        sample.bytes = golden::bytes(type, "little");
        return sample;
    }

    std::string recording(const std::vector<Recorded>& samples) const {
        Bus::RecordingWriter writer(path(".made"), true);
        for (const Recorded& sample : samples) {
            EXPECT_TRUE(writer.write(sample));
        }
        writer.finish();
        return path(".made");
    }

    static std::vector<Recorded> samplesOf(const std::string& file) {
        Bus::RecordingReader reader(file);
        std::vector<Recorded> samples;
        for (Recorded sample; reader.next(sample);) {
            samples.push_back(sample);
        }
        return samples;
    }

    const test_support::OwnBus m_domain;
    tools_test::TemporaryDirectory m_directory;
};

TEST_F(RecordPlay, ReplaysToTheSameSamplesToTheLastBit) {
    const std::string bus = connections();
    const std::string made = recording(
        {sampleOf("PositionVelocity", "PositionVelocity", 0), sampleOf("EventLog", "EventLog", 10),
         sampleOf("EventLog", "EventLog", 20), sampleOf("ReceiverStatus", "ReceiverStatus", 30)});
    Program recorder({"record", path(".again"), "-c", bus, "-n", "4"});
    ASSERT_TRUE(waitUntil([&] { return std::ifstream(path(".again")).good(); }, kSoon));

    Program player({"play", made, "-c", bus, "--patience", "30"});

    EXPECT_EQ(player.wait(), 0) << player.errors();
    EXPECT_EQ(player.output(), "played 4 samples of 3 topics\n");
    EXPECT_EQ(recorder.wait(), 0) << recorder.errors();
    EXPECT_THAT(recorder.output(), HasSubstr("recorded 4 samples of 3 topics, "));
    std::multimap<std::string, std::vector<uint8_t>> expected;
    std::multimap<std::string, std::vector<uint8_t>> got;
    for (const Recorded& sample : samplesOf(made)) {
        expected.emplace(sample.topic + sample.typeName, sample.bytes);
    }
    for (const Recorded& sample : samplesOf(path(".again"))) {
        got.emplace(sample.topic + sample.typeName, sample.bytes);
        EXPECT_EQ(sample.publisher, "rovan-bus");
        EXPECT_GT(sample.receivedNs, 1'700'000'000'000'000'000);
    }
    EXPECT_EQ(got, expected);
}

TEST_F(RecordPlay, CommandsAndResponsesAreReplayedOnlyWhenNamed) {
    const std::string bus = connections();
    const TestServer server(bus, "Rovan");
    std::atomic<int> commands{0};
    std::atomic<int> responses{0};
    std::atomic<int> events{0};
    server.subscribe<CommandResponse>("Command", [&](const CommandResponse&) { ++commands; });
    server.subscribe<CommandResponse>("Response", [&](const CommandResponse&) { ++responses; });
    server.subscribe<EventLog>("EventLog", [&](const EventLog&) { ++events; });
    const std::string made = recording(
        {sampleOf("Command", "CommandResponse", 0), sampleOf("Response", "CommandResponse", 0),
         sampleOf("Orders", "CommandResponse", 0), sampleOf("EventLog", "EventLog", 0)});

    Program all({"play", made, "-c", bus, "--speed", "max"});
    EXPECT_EQ(all.wait(), 0) << all.errors();
    EXPECT_EQ(all.output(), "played 1 samples of 1 topics\n");
    for (const char* topic : {"\"Command\"", "\"Response\"", "\"Orders\""}) {
        EXPECT_THAT(all.errors(), HasSubstr(std::string(topic) + " is left out"));
    }
    EXPECT_TRUE(waitUntil([&] { return events == 1; }, kSoon));
    EXPECT_EQ(commands, 0);
    EXPECT_EQ(responses, 0);

    Program named({"play", made, "Command", "-c", bus});
    EXPECT_EQ(named.wait(), 0) << named.errors();
    EXPECT_TRUE(waitUntil([&] { return commands == 1; }, kSoon));
    EXPECT_EQ(responses, 0);
    EXPECT_EQ(events, 1);
}

TEST_F(RecordPlay, LosesNothingAtFullSpeed) {
    constexpr int kSamples = 3000;  // the history holds 64
    const std::string bus = connections();
    std::atomic<int> events{0};
    const TestServer server(bus, "Rovan");
    server.subscribe<EventLog>("EventLog", [&](const EventLog&) { ++events; });
    const std::string made =
        recording(std::vector<Recorded>(kSamples, sampleOf("EventLog", "EventLog", 3'600'000)));

    Program player({"play", made, "-c", bus, "--speed", "max"});

    EXPECT_EQ(player.wait(), 0) << player.errors();
    EXPECT_TRUE(waitUntil([&] { return events == kSamples; }, kSoon)) << events;
}

TEST_F(RecordPlay, KeepsTheTimesBetweenTheSamples) {
    const std::string bus = connections();
    std::mutex mutex;
    std::vector<Clock::time_point> times;
    const TestServer server(bus, "Rovan");
    server.subscribe<EventLog>("EventLog", [&](const EventLog&) {
        const std::lock_guard<std::mutex> lock(mutex);
        times.push_back(Clock::now());
    });
    // The start of the recording is silent for an hour, which is not waited for.
    const std::string made = recording({sampleOf("EventLog", "EventLog", 3'600'000),
                                        sampleOf("EventLog", "EventLog", 3'601'000),
                                        sampleOf("EventLog", "EventLog", 3'602'000)});
    const auto span = [&](const std::vector<std::string>& options) {
        times.clear();
        std::vector<std::string> arguments = {"play", made, "-c", bus};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Program player(arguments);
        EXPECT_EQ(player.wait(), 0) << player.errors();
        EXPECT_TRUE(waitUntil(
            [&] {
                const std::lock_guard<std::mutex> lock(mutex);
                return times.size() == 3;
            },
            kSoon));
        return std::chrono::duration<double>(times.back() - times.front()).count();
    };

    // The first sample may arrive late, by a busy machine.
    EXPECT_GT(span({}), 1.5);
    EXPECT_GT(span({"--speed", "0.5"}), 3.5);
    const auto start = Clock::now();
    EXPECT_GT(span({"--speed", "10"}), 0.05);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

TEST_F(RecordPlay, APlayOfADamagedFileSendsNothing) {
    const std::string bus = connections();
    std::atomic<int> events{0};
    const TestServer server(bus, "Rovan");
    server.subscribe<EventLog>("EventLog", [&](const EventLog&) { ++events; });
    const std::string made =
        recording({sampleOf("EventLog", "EventLog", 0), sampleOf("EventLog", "EventLog", 0)});
    std::filesystem::resize_file(made, std::filesystem::file_size(made) - 30);

    Program player({"play", made, "-c", bus});
    EXPECT_EQ(player.wait(), 2);
    EXPECT_THAT(player.errors(), HasSubstr("at byte "));
    EXPECT_THAT(player.errors(), HasSubstr("cut off within a record"));
    EXPECT_THAT(player.output(), IsEmpty());

    Program shown({"info", made, "--json"});
    EXPECT_EQ(shown.wait(), 2);
    EXPECT_THAT(shown.errors(), HasSubstr("cut off within a record"));
    EXPECT_THAT(shown.output(), HasSubstr("\"samples\":1"));
    EXPECT_EQ(events, 0);

    Program partial({"play", made, "-c", bus, "--partial"});
    EXPECT_EQ(partial.wait(), 0) << partial.errors();
    EXPECT_THAT(partial.errors(), HasSubstr("playing the 1 samples before that"));
    EXPECT_TRUE(waitUntil([&] { return events == 1; }, kSoon));
}

TEST_F(RecordPlay, WaitsForASubscriberAndGivesUp) {
    const std::string bus = connections();
    const std::string made = recording({sampleOf("EventLog", "EventLog", 0)});
    Program player({"play", made, "-c", bus, "--patience", "0.5"});
    EXPECT_EQ(player.wait(), 1);
    EXPECT_THAT(player.errors(), HasSubstr("nobody subscribes"));
}

TEST_F(RecordPlay, RecordsTheNamedTopicsUntilItIsStopped) {
    const std::string bus = connections();
    const TestServer server(bus, "Rovan");
    auto events = server.publisher<EventLog>("EventLog");
    auto positions = server.publisher<PositionVelocity>("PositionVelocity");
    Program recorder({"record", path(".r"), "PositionVelocity", "-c", bus});
    ASSERT_TRUE(positions.waitForSubscriber());
    PositionVelocity position;
    position.velocity()[1] = 12.5;
    events.publish(EventLog());
    positions.publish(position);
    // The file grows at least once a second.
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::file_size(path(".r")) > 100; }, kSoon));

    recorder.signal(SIGTERM);

    EXPECT_EQ(recorder.wait(), 0) << recorder.errors();
    const auto samples = samplesOf(path(".r"));
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].topic, "PositionVelocity");
    EXPECT_EQ(samples[0].publisher, "Rovan");
    EXPECT_EQ(samples[0].sequence, 1u);
    auto message = Bus::Codec(samples[0].typeName).messageOf(samples[0].bytes);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(static_cast<PositionVelocity*>(message->data())->velocity()[1], 12.5);
}

TEST_F(RecordPlay, ARecorderThatIsKilledLeavesWhatItHad) {
    const std::string bus = connections();
    const TestServer server(bus, "Rovan");
    auto events = server.publisher<EventLog>("EventLog");
    {
        Program recorder({"record", path(".k"), "-c", bus});
        ASSERT_TRUE(events.waitForSubscriber());
        events.publish(EventLog());
        ASSERT_TRUE(waitUntil([&] { return std::filesystem::file_size(path(".k")) > 100; }, kSoon));
    }
    Program shown({"info", path(".k")});
    EXPECT_EQ(shown.wait(), 2);
    EXPECT_THAT(shown.output(), HasSubstr("1 samples"));
    EXPECT_THAT(shown.errors(), HasSubstr("the end mark is missing"));
}

TEST_F(RecordPlay, ARecordingWithoutSamplesIsWholeAndSaysSo) {
    const std::string bus = connections();
    Program recorder({"record", path(".e"), "-c", bus, "-d", "0.3"});
    EXPECT_EQ(recorder.wait(), 1);
    EXPECT_THAT(samplesOf(path(".e")), IsEmpty());
    Program again({"record", path(".e"), "-c", bus, "-d", "0.3"});
    EXPECT_EQ(again.wait(), 2);
    EXPECT_THAT(again.errors(), HasSubstr("--force"));
    Program player({"play", path(".e"), "-c", bus});
    EXPECT_EQ(player.wait(), 1);
}

TEST_F(RecordPlay, EchoShowsARecordingWithoutABus) {
    const std::string made = recording(
        {sampleOf("EventLog", "EventLog", 0), sampleOf("ReceiverStatus", "ReceiverStatus", 10)});
    Program all({"echo", "--file", made, "--json"});
    EXPECT_EQ(all.wait(), 0) << all.errors();
    const Json line = Json::parse(all.line().value_or("null"));
    ASSERT_TRUE(line.is_object());
    EXPECT_EQ(line["topic"], "EventLog");
    EXPECT_EQ(line["type"], "aspn2_msgs::idl::EventLog");
    EXPECT_EQ(line["publisher"], "Rovan");
    EXPECT_EQ(line["sequence"], 1);
    EXPECT_EQ(line["received_ns"], 1'700'000'000'000'000'000);
    EXPECT_EQ(line["message"], Json::parse(golden::json("EventLog")));
    Program one({"echo", "--file", made, "ReceiverStatus"});
    EXPECT_EQ(one.wait(), 0) << one.errors();
    EXPECT_THAT(one.output(), HasSubstr("ReceiverStatus  #1 from Rovan at "
                                        "2023-11-14T22:13:20.010000Z\n"));
}

TEST_F(RecordPlay, ASpeedThatCannotBeIsRefused) {
    for (const char* speed : {"0", "-1", "fast", "nan", "1e9", ""}) {
        Program player({"play", "file", "--speed", speed});
        EXPECT_EQ(player.wait(), 2) << speed;
        EXPECT_THAT(player.errors(), HasSubstr("--speed")) << speed;
    }
}

}  // namespace
