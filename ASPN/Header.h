// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace ASPN2 {

// The header of a bus message for code that does not want the generated class: the same fields,
// plain. A second and its nanoseconds belong together; a time before zero has both negative or
// zero.
struct header {
    int64_t seq_num = 0;
    int64_t arrival_sec = 0;
    int32_t arrival_nsec = 0;
    int32_t arrival_time_code = 0;
    int64_t valid_sec = 0;
    int32_t valid_nsec = 0;
    int32_t valid_time_code = 0;
    int32_t device_id = 0;
};

}  // namespace ASPN2
