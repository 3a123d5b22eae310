// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Reports a fault of the receiver twice: as a maintenance record under `identity`, and as an event
/// of type 4 that is marked with `source` and `line`. Nothing is filtered: a fault that lasts is
/// reported as often as the receiver says it.
void reportReceiverFault(const std::string& description, const std::string& identity,
                         const char* source, int line);
