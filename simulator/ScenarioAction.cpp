// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioAction.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {
namespace {

using std::chrono::milliseconds;

constexpr unsigned kMostTimes = 1'000'000;
constexpr unsigned kLastMsgId = 65'535;
constexpr std::uint16_t kMsgZeroizeStatus = 5404;

template <typename Change>
ScenarioAction changing(Change change) {
    ScenarioAction action;
    action.perform = [change](Receiver& receiver, Receiver::MsgId) {
        receiver.changeReports(change);
    };
    return action;
}

template <typename Operation>
ScenarioAction doing(Operation operation) {
    ScenarioAction action;
    action.perform = [operation](Receiver& receiver, Receiver::MsgId) { operation(receiver); };
    return action;
}

ScenarioAction first(ScenarioAction action) {
    action.strikesFirst = true;
    return action;
}

// Wrongs: [ID or any [TIMES]], and without them the message that set the statement off.
template <typename Wrong>
ScenarioAction wrong(ScenarioLine& line, Wrong wrong) {
    ScenarioAction action;
    action.strikesFirst = true;
    action.aboutHeard = !line.nextIsNumber() && line.peek() != "any";
    Receiver::MsgId msgId;
    unsigned times = 1;
    if (!action.aboutHeard) {
        if (!line.take("any")) {
            msgId = static_cast<std::uint16_t>(line.number("a message id", 0, kLastMsgId));
        }
        if (line.nextIsNumber()) {
            times = line.number("a number of times", 1, kMostTimes);
        }
    }
    action.perform = [wrong, times, msgId, aboutHeard = action.aboutHeard](Receiver& receiver,
                                                                           Receiver::MsgId heard) {
        wrong(receiver, times, aboutHeard ? heard : msgId);
    };
    return action;
}

ScenarioAction readDelayAck(ScenarioLine& line) {
    const auto delay = std::chrono::round<milliseconds>(line.duration("a delay"));
    return wrong(line, [delay](Receiver& receiver, unsigned times, Receiver::MsgId msgId) {
        receiver.delayAck(delay, times, msgId);
    });
}

ScenarioAction readCorruptByte(ScenarioLine& line) {
    const unsigned offset = line.number("a place of a byte", 0, kLastMsgId);
    return wrong(line, [offset](Receiver& receiver, unsigned times, Receiver::MsgId msgId) {
        receiver.corruptByte(offset, times, msgId);
    });
}

ScenarioAction readGarbage(ScenarioLine& line) {
    const unsigned count = line.number("a number of bytes", 1, kLastMsgId);
    return doing([count](Receiver& receiver) { receiver.garbage(count); });
}

ScenarioAction readEvent(ScenarioLine& line) {
    const unsigned eventId = line.number("an event id", 0, 65'535);
    const std::string text = line.nextIsQuoted() ? line.quoted("a text", 32) : "";
    return doing([eventId, text](Receiver& receiver) { receiver.sendEvent(eventId, text); });
}

ScenarioAction readReport(ScenarioLine& line) {
    const auto known = [](unsigned msgId) {
        return !ReceiverReports(0).make(static_cast<std::uint16_t>(msgId), 0).empty();
    };
    const std::string expected = "the id of a report that the receiver makes";
    ScenarioLine before = line;
    const unsigned msgId = line.nextIsNumber() ? line.number("a message id", 0, kLastMsgId) : 0;
    if (!known(msgId)) {
        before.fail(expected);
    }
    return doing(
        [msgId](Receiver& receiver) { receiver.sendReport(static_cast<std::uint16_t>(msgId)); });
}

// What is either on or off.
struct Switch {
    const char* name;
    void (*set)(ReceiverReports& reports, bool on);
};
constexpr Switch kFaults[] = {
    {"fpga-power", [](ReceiverReports& r, bool on) { r.connection.fpgaTurnOnFailed = on; }},
    {"bci-power", [](ReceiverReports& r, bool on) { r.connection.clockTurnOnFailed = on; }},
    {"fpga-signal", [](ReceiverReports& r, bool on) { r.connection.invalidFpgaSignal = on; }},
    {"bci-clock", [](ReceiverReports& r, bool on) { r.connection.clockFailed = on; }},
    {"receiver", [](ReceiverReports& r, bool on) { r.receiverFailure = on; }}};

ScenarioAction readSwitch(ScenarioLine& line, void (*set)(ReceiverReports&, bool)) {
    const bool on = line.onOrOff();
    return changing([set, on](ReceiverReports& reports) { set(reports, on); });
}

ScenarioAction readFault(ScenarioLine& line) {
    std::vector<const char*> names;
    std::transform(std::begin(kFaults), std::end(kFaults), std::back_inserter(names),
                   [](const Switch& fault) { return fault.name; });
    return readSwitch(line, kFaults[line.oneOf(names)].set);
}

ScenarioAction readMode(ScenarioLine& line) {
    const unsigned mode = line.number("an operating mode", 0, 15);
    return changing([mode](ReceiverReports& reports) { reports.operatingMode = mode; });
}

ScenarioAction readZeroize(ScenarioLine& line) {
    constexpr ZeroizeOutcome ReceiverReports::*kKinds[] = {&ReceiverReports::cvZeroize,
                                                           &ReceiverReports::emergencyZeroize,
                                                           &ReceiverReports::ipZeroize};
    constexpr ZeroizeOutcome kOutcomes[] = {ZeroizeOutcome::Success, ZeroizeOutcome::Failure,
                                            ZeroizeOutcome::Silence};
    const auto kind = kKinds[line.oneOf({"cv", "emergency", "ip"})];
    const ZeroizeOutcome outcome = kOutcomes[line.oneOf({"succeeds", "fails", "silent"})];
    return changing([kind, outcome](ReceiverReports& reports) { reports.*kind = outcome; });
}

// Told at once, since nothing tells it in every epoch.
ScenarioAction readZeroizeStatus(ScenarioLine& line) {
    const unsigned status = line.number("a status", 0, 3);
    return doing([status](Receiver& receiver) {
        receiver.changeReports(
            [status](ReceiverReports& reports) { reports.ipZeroizeStatus = status; });
        if (receiver.connected().count(kMsgZeroizeStatus) != 0) {
            receiver.sendReport(kMsgZeroizeStatus);
        }
    });
}

ScenarioAction readBootFlag(ScenarioLine& line) {
    const bool normal = line.oneOf({"normal", "abnormal"}) == 0;
    return changing([normal](ReceiverReports& reports) { reports.versions.bootNormal = normal; });
}

template <void (Receiver::*kWrong)(unsigned, Receiver::MsgId)>
ScenarioAction readWrong(ScenarioLine& line) {
    return wrong(line, [](Receiver& receiver, unsigned times, Receiver::MsgId msgId) {
        (receiver.*kWrong)(times, msgId);
    });
}

template <void (*kSet)(ReceiverReports&, bool)>
ScenarioAction readOnOff(ScenarioLine& line) {
    return readSwitch(line, kSet);
}

void setRerad(ReceiverReports& r, bool on) {
    r.connection.rerad = on;
}
void setBciCable(ReceiverReports& r, bool on) {
    r.connection.cableLost = !on;
}
void setSerialCable(ReceiverReports& r, bool on) {
    r.connection.serialCableDisconnected = !on;
}
void setSolution(ReceiverReports& r, bool on) {
    r.noSolution = !on;
}
void setTransfer(ReceiverReports& r, bool on) {
    r.dataTransfer = on;
}

ScenarioAction readSilence(ScenarioLine&) {
    return first(doing([](Receiver& receiver) { receiver.silence(); }));
}
ScenarioAction readSpeak(ScenarioLine&) {
    return first(doing([](Receiver& receiver) { receiver.speak(); }));
}
ScenarioAction readReset(ScenarioLine&) {
    return doing([](Receiver& receiver) { receiver.resetReceiver(); });
}

struct Row {
    const char* word;
    ScenarioAction (*read)(ScenarioLine& line);
};
constexpr Row kActions[] = {{"reject", readWrong<&Receiver::reject>},
                            {"nak", readWrong<&Receiver::nak>},
                            {"drop-ack", readWrong<&Receiver::dropAck>},
                            {"drop-reply", readWrong<&Receiver::dropReply>},
                            {"delay-ack", readDelayAck},
                            {"corrupt-byte", readCorruptByte},
                            {"garbage", readGarbage},
                            {"silence", readSilence},
                            {"speak", readSpeak},
                            {"reset", readReset},
                            {"event", readEvent},
                            {"report", readReport},
                            {"rerad", readOnOff<setRerad>},
                            {"bci-cable", readOnOff<setBciCable>},
                            {"serial-cable", readOnOff<setSerialCable>},
                            {"fault", readFault},
                            {"solution", readOnOff<setSolution>},
                            {"mode", readMode},
                            {"transfer", readOnOff<setTransfer>},
                            {"zeroize", readZeroize},
                            {"zeroize-status", readZeroizeStatus},
                            {"boot-flag", readBootFlag}};

}  // namespace

ScenarioAction ScenarioAction::read(ScenarioLine& line) {
    std::vector<const char*> words;
    std::transform(std::begin(kActions), std::end(kActions), std::back_inserter(words),
                   [](const Row& row) { return row.word; });
    return kActions[line.oneOf(words)].read(line);
}

}  // namespace Simulator
