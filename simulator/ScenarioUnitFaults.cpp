// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioUnitFaults.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "simulator/ScenarioActionKinds.h"

namespace Simulator {
namespace {

constexpr unsigned kMostBytes = 65'535;

// One of several states of a part of the unit; the last one is that of a healthy unit. A word that
// takes arguments has no operation here: it is read before.
struct State {
    const char* name;
    void (*set)(ScenarioStage& stage);
};

template <std::size_t N>
ScenarioAction readState(ScenarioLine& line, const State (&states)[N]) {
    std::vector<const char*> names;
    std::transform(std::begin(states), std::end(states), std::back_inserter(names),
                   [](const State& state) { return state.name; });
    const State& state = states[line.oneOf(names)];
    const State& healthy = states[N - 1];
    return &state == &healthy ? doing(state.set) : lasting(state.set, healthy.set);
}

constexpr State kLineStates[] = {{"unplugged", [](ScenarioStage& stage) { stage.line().unplug(); }},
                                 {"hung-up", [](ScenarioStage& stage) { stage.line().hangUp(); }},
                                 {"break", [](ScenarioStage& stage) { stage.line().holdBreak(); }},
                                 {"stuck", nullptr},
                                 {"plugged", [](ScenarioStage& stage) { stage.line().plug(); }}};

constexpr State kRovanKdStates[] = {
    {"full", [](ScenarioStage& stage) { stage.queues().fillRovanKd(); }},
    {"gone", [](ScenarioStage& stage) { stage.queues().removeRovanKd(); }},
    {"back", [](ScenarioStage& stage) { stage.queues().restoreRovanKd(); }}};
constexpr State kKdRovanStates[] = {
    {"gone", [](ScenarioStage& stage) { stage.queues().removeKdRovan(); }},
    {"back", [](ScenarioStage& stage) { stage.queues().restoreKdRovan(); }}};

}  // namespace

ScenarioAction readBitErrors(ScenarioLine& line) {
    const double rate = line.fraction("a probability");
    return lasting([rate](ScenarioStage& stage) { stage.receiver.noise().setBitErrors(rate); },
                   [](ScenarioStage& stage) { stage.receiver.noise().setBitErrors(0); });
}

ScenarioAction readBursts(ScenarioLine& line) {
    const unsigned bytes = line.number("a number of bytes", 0, kMostBytes);
    const auto every = bytes == 0 ? std::chrono::nanoseconds(0) : line.duration("a time");
    return lasting(
        [bytes, every](ScenarioStage& stage) { stage.receiver.noise().setBursts(bytes, every); },
        [](ScenarioStage& stage) { stage.receiver.noise().setBursts(0, {}); });
}

ScenarioAction readLine(ScenarioLine& line) {
    if (line.take("stuck")) {
        const unsigned byte = line.number("a byte", 0, 255);
        return lasting(
            [byte](ScenarioStage& stage) { stage.line().stick(static_cast<std::uint8_t>(byte)); },
            [](ScenarioStage& stage) { stage.line().plug(); });
    }
    return readState(line, kLineStates);
}

ScenarioAction readBaud(ScenarioLine& line) {
    const auto follow = [](ScenarioStage& stage) { stage.receiver.followLineSpeed(); };
    if (!line.nextIsNumber()) {
        line.oneOf({"right"});
        return doing(follow);
    }
    const int speed = static_cast<int>(line.number("a line speed", 50, 4'000'000));
    return lasting([speed](ScenarioStage& stage) { stage.receiver.setLineSpeed(speed); }, follow);
}

ScenarioAction readCounter(ScenarioLine& line) {
    constexpr State kStates[] = {{"frozen", [](ScenarioStage& stage) { stage.fpga().freeze(); }},
                                 {"ahead", nullptr},
                                 {"back", nullptr},
                                 {"runs", [](ScenarioStage& stage) { stage.fpga().run(); }}};
    const bool ahead = line.peek() == "ahead";
    if (!ahead && line.peek() != "back") {
        return readState(line, kStates);
    }
    line.take(ahead ? "ahead" : "back");
    const std::chrono::duration<double> time = line.duration("a time");
    const auto ticks =
        std::llround(time.count() * static_cast<double>(FpgaRegisters::kTicksPerSecond));
    return doing(
        [ticks = ahead ? ticks : -ticks](ScenarioStage& stage) { stage.fpga().jump(ticks); });
}

ScenarioAction readQueue(ScenarioLine& line) {
    return line.oneOf({"rovan-kd", "kd-rovan"}) == 0 ? readState(line, kRovanKdStates)
                                                     : readState(line, kKdRovanStates);
}

}  // namespace Simulator
