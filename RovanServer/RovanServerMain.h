// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>

#include "face/FACE_Common.h"

// The process around RovanServer: its life from the one command-line argument to the last line.

/// Written by SignalHandler; the main loop ends when it is true.
extern std::atomic<bool> exitFlag;
/// The signal that set exitFlag; printed at exit.
extern std::atomic<int> exitSignal;
/// Milliseconds between two looks at exitFlag, and between two tries of a transactional call. A
/// value that is not positive looks or tries again without sleeping.
extern int exitPollMs;
extern int transactionPollMs;

/// Notes the signal and asks the main loop to end; does nothing else.
void SignalHandler(int signal);

/// Installs SignalHandler for the signals that end the process in an orderly way.
void SetupSignalHandler();

/// Calls until `rc` comes back as anything but IN_PROGRESS, with transactionPollMs in between.
void callOnceTransactionally(std::function<void(FACE::RETURN_CODE_TYPE::Value&)> call,
                             FACE::RETURN_CODE_TYPE::Value& rc);

/// The program: returns its exit status. A failed step leaves it as std::runtime_error, which ends
/// the process.
int RovanServerMain(int argc, char** argv);
