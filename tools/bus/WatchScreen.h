// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/bus/Canvas.h"
#include "tools/bus/WatchControl.h"
#include "tools/bus/WatchModel.h"

namespace Bus {

// What is drawn besides the model.
struct WatchMoment {
    WatchModel::Clock::time_point now;
    int64_t unixNs = 0;
    std::string bus;      // which one
    uint64_t losses = 0;  // samples that came too fast for the tool
};

/// The whole screen of the live view. On one that is smaller than 80 by 24 the panes that do not
/// fit are left out.
Canvas watchScreen(const WatchModel& model, const WatchControl& control, const WatchMoment& moment,
                   int width, int height);

}  // namespace Bus
