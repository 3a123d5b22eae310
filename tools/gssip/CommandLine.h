// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace GssipTool {

/// The program gssip: reads the command line, runs the command and gives the exit status.
int run(int argc, char** argv);

}  // namespace GssipTool
