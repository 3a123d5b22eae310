// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/DataFields.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <stdexcept>

#include "gssip/GssipFrame.h"
#include "tools/common/Quoted.h"

namespace GssipTool {
namespace {

constexpr size_t kMaxWords = 65535;

bool liesIn(const Field& field, size_t words) {
    return field.word + field.words <= words;
}

bool recordLiesIn(const Records& records, unsigned i, size_t words) {
    return records.word + (i + 1) * records.stride <= words;
}

Json valuesOf(const std::vector<Field>& fields, const uint16_t* words, size_t count) {
    Json values = Json::object();
    for (const Field& field : fields) {
        if (liesIn(field, count)) {
            values[field.name] = valueOf(field, words);
        }
    }
    return values;
}

// Which words must be given raw, found out field by field.
class RawWords {
  public:
    explicit RawWords(const Words& data) : m_data(data), m_told(data.size()), m_raw(data.size()) {}

    void look(const Message& message) {
        look(message.fields, 0, m_data.size());
        const Records& records = message.records;
        for (unsigned i = 0; i < records.count && recordLiesIn(records, i, m_data.size()); ++i) {
            look(records.fields, records.word + i * records.stride, records.stride);
        }
    }

    bool isRaw(size_t i) const { return m_raw[i] || (m_data[i] & ~m_told[i]) != 0; }

  private:
    void look(const std::vector<Field>& fields, size_t first, size_t count) {
        for (const Field& field : fields) {
            if (liesIn(field, count)) {
                look(field, first);
            }
        }
    }

    void look(const Field& field, size_t first) {
        const unsigned mask = Gssip::bits(0xFFFF, field.high, field.low) << field.low;
        const bool back = comesBack(field, m_data.data() + first, mask);
        for (size_t i = first + field.word; i < first + field.word + field.words; ++i) {
            m_told[i] = static_cast<uint16_t>(m_told[i] | mask);
            m_raw[i] = m_raw[i] || !back;
        }
    }

    // Whether the field's value, put into empty words, gives these.
    static bool comesBack(const Field& field, const uint16_t* words, unsigned mask) {
        Words made(field.word + field.words);
        try {
            setValue(field, made.data(), valueOf(field, words));
        } catch (const std::invalid_argument&) {
            return false;  // below or above what the conversion back takes
        }
        return std::equal(made.begin() + field.word, made.end(), words + field.word,
                          [mask](uint16_t a, uint16_t b) { return ((a ^ b) & mask) == 0; });
    }

    const Words& m_data;
    Words m_told;
    std::vector<bool> m_raw;
};

void append(std::string& run, uint16_t word) {
    run += fmt::format("{}{:04x}", run.empty() ? "" : " ", word);
}

unsigned wordNumber(const std::string& key) {
    unsigned number = 0;
    const char* const end = key.data() + key.size();
    const auto [stop, error] = std::from_chars(key.data(), end, number);
    if (error != std::errc() || stop != end || number >= kMaxWords) {
        throw std::invalid_argument(
            fmt::format("raw: {} is no number of a data word", Tools::inQuotes(key)));
    }
    return number;
}

uint16_t hexWord(const std::string& text) {
    uint16_t word = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, word, 16);
    if (error != std::errc() || stop != end) {
        throw std::invalid_argument(
            fmt::format("raw: {} is no word in hexadecimal", Tools::inQuotes(text)));
    }
    return word;
}

// Writes the values that differ; `where` is what a field's name begins with in an error.
void applyValues(const std::vector<Field>& fields, const Json& values, uint16_t* words,
                 size_t count, const std::string& where) {
    if (!values.is_object()) {
        throw std::invalid_argument(where + " wants an object");
    }
    for (const auto& [name, value] : values.items()) {
        const std::string full = fmt::format("{} {}", where, Tools::inQuotes(name));
        const auto field = std::find_if(fields.begin(), fields.end(),
                                        [&, &key = name](const Field& f) { return f.name == key; });
        if (field == fields.end()) {
            throw std::invalid_argument(full + " is not known");
        }
        if (!liesIn(*field, count)) {
            throw std::invalid_argument(full + " lies beyond the last word");
        }
        try {
            if (!isSame(valueOf(*field, words), value)) {
                setValue(*field, words, value);
            }
        } catch (const std::invalid_argument& problem) {
            throw std::invalid_argument(fmt::format("{} {}", full, problem.what()));
        }
    }
}

void applyRecords(const Records& records, const Json& list, Words& data) {
    if (!list.is_array()) {
        throw std::invalid_argument(records.name + " wants a list");
    }
    for (unsigned i = 0; i < list.size(); ++i) {
        if (i >= records.count || !recordLiesIn(records, i, data.size())) {
            throw std::invalid_argument(
                fmt::format("{} has more records than the message", records.name));
        }
        applyValues(records.fields, list[i], data.data() + records.word + i * records.stride,
                    records.stride, fmt::format("{}[{}]", records.name, i));
    }
}

}  // namespace

Json fieldsOf(const Message& message, const Words& data) {
    Json fields = valuesOf(message.fields, data.data(), data.size());
    const Records& records = message.records;
    for (unsigned i = 0; i < records.count && recordLiesIn(records, i, data.size()); ++i) {
        fields[records.name].push_back(valuesOf(
            records.fields, data.data() + records.word + i * records.stride, records.stride));
    }
    return fields;
}

Json rawOf(const Message* message, const Words& data) {
    RawWords words(data);
    if (message != nullptr) {
        words.look(*message);
    }
    Json raw = Json::object();
    for (size_t i = 0; i < data.size(); ++i) {
        if (!words.isRaw(i)) {
            continue;
        }
        const size_t first = i;
        std::string run;
        for (; i < data.size() && words.isRaw(i); ++i) {
            append(run, data[i]);
        }
        raw[std::to_string(first)] = run;
    }
    return raw;
}

Json allRaw(const Words& data) {
    std::string run;
    for (const uint16_t word : data) {
        append(run, word);
    }
    return data.empty() ? Json::object() : Json{{"0", run}};
}

void applyRaw(const Json& raw, Words& data, bool grow) {
    if (!raw.is_object()) {
        throw std::invalid_argument("raw wants an object");
    }
    for (const auto& [key, run] : raw.items()) {
        if (!run.is_string()) {
            throw std::invalid_argument("raw wants texts of words in hexadecimal");
        }
        size_t i = wordNumber(key);
        std::istringstream words(run.get<std::string>());
        for (std::string word; words >> word; ++i) {
            if (i >= data.size() && grow && i < kMaxWords) {
                data.resize(i + 1);
            }
            if (i >= data.size()) {
                throw std::invalid_argument("raw goes beyond the last word");
            }
            data[i] = hexWord(word);
        }
    }
}

void applyFields(const Message& message, const Json& fields, Words& data) {
    if (!fields.is_object()) {
        throw std::invalid_argument("fields wants an object");
    }
    Json plain = fields;
    if (message.records.count > 0 && plain.contains(message.records.name)) {
        applyRecords(message.records, plain[message.records.name], data);
        plain.erase(message.records.name);
    }
    applyValues(message.fields, plain, data.data(), data.size(), "field");
}

}  // namespace GssipTool
