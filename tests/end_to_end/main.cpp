// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "simulator/PrivateDev.h"

// The whole program runs in a private /dev: the server's devices are made there and nowhere else.
int main(int argc, char** argv) {
    if (const auto status = Simulator::PrivateDev::enter()) {
        return *status;
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
