// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ASPN2 {

// The maintenance components that the servers of the wider system stand for.
class Components {
  public:
    /// The component's name, a literal. Sub ids 1 and 2 name the same component on every server;
    /// without a match the result is ServerIds::kInvalid.
    static const char* to_component(unsigned char serverId, unsigned char subId);
};

}  // namespace ASPN2
