// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/CommandLine.h"

int main(int argc, char** argv) {
    return GssipTool::run(argc, argv);
}
