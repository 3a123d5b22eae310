// SPDX-License-Identifier: Apache-2.0
#include "ASPN/SystemIds.h"

#include <string_view>

namespace ASPN2 {
namespace {

struct System {
    std::string_view name;
    unsigned char id;
};

constexpr System kSystems[] = {{"ARVEN", 1}, {"BRELD", 2}, {"TessalyPlus", 3}};

}  // namespace

unsigned char SystemIds::from_string(const char* name) {
    if (name != nullptr) {
        for (const System& system : kSystems) {
            if (system.name == name) {
                return system.id;
            }
        }
    }
    return 0;
}

std::vector<std::string> SystemIds::names() {
    std::vector<std::string> result;
    for (const System& system : kSystems) {
        result.emplace_back(system.name);
    }
    return result;
}

}  // namespace ASPN2
