// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace Bus {

/// Unix time as ISO 8601 to the microsecond, for example 2026-11-21T22:30:00.000001Z.
std::string utcText(int64_t unixNs);

}  // namespace Bus
