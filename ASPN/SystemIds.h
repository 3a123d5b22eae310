// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace ASPN2 {

// The systems that a server may be part of: the top byte of its device ids.
class SystemIds {
  public:
    /// 0 for a null or unknown name; the comparison is exact.
    static unsigned char from_string(const char* name);

    /// The known names, in the order of their ids.
    static std::vector<std::string> names();
};

}  // namespace ASPN2
