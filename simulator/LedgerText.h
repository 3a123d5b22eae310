// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "simulator/BusLedger.h"

namespace Simulator {

/// The balance for a person, some lines of text, each ended. With `colours` the verdict stands out
/// on a terminal.
std::string ledgerText(const LedgerBalance& balance, bool colours);

/// The same as one JSON object, without a line end. All times are seconds since the unit's start.
std::string ledgerJson(const LedgerBalance& balance);

}  // namespace Simulator
