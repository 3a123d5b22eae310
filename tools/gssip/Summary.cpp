// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Summary.h"

#include <fmt/format.h>

#include "gssip/GssipFrame.h"
#include "tools/gssip/Catalogue.h"
#include "tools/gssip/FrameJson.h"

namespace GssipTool {
namespace {

constexpr Fault::Kind kKinds[] = {Fault::Kind::kHeaderChecksum, Fault::Kind::kDataChecksum,
                                  Fault::Kind::kCutOff};

const char* titleOf(uint16_t msgId) {
    const Message* const message = findMessage(msgId);
    return message != nullptr ? message->title : "unknown message";
}

}  // namespace

void Summary::count(const Piece& piece) {
    if (!piece.isFrame) {
        m_skippedBytes += piece.bytes.size();
        m_leadIn += m_isLive && m_frames == 0 ? piece.bytes.size() : 0;
        m_places += m_lost ? 0 : 1;
        m_lost = true;
        for (const Fault& fault : piece.faults) {
            ++m_faults[static_cast<size_t>(fault.kind)];
        }
        return;
    }
    m_resynchronisations += m_lost ? 1 : 0;
    m_lost = false;
    ++m_frames;
    m_frameBytes += piece.bytes.size();
    PerMessage& message = m_messages[FrameView(piece.bytes).msgId()];
    ++message.frames;
    message.headerOnly += piece.bytes.size() == Gssip::kHeaderBytes ? 1 : 0;
}

ExitStatus Summary::status() const {
    return m_frames > 0 && m_skippedBytes == m_leadIn ? kGood : kDataErrors;
}

std::string Summary::text() const {
    std::string text = fmt::format("{:>8} frames, {} bytes\n", m_frames,
                                   m_frameBytes + m_skippedBytes + m_waiting);
    for (const auto& [msgId, seen] : m_messages) {
        text += fmt::format(
            "{:>8} of {} {}{}\n", seen.frames, msgId, titleOf(msgId),
            seen.headerOnly > 0 ? fmt::format(", {} header only", seen.headerOnly) : "");
    }
    text += fmt::format("{:>8} bytes skipped at {} places, {} resynchronisations\n", m_skippedBytes,
                        m_places, m_resynchronisations);
    for (const Fault::Kind kind : kKinds) {
        text += fmt::format("{:>8} {}\n", m_faults[static_cast<size_t>(kind)],
                            kind == Fault::Kind::kCutOff ? std::string("cut off")
                                                         : std::string("wrong ") + nameOf(kind));
    }
    if (m_leadIn + m_waiting > 0) {
        text += fmt::format("{:>8} bytes before the first frame, {} of an unfinished one\n",
                            m_leadIn, m_waiting);
    }
    return text;
}

Tools::Json Summary::json() const {
    Tools::Json item{{"type", "summary"},
                     {"bytes", m_frameBytes + m_skippedBytes + m_waiting},
                     {"frames", m_frames},
                     {"messages", Tools::Json::array()}};
    for (const auto& [msgId, seen] : m_messages) {
        item["messages"].push_back({{"id", msgId},
                                    {"title", titleOf(msgId)},
                                    {"frames", seen.frames},
                                    {"header_only", seen.headerOnly}});
    }
    item["skipped_bytes"] = m_skippedBytes;
    item["skipped_places"] = m_places;
    item["resynchronisations"] = m_resynchronisations;
    for (const Fault::Kind kind : kKinds) {
        item["faults"][nameOf(kind)] = m_faults[static_cast<size_t>(kind)];
    }
    if (m_isLive) {
        item["lead_in_bytes"] = m_leadIn;
        item["unfinished_bytes"] = m_waiting;
    }
    return item;
}

}  // namespace GssipTool
