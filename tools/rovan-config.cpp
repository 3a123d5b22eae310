// SPDX-License-Identifier: Apache-2.0
#include "tools/config/CommandLine.h"

int main(int argc, char** argv) {
    return Config::run(argc, argv);
}
