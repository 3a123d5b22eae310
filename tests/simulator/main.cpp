// SPDX-License-Identifier: Apache-2.0
// The tests make devices, so the whole program runs in a private /dev. With --outside it stays
// where it was started and tells, by exit status 0, that every class refuses to make one there.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <utility>

#include "simulator/Devmem.h"
#include "simulator/PhysicalMemory.h"
#include "simulator/PrivateDev.h"
#include "simulator/QueueDevices.h"
#include "simulator/SerialLine.h"
#include "simulator/SimulatedUnit.h"

namespace {

bool refuses(const char* what, const std::function<void()>& make) {
    try {
        make();
    } catch (const std::runtime_error& error) {
        if (std::strstr(error.what(), "/dev is not the simulated unit's own") != nullptr) {
            return true;
        }
        std::cerr << what << ": " << error.what() << '\n';
        return false;
    }
    std::cerr << what << " was made\n";
    return false;
}

int checkOutside() {
    const std::pair<const char*, std::function<void()>> makers[] = {
        {"memory", [] { const Simulator::PhysicalMemory memory; }},
        // Numbers that no machine has, should it not refuse after all.
        {"serial line", [] { const Simulator::SerialLine line(9999); }},
        {"queue devices", [] { const Simulator::QueueDevices queues(9998, 9999); }},
        {"devmem", [] { const Simulator::Devmem devmem(Simulator::PrivateDev::kDirectory); }},
        {"unit", [] {
             Simulator::UnitOptions options;
             options.configFile = ROVAN_SOURCE_DIR "/config/udp/rovan.xml";
             const Simulator::SimulatedUnit unit(options);
         }}};
    bool good = !Simulator::PrivateDev::active();
    for (const auto& [what, make] : makers) {
        good = refuses(what, make) && good;
    }
    return good ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--outside") == 0) {
        return checkOutside();
    }
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests)) {
        if (const std::optional<int> status = Simulator::PrivateDev::enter()) {
            return *status;
        }
    }
    return RUN_ALL_TESTS();
}
