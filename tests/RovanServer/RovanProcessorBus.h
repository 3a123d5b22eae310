// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/rtps/common/SerializedPayload.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ASPN/DeviceIdFactory.h"
#include "ASPN/HealthReporter.h"
#include "PCSMaintReporter/PCSMaintReporter.h"
#include "RovanServer/RovanProcessor.h"
#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "tests/RovanServer/RovanProcessorGolden.h"
#include "tests/face/TransportBus.h"

// What the tests of the processor have in common.
namespace processor_test {

using aspn2_msgs::idl::ChannelStatus;
using aspn2_msgs::idl::EventLog;
using aspn2_msgs::idl::GSSIP;
using aspn2_msgs::idl::MaintenanceEvent;
using aspn2_msgs::idl::PositionVelocity;
using aspn2_msgs::idl::ReceiverStatus;
using RC = FACE::RETURN_CODE_TYPE;
using Bytes = std::vector<uint8_t>;

/// In the order in which the processor connects.
inline const std::vector<std::string>& topics() {
    static const std::vector<std::string> names{
        "UtcDownlink",           "PositionVelocity", "ReceiverStatus",
        "ChannelStatus",         "GPSTime",          "UTCTime",
        "ChallengedEnvironment", "GPSCryptoStatus",  "GPSLineOfSight",
        "MaintenanceEvent",      "SVStatus"};
    return names;
}

/// A sample as the link makes it, with the golden time stamps.
inline GSSIP sampleOf(const Bytes& frame) {
    using namespace RovanProcessorGolden;
    GSSIP sample;
    sample.header().seq_num(99);
    sample.header().device_id(77);
    sample.header().timestamp_arrival().sec(kArrival.sec);
    sample.header().timestamp_arrival().nsec(kArrival.nsec);
    sample.header().timestamp_arrival().time_code(kArrival.timeCode);
    sample.header().timestamp_valid().sec(kValid.sec);
    sample.header().timestamp_valid().nsec(kValid.nsec);
    sample.header().timestamp_valid().time_code(kValid.timeCode);
    sample.num_bytes(static_cast<int32_t>(frame.size()));
    sample.data(frame);
    return sample;
}

// A receiver frame built by hand; all data words are zero at first. No checksums: nobody behind the
// link looks at them.
class Frame {
  public:
    Frame(uint16_t msgId, unsigned wdcnt) : m_bytes(2 * (wdcnt + 6)) {
        const uint16_t header[] = {0x81FF, msgId, static_cast<uint16_t>(wdcnt), 0x8000};
        std::memcpy(m_bytes.data(), header, sizeof header);
    }
    Frame& word(unsigned i, unsigned value) {
        m_bytes[2 * (5 + i)] = static_cast<uint8_t>(value);
        m_bytes[2 * (5 + i) + 1] = static_cast<uint8_t>(value >> 8);
        return *this;
    }
    /// A number as it lies in memory, from data word `firstWord` on.
    template <typename T>
    Frame& number(unsigned firstWord, T value) {
        std::memcpy(m_bytes.data() + 2 * (5 + firstWord), &value, sizeof value);
        return *this;
    }
    Frame& text(unsigned firstWord, const std::string& text) {
        std::memcpy(m_bytes.data() + 2 * (5 + firstWord), text.data(), text.size());
        return *this;
    }
    /// Byte `byte` of channel record `channel` of an 8504.
    Frame& recordByte(unsigned channel, unsigned byte, unsigned value) {
        m_bytes[10 + 144 + 8 * channel + byte] = static_cast<uint8_t>(value);
        return *this;
    }
    GSSIP sample() const { return sampleOf(m_bytes); }

  private:
    Bytes m_bytes;
};

/// The containers of a bus with the connections of the processor and the event log, but `missing`.
inline std::map<std::string, transport_test::Parameters> containers(
    int domain, const std::vector<std::string>& missing = {}) {
    std::map<std::string, transport_test::Parameters> all{
        {"FastRtps", transport_test::busSettings(domain, {{"BackFillHistory", "TRUE"}})},
        {"EventLog", transport_test::carries("EventLog")}};
    for (const std::string& topic : topics()) {
        if (std::find(missing.begin(), missing.end(), topic) == missing.end()) {
            all[topic] = transport_test::carries(topic);
        }
    }
    return all;
}

// A processor "Rovan" of the system "TessalyPlus" on a bus of its own, both reporters on the same
// bus, and subscribers to what 8504 gives and to what is reported.
class ProcessorOnBus {
  public:
    explicit ProcessorOnBus(int domain,
                            RovanProcessor::Clock clock = &std::chrono::steady_clock::now)
        : m_file(containers(domain)),
          tss(transport_test::join(m_file, "Rovan")),
          processor("Rovan", tss, ids, false, std::move(clock)) {
        listen(m_pvFace, "PositionVelocity", positions);
        listen(m_statusFace, "ReceiverStatus", statuses);
        listen(m_channelsFace, "ChannelStatus", channels);
        listen(m_maintenanceListener, "MaintenanceEvent", maintenance);
        listen(m_eventListener, "EventLog", m_events);
        processor.Framework_Connect();
        const auto eventFace = std::make_shared<FACE::TSS::Details::KD_TypedTS<EventLog>>();
        const auto maintenanceFace =
            std::make_shared<FACE::TSS::Details::KD_TypedTS<MaintenanceEvent>>();
        auto rc = RC::NO_ERROR;
        eventFace->Set_Reference("", tss, 0, rc);
        maintenanceFace->Set_Reference("", tss, 0, rc);
        HealthReporter::Instance().InitHealthReporter("Rovan", ids, eventFace, id("EventLog"));
        PCSMaintReporter::Instance().InitMaintReporter("Rovan", ids, maintenanceFace,
                                                       id("MaintenanceEvent"));
        newEvents();  // what an earlier test in this process left behind
    }
    ProcessorOnBus(const ProcessorOnBus&) = delete;
    ProcessorOnBus& operator=(const ProcessorOnBus&) = delete;
    ~ProcessorOnBus() {
        newEvents();
        HealthReporter::Instance().DoneHealthReporter();
        PCSMaintReporter::Instance().DoneMaintReporter();
    }

    long long id(const std::string& topic) { return transport_test::connect(*tss, topic.c_str()); }

    /// The events reported since the last call: all of them, since a last one of our own, which the
    /// reporter never refuses, has come out behind them.
    std::vector<EventLog> newEvents() {
        const std::string mark = "mark " + std::to_string(m_marks++) + " of " + m_file.path();
        HealthReporter::Instance().SendConfigEvent(mark);
        EXPECT_TRUE(transport_test::eventually([&] {
            const auto events = m_events.messages();
            return !events.empty() && events.back().eventlog() == mark;
        }));
        std::vector<EventLog> events = m_events.messages();
        events.pop_back();
        events.erase(events.begin(), events.begin() + static_cast<std::ptrdiff_t>(m_seen));
        m_seen += events.size() + 1;
        return events;
    }

  private:
    template <typename T>
    void listen(std::unique_ptr<transport_test::Face<T>>& face, const std::string& topic,
                transport_test::Inbox<T>& inbox) {
        face = std::make_unique<transport_test::Face<T>>(tss);
        EXPECT_EQ(face->registerCallback(id(topic), inbox.callback()), RC::NO_ERROR);
    }

    transport_test::ConnectionsFile m_file;
    transport_test::Inbox<EventLog> m_events;

  public:
    // Before the transport, whose callbacks end with it.
    transport_test::Inbox<PositionVelocity> positions;
    transport_test::Inbox<ReceiverStatus> statuses;
    transport_test::Inbox<ChannelStatus> channels;
    transport_test::Inbox<MaintenanceEvent> maintenance;
    const std::shared_ptr<FACE::TSS::KD_TSS> tss;
    const ASPN2::DeviceIdFactory ids{"TessalyPlus", 39};
    RovanProcessor processor;

  private:
    std::unique_ptr<transport_test::Face<PositionVelocity>> m_pvFace;
    std::unique_ptr<transport_test::Face<ReceiverStatus>> m_statusFace;
    std::unique_ptr<transport_test::Face<ChannelStatus>> m_channelsFace;
    std::unique_ptr<transport_test::Face<MaintenanceEvent>> m_maintenanceListener;
    std::unique_ptr<transport_test::Face<EventLog>> m_eventListener;
    size_t m_seen = 0;
    int m_marks = 0;
};

/// Collects what comes on `topic` in `inbox`, which must outlive the bus.
template <typename T>
std::unique_ptr<transport_test::Face<T>> listen(ProcessorOnBus& bus, const std::string& topic,
                                                transport_test::Inbox<T>& inbox) {
    auto face = std::make_unique<transport_test::Face<T>>(bus.tss);
    EXPECT_EQ(face->registerCallback(bus.id(topic), inbox.callback()), RC::NO_ERROR);
    return face;
}

/// The sample as it lies on the bus, encapsulation included.
template <typename TYPE_SUPPORT, typename MESSAGE>
Bytes cdrOf(MESSAGE message) {
    TYPE_SUPPORT type;
    eprosima::fastrtps::rtps::SerializedPayload_t payload(8192);
    EXPECT_TRUE(type.serialize(&message, &payload));
    return {payload.data, payload.data + payload.length};
}

inline void expectGoldenStamps(const aspn2_msgs::idl::header& header) {
    namespace golden = RovanProcessorGolden;
    EXPECT_EQ(header.timestamp_arrival().sec(), golden::kArrival.sec);
    EXPECT_EQ(header.timestamp_arrival().nsec(), golden::kArrival.nsec);
    EXPECT_EQ(header.timestamp_arrival().time_code(), golden::kArrival.timeCode);
    EXPECT_EQ(header.timestamp_valid().sec(), golden::kValid.sec);
    EXPECT_EQ(header.timestamp_valid().nsec(), golden::kValid.nsec);
    EXPECT_EQ(header.timestamp_valid().time_code(), golden::kValid.timeCode);
}

/// "type text" of each event.
inline std::vector<std::string> linesOf(const std::vector<EventLog>& events) {
    std::vector<std::string> lines;
    for (const EventLog& event : events) {
        lines.push_back(std::to_string(event.event_log_type()) + " " + event.eventlog());
    }
    return lines;
}

/// Matches the line of a publish error of a golden sample; `words` as in "process8504() GPSTime".
inline testing::Matcher<std::string> publishError(const std::string& words, int seqNum) {
    std::string quoted;
    for (const char c : words) {
        quoted += c == '(' || c == ')' ? std::string("\\") + c : std::string(1, c);
    }
    return testing::MatchesRegex(
        "3 PublicationBase.cpp\\[[0-9]+\\]:Rovan: " + quoted +
        " PUBLISH ERROR, TOV = 7654321, SeqNum = " + std::to_string(seqNum));
}

}  // namespace processor_test
