// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioAction.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "simulator/ScenarioActionKinds.h"
#include "simulator/ScenarioUnitFaults.h"

namespace Simulator {
namespace {

using std::chrono::milliseconds;

constexpr unsigned kMostTimes = 1'000'000;
constexpr unsigned kLastMsgId = 65'535;
constexpr std::uint16_t kMsgZeroizeStatus = 5404;

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
    action.perform = [wrong, times, msgId, aboutHeard = action.aboutHeard](ScenarioStage& stage,
                                                                           Receiver::MsgId heard) {
        wrong(stage.receiver, times, aboutHeard ? heard : msgId);
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
    return doing([count](ScenarioStage& stage) { stage.receiver.garbage(count); });
}

ScenarioAction readEvent(ScenarioLine& line) {
    const unsigned eventId = line.number("an event id", 0, 65'535);
    const std::string text = line.nextIsQuoted() ? line.quoted("a text", 32) : "";
    return doing(
        [eventId, text](ScenarioStage& stage) { stage.receiver.sendEvent(eventId, text); });
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
    return doing([msgId](ScenarioStage& stage) {
        stage.receiver.sendReport(static_cast<std::uint16_t>(msgId));
    });
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
    return doing([status](ScenarioStage& stage) {
        Receiver& receiver = stage.receiver;
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
    return first(lasting([](ScenarioStage& stage) { stage.receiver.silence(); },
                         [](ScenarioStage& stage) { stage.receiver.speak(); }));
}
ScenarioAction readSpeak(ScenarioLine&) {
    return first(doing([](ScenarioStage& stage) { stage.receiver.speak(); }));
}
ScenarioAction readReset(ScenarioLine&) {
    return doing([](ScenarioStage& stage) { stage.receiver.resetReceiver(); });
}

// All that a statement can order, and what a person is told about it.
struct Row {
    const char* word;
    ScenarioAction (*read)(ScenarioLine& line);
    const char* arguments;
    const char* effect;
};
constexpr Row kActions[] = {
    {"reject", readWrong<&Receiver::reject>, "[ID [TIMES]]", "refuses messages"},
    {"nak", readWrong<&Receiver::nak>, "[ID [TIMES]]", "says that they came damaged"},
    {"drop-ack", readWrong<&Receiver::dropAck>, "[ID [TIMES]]", "says no ACK"},
    {"drop-reply", readWrong<&Receiver::dropReply>, "[ID [TIMES]]", "does not reply"},
    {"delay-ack", readDelayAck, "TIME [ID [TIMES]]", "says ACK late"},
    {"corrupt-byte", readCorruptByte, "PLACE [ID [TIMES]]", "damages a byte of its frames"},
    {"garbage", readGarbage, "COUNT", "says random bytes"},
    {"bit-errors", readBitErrors, "RATE", "bits flip on the line, both ways"},
    {"bursts", readBursts, "BYTES TIME", "once in TIME so many bytes are damaged"},
    {"silence", readSilence, "", "says nothing at all"},
    {"speak", readSpeak, "", "ends silence"},
    {"reset", readReset, "", "starts anew"},
    {"line", readLine, "unplugged|hung-up|break|stuck BYTE|plugged", "what the line does"},
    {"baud", readBaud, "SPEED|right", "runs at another line speed than the server"},
    {"counter", readCounter, "frozen|ahead TIME|back TIME|runs", "the FPGA's time base"},
    {"queue", readQueue, "rovan-kd full|gone|back, kd-rovan gone|back", "the queue devices"},
    {"event", readEvent, "ID [\"TEXT\"]", "says event 5044"},
    {"report", readReport, "ID", "says this report now"},
    {"rerad", readOnOff<setRerad>, "on|off", "rerad mode in 9405"},
    {"bci-cable", readOnOff<setBciCable>, "on|off", "the BCI cable in 9405"},
    {"serial-cable", readOnOff<setSerialCable>, "on|off", "the serial cable in 9405"},
    {"fault", readFault, "NAME on|off", "tells a fault in 9405 or 8504"},
    {"solution", readOnOff<setSolution>, "on|off", "has a navigation solution"},
    {"mode", readMode, "N", "operating mode in 5040"},
    {"transfer", readOnOff<setTransfer>, "on|off", "time data transfer in 5042"},
    {"zeroize", readZeroize, "cv|emergency|ip succeeds|fails|silent", "how it will end"},
    {"zeroize-status", readZeroizeStatus, "N", "status in 5404"},
    {"boot-flag", readBootFlag, "normal|abnormal", "in 9225"}};

}  // namespace

ScenarioAction ScenarioAction::read(ScenarioLine& line) {
    std::vector<const char*> words;
    std::transform(std::begin(kActions), std::end(kActions), std::back_inserter(words),
                   [](const Row& row) { return row.word; });
    return kActions[line.oneOf(words)].read(line);
}

std::string ScenarioAction::help() {
    constexpr std::size_t kColumn = 44;
    std::string text;
    for (const Row& row : kActions) {
        std::string order = std::string(row.word) + ' ' + row.arguments;
        order.resize(std::max(order.size() + 2, kColumn), ' ');
        text += order + row.effect + '\n';
    }
    return text;
}

}  // namespace Simulator
