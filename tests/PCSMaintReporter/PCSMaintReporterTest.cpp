// SPDX-License-Identifier: Apache-2.0
#include "PCSMaintReporter/PCSMaintReporter.h"

#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <thread>

#include "ASPN/FaultHysteresis.h"
#include "ASPN/TimeCodeHelper.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "tests/ASPN/ReporterHelpers.h"
#include "tests/face/TransportBus.h"

namespace {

using namespace std::chrono_literals;
using namespace ASPN2::Maintenance;
using aspn2_msgs::idl::MaintenanceEvent;
using reporter_test::CapturedStream;
using reporter_test::RC;
using reporter_test::RecordingTransport;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int32_t kDeviceId = 0x02273B00;  // system 2, server 39, message code 59, sub id 0
constexpr long long kConnection = 7;

int64_t timeOf(const aspn2_msgs::idl::timestamp& stamp) {
    return stamp.sec() * 1'000'000'000 + stamp.nsec();
}

std::string descriptionOf(const MaintenanceEvent& event) {
    return event.description().data();
}

class PCSMaintReporterTest : public testing::Test {
  protected:
    using Transport = RecordingTransport<MaintenanceEvent>;

    void TearDown() override { m_reporter.DoneMaintReporter(); }

    void init() { m_reporter.InitMaintReporter("Rovan", m_ids, m_transport, kConnection); }
    std::string initError(const std::shared_ptr<Transport>& transport) {
        try {
            m_reporter.InitMaintReporter("Rovan", m_ids, transport, kConnection);
            return "";
        } catch (const std::runtime_error& e) {
            return e.what();
        }
    }

    void send(const std::string& description, const std::string& identity = "RCVR_FAILURE") {
        m_reporter.sendMaintenanceEvent(
            description, identity, static_cast<Criticality::eCrit>(4),
            static_cast<Outcome::eOutcome>(3), 200, static_cast<Category::eCat>(7), LRU::eLru1,
            Component::eCmpo4, LRU::eLru2, Component::eCmpo0, LRU::eLru3, Component::eCmpo16,
            LRU::eLru0, Component::eCmpo17, 60);
    }
    void sendLong(const std::string& description, const char* prefix) {
        m_reporter.sendLongDescriptionMultiMaintenanceEvent(
            description, "identity", Criticality::eCrit2, Outcome::eOutcome1, 39, Category::eCat12,
            LRU::eLru1, Component::eCmpo4, LRU::eLru0, Component::eCmpo0, LRU::eLru0,
            Component::eCmpo0, LRU::eLru0, Component::eCmpo0, 5, prefix);
    }
    std::vector<MaintenanceEvent> build(const std::string& description, const char* prefix,
                                        std::vector<MaintenanceEvent> events = {}) {
        m_reporter.buildMultiMaintenanceEventVectorFromLongDescription(
            description, "identity", Criticality::eCrit2, Outcome::eOutcome1, 39, Category::eCat12,
            LRU::eLru1, Component::eCmpo4, LRU::eLru0, Component::eCmpo0, LRU::eLru0,
            Component::eCmpo0, LRU::eLru0, Component::eCmpo0, 5, prefix, events);
        return events;
    }
    std::vector<std::string> pieces(const std::string& description, const char* prefix) {
        std::vector<std::string> texts;
        for (const MaintenanceEvent& event : build(description, prefix)) {
            texts.push_back(descriptionOf(event));
        }
        return texts;
    }

    PCSMaintReporter& m_reporter = PCSMaintReporter::Instance();
    const ASPN2::DeviceIdFactory m_ids{2, 39};
    std::shared_ptr<Transport> m_transport = std::make_shared<Transport>();
};

// Stands first: there is no way back to a time that was never set.
TEST_F(PCSMaintReporterTest, ItsTimeIsTheMonotonicClockUntilItIsSet) {
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    const auto time = m_reporter.GetTime();
    EXPECT_LE(before, time);
    EXPECT_GE(std::chrono::steady_clock::now().time_since_epoch(), time);
}

TEST_F(PCSMaintReporterTest, FillsInEveryFieldOfTheRecord) {
    init();
    send("RCVR Fail Detected During BIT or Self Test");
    ASSERT_EQ(1u, m_transport->messages().size()) << "published on the caller's thread";
    EXPECT_THAT(m_transport->connections(), ElementsAre(kConnection));

    const MaintenanceEvent event = m_transport->messages()[0];
    EXPECT_EQ("RCVR Fail Detected During BIT or Self Test", descriptionOf(event));
    EXPECT_STREQ("RCVR_FAILURE", event.identity().data());
    EXPECT_EQ(4, event.criticality_id());
    EXPECT_EQ(3, event.outcome_id());
    EXPECT_EQ(200, event.location_id());
    EXPECT_EQ(7, event.category_id());
    EXPECT_EQ(60, event.repeat_in_seconds());
    const int32_t expected[4][2] = {{1, 4}, {2, 0}, {3, 16}, {0, 17}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(expected[i][0], event.fault_sources()[i].lru_id());
        EXPECT_EQ(expected[i][1], event.fault_sources()[i].component_id());
    }
    EXPECT_EQ(kDeviceId, event.header().device_id());
}

TEST_F(PCSMaintReporterTest, CutsADescriptionTo55CharactersAndAnIdentityTo15) {
    init();
    const std::string longest(55, 'd');
    send(longest, "123456789012345");
    send(longest + "x", "123456789012345x");
    send(std::string(5000, 'd'), std::string(5000, 'i'));
    send("", "");
    const auto events = m_transport->messages();
    ASSERT_EQ(4u, events.size());
    EXPECT_EQ(longest, descriptionOf(events[0]));
    EXPECT_STREQ("123456789012345", events[0].identity().data());
    EXPECT_EQ(longest, descriptionOf(events[1]));
    EXPECT_STREQ("123456789012345", events[1].identity().data());
    EXPECT_EQ(longest, descriptionOf(events[2]));
    EXPECT_STREQ("iiiiiiiiiiiiiii", events[2].identity().data());
    EXPECT_EQ("", descriptionOf(events[3]));
    EXPECT_STREQ("", events[3].identity().data());
}

TEST_F(PCSMaintReporterTest, ASingleRecordIsZeroBehindItsTexts) {
    init();
    send(std::string(55, 'd'), std::string(15, 'i'));
    send("ab", "c");
    const MaintenanceEvent event = m_transport->messages()[1];
    std::array<char, 56> description{"ab"};
    std::array<char, 16> identity{"c"};
    EXPECT_EQ(description, event.description());
    EXPECT_EQ(identity, event.identity());
}

TEST_F(PCSMaintReporterTest, NumbersItsRecordsFromZeroAfterEachInit) {
    for (int run = 0; run < 2; ++run) {
        m_transport = std::make_shared<Transport>();
        init();
        send("a");
        send("b");
        EXPECT_EQ(0, m_transport->messages()[0].header().seq_num());
        EXPECT_EQ(1, m_transport->messages()[1].header().seq_num());
        m_reporter.DoneMaintReporter();
    }
}

TEST_F(PCSMaintReporterTest, StampsARecordWithItsOwnTimeTwice) {
    init();
    m_reporter.SetAspnTimeOffset(100, 5);
    ASPN2::TimeCodeHelper::Instance().setSimMode();
    const auto before = m_reporter.GetTime().count();
    send("a");
    const auto after = m_reporter.GetTime().count();
    ASPN2::TimeCodeHelper::Instance().setLiveMode();

    const auto header = m_transport->messages()[0].header();
    EXPECT_LE(before, timeOf(header.timestamp_valid()));
    EXPECT_GE(after, timeOf(header.timestamp_valid()));
    EXPECT_EQ(100, header.timestamp_valid().sec());
    EXPECT_EQ(timeOf(header.timestamp_valid()), timeOf(header.timestamp_arrival()));
    EXPECT_EQ(101, header.timestamp_valid().time_code());
    EXPECT_EQ(101, header.timestamp_arrival().time_code());
}

TEST_F(PCSMaintReporterTest, ItsTimeGoesOnFromWhatItIsSetTo) {
    m_reporter.SetAspnTimeOffset(100, 5);
    const auto time = m_reporter.GetTime();
    EXPECT_GE(time, 100'000'000'005ns);
    EXPECT_LT(time, 110s);

    m_reporter.SetTimeOffset(-7s);
    EXPECT_GE(m_reporter.GetTime(), -7s);
    EXPECT_LT(m_reporter.GetTime(), 3s);
    const auto earlier = m_reporter.GetTime();
    EXPECT_LE(earlier, m_reporter.GetTime());
}

TEST_F(PCSMaintReporterTest, TimesOutOfRangeWrapAndDoNoHarm) {
    constexpr long long kMax = std::numeric_limits<long long>::max();
    constexpr long long kMin = std::numeric_limits<long long>::min();
    init();
    for (const long long value : {kMax, kMin}) {
        m_reporter.SetAspnTimeOffset(value, value);
        send("a");
        m_reporter.SetTimeOffset(std::chrono::nanoseconds(value));
        send("a");
    }
    EXPECT_EQ(4u, m_transport->messages().size());
}

TEST_F(PCSMaintReporterTest, CutsALongDescriptionIntoNumberedPieces) {
    const std::string description = std::string(49, 'a') + std::string(49, 'b') + "cc";
    const std::vector<std::string> expected{"Evt_1:" + std::string(49, 'a'),
                                            "Evt_2:" + std::string(49, 'b'), "Evt_3:cc"};
    EXPECT_EQ(expected, pieces(description, "Evt"));
    EXPECT_EQ(expected, pieces(description, nullptr)) << "the default prefix";
}

TEST_F(PCSMaintReporterTest, ADescriptionThatFitsOnePieceHasNoNumber) {
    EXPECT_THAT(pieces("a", "Evt"), ElementsAre("Evt:a"));
    EXPECT_THAT(pieces(std::string(49, 'a'), "Evt"), ElementsAre("Evt:" + std::string(49, 'a')));
    EXPECT_THAT(pieces(std::string(49, 'a') + "b", "Evt"),
                ElementsAre("Evt_1:" + std::string(49, 'a'), "Evt_2:b"));
}

TEST_F(PCSMaintReporterTest, AnEmptyDescriptionGivesNoRecord) {
    EXPECT_TRUE(pieces("", "Evt").empty());
}

TEST_F(PCSMaintReporterTest, KeepsNinePiecesAndLosesTheRest) {
    const std::vector<std::string> texts = pieces(std::string(500, 'a'), "Evt");
    ASSERT_EQ(9u, texts.size());
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ("Evt_" + std::to_string(i + 1) + ":" + std::string(49, 'a'), texts[i]);
    }
    EXPECT_EQ(9u, pieces(std::string(441, 'a'), "Evt").size());  // 9 times 49
    EXPECT_EQ(9u, pieces(std::string(442, 'a'), "Evt").size());
    EXPECT_EQ(8u, pieces(std::string(392, 'a'), "Evt").size());  // 8 times 49
}

TEST_F(PCSMaintReporterTest, APieceHasTheRoomThatThePrefixLeaves) {
    EXPECT_THAT(pieces(std::string(53, 'a'), ""),
                ElementsAre("_1:" + std::string(52, 'a'), "_2:a"));
    const std::string prefix(51, 'p');
    EXPECT_THAT(pieces("ab", prefix.c_str()), ElementsAre(prefix + "_1:a", prefix + "_2:b"));
}

TEST_F(PCSMaintReporterTest, APrefixThatLeavesNoRoomIsCutWithTheRecord) {
    for (const std::size_t length : {52u, 53u, 55u, 60u, 1000u}) {
        const std::string prefix(length, 'p');
        const std::vector<std::string> texts = pieces("ab", prefix.c_str());
        ASSERT_EQ(2u, texts.size());
        EXPECT_EQ((prefix + "_1:a").substr(0, 55), texts[0]);
        EXPECT_EQ((prefix + "_2:b").substr(0, 55), texts[1]);
    }
}

TEST_F(PCSMaintReporterTest, TheRecordsOfALongDescriptionShareAllElse) {
    for (const MaintenanceEvent& event : build(std::string(100, 'a'), "Evt")) {
        EXPECT_STREQ("identity", event.identity().data());
        EXPECT_EQ(2, event.criticality_id());
        EXPECT_EQ(1, event.outcome_id());
        EXPECT_EQ(39, event.location_id());
        EXPECT_EQ(12, event.category_id());
        EXPECT_EQ(5, event.repeat_in_seconds());
        EXPECT_EQ(1, event.fault_sources()[0].lru_id());
        EXPECT_EQ(4, event.fault_sources()[0].component_id());
        EXPECT_EQ(0, event.fault_sources()[3].component_id());
    }
}

TEST_F(PCSMaintReporterTest, BehindAShortPieceStandsWhatTheOneBeforeLeft) {
    const auto events = build(std::string(49, 'a') + "b", "Evt");
    ASSERT_EQ(2u, events.size());
    std::array<char, 56> expected{};
    // "Evt_1:aaa...", with the first 8 bytes overwritten by "Evt_2:b" and its terminator.
    const std::string first = "Evt_1:" + std::string(49, 'a');
    std::copy(first.begin(), first.end(), expected.begin());
    const std::string second("Evt_2:b\0", 8);
    std::copy(second.begin(), second.end(), expected.begin());
    EXPECT_EQ(expected, events[1].description());
}

TEST_F(PCSMaintReporterTest, AppendsTheRecordsToTheVector) {
    const auto events = build("b", "Evt", build("a", "Evt"));
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ("Evt:a", descriptionOf(events[0]));
    EXPECT_EQ("Evt:b", descriptionOf(events[1]));
}

TEST_F(PCSMaintReporterTest, TellsOfEachRecordOfALongDescriptionAndPublishesThemInOrder) {
    init();
    const CapturedStream out(STDOUT_FILENO);
    sendLong(std::string(49, 'a') + "b", nullptr);
    EXPECT_THAT(
        out.text(),
        testing::MatchesRegex(
            "PCSMaintReporter \\([0-9]+\\) sendLongDescriptionMultiMaintenanceEvent: Sending "
            "maintenance event: Evt_1:" +
            std::string(49, 'a') +
            "\n"
            "PCSMaintReporter \\([0-9]+\\) sendLongDescriptionMultiMaintenanceEvent: Sending "
            "maintenance event: Evt_2:b\n"));
    const auto events = m_transport->messages();
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ("Evt_1:" + std::string(49, 'a'), descriptionOf(events[0]));
    EXPECT_EQ("Evt_2:b", descriptionOf(events[1]));
    EXPECT_EQ(0, events[0].header().seq_num());
    EXPECT_EQ(1, events[1].header().seq_num());
    EXPECT_EQ(kDeviceId, events[1].header().device_id());
}

constexpr const char* kNotInitialised =
    "PCSMaintReporter \\([0-9]+\\) publishMaintenanceEvent: PCSMaintReporter not initialized! "
    "Cannat send MaintenanceEvent.\n";

TEST_F(PCSMaintReporterTest, SendsNothingBeforeInitOrAfterDone) {
    {
        const CapturedStream out(STDOUT_FILENO);
        send("a");
        EXPECT_THAT(out.text(), testing::MatchesRegex(kNotInitialised));
    }
    init();
    m_reporter.DoneMaintReporter();
    const CapturedStream out(STDOUT_FILENO);
    send("a");
    EXPECT_THAT(out.text(), testing::MatchesRegex(kNotInitialised));
    EXPECT_TRUE(m_transport->messages().empty());
}

TEST_F(PCSMaintReporterTest, ALongDescriptionBeforeInitIsRefusedRecordByRecord) {
    const CapturedStream out(STDOUT_FILENO);
    sendLong("a", "Evt");
    EXPECT_THAT(
        out.text(),
        testing::MatchesRegex(
            std::string("PCSMaintReporter \\([0-9]+\\) sendLongDescriptionMultiMaintenanceEvent: "
                        "Sending maintenance event: Evt:a\n") +
            kNotInitialised));
}

TEST_F(PCSMaintReporterTest, InitWithoutATransportThrowsAndMayBeTriedAgain) {
    EXPECT_EQ("InitMaintReporter(Rovan) called with an empty eventLogTypedTS.", initError(nullptr));
    EXPECT_EQ("", initError(m_transport));
}

TEST_F(PCSMaintReporterTest, ASecondInitThrowsAndLeavesTheFirstInPlace) {
    init();
    send("a");
    const auto second = std::make_shared<Transport>();
    EXPECT_EQ("InitMaintReporter(Rovan) called on an already initialized PCSMaintReporter.",
              initError(second));
    send("b");
    ASSERT_EQ(2u, m_transport->messages().size());
    EXPECT_EQ(1, m_transport->messages()[1].header().seq_num()) << "no restart";
    EXPECT_TRUE(second->senders().empty());
}

TEST_F(PCSMaintReporterTest, InitThatCannotRegisterThrowsAndEverySendFailsUntilDone) {
    const CapturedStream out(STDOUT_FILENO);
    m_transport->answerRegistrationsWith(RC::CONNECTION_CLOSED);
    const std::string error = initError(m_transport);
    EXPECT_THAT(error, HasSubstr("PCSMaintReporter.cpp["));
    EXPECT_THAT(error, testing::EndsWith("]:CONNECTION_CLOSED InitMaintReporter(Rovan) unable to "
                                         "register sender."));
    send("a");
    EXPECT_THAT(out.text(), testing::EndsWith(" MaintReporter could not publish event\n"));
    EXPECT_EQ("InitMaintReporter(Rovan) called on an already initialized PCSMaintReporter.",
              initError(m_transport));

    m_reporter.DoneMaintReporter();
    m_transport->answerRegistrationsWith(RC::NO_ACTION);
    EXPECT_EQ("", initError(m_transport)) << "a sender that is there already is none too many";
}

TEST_F(PCSMaintReporterTest, InitSetsUpTheFaultFilterAndEmptiesItsRecord) {
    FaultHysteresis& filter = FaultHysteresis::Instance();
    ASSERT_TRUE(filter.OkInitFaultHysteresis(180, 16, 5));
    auto type = EventTypes::eError;
    filter.Check(type, "Foo", 1, "x");
    ASSERT_EQ(1u, filter.faults().size());
    init();
    EXPECT_TRUE(filter.faults().empty());
    for (int i = 0; i < 2001; ++i) {
        EXPECT_EQ("Foo[1]:x", filter.Check(type, "Foo", 1, "x"));
    }
    EXPECT_EQ(2000u, filter.faults().size());
}

TEST_F(PCSMaintReporterTest, TellsOfARecordThatCouldNotBePublished) {
    init();
    m_transport->answerMessagesWith(RC::DATA_OVERFLOW);
    const CapturedStream out(STDOUT_FILENO);
    send("lost");
    EXPECT_EQ("!!!!!! Rovan MaintReporter could not publish event\n", out.text());

    m_transport->answerMessagesWith(RC::NO_ERROR);
    send("next");
    ASSERT_EQ(2u, m_transport->messages().size()) << "the lost one is not tried again";
    EXPECT_EQ(1, m_transport->messages()[1].header().seq_num()) << "its number is used up";
}

TEST_F(PCSMaintReporterTest, DoneLetsGoOfTheTransport) {
    init();
    EXPECT_GT(m_transport.use_count(), 1);
    m_reporter.DoneMaintReporter();
    m_reporter.DoneMaintReporter();
    EXPECT_EQ(1, m_transport.use_count());
}

TEST_F(PCSMaintReporterTest, PublishesTheSameFaultAgainAndAgain) {
    init();
    for (int i = 0; i < 40; ++i) {
        send("a");
    }
    EXPECT_EQ(40u, m_transport->messages().size());
}

TEST_F(PCSMaintReporterTest, ThreadsMaySendSideBySideAndWhileItIsDone) {
    init();
    std::vector<std::thread> senders;
    for (char c = 'a'; c < 'd'; ++c) {
        senders.emplace_back([this, c] {
            for (int i = 0; i < 200; ++i) {
                send(std::string(10, c));
                for (const std::string& piece : pieces(std::string(60, c), "Evt")) {
                    EXPECT_EQ(std::string(piece.size() - 6, c), piece.substr(6));
                }
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    std::set<int64_t> numbers;
    for (const MaintenanceEvent& event : m_transport->messages()) {
        numbers.insert(event.header().seq_num());
    }
    EXPECT_EQ(600u, numbers.size()) << "no number twice";
    EXPECT_EQ(599, *numbers.rbegin());

    const CapturedStream out(STDOUT_FILENO);  // for the lines of those who come too late
    std::thread late([this] {
        for (int i = 0; i < 100; ++i) {
            send("late");
        }
    });
    m_reporter.DoneMaintReporter();
    late.join();
    EXPECT_EQ(1, m_transport.use_count());
}

// On a real bus: the server's participant publishes, another one, as the rest of the unit would be,
// subscribes. The subscriber asks for the history, so nothing is lost before the two have met.
class PCSMaintReporterBusTest : public PCSMaintReporterTest {
  protected:
    using KD_TypedTS = FACE::TSS::Details::KD_TypedTS<MaintenanceEvent>;

    void joinBus(int domain) {
        m_file = std::make_unique<transport_test::ConnectionsFile>(
            std::map<std::string, transport_test::Parameters>{
                {"FastRtps", transport_test::busSettings(domain, {{"BackFillHistory", "TRUE"}})},
                {"MaintenanceEvent", transport_test::carries("MaintenanceEvent")}});
        m_server = transport_test::join(*m_file, "Rovan");
        m_serverConnection = transport_test::connect(*m_server, "MaintenanceEvent");
        auto rc = RC::NO_ACTION;
        m_typedTs->Set_Reference("TSS", m_server, 0, rc);
        ASSERT_EQ(RC::NO_ERROR, rc);
        m_reporter.InitMaintReporter("Rovan", m_ids, m_typedTs, m_serverConnection);

        m_unit = transport_test::join(*m_file, "Unit");
        transport_test::Face<MaintenanceEvent> face(m_unit);
        ASSERT_EQ(RC::NO_ERROR,
                  face.registerCallback(transport_test::connect(*m_unit, "MaintenanceEvent"),
                                        m_inbox.callback()));
    }
    void TearDown() override {
        PCSMaintReporterTest::TearDown();
        m_unit.reset();  // no callback after this
    }
    bool receives(std::size_t count) {
        return transport_test::eventually([&] { return m_inbox.count() >= count; });
    }

    std::unique_ptr<transport_test::ConnectionsFile> m_file;
    std::shared_ptr<FACE::TSS::KD_TSS> m_server;
    std::shared_ptr<FACE::TSS::KD_TSS> m_unit;
    std::shared_ptr<KD_TypedTS> m_typedTs = std::make_shared<KD_TypedTS>();
    long long m_serverConnection = -1;
    transport_test::Inbox<MaintenanceEvent> m_inbox;
};

TEST_F(PCSMaintReporterBusTest, RecordsReachTheOthersOnTheBusWhole) {
    joinBus(215);
    m_reporter.SetAspnTimeOffset(100, 5);
    send(std::string(55, 'd'), std::string(15, 'i'));
    send(std::string(56, 'e'), "RCVR_FAILURE");
    ASSERT_TRUE(receives(2));

    const auto events = m_inbox.messages();
    EXPECT_EQ(std::string(55, 'd'), descriptionOf(events[0]));
    EXPECT_EQ(std::string(55, 'e'), descriptionOf(events[1]));
    EXPECT_STREQ("iiiiiiiiiiiiiii", events[0].identity().data());
    for (int64_t i = 0; i < 2; ++i) {
        const MaintenanceEvent& event = events[static_cast<std::size_t>(i)];
        EXPECT_EQ(kDeviceId, event.header().device_id());
        EXPECT_EQ(i, event.header().seq_num());
        EXPECT_LE(100'000'000'005, timeOf(event.header().timestamp_valid()));
        EXPECT_GT(120'000'000'000, timeOf(event.header().timestamp_valid()));
        EXPECT_EQ(timeOf(event.header().timestamp_valid()),
                  timeOf(event.header().timestamp_arrival()));
        EXPECT_EQ(100, event.header().timestamp_valid().time_code());
        EXPECT_EQ(4, event.criticality_id());
        EXPECT_EQ(3, event.outcome_id());
        EXPECT_EQ(200, event.location_id());
        EXPECT_EQ(7, event.category_id());
        EXPECT_EQ(60, event.repeat_in_seconds());
        EXPECT_EQ(3, event.fault_sources()[2].lru_id());
        EXPECT_EQ(16, event.fault_sources()[2].component_id());
    }
}

TEST_F(PCSMaintReporterBusTest, ALongDescriptionReachesTheOthersInOrder) {
    joinBus(216);
    const CapturedStream out(STDOUT_FILENO);
    sendLong(std::string(500, 'a'), "Bit");
    ASSERT_TRUE(receives(9));
    const auto events = m_inbox.messages();
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ("Bit_" + std::to_string(i + 1) + ":" + std::string(49, 'a'),
                  descriptionOf(events[i]));
    }
}

TEST_F(PCSMaintReporterBusTest, ARecordWithoutAPublisherIsALineOnTheConsole) {
    joinBus(217);
    auto rc = RC::NO_ACTION;
    m_server->Unregister_Sender(m_serverConnection, rc);
    ASSERT_EQ(RC::NO_ERROR, rc);
    const CapturedStream out(STDOUT_FILENO);
    send("lost");
    EXPECT_EQ("!!!!!! Rovan MaintReporter could not publish event\n", out.text());
}

TEST_F(PCSMaintReporterBusTest, TheParticipantEndsWithItsOwnersOnceTheReporterIsDone) {
    joinBus(218);
    send("a");
    ASSERT_TRUE(receives(1));
    const std::weak_ptr<FACE::TSS::KD_TSS> server = m_server;
    m_typedTs.reset();
    m_server.reset();
    EXPECT_FALSE(server.expired()) << "the reporter publishes on it";
    m_reporter.DoneMaintReporter();
    EXPECT_TRUE(server.expired());
}

}  // namespace
