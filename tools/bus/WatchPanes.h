// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/bus/Canvas.h"
#include "tools/bus/WatchModel.h"

// The panes of the live view: each draws its part of the model into an area, as much as fits. A
// pane's first line is its title with the age of what it shows. A value that is not known is "--";
// one that is too old is dimmed, and the title says so.
namespace Bus::WatchPanes {

using Clock = WatchModel::Clock;

void position(Area area, const WatchModel& model, Clock::time_point now);
void receiver(Area area, const WatchModel& model, Clock::time_point now);
void time(Area area, const WatchModel& model, Clock::time_point now);
void keys(Area area, const WatchModel& model, Clock::time_point now);
void interference(Area area, const WatchModel& model, Clock::time_point now);

/// A round view from above, north up: the rim is the horizon, the centre the zenith.
void sky(Area area, const WatchModel& model, Clock::time_point now);
/// One line for each satellite.
void satellites(Area area, const WatchModel& model, Clock::time_point now);
/// A bar for each channel in use.
void carrierToNoise(Area area, const WatchModel& model, Clock::time_point now);

/// One line for each topic; two topics in a line when it is too narrow or low for that.
void link(Area area, const WatchModel& model, Clock::time_point now);
/// The last lines before the `scroll` last ones.
void log(Area area, const WatchModel& model, size_t scroll);

/// Lines that each pane takes.
constexpr int kPositionLines = 6;
constexpr int kReceiverLines = 3;
constexpr int kTimeLines = 5;
constexpr int kKeyLines = 6;
constexpr int kInterferenceLines = 2;

}  // namespace Bus::WatchPanes
