// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/JsonLine.h"

#include "tools/bus/Json.h"

namespace Bus {

std::string jsonLine(const Sample& sample) {
    Json line;
    line["topic"] = sample.topic;
    line["type"] = sample.typeName;
    line["publisher"] = sample.publisher;
    line["sequence"] = sample.sequence;
    line["sent_ns"] = sample.sentNs;
    line["received_ns"] = sample.receivedNs;
    line["message"] = sample.message->json();
    return toLine(line) + '\n';
}

}  // namespace Bus
