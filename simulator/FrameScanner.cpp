// SPDX-License-Identifier: Apache-2.0
#include "simulator/FrameScanner.h"

#include <utility>

#include "gssip/GssipFrame.h"

namespace Simulator {
namespace {

constexpr std::uint8_t kDelimiterLow = Gssip::kDelimiter & 0xFF;
constexpr std::uint8_t kDelimiterHigh = Gssip::kDelimiter >> 8;

bool mayBeginFrame(const Bytes& buffer, std::size_t at) {
    return buffer[at] == kDelimiterLow &&
           (at + 1 == buffer.size() || buffer[at + 1] == kDelimiterHigh);
}

bool headerHolds(const std::uint8_t* header) {
    return wordSum(header, Gssip::kHeaderWords) == 0 &&
           Gssip::wordAt(header + 2 * Gssip::kWordCount) <= FrameScanner::kMaxDataWords;
}

}  // namespace

std::vector<ScannedFrame> FrameScanner::feed(const std::uint8_t* bytes, std::size_t count) {
    using Kind = ScannedFrame::Kind;
    m_buffer.insert(m_buffer.end(), bytes, bytes + count);
    std::vector<ScannedFrame> found;
    Bytes stray;
    const auto endStray = [&] {
        if (!stray.empty()) {
            found.push_back({Kind::Stray, std::exchange(stray, {})});
        }
    };

    std::size_t at = 0;
    while (at < m_buffer.size()) {
        const std::size_t left = m_buffer.size() - at;
        if (!mayBeginFrame(m_buffer, at) ||
            (left >= Gssip::kHeaderBytes && !headerHolds(m_buffer.data() + at))) {
            stray.push_back(m_buffer[at++]);
            continue;
        }
        if (left < Gssip::kHeaderBytes) {
            break;
        }
        const std::size_t length =
            Gssip::frameBytes(Gssip::wordAt(m_buffer.data() + at + 2 * Gssip::kWordCount));
        if (left < length) {
            break;
        }
        endStray();
        const auto begin = m_buffer.begin() + static_cast<std::ptrdiff_t>(at);
        Bytes frame(begin, begin + static_cast<std::ptrdiff_t>(length));
        const Kind kind = isIntact(frame) ? Kind::Intact : Kind::Damaged;
        found.push_back({kind, std::move(frame)});
        at += length;
    }
    endStray();
    m_buffer.erase(m_buffer.begin(), m_buffer.begin() + static_cast<std::ptrdiff_t>(at));
    return found;
}

}  // namespace Simulator
