// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/gssip/Catalogue.h"

// The data words of a message as JSON and back: the fields by name, and in hexadecimal the words
// that the fields do not tell in full.
namespace GssipTool {

using Words = std::vector<uint16_t>;

/// The fields that lie whole in `data`, which may be shorter or longer than the message should be.
/// Records are a list of objects, those that lie whole in it.
Json fieldsOf(const Message& message, const Words& data);

/// What fieldsOf() leaves out: runs of words by the number of their first. These are the words with
/// bits that are set and belong to no field, and those of fields whose value does not give every
/// bit back. `message` is null for an unknown one.
Json rawOf(const Message* message, const Words& data);

/// All words as one run.
Json allRaw(const Words& data);

/// Puts the runs into `data`. With `grow`, data becomes as long as they need.
void applyRaw(const Json& raw, Words& data, bool grow);

/// Writes the fields whose value differs from what `data` says already, so that words given raw
/// stay as they are unless a field was changed. Both functions throw std::invalid_argument for what
/// is wrong, with the field's name.
void applyFields(const Message& message, const Json& fields, Words& data);

}  // namespace GssipTool
