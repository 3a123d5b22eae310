// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Tools {

// Turns SIGINT and SIGTERM into a question, so that a command ends at a place of its own choosing,
// and makes a reader that has gone away (SIGPIPE) a failed write instead of a death. One for the
// process.
class StopSignals {
  public:
    /// Installs the handlers for the rest of the process's life.
    static void install();
    /// True once one of the two signals has come.
    static bool arrived();
};

}  // namespace Tools
