// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <stdexcept>

#include "tools/common/Output.h"
#include "tools/gssip/Catalogue.h"
#include "tools/gssip/Commands.h"

namespace GssipTool {
namespace {

const char* nameOf(Form form) {
    switch (form) {
        case Form::kUnsigned:
            return "unsigned";
        case Form::kSigned:
            return "signed";
        case Form::kFlag:
            return "yes or no";
        case Form::kFlags:
            return "flags";
        case Form::kChoice:
            return "index";
        case Form::kInt32:
            return "signed 32-bit";
        case Form::kPdpSingle:
            return "PDP single";
        case Form::kPdpDouble:
            return "PDP double";
        case Form::kVeskSingle:
            return "Vesk single";
        case Form::kVeskExtended:
            return "Vesk extended";
        case Form::kIeeeSingle:
            return "IEEE single";
        case Form::kIeeeDouble:
            return "IEEE double";
        case Form::kText:
            return "text";
        case Form::kSwappedText:
            return "text, bytes swapped";
    }
    return "";
}

std::string placeOf(const Field& field, unsigned first) {
    const unsigned word = first + field.word;
    if (field.words > 1) {
        return fmt::format("{} to {}", word, word + field.words - 1);
    }
    if (field.high == 15 && field.low == 0) {
        return fmt::format("{}", word);
    }
    return field.high == field.low ? fmt::format("{}, bit {}", word, field.low)
                                   : fmt::format("{}, bits {} to {}", word, field.high, field.low);
}

std::string lineOf(const std::string& prefix, const Field& field, unsigned first) {
    std::string line = fmt::format("  {:<32} {:<20} {}", prefix + field.name, placeOf(field, first),
                                   nameOf(field.form));
    line += field.unit != 1 ? fmt::format(", in steps of {}", field.unit) : "";
    line += *field.of ? fmt::format(", {}", field.of) : "";
    for (const Name& name : field.names) {
        line += field.form == Form::kFlags
                    ? fmt::format("\n    0x{:04X} {}", name.number, name.text)
                    : fmt::format("\n    {} {}", name.number, name.text);
    }
    return line + '\n';
}

std::string headingOf(const Message& message) {
    return fmt::format("{:>5}  {:<27} {:>4} words {} receiver", message.msgId, message.title,
                       message.anyLength ? "any" : std::to_string(message.wdcnt),
                       message.toReceiver ? "to" : "from");
}

}  // namespace

ExitStatus messages(const Options& options) {
    Tools::Output output;
    if (options.ids.empty()) {
        for (const Message& message : catalogue()) {
            output.write(headingOf(message) + '\n');
        }
    }
    for (const uint16_t msgId : options.ids) {
        const Message* const message = findMessage(msgId);
        if (message == nullptr) {
            throw std::runtime_error(fmt::format("the message {} is not known", msgId));
        }
        output.write(output.heading(headingOf(*message)) + '\n');
        for (const Field& field : message->fields) {
            output.write(lineOf("", field, 0));
        }
        const Records& records = message->records;
        for (const Field& field : records.fields) {
            output.write(lineOf(records.name + "[0].", field, records.word));
        }
        if (records.count > 0) {
            output.write(
                fmt::format("  {} records, {} words each\n", records.count, records.stride));
        }
    }
    output.flush();
    return output.good() ? kGood : kFailed;
}

}  // namespace GssipTool
