// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Bus {

/// The program rovan-bus: reads the command line, runs the command and gives the exit status.
int run(int argc, char** argv);

}  // namespace Bus
