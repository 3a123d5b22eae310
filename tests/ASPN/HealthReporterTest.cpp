// SPDX-License-Identifier: Apache-2.0
#include "ASPN/HealthReporter.h"

#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>

#include "ASPN/FaultHysteresis.h"
#include "aspn2_msgs/EventLog.h"
#include "platform/FPGA.h"
#include "tests/ASPN/ReporterHelpers.h"
#include "tests/face/TransportBus.h"
#include "tests/platform/FakeDevmem.h"

namespace {

using namespace std::chrono_literals;
using aspn2_msgs::idl::EventLog;
using reporter_test::CapturedStream;
using reporter_test::RC;
using reporter_test::RecordingTransport;
using testing::ElementsAre;
using testing::HasSubstr;
using transport_test::eventually;

constexpr unsigned char kSystemId = 2;
constexpr unsigned char kServerId = 39;
constexpr int32_t kDeviceId = 0x02270100;  // system 2, server 39, message code 1, sub id 0
constexpr long long kConnection = 7;

// 5 s of ticks and 4608 more, which are 78125 ns; less the fixed 8 ns: 5 s and 78117 ns.
constexpr uint64_t kFiveSeconds = 5u * 58'982'400u + 4608u;

// The memory service behind the FPGA's system count.
class FpgaClock : public FakeDevmem {
  public:
    enum Mode { kWorks, kThrowsException, kThrowsNumber };

    FpgaClock() { registers["TimeStamp_Interface+0"] = 58'982'400; }

    void Read(long long id, long long timeout, FACE::IOSS::Devmem::READ_PAYLOAD_TYPE& payload,
              Code& rc) override {
        constexpr uint32_t kSystemCount = 128;
        if (payload.offset != kSystemCount) {
            FakeDevmem::Read(id, timeout, payload, rc);
            return;
        }
        const Mode now = mode;
        if (now == kThrowsException) {
            throw std::runtime_error("no clock");
        }
        if (now == kThrowsNumber) {
            throw 42;
        }
        payload.data = ticks;
        rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    }

    std::atomic<uint64_t> ticks{0};
    std::atomic<Mode> mode{kWorks};
};

class HealthReporterTest : public testing::Test {
  protected:
    using Transport = RecordingTransport<EventLog>;

    void SetUp() override {
        FpgaFace::Instance().InitFpga(m_clock);
        // As at the start of a process: nothing is marked.
        ASSERT_TRUE(FaultHysteresis::Instance().OkInitFaultHysteresis(0, 0, 0));
    }
    void TearDown() override { m_reporter.DoneHealthReporter(); }

    void init(const std::string& name = "Rovan") {
        m_reporter.InitHealthReporter(name, m_ids, m_transport, kConnection);
    }
    std::string initError(const std::shared_ptr<Transport>& transport) {
        try {
            m_reporter.InitHealthReporter("Rovan", m_ids, transport, kConnection);
            return "";
        } catch (const std::runtime_error& e) {
            return e.what();
        }
    }
    void send(unsigned type, const std::string& text) {
        m_reporter.SendEvent("/a/b/Foo", 12, static_cast<HealthReporter::eEventType>(type), text);
    }
    /// Publishes what waits, so that the next test of this process begins with an empty queue: an
    /// event that waited would follow within a pause.
    void drain() {
        EXPECT_TRUE(eventually([this] {
            const auto times = m_transport->times();
            return !times.empty() && std::chrono::steady_clock::now() - times.back() > 300ms;
        }));
    }
    /// All that was published, as "<type>:<text>".
    std::vector<std::string> published() {
        std::vector<std::string> events;
        for (const EventLog& message : m_transport->messages()) {
            events.push_back(std::to_string(message.event_log_type()) + ':' + message.eventlog());
        }
        return events;
    }

    HealthReporter& m_reporter = HealthReporter::Instance();
    const ASPN2::DeviceIdFactory m_ids{kSystemId, kServerId};
    std::shared_ptr<FpgaClock> m_clock = std::make_shared<FpgaClock>();
    std::shared_ptr<Transport> m_transport = std::make_shared<Transport>();
};

TEST_F(HealthReporterTest, NumbersItsEventsFromZero) {  // stands first: the numbers never restart
    init();
    send(2, "a");
    send(2, "b");
    ASSERT_TRUE(m_transport->receives(2));
    EXPECT_EQ(0, m_transport->messages()[0].header().seq_num());
    EXPECT_EQ(1, m_transport->messages()[1].header().seq_num());
    EXPECT_THAT(m_transport->senders(), ElementsAre(kConnection));
    EXPECT_THAT(m_transport->connections(), ElementsAre(kConnection, kConnection));
}

TEST_F(HealthReporterTest, EventsBeforeInitWaitAndArePublishedUnmarkedThen) {
    send(3, "early");
    m_reporter.SendConfigEvent("configuration");
    init();
    send(3, "late");
    ASSERT_TRUE(m_transport->receives(3));
    EXPECT_THAT(published(), ElementsAre("3:early", "2:configuration", "3:Foo[12]:late"));
}

TEST_F(HealthReporterTest, StampsEachEventWithDeviceIdAndTheTimeOfItsPublishing) {
    m_clock->ticks = 1;
    send(2, "a");
    m_clock->ticks = kFiveSeconds;
    init();
    ASSERT_TRUE(m_transport->receives(1));
    const aspn2_msgs::idl::header header = m_transport->messages()[0].header();
    EXPECT_EQ(kDeviceId, header.device_id());
    for (const auto& stamp : {header.timestamp_valid(), header.timestamp_arrival()}) {
        EXPECT_EQ(5, stamp.sec());
        EXPECT_EQ(78117, stamp.nsec());
        EXPECT_EQ(100, stamp.time_code());
    }
}

TEST_F(HealthReporterTest, PublishesTypesAboveFiveAsZero) {
    init();
    for (const unsigned type : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 0xFFFFFFFFu}) {
        send(type, "x");
    }
    ASSERT_TRUE(m_transport->receives(9));
    EXPECT_THAT(published(), ElementsAre("0:x", "1:x", "2:x", "3:Foo[12]:x", "4:Foo[12]:x",
                                         "5:Foo[12]:x", "0:x", "0:x", "0:x"));
}

TEST_F(HealthReporterTest, TakesNullForANamelessFile) {
    init();
    m_reporter.SendEvent(nullptr, 12, EventTypes::eFailure, "x");
    ASSERT_TRUE(m_transport->receives(1));
    EXPECT_THAT(published(), ElementsAre("4:[12]:x"));
}

TEST_F(HealthReporterTest, ABurstPublishesTheFirstTenOrSoAndDropsTheRest) {
    init();
    const auto before = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) {
        send(2, std::to_string(i));
    }
    // One event may leave the queue at once, and one for each further pause of the publisher.
    const auto spare = 1 + (std::chrono::steady_clock::now() - before) / 100ms;
    ASSERT_TRUE(m_transport->receives(10));
    send(2, "after the burst");
    ASSERT_TRUE(eventually([this] { return published().back() == "2:after the burst"; }));

    const std::vector<std::string> events = published();
    const std::size_t ofBurst = events.size() - 1;
    EXPECT_GE(ofBurst, 10u);
    EXPECT_LE(ofBurst, 10u + static_cast<std::size_t>(spare));
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ("2:" + std::to_string(i), events[i]);
    }
}

TEST_F(HealthReporterTest, PausesATenthOfASecondAfterEachEvent) {
    for (int i = 0; i < 4; ++i) {
        send(2, "x");
    }
    init();
    ASSERT_TRUE(m_transport->receives(4));
    const auto times = m_transport->times();
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_GE(times[i] - times[i - 1], 100ms);
    }
}

TEST_F(HealthReporterTest, RefusesNoConfigurationEvent) {
    for (int i = 0; i < 12; ++i) {
        m_reporter.SendConfigEvent("configuration");
    }
    init();
    ASSERT_TRUE(m_transport->receives(12));
    EXPECT_THAT(published(), testing::Each("2:configuration"));
}

TEST_F(HealthReporterTest, ReplacesAConfigurationEventByItsHandle) {
    const uint32_t handle = m_reporter.SendConfigEvent("Rerad mode DISABLED");
    const uint32_t newHandle = m_reporter.ReplaceConfigEvent("Rerad mode ENABLED", handle);
    EXPECT_NE(handle, newHandle);
    send(2, "last");
    init();
    ASSERT_TRUE(m_transport->receives(2));
    EXPECT_THAT(published(), ElementsAre("2:Rerad mode ENABLED", "2:last"));
}

TEST_F(HealthReporterTest, RepeatsConfigurationEventsEveryFiveMinutes) {
    // The repeat itself is the queue's; no test waits for it here.
    EXPECT_EQ(300s, HealthReporter::configRepeatDuration);
    EXPECT_EQ(500ms, HealthReporter::eventQPollDuration);
}

TEST_F(HealthReporterTest, ReportingIsNeverHeldUpByThePublisher) {
    init();
    m_transport->hold(true);
    uint32_t handle = 0;
    for (int i = 0; i < 1000; ++i) {
        send(3, std::to_string(i));
        handle = m_reporter.ReplaceConfigEvent("configuration", handle);
    }
    EXPECT_TRUE(m_transport->messages().empty());
    m_transport->hold(false);
    EXPECT_TRUE(m_transport->receives(1));
    drain();
}

TEST_F(HealthReporterTest, InitWithoutATransportThrowsAndMayBeTriedAgain) {
    EXPECT_EQ("InitHealthReporter(Rovan) called with an empty eventLogTypedTS.",
              initError(nullptr));
    EXPECT_EQ("", initError(m_transport));
}

TEST_F(HealthReporterTest, ASecondInitThrowsAndLeavesTheFirstInPlace) {
    init();
    const auto second = std::make_shared<Transport>();
    EXPECT_EQ("InitHealthReporter(Rovan) called on an already initialized HealthReporter.",
              initError(second));
    send(2, "x");
    ASSERT_TRUE(m_transport->receives(1));
    EXPECT_TRUE(second->senders().empty());
    EXPECT_EQ(1, second.use_count());
}

TEST_F(HealthReporterTest, InitThatCannotRegisterThrowsAndStaysMarkedUntilDone) {
    const CapturedStream out(STDOUT_FILENO);
    m_transport->answerRegistrationsWith(RC::NOT_AVAILABLE);
    const std::string error = initError(m_transport);
    EXPECT_THAT(error, HasSubstr("HealthReporter.cpp["));
    EXPECT_THAT(error, testing::EndsWith("]:NOT_AVAILABLE InitHealthReporter(Rovan) unable to "
                                         "register sender."));
    EXPECT_EQ(error + "\n", out.text());
    EXPECT_EQ("InitHealthReporter(Rovan) called on an already initialized HealthReporter.",
              initError(m_transport));

    m_reporter.DoneHealthReporter();
    m_transport->answerRegistrationsWith(RC::NO_ERROR);
    EXPECT_EQ("", initError(m_transport));
}

TEST_F(HealthReporterTest, InitTakesASenderThatIsThereAlready) {
    m_transport->answerRegistrationsWith(RC::NO_ACTION);
    init();
    send(2, "x");
    EXPECT_TRUE(m_transport->receives(1));
}

TEST_F(HealthReporterTest, InitSetsUpTheFaultFilterAndEmptiesItsRecord) {
    FaultHysteresis& filter = FaultHysteresis::Instance();
    ASSERT_TRUE(filter.OkInitFaultHysteresis(180, 16, 5));
    send(3, "x");
    ASSERT_EQ(1u, filter.faults().size());
    init();
    EXPECT_TRUE(filter.faults().empty());
    for (int i = 0; i < 2001; ++i) {
        send(3, "x");
    }
    EXPECT_EQ(2000u, filter.faults().size());
    drain();
}

TEST_F(HealthReporterTest, TellsOfAnEventThatCouldNotBePublishedAndGoesOn) {
    const CapturedStream out(STDOUT_FILENO);
    m_transport->answerMessagesWith(RC::DATA_OVERFLOW);
    init();
    send(3, "lost");
    const std::string line =
        "!!!!!! Rovan HealthReporter could not publish event type/info = 3/Foo[12]:lost\n";
    EXPECT_TRUE(eventually([&] { return out.text() == line; })) << out.text();

    m_transport->answerMessagesWith(RC::NO_ERROR);
    send(2, "next");
    ASSERT_TRUE(m_transport->receives(2));
    EXPECT_THAT(published(), ElementsAre("3:Foo[12]:lost", "2:next")) << "it is not tried again";
    const auto messages = m_transport->messages();
    EXPECT_EQ(messages[0].header().seq_num() + 1, messages[1].header().seq_num());
    EXPECT_EQ(line, out.text());
}

TEST_F(HealthReporterTest, TellsOfExceptionsAndGoesOn) {
    const CapturedStream out(STDOUT_FILENO);
    m_clock->mode = FpgaClock::kThrowsException;
    init();
    send(2, "lost");
    std::string lines = "!!!!!! Rovan HealthReporter caught exception: no clock\n";
    EXPECT_TRUE(eventually([&] { return out.text() == lines; })) << out.text();

    m_clock->mode = FpgaClock::kThrowsNumber;
    send(2, "lost");
    lines += "!!!!!! Rovan HealthReporter caught UNKNOWN exception\n";
    EXPECT_TRUE(eventually([&] { return out.text() == lines; })) << out.text();

    m_clock->mode = FpgaClock::kWorks;
    send(2, "published");
    ASSERT_TRUE(m_transport->receives(1));
    EXPECT_THAT(published(), ElementsAre("2:published"));
}

TEST_F(HealthReporterTest, DoneEndsWithinItsTimeAndWhatWaitsStaysUnpublishedUntilTheNextInit) {
    init();
    for (int i = 0; i < 10; ++i) {
        send(2, std::to_string(i));
    }
    ASSERT_TRUE(m_transport->receives(1));
    const auto before = std::chrono::steady_clock::now();
    m_reporter.DoneHealthReporter();
    // A pause and, had the queue been empty, a poll. The margin is for a busy machine.
    EXPECT_LT(std::chrono::steady_clock::now() - before, 600ms + 5s);
    const std::size_t atDone = m_transport->messages().size();
    EXPECT_LT(atDone, 10u);

    init();
    ASSERT_TRUE(m_transport->receives(10));
    EXPECT_EQ("2:" + std::to_string(atDone), published()[atDone]);
}

TEST_F(HealthReporterTest, AnIdleReporterGetsTheLastEventOutBeforeDone) {
    // The one moment at which it would not is between two polls.
    bool published = false;
    for (int attempt = 0; attempt < 3 && !published; ++attempt) {
        const std::size_t count = m_transport->messages().size();
        init();
        send(2, "started");
        ASSERT_TRUE(m_transport->receives(count + 1));
        std::this_thread::sleep_for(200ms);  // idle again
        send(2, "stopped");
        m_reporter.DoneHealthReporter();
        published = m_transport->messages().size() == count + 2;
    }
    EXPECT_TRUE(published);
}

TEST_F(HealthReporterTest, DoneLetsGoOfTheTransport) {
    init();
    EXPECT_GT(m_transport.use_count(), 1);
    m_reporter.DoneHealthReporter();
    EXPECT_EQ(1, m_transport.use_count());
}

TEST_F(HealthReporterTest, DoneWithoutInitDoesNothing) {
    m_reporter.DoneHealthReporter();
    m_reporter.DoneHealthReporter();
    init();
    EXPECT_THAT(m_transport->senders(), ElementsAre(kConnection));
}

TEST_F(HealthReporterTest, ThreadsMayReportWhileItIsInitialisedAndDone) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> reporters;
    for (int r = 0; r < 3; ++r) {
        reporters.emplace_back([&] {
            uint32_t handle = 0;
            while (!stop) {
                send(3, "x");
                handle = m_reporter.ReplaceConfigEvent("configuration", handle);
                std::this_thread::sleep_for(1ms);
            }
        });
    }
    for (int i = 0; i < 3; ++i) {
        init();
        ASSERT_TRUE(m_transport->receives(m_transport->messages().size() + 1));
        m_reporter.DoneHealthReporter();
    }
    stop = true;
    for (std::thread& reporter : reporters) {
        reporter.join();
    }
    init();
    drain();
}

// On a real bus: the server's participant publishes, another one, as the rest of the unit would be,
// subscribes. The subscriber asks for the history, so nothing is lost before the two have met.
class HealthReporterBusTest : public HealthReporterTest {
  protected:
    using KD_TypedTS = FACE::TSS::Details::KD_TypedTS<EventLog>;

    void joinBus(int domain) {
        m_file = std::make_unique<transport_test::ConnectionsFile>(
            std::map<std::string, transport_test::Parameters>{
                {"FastRtps", transport_test::busSettings(domain, {{"BackFillHistory", "TRUE"}})},
                {"EventLog", transport_test::carries("EventLog")}});
        m_server = transport_test::join(*m_file, "Rovan");
        m_serverConnection = transport_test::connect(*m_server, "EventLog");
        auto rc = RC::NO_ACTION;
        m_typedTs->Set_Reference("TSS", m_server, 0, rc);
        ASSERT_EQ(RC::NO_ERROR, rc);

        m_unit = transport_test::join(*m_file, "Unit");
        transport_test::Face<EventLog> face(m_unit);
        ASSERT_EQ(
            RC::NO_ERROR,
            face.registerCallback(
                transport_test::connect(*m_unit, "EventLog"),
                [this](long long, long long, const EventLog& message,
                       const FACE::TSS::HEADER_TYPE& header,
                       const FACE::Sequence<FACE::TSS::QoS_Element>&, RC::Value&) {
                    const std::lock_guard<std::mutex> lock(m_mutex);
                    m_received.push_back({message, std::chrono::nanoseconds(header.timestamp)});
                }));
    }
    void TearDown() override {
        HealthReporterTest::TearDown();
        m_unit.reset();  // no callback after this
    }
    void initOnBus() {
        m_reporter.InitHealthReporter("Rovan", m_ids, m_typedTs, m_serverConnection);
    }

    struct Received {
        EventLog message;
        std::chrono::nanoseconds sent;  // the publisher's time stamp of the sample
    };
    std::vector<Received> received() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_received;
    }
    bool receives(std::size_t count) {
        return eventually([&] { return received().size() >= count; });
    }

    std::unique_ptr<transport_test::ConnectionsFile> m_file;
    std::shared_ptr<FACE::TSS::KD_TSS> m_server;
    std::shared_ptr<FACE::TSS::KD_TSS> m_unit;
    std::shared_ptr<KD_TypedTS> m_typedTs = std::make_shared<KD_TypedTS>();
    long long m_serverConnection = -1;
    std::mutex m_mutex;
    std::vector<Received> m_received;
};

TEST_F(HealthReporterBusTest, EventsReachTheOthersOnTheBusWhole) {
    joinBus(210);
    send(4, "early");
    m_clock->ticks = kFiveSeconds;
    initOnBus();
    send(4, "failure");
    send(7, "of no known type");
    m_reporter.SendConfigEvent(std::string(2000, 'c'));
    ASSERT_TRUE(receives(4));

    const std::vector<Received> events = received();
    const int64_t first = events[0].message.header().seq_num();
    const std::vector<std::pair<uint32_t, std::string>> expected{
        {4, "early"}, {4, "Foo[12]:failure"}, {0, "of no known type"}, {2, std::string(2000, 'c')}};
    for (std::size_t i = 0; i < 4; ++i) {
        const EventLog& event = events[i].message;
        EXPECT_EQ(expected[i].first, event.event_log_type());
        EXPECT_EQ(expected[i].second, event.eventlog());
        EXPECT_EQ(first + static_cast<int64_t>(i), event.header().seq_num());
        EXPECT_EQ(kDeviceId, event.header().device_id());
        EXPECT_EQ(5, event.header().timestamp_valid().sec());
        EXPECT_EQ(78117, event.header().timestamp_valid().nsec());
        EXPECT_EQ(100, event.header().timestamp_valid().time_code());
        EXPECT_EQ(5, event.header().timestamp_arrival().sec());
        EXPECT_EQ(78117, event.header().timestamp_arrival().nsec());
        EXPECT_EQ(100, event.header().timestamp_arrival().time_code());
    }
}

TEST_F(HealthReporterBusTest, ABurstIsPublishedAtTenEventsASecondUntilTheQueueIsEmpty) {
    joinBus(211);
    for (int i = 0; i < 20; ++i) {
        send(2, std::to_string(i));
    }
    initOnBus();
    ASSERT_TRUE(receives(10));
    send(2, "after the burst");
    ASSERT_TRUE(receives(11));
    const std::vector<Received> events = received();
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(std::to_string(i), events[i].message.eventlog());
        // The sample's stamp is a whole fraction of a second, cut, and from a clock that may be
        // corrected.
        EXPECT_GE(events[i + 1].sent - events[i].sent, 99ms);
    }
    EXPECT_EQ("after the burst", events[10].message.eventlog());
}

TEST_F(HealthReporterBusTest, AnEventWithoutAPublisherIsALineOnTheConsole) {
    joinBus(212);
    initOnBus();
    auto rc = RC::NO_ACTION;
    m_server->Unregister_Sender(m_serverConnection, rc);
    ASSERT_EQ(RC::NO_ERROR, rc);
    const CapturedStream out(STDOUT_FILENO);
    send(3, "lost");
    EXPECT_TRUE(eventually([&] {
        return out.text() ==
               "!!!!!! Rovan HealthReporter could not publish event type/info = 3/Foo[12]:lost\n";
    })) << out.text();
}

TEST_F(HealthReporterBusTest, AnUnknownConnectionIsRefused) {
    joinBus(213);
    const CapturedStream out(STDOUT_FILENO);
    try {
        m_reporter.InitHealthReporter("Rovan", m_ids, m_typedTs, m_serverConnection + 1);
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& e) {
        EXPECT_THAT(e.what(), testing::EndsWith("]:INVALID_PARAM InitHealthReporter(Rovan) unable "
                                                "to register sender."));
    }
}

TEST_F(HealthReporterBusTest, TheParticipantEndsWithItsOwnersOnceTheReporterIsDone) {
    joinBus(214);
    initOnBus();
    send(2, "x");
    ASSERT_TRUE(receives(1));
    const std::weak_ptr<FACE::TSS::KD_TSS> server = m_server;
    m_typedTs.reset();
    m_server.reset();
    EXPECT_FALSE(server.expired()) << "the reporter publishes on it";
    m_reporter.DoneHealthReporter();
    EXPECT_TRUE(server.expired());
}

}  // namespace
