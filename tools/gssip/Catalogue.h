// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "tools/gssip/Field.h"

namespace GssipTool {

// Records of equal layout, one behind the other.
struct Records {
    std::string name;
    unsigned word = 0;    // of the first record
    unsigned count = 0;   // 0: the message has no records
    unsigned stride = 0;  // words from one record to the next
    std::vector<Field> fields = {};
};

// A receiver message: what stands where in its data words. The words that no field covers have no
// meaning here.
struct Message {
    uint16_t msgId;
    uint16_t wdcnt;
    const char* title;
    bool toReceiver;
    std::vector<Field> fields;
    Records records = {};
    bool anyLength = false;  // only the fields are known: it may well be longer
};

/// All messages, in the order of their ids. The one description of the fields: text, JSON and the
/// way back are made from it.
const std::vector<Message>& catalogue();

/// The message with that id; null for one that is not in the catalogue.
const Message* findMessage(uint16_t msgId);

/// The bits of the header's flag word.
const std::vector<Name>& headerFlags();

}  // namespace GssipTool
