// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Config {

/// The program rovan-config: reads the command line, runs the command and gives the exit status.
int run(int argc, char** argv);

}  // namespace Config
