// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "RovanServer/IPZ_SeqState.h"

// The command table as the bus knows it, written down for the tests: what each command comes to in
// which state of the server.
namespace command_table {

enum class Pending { nothing, cvZeroize, zeroize, destroy };

// How far a zeroize has come.
struct ZeroizeState {
    const char* name;
    Pending pending;
    eIPZ_State sequence;
    const char* finalAnswer;  // with events 3 and 17, and then silence
};

inline const ZeroizeState kZeroizeStates[] = {
    {"Nothing", Pending::nothing, eIPZ_Idle, ""},
    {"CvZeroize", Pending::cvZeroize, eIPZ_Idle, "ROVAN_CV_ZEROIZE_PASS"},
    {"Zeroize", Pending::zeroize, eIPZ_Idle, "COMPONENT_ZEROIZE_PASS"},
    {"ConnectMessages", Pending::destroy, eIPZ_ConnectMessages, "COMPONENT_DESTROY_FAIL"},
    {"WaitOnConnects", Pending::destroy, eIPZ_WaitOnConnects, "COMPONENT_DESTROY_FAIL"},
    {"CommandEZero", Pending::destroy, eIPZ_CommandEZero, "COMPONENT_DESTROY_FAIL"},
    {"WaitOnEZero", Pending::destroy, eIPZ_WaitOnEZero, "COMPONENT_DESTROY_FAIL"},
    {"CommandIPZ", Pending::destroy, eIPZ_CommandIPZ, "COMPONENT_DESTROY_FAIL"},
    {"WaitOnIPZero", Pending::destroy, eIPZ_WaitOnIPZero, "COMPONENT_DESTROY_FAIL"},
    {"ReportFail", Pending::destroy, eIPZ_ReportFail, "COMPONENT_DESTROY_FAIL"},
    {"ReportSuccess", Pending::destroy, eIPZ_ReportSuccess, "COMPONENT_DESTROY_PASS"},
    {"Destroyed", Pending::nothing, eIPZ_Idle, ""},
};

inline void PrintTo(const ZeroizeState& state, std::ostream* out) {
    *out << state.name;
}

enum class Circumstance {
    plain,
    reradAsking,       // a rerad setup, passthrough not yet granted
    reradPassthrough,  // a rerad setup, passthrough granted and the receiver told
    timeDataTransfer,  // under way
    faultyReceiver,    // with its serial cable disconnected
};
inline const Circumstance kCircumstances[] = {
    Circumstance::plain, Circumstance::reradAsking, Circumstance::reradPassthrough,
    Circumstance::timeDataTransfer, Circumstance::faultyReceiver};

inline const int kBitStates[] = {0, 1, 2, 3, 4, 5};  // 0: no BIT
inline const int kIpClearStatuses[] = {0, 2, 4};

struct State {
    ZeroizeState zeroize;
    int bit;
    int ipClearStatus;
    Circumstance circumstance;

    bool isRerad() const {
        return circumstance == Circumstance::reradAsking ||
               circumstance == Circumstance::reradPassthrough;
    }
    bool isFaulty() const { return circumstance == Circumstance::faultyReceiver; }
    bool isPassthroughGranted() const { return circumstance == Circumstance::reradPassthrough; }
    std::string text() const {
        return std::string("zeroize ") + zeroize.name + ", BIT state " + std::to_string(bit) +
               ", clear status " + std::to_string(ipClearStatus) + ", circumstance " +
               std::to_string(static_cast<int>(circumstance));
    }
};

// What a command comes to.
struct Effect {
    std::string answer;   // at once
    std::string queued;   // for the receiver
    std::string command;  // of the server's own
    enum Zeroize { goesOn, isDropped, startsCv, startsZeroize, startsDestroy } zeroize = goesOn;
    bool startsBit = false;
    bool grantsPassthrough = false;
    bool subscribesAntenna = false;
    int32_t timeCode = 0;  // from now on; 0: as before
};

inline Effect answered(const std::string& text) {
    Effect effect;
    effect.answer = text;
    return effect;
}
inline Effect queued(const std::string& message, Effect::Zeroize zeroize = Effect::goesOn) {
    Effect effect;
    effect.queued = message;
    effect.zeroize = zeroize;
    return effect;
}
inline Effect timeCode(int32_t code, const std::string& answer) {
    Effect effect = answered(answer);
    effect.timeCode = code;
    return effect;
}
inline Effect antennaState(const std::string& answer) {
    Effect effect = answered(answer);
    effect.subscribesAntenna = true;
    return effect;
}
inline Effect withBit() {
    Effect effect;
    effect.startsBit = true;
    return effect;
}
inline Effect withPassthrough(const std::string& answer) {
    Effect effect = answered(answer);
    effect.grantsPassthrough = true;
    return effect;
}
inline Effect refusedAndDropped(const std::string& answer) {
    Effect effect = answered(answer);
    effect.zeroize = Effect::isDropped;
    return effect;
}
inline Effect destroyStarted() {
    Effect effect;
    effect.zeroize = Effect::startsDestroy;
    return effect;
}
inline Effect ownCommand(const std::string& text) {
    Effect effect;
    effect.command = text;
    return effect;
}

// The command table: the first row with the text whose condition holds.
struct Row {
    const char* text;
    bool (*when)(const State&);
    Effect effect;
};

inline bool always(const State&) {
    return true;
}
inline bool isIpDataClear(const State& state) {
    return state.ipClearStatus == 2;
}
inline bool isAnyPending(const State& state) {
    return state.zeroize.pending != Pending::nothing;
}
inline bool isZeroizeOrDestroyPending(const State& state) {
    return state.zeroize.pending == Pending::zeroize || state.zeroize.pending == Pending::destroy;
}
inline bool isDestroyPending(const State& state) {
    return state.zeroize.pending == Pending::destroy;
}
inline bool isBitRunning(const State& state) {
    return state.bit != 0;
}
inline bool isFaultKnownAndNothingPending(const State& state) {
    return state.isFaulty() && state.zeroize.pending == Pending::nothing;
}

inline const std::vector<Row>& commandTable() {
    static const std::vector<Row> table = {
        {"SYSTEM_MODE_SELECT_LIVE", always, timeCode(100, "SYSTEM_MODE_SELECT_LIVE_PASS")},
        {"SYSTEM_MODE_SELECT_SIMULATION", always,
         timeCode(101, "SYSTEM_MODE_SELECT_SIMULATION_PASS")},
        {"ROVAN_DESTROY_STATUS", isIpDataClear, answered("ROVAN_DESTROY_STATUS_PASS")},
        {"ROVAN_DESTROY_STATUS", always, answered("ROVAN_DESTROY_STATUS_FAIL")},
        {"BITSERVER_PING", always, answered("Rovan")},
        {"REQUEST_ANTENNA_STATE", [](const State& state) { return state.isFaulty(); },
         antennaState("CURRENT_ANTENNA_STATE,CRPA,Yes")},
        {"REQUEST_ANTENNA_STATE", always, antennaState("CURRENT_ANTENNA_STATE,CRPA,No")},
        {"QUERY_ROVAN_STATUS", [](const State& state) { return state.isRerad(); },
         answered("CURRENT_ROVAN_STATUS,1")},
        {"QUERY_ROVAN_STATUS", always, answered("CURRENT_ROVAN_STATUS,0")},
        {"ROVAN_SET_STANDBY", always, queued("5001 mode 5, answers ROVAN_SET_STANDBY")},
        {"ROVAN_SET_CONT", always, queued("5001 mode 1, answers ROVAN_SET_CONT")},
        {"ROVAN_CV_ZEROIZE", isAnyPending, {}},
        {"ROVAN_CV_ZEROIZE", isIpDataClear, answered("ROVAN_CV_ZEROIZE_NACK")},
        {"ROVAN_CV_ZEROIZE", always,
         queued("5001 mode 8, answers ROVAN_CV_ZEROIZE", Effect::startsCv)},
        {"ROVAN_ZEROIZE", isZeroizeOrDestroyPending, {}},
        {"ROVAN_ZEROIZE", isIpDataClear, refusedAndDropped("ROVAN_ZEROIZE_NACK")},
        {"ROVAN_ZEROIZE", always,
         queued("5001 mode 7, answers ROVAN_ZEROIZE", Effect::startsZeroize)},
        {"ROVAN_DESTROY", isDestroyPending, answered("ROVAN_DESTROY_NACK")},
        {"ROVAN_DESTROY", always, destroyStarted()},
        {"REQUEST_COMPONENT_CBIT", isAnyPending, answered("REQUEST_COMPONENT_CBIT_NACK")},
        {"REQUEST_COMPONENT_CBIT", isBitRunning, {}},
        {"REQUEST_COMPONENT_CBIT", always, withBit()},
        {"REQUEST_PARTNUMBERS", always, answered("PARTNUMBERS")},  // nothing known yet
        {"PASSTHROUGH_ENABLED", always, withPassthrough("PASSTHROUGH_ENABLED_PASS")},
        {"POSTCOMPLETE", always, {}},
        {"FIRST_BBIT_DONE", isFaultKnownAndNothingPending, ownCommand("REQUEST_CBIT")},
        {"FIRST_BBIT_DONE", always, {}},
    };
    return table;
}

/// The texts of the table, and three that are no command.
inline std::vector<std::string> commandTexts() {
    std::set<std::string> texts{"NO_SUCH_COMMAND", "", std::string(10'000, 'A')};
    for (const Row& row : commandTable()) {
        texts.insert(row.text);
    }
    return {texts.begin(), texts.end()};
}

inline Effect expectedEffect(const std::string& text, const State& state) {
    for (const Row& row : commandTable()) {
        if (row.text == text && row.when(state)) {
            return row.effect;
        }
    }
    return {};
}

}  // namespace command_table
