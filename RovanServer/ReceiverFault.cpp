// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverFault.h"

#include "ASPN/HealthReporter.h"
#include "ASPN/ServerIds.h"
#include "PCSMaintReporter/PCSMaintReporter.h"

void reportReceiverFault(const std::string& description, const std::string& identity,
                         const char* source, int line) {
    using namespace ASPN2::Maintenance;
    PCSMaintReporter::Instance().sendMaintenanceEvent(
        description, identity, Criticality::eCrit4, Outcome::eOutcome3, ASPN2::ServerIds::kRovan,
        Category::eCat7, LRU::eLru1, Component::eCmpo4, LRU::eLru2, Component::eCmpo0, LRU::eLru2,
        Component::eCmpo16, LRU::eLru1, Component::eCmpo16, 0);
    HealthReporter::Instance().SendEvent(source, line, EventTypes::eFailure, description);
}
