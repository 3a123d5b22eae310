// SPDX-License-Identifier: Apache-2.0
#pragma once

// The kinds of events, as they go out in event_log_type. A caller may pass any number: those that
// no kind has are published as 0.
namespace EventTypes {

enum eEventType : unsigned {
    eType0 = 0,
    eType1 = 1,
    eInformation = 2,  // configuration events are of this type too
    eError = 3,
    eFailure = 4,
    eType5 = 5,
};

constexpr unsigned kEventTypeCount = 6;

}  // namespace EventTypes
