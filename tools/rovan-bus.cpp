// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/CommandLine.h"

int main(int argc, char** argv) {
    return Bus::run(argc, argv);
}
