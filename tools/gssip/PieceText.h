// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/common/Output.h"
#include "tools/gssip/FrameScanner.h"

namespace GssipTool {

/// A piece for the eye, on lines of its own: a frame with one field a line, or what was skipped and
/// why. With `hex`, also its data words, or its bytes.
std::string textOf(const Piece& piece, std::optional<int64_t> timeNs, bool hex,
                   const Tools::Output& output);

/// "2026-11-21T22:02:11.123456Z"
std::string utc(int64_t unixNs);

/// "data checksum of 8504 (200 words) at byte 1234"
std::string textOf(const Fault& fault);

}  // namespace GssipTool
