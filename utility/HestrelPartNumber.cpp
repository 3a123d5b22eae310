// SPDX-License-Identifier: Apache-2.0
#include "utility/HestrelPartNumber.h"

std::string HestrelPartNumber::text() const {
    return serverName + " HPN: " + partNumber + "  " + notice;
}
