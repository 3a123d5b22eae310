// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/FrameJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <stdexcept>

#include "gssip/GssipFrame.h"
#include "tools/common/Quoted.h"

namespace GssipTool {
namespace {

std::string hexOf(const Bytes& bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

int digitOf(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

Bytes bytesFromHex(const Json& value) {
    if (!value.is_string()) {
        throw std::invalid_argument("bytes wants a text of hexadecimal digits");
    }
    std::string digits = value.get<std::string>();
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    if (digits.size() % 2 != 0) {
        throw std::invalid_argument("bytes has an odd number of digits");
    }
    Bytes bytes;
    for (size_t i = 0; i < digits.size(); i += 2) {
        const int high = digitOf(digits[i]);
        const int low = digitOf(digits[i + 1]);
        if (high < 0 || low < 0) {
            throw std::invalid_argument("bytes has what is no hexadecimal digit");
        }
        bytes.push_back(static_cast<uint8_t>(high << 4 | low));
    }
    return bytes;
}

void requireOnly(const Json& item, std::initializer_list<const char*> known) {
    for (const auto& [key, value] : item.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            throw std::invalid_argument(Tools::inQuotes(key) + " is not known here");
        }
    }
}

uint16_t numberAt(const Json& item, const char* key) {
    try {
        return wordOf(item.at(key));
    } catch (const std::invalid_argument& problem) {
        throw std::invalid_argument(fmt::format("{} {}", key, problem.what()));
    }
}

Words dataFrom(const Json& item, const Message* message) {
    const bool hasFields = item.contains("fields");
    const bool hasRaw = item.contains("raw");
    const bool isCounted = item.contains("words");
    Words data;
    if (isCounted) {
        data.resize(numberAt(item, "words"));
    } else if ((hasFields || hasRaw) && message != nullptr) {
        data.resize(message->wdcnt);
    }
    if (hasRaw) {
        applyRaw(item["raw"], data, !isCounted);
    }
    if (hasFields && message == nullptr && !item["fields"].empty()) {
        throw std::invalid_argument("no fields of this message are known: give raw words");
    }
    if (hasFields && message != nullptr) {
        applyFields(*message, item["fields"], data);
    }
    return data;
}

uint16_t flagsFrom(const Json& item) {
    try {
        return item.contains("flags") ? flagsFromJson(headerFlags(), item["flags"])
                                      : Gssip::kFlagsTypedMessage;
    } catch (const std::invalid_argument& problem) {
        throw std::invalid_argument(fmt::format("flags {}", problem.what()));
    }
}

Bytes frameFrom(const Json& item) {
    requireOnly(item, {"type", "offset", "time_ns", "id", "title", "flags", "words", "fields",
                       "raw", "header_checksum", "data_checksum"});
    if (!item.contains("id")) {
        throw std::invalid_argument("id is missing");
    }
    const uint16_t msgId = numberAt(item, "id");
    const Words data = dataFrom(item, findMessage(msgId));
    const auto wdcnt = static_cast<uint16_t>(data.size());
    Words words(Gssip::frameBytes(wdcnt) / 2);
    MakeHdrSpecifyFlagWd(words.data(), msgId, flagsFrom(item), wdcnt);
    if (item.contains("header_checksum")) {
        words[Gssip::kWordHeaderChecksum] = numberAt(item, "header_checksum");
    }
    if (wdcnt > 0) {
        std::copy(data.begin(), data.end(), words.begin() + Gssip::kWordData);
        words.back() = CalculateChecksum(data.data(), 0, wdcnt - 1u);
    }
    if (item.contains("data_checksum")) {
        if (wdcnt == 0) {
            throw std::invalid_argument("data_checksum: a frame without data has none");
        }
        words.back() = numberAt(item, "data_checksum");
    }
    Bytes bytes;
    for (const uint16_t word : words) {
        bytes.push_back(static_cast<uint8_t>(word));
        bytes.push_back(static_cast<uint8_t>(word >> 8));
    }
    return bytes;
}

void describeFrame(Json& item, const Bytes& bytes, bool allWords) {
    const FrameView frame(bytes);
    const Message* const message = findMessage(frame.msgId());
    const Words data = frame.data();
    item["id"] = frame.msgId();
    if (message != nullptr) {
        item["title"] = message->title;
    }
    item["flags"] = flagsToJson(headerFlags(), frame.flags());
    item["words"] = data.size();
    if (data.empty()) {
        return;
    }
    if (message != nullptr) {
        item["fields"] = fieldsOf(*message, data);
    }
    const Json raw = allWords ? allRaw(data) : rawOf(message, data);
    if (!raw.empty()) {
        item["raw"] = raw;
    }
}

void describeSkipped(Json& item, const Piece& piece) {
    item["count"] = piece.bytes.size();
    for (const Fault& fault : piece.faults) {
        item["faults"].push_back({{"fault", nameOf(fault.kind)},
                                  {"offset", fault.offset},
                                  {"id", fault.msgId},
                                  {"words", fault.wdcnt}});
    }
    item["bytes"] = hexOf(piece.bytes);
}

}  // namespace

uint16_t FrameView::msgId() const {
    return Gssip::wordAt(m_bytes.data() + 2 * Gssip::kWordMsgId);
}

uint16_t FrameView::flags() const {
    return Gssip::wordAt(m_bytes.data() + 2 * Gssip::kWordFlags);
}

Words FrameView::data() const {
    Words data(Gssip::wordAt(m_bytes.data() + 2 * Gssip::kWordCount));
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = Gssip::wordAt(m_bytes.data() + 2 * (Gssip::kWordData + i));
    }
    return data;
}

const char* nameOf(Fault::Kind kind) {
    switch (kind) {
        case Fault::Kind::kHeaderChecksum:
            return "header checksum";
        case Fault::Kind::kDataChecksum:
            return "data checksum";
        case Fault::Kind::kCutOff:
            return "cut off";
    }
    return "";
}

Json toJson(const Piece& piece, std::optional<int64_t> timeNs, bool allWords) {
    Json item{{"type", piece.isFrame ? "frame" : "bytes"}, {"offset", piece.offset}};
    if (timeNs) {
        item["time_ns"] = *timeNs;
    }
    if (piece.isFrame) {
        describeFrame(item, piece.bytes, allWords);
    } else {
        describeSkipped(item, piece);
    }
    return item;
}

Bytes bytesOf(const Json& item) {
    if (!item.is_object()) {
        throw std::invalid_argument("wants an object");
    }
    const bool hasBytes = item.contains("bytes");
    const Json type = item.value("type", Json(hasBytes ? "bytes" : "frame"));
    if (type == "frame") {
        return frameFrom(item);
    }
    if (type == "summary") {
        return {};
    }
    if (type != "bytes") {
        throw std::invalid_argument("the type is none of frame, bytes and summary");
    }
    requireOnly(item, {"type", "offset", "time_ns", "count", "faults", "bytes"});
    if (!hasBytes) {
        throw std::invalid_argument("bytes is missing");
    }
    return bytesFromHex(item["bytes"]);
}

}  // namespace GssipTool
