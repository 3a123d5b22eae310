// SPDX-License-Identifier: Apache-2.0
#include "ASPN/Components.h"

#include "ASPN/ServerIds.h"

namespace ASPN2 {
namespace {

struct Component {
    unsigned char serverId;
    const char* name;
};

// The components behind sub id 0. A deployment with more servers adds a row for each.
constexpr Component kComponents[] = {{ServerIds::kRovan, "GPS"}};

}  // namespace

const char* Components::to_component(unsigned char serverId, unsigned char subId) {
    switch (subId) {
        case 0:
            for (const Component& component : kComponents) {
                if (component.serverId == serverId) {
                    return component.name;
                }
            }
            return ServerIds::kInvalid;
        case 1:
            return "Component1";
        case 2:
            return "Component2";
        default:
            return ServerIds::kInvalid;
    }
}

}  // namespace ASPN2
