// SPDX-License-Identifier: Apache-2.0
#pragma once

// The vocabulary of maintenance records. The numbers are what goes out on the bus; what each stands
// for is agreed between the maintenance system and those who report, so the enumerators are named
// by their numbers, from 0 up. Any other int is carried unchanged.
namespace ASPN2::Maintenance {

namespace Criticality {
// How grave the event is.
enum eCrit : int { eCrit0, eCrit1, eCrit2, eCrit3, eCrit4, eCrit5 };
}  // namespace Criticality

namespace Outcome {
// How what is reported went.
enum eOutcome : int { eOutcome0, eOutcome1, eOutcome2, eOutcome3, eOutcome4 };
}  // namespace Outcome

namespace Category {
// What kind of event it is.
enum eCat : int {
    eCat0,
    eCat1,
    eCat2,
    eCat3,
    eCat4,
    eCat5,
    eCat6,
    eCat7,
    eCat8,
    eCat9,
    eCat10,
    eCat11,
    eCat12,
    eCat13
};
}  // namespace Category

namespace LRU {
// The replaceable unit that a fault comes from; 0 is none.
enum eLru : int { eLru0, eLru1, eLru2, eLru3 };
}  // namespace LRU

namespace Component {
// The component within that unit.
enum eCmpo : int {
    eCmpo0,
    eCmpo1,
    eCmpo2,
    eCmpo3,
    eCmpo4,
    eCmpo5,
    eCmpo6,
    eCmpo7,
    eCmpo8,
    eCmpo9,
    eCmpo10,
    eCmpo11,
    eCmpo12,
    eCmpo13,
    eCmpo14,
    eCmpo15,
    eCmpo16,
    eCmpo17
};
}  // namespace Component

}  // namespace ASPN2::Maintenance
