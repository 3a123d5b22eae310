// SPDX-License-Identifier: Apache-2.0
#include "PCSMaintReporter/PCSMaintReporter.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "ASPN/TimeConversion.h"
#include "PCSMaintReporter/MaintenanceSources.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "utility/Console.h"
#include "utility/StringUtils.h"

using aspn2_msgs::idl::MaintenanceEvent;

namespace {

using ASPN2::Maintenance::FaultSources;

constexpr unsigned char kMessageCode = 59;
constexpr const char* kDefaultPrefix = "Evt";
// Prefix and piece together; with "_", one digit and ":" that fills the 55 characters of a record.
constexpr std::size_t kPrefixAndPieceLength = 52;
constexpr std::size_t kMaxPieces = 9;

// What a record holds beside its texts.
struct Classification {
    PCSMaintReporter::Criticality criticality;
    PCSMaintReporter::Outcome outcome;
    unsigned char location;
    PCSMaintReporter::Category category;
    FaultSources sources;
    int repeatSeconds;
};

int64_t steadyNowNs() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

// Any 64-bit time may be set from outside: computed unsigned, where the overflow is defined.
int64_t difference(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

/// What fits, and a terminator; what stands behind that in the array is left alone.
template <std::size_t N>
void store(const std::string& text, std::array<char, N>& to) {
    const std::size_t length = text.copy(to.data(), N - 1);
    to[length] = '\0';
}

void buildMaintenanceEvent(const std::string& description, const std::string& identity,
                           const Classification& classification, MaintenanceEvent& event) {
    store(description, event.description());
    store(identity, event.identity());
    event.category_id(classification.category);
    event.repeat_in_seconds(classification.repeatSeconds);
    event.location_id(classification.location);
    for (std::size_t i = 0; i < classification.sources.size(); ++i) {
        event.fault_sources()[i].lru_id(classification.sources[i].lru);
        event.fault_sources()[i].component_id(classification.sources[i].component);
    }
    event.criticality_id(classification.criticality);
    event.outcome_id(classification.outcome);
}

void trace(int line, const std::string& function, const std::string& text) {
    Console::line("PCSMaintReporter (" + std::to_string(line) + ") " + function + ": " + text);
}

}  // namespace

PCSMaintReporter& PCSMaintReporter::Instance() {
    static PCSMaintReporter instance;
    return instance;
}

void PCSMaintReporter::InitMaintReporter(
    const std::string& name, const ASPN2::DeviceIdFactory& ids,
    const std::shared_ptr<FACE::TSS::Details::KD_TypedTS<MaintenanceEvent>>& typedTs,
    long long connectionId) {
    m_link.open(__FILE__, __LINE__, name, ids.makeDeviceId(kMessageCode, 0), typedTs, connectionId);
    m_link.restartSeqNum();
    ASPN2::setUpFaultHysteresis();
}

void PCSMaintReporter::DoneMaintReporter() {
    m_link.close();
}

void PCSMaintReporter::SetTimeOffset(const std::chrono::nanoseconds& now) {
    m_timeOffsetNs = difference(steadyNowNs(), now.count());
}

void PCSMaintReporter::SetAspnTimeOffset(const long long& sec, const long long& nsec) {
    constexpr uint64_t kNsPerSec = 1'000'000'000;
    const uint64_t ns = static_cast<uint64_t>(sec) * kNsPerSec + static_cast<uint64_t>(nsec);
    SetTimeOffset(std::chrono::nanoseconds(static_cast<int64_t>(ns)));
}

std::chrono::nanoseconds PCSMaintReporter::GetTime() const {
    return std::chrono::nanoseconds(difference(steadyNowNs(), m_timeOffsetNs));
}

void PCSMaintReporter::sendMaintenanceEvent(const std::string& description,
                                            const std::string& identity, Criticality criticality,
                                            Outcome outcome, unsigned char location,
                                            Category category, Lru lru1, Component component1,
                                            Lru lru2, Component component2, Lru lru3,
                                            Component component3, Lru lru4, Component component4,
                                            int repeatSeconds) {
    const FaultSources sources{
        {{lru1, component1}, {lru2, component2}, {lru3, component3}, {lru4, component4}}};
    MaintenanceEvent event;
    buildMaintenanceEvent(description, identity,
                          {criticality, outcome, location, category, sources, repeatSeconds},
                          event);
    publishMaintenanceEvent(event);
}

void PCSMaintReporter::sendLongDescriptionMultiMaintenanceEvent(
    const std::string& description, const std::string& identity, Criticality criticality,
    Outcome outcome, unsigned char location, Category category, Lru lru1, Component component1,
    Lru lru2, Component component2, Lru lru3, Component component3, Lru lru4, Component component4,
    int repeatSeconds, const char* prefix) {
    std::vector<MaintenanceEvent> events;
    buildMultiMaintenanceEventVectorFromLongDescription(
        description, identity, criticality, outcome, location, category, lru1, component1, lru2,
        component2, lru3, component3, lru4, component4, repeatSeconds, prefix, events);
    for (MaintenanceEvent& event : events) {
        trace(__LINE__, __func__,
              std::string("Sending maintenance event: ") + event.description().data());
        publishMaintenanceEvent(event);
    }
}

void PCSMaintReporter::buildMultiMaintenanceEventVectorFromLongDescription(
    const std::string& description, const std::string& identity, Criticality criticality,
    Outcome outcome, unsigned char location, Category category, Lru lru1, Component component1,
    Lru lru2, Component component2, Lru lru3, Component component3, Lru lru4, Component component4,
    int repeatSeconds, const char* prefix, std::vector<MaintenanceEvent>& events) {
    const FaultSources sources{
        {{lru1, component1}, {lru2, component2}, {lru3, component3}, {lru4, component4}}};
    const std::string start = prefix != nullptr ? prefix : kDefaultPrefix;
    // A prefix that leaves no room still gets pieces; the records cut them off.
    const std::size_t pieceLength =
        start.size() < kPrefixAndPieceLength ? kPrefixAndPieceLength - start.size() : 1;
    const std::vector<std::string> pieces =
        StringUtils::splitToChunks(description, static_cast<unsigned>(pieceLength));

    // Filled over and over: behind a short text stands what an earlier, longer one left. One for
    // each thread, so that threads may call side by side.
    static thread_local MaintenanceEvent event;
    for (std::size_t i = 0; i < std::min(pieces.size(), kMaxPieces); ++i) {
        const std::string number = pieces.size() > 1 ? '_' + std::to_string(i + 1) : "";
        buildMaintenanceEvent(start + number + ':' + pieces[i], identity,
                              {criticality, outcome, location, category, sources, repeatSeconds},
                              event);
        events.push_back(event);
    }
}

void PCSMaintReporter::publishMaintenanceEvent(MaintenanceEvent& event) {
    if (!m_link.isOpened()) {
        trace(__LINE__, __func__,
              "PCSMaintReporter not initialized! Cannat send MaintenanceEvent.");
        return;
    }
    ASPN2::setToVandToA_fromNSec(GetTime(), event.header());
    if (!m_link.publish(event)) {
        m_link.complain("could not publish event");
    }
}

int PCSMaintReporter::getDefaultLruSubForServerID(const unsigned char& serverId, Lru& lru1,
                                                  Component& component1, Lru& lru2,
                                                  Component& component2, Lru& lru3,
                                                  Component& component3, Lru& lru4,
                                                  Component& component4) {
    const ASPN2::Maintenance::DefaultSources defaults =
        ASPN2::Maintenance::defaultSourcesOf(serverId);
    const auto hand = [](const ASPN2::Maintenance::FaultSource& source, Lru& lru,
                         Component& component) {
        lru = source.lru;
        component = source.component;
    };
    hand(defaults.sources[0], lru1, component1);
    hand(defaults.sources[1], lru2, component2);
    hand(defaults.sources[2], lru3, component3);
    hand(defaults.sources[3], lru4, component4);
    return defaults.result;
}
