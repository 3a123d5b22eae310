// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

// Which product a server is: what it reports about itself at start. A plain value.
struct HestrelPartNumber {
    std::string serverName;
    std::string partNumber = "100-2000-300B";
    std::string notice;  // the product's notice line, given by the deployment

    /// "<server name> HPN: <part number>  <notice>", with two blanks before the notice.
    std::string text() const;
};
