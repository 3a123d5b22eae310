// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "simulator/FrameScanner.h"

namespace Simulator {

// Whoever wants to know what happens to the receiver. Called on the thread on which it happens,
// with no lock held, so that it may call the receiver; only power and reset not from within
// onPower().
class IReceiverObserver {
  public:
    virtual ~IReceiverObserver() = default;

    /// An intact frame that is no answer came in: before the receiver takes it up, and when it has
    /// answered it and done what it says, if it does.
    virtual void beforeAnswer(const ScannedFrame& frame) = 0;
    virtual void afterAnswer(const ScannedFrame& frame) = 0;

    /// The receiver has lost its power, or has it again and starts.
    virtual void onPower(bool on) = 0;
    /// It has started; message 8 waits to be said.
    virtual void onBootDone() = 0;
};

}  // namespace Simulator
