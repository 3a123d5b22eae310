// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/PieceText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>

#include "tools/gssip/FrameJson.h"

namespace GssipTool {
namespace {

constexpr int kNameWidth = 26;

std::string lineOf(const std::string& name, const std::string& value) {
    return fmt::format("  {:<{}} {}\n", name, kNameWidth, value);
}

std::string hexLines(const Words& words) {
    constexpr size_t kPerLine = 10;
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        text += i % kPerLine == 0 ? fmt::format("    {:>5}: ", i) : " ";
        text += fmt::format("{:04X}", words[i]);
        text += i % kPerLine == kPerLine - 1 || i + 1 == words.size() ? "\n" : "";
    }
    return text;
}

std::string hexLines(const Piece& piece) {
    constexpr size_t kPerLine = 16;
    std::string text;
    for (size_t i = 0; i < piece.bytes.size(); ++i) {
        text += i % kPerLine == 0 ? fmt::format("    {:>8}: ", piece.offset + i) : " ";
        text += fmt::format("{:02X}", piece.bytes[i]);
        text += i % kPerLine == kPerLine - 1 || i + 1 == piece.bytes.size() ? "\n" : "";
    }
    return text;
}

bool isEmpty(const uint16_t* words, unsigned count) {
    return std::all_of(words, words + count, [](uint16_t word) { return word == 0; });
}

// One line for a record, none for one that is all zero.
std::string linesOf(const Records& records, const Words& data) {
    std::string text;
    unsigned empty = 0;
    for (unsigned i = 0; i < records.count; ++i) {
        const unsigned first = records.word + i * records.stride;
        if (first + records.stride > data.size()) {
            break;
        }
        if (isEmpty(data.data() + first, records.stride)) {
            ++empty;
            continue;
        }
        std::string values;
        for (const Field& field : records.fields) {
            values += fmt::format("{}{} {}", values.empty() ? "" : ", ", field.name,
                                  textOf(field, data.data() + first));
        }
        text += lineOf(fmt::format("{}[{}]", records.name, i), values);
    }
    if (empty > 0) {
        text += lineOf(records.name, fmt::format("{} of {} empty", empty, records.count));
    }
    return text;
}

std::string linesOf(const Message& message, const Words& data) {
    std::string text;
    for (const Field& field : message.fields) {
        if (field.word + field.words <= data.size()) {
            text += lineOf(field.name, textOf(field, data.data()));
        }
    }
    return text + linesOf(message.records, data);
}

std::string flagsText(uint16_t flags) {
    std::string text;
    for (const Json& name : flagsToJson(headerFlags(), flags)) {
        text += (text.empty() ? "" : " ") + name.get<std::string>();
    }
    return text.empty() ? "no flags" : text;
}

std::string lengthText(const Message* message, size_t words) {
    if (words == 0) {
        return "header only";
    }
    const bool isExpected = message == nullptr || message->anyLength || message->wdcnt == words;
    return fmt::format("{} {} words{}",
                       message == nullptr    ? "data,"
                       : message->toReceiver ? "to receiver,"
                                             : "from receiver,",
                       words, isExpected ? "" : fmt::format(" instead of {}", message->wdcnt));
}

}  // namespace

std::string utc(int64_t unixNs) {
    constexpr int64_t kNsPerSec = 1'000'000'000;
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z",
                       fmt::gmtime(static_cast<std::time_t>(unixNs / kNsPerSec)),
                       unixNs % kNsPerSec / 1000);
}

std::string textOf(const Fault& fault) {
    if (fault.kind == Fault::Kind::kHeaderChecksum) {
        return fmt::format("wrong header checksum at byte {}", fault.offset);
    }
    return fmt::format("{} of {} ({} words) at byte {}",
                       fault.kind == Fault::Kind::kDataChecksum ? "wrong data checksum" : "cut off",
                       fault.msgId, fault.wdcnt, fault.offset);
}

std::string textOf(const Piece& piece, std::optional<int64_t> timeNs, bool hex,
                   const Tools::Output& output) {
    const std::string place =
        fmt::format("at byte {}{}", piece.offset, timeNs ? "  " + utc(*timeNs) : "");
    if (!piece.isFrame) {
        std::string text = output.alarm(fmt::format("skipped {} bytes", piece.bytes.size())) +
                           "  " + output.dim(place) + '\n';
        for (const Fault& fault : piece.faults) {
            text += "  " + textOf(fault) + '\n';
        }
        return text + (hex ? hexLines(piece) : "") + '\n';
    }
    const FrameView frame(piece.bytes);
    const Message* const message = findMessage(frame.msgId());
    const Words data = frame.data();
    std::string text =
        output.heading(fmt::format("{} {}", frame.msgId(),
                                   message != nullptr ? message->title : "unknown message")) +
        "  " +
        output.dim(fmt::format("{}, {}, {}", lengthText(message, data.size()),
                               flagsText(frame.flags()), place)) +
        '\n';
    if (message != nullptr) {
        text += linesOf(*message, data);
    }
    return text + (hex ? hexLines(data) : "") + '\n';
}

}  // namespace GssipTool
