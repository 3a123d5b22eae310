// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanServerMain.h"

int main(int argc, char** argv) {
    return RovanServerMain(argc, argv);
}
