// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/bus/Options.h"

// The commands of rovan-bus. Each works until its limit or a stop signal, writes to standard output
// what was asked for and to standard error what went wrong, and throws UsageError for what the
// person at the keyboard can put right.
namespace Bus {

/// Every field of every sample.
ExitStatus echo(const Options& options);

/// How often each topic is published.
ExitStatus hz(const Options& options);

/// Which topics there are, and who publishes and subscribes them.
ExitStatus list(const Options& options);

/// Sends a command, or a response, to whoever listens, and shows the answers.
ExitStatus send(const Options& options);

/// A live view on a whole terminal.
ExitStatus watch(const Options& options);

/// Writes every sample to a file.
ExitStatus record(const Options& options);

/// Publishes the samples of a recording.
ExitStatus play(const Options& options);

/// What is in a recording.
ExitStatus info(const Options& options);

}  // namespace Bus
