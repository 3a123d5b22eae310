// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ASPN/DeviceIdFactory.h"
#include "ASPN/ReporterLink.h"
#include "PCSMaintReporter/MaintenanceTypes.h"
#include "face/KD_TypedTS.h"

namespace aspn2_msgs::idl {
class MaintenanceEvent;
}

// Publishes structured fault and maintenance records, MaintenanceEvent, as against the free text of
// the event log. It publishes on the caller's thread, without a queue and without any repeat
// filter.
//
// Any thread may send at any time. What cannot be published is a line on the console and nothing
// more. InitMaintReporter and DoneMaintReporter come from the thread that brings the server up and
// down; the transport is shared between the two.
//
// Records are stamped with the reporter's own time: the monotonic clock less an offset that is 0
// until it is set.
class PCSMaintReporter {
  public:
    using Criticality = ASPN2::Maintenance::Criticality::eCrit;
    using Outcome = ASPN2::Maintenance::Outcome::eOutcome;
    using Category = ASPN2::Maintenance::Category::eCat;
    using Lru = ASPN2::Maintenance::LRU::eLru;
    using Component = ASPN2::Maintenance::Component::eCmpo;
    using MaintenanceEvent = aspn2_msgs::idl::MaintenanceEvent;

    static PCSMaintReporter& Instance();

    PCSMaintReporter(const PCSMaintReporter&) = delete;
    PCSMaintReporter& operator=(const PCSMaintReporter&) = delete;

    /// Makes the publisher; the sequence numbers start at 0. Throws std::runtime_error without a
    /// transport, when initialised already (the first stays in place) and when there can be no
    /// publisher.
    void InitMaintReporter(
        const std::string& name, const ASPN2::DeviceIdFactory& ids,
        const std::shared_ptr<FACE::TSS::Details::KD_TypedTS<MaintenanceEvent>>& typedTs,
        long long connectionId);

    /// Lets go of the transport. What is sent afterwards is refused with a line on the console.
    void DoneMaintReporter();

    /// Sets the reporter's time to `now`.
    void SetTimeOffset(const std::chrono::nanoseconds& now);
    void SetAspnTimeOffset(const long long& sec, const long long& nsec);
    std::chrono::nanoseconds GetTime() const;

    /// Publishes one record. Of the description the first 55 characters are kept, of the identity
    /// the first 15. Sources that are not used are 0.
    void sendMaintenanceEvent(const std::string& description, const std::string& identity,
                              Criticality criticality, Outcome outcome, unsigned char location,
                              Category category, Lru lru1, Component component1, Lru lru2,
                              Component component2, Lru lru3, Component component3, Lru lru4,
                              Component component4, int repeatSeconds);

    /// Publishes a long description in up to nine numbered records, "<prefix>_<number>:<piece>",
    /// and one that fits a single record as "<prefix>:<description>". What nine records cannot hold
    /// is lost; an empty description gives none. A null prefix is "Evt". Each record is told of on
    /// the console.
    void sendLongDescriptionMultiMaintenanceEvent(
        const std::string& description, const std::string& identity, Criticality criticality,
        Outcome outcome, unsigned char location, Category category, Lru lru1, Component component1,
        Lru lru2, Component component2, Lru lru3, Component component3, Lru lru4,
        Component component4, int repeatSeconds, const char* prefix);

    /// Appends those records to `events` instead, without device id, time and sequence number.
    void buildMultiMaintenanceEventVectorFromLongDescription(
        const std::string& description, const std::string& identity, Criticality criticality,
        Outcome outcome, unsigned char location, Category category, Lru lru1, Component component1,
        Lru lru2, Component component2, Lru lru3, Component component3, Lru lru4,
        Component component4, int repeatSeconds, const char* prefix,
        std::vector<MaintenanceEvent>& events);

    /// The usual fault sources of a server, by its server id. Returns the class of the server's
    /// sources; 0, with all sources 0, for a server without any.
    static int getDefaultLruSubForServerID(const unsigned char& serverId, Lru& lru1,
                                           Component& component1, Lru& lru2, Component& component2,
                                           Lru& lru3, Component& component3, Lru& lru4,
                                           Component& component4);

  private:
    PCSMaintReporter() = default;
    ~PCSMaintReporter() = default;

    void publishMaintenanceEvent(MaintenanceEvent& event);

    ASPN2::ReporterLink<MaintenanceEvent> m_link{"PCSMaintReporter", "MaintReporter"};
    std::atomic<int64_t> m_timeOffsetNs{0};
};
