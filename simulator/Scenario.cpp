// SPDX-License-Identifier: Apache-2.0
#include "simulator/Scenario.h"

#include <fstream>
#include <iterator>
#include <sstream>

namespace Simulator {
namespace {

constexpr const char* kEvents =
    "power-off, power-on, boot-done or a message id from 1 to 65535, with :MODE if only one is "
    "meant";
constexpr unsigned kMostTimes = 1'000'000;

// "5402", or "5001:7" for one mode of it.
void readHeard(ScenarioLine& line, ScenarioTrigger& trigger) {
    const ScenarioLine before = line;
    const std::string word = line.word(kEvents);
    const std::size_t colon = word.find(':');
    ScenarioLine parts(line.where(), colon == std::string::npos
                                         ? word
                                         : word.substr(0, colon) + ' ' + word.substr(colon + 1));
    try {
        trigger.kind = ScenarioTrigger::Kind::Heard;
        trigger.msgId = static_cast<std::uint16_t>(parts.number("a message id", 1, 65'535));
        if (colon != std::string::npos) {
            trigger.mode = static_cast<std::uint16_t>(parts.number("a mode", 0, 65'535));
        }
        parts.end("no more");
    } catch (const ScenarioError&) {
        before.fail(kEvents);
    }
}

void readTimes(ScenarioLine& line, ScenarioTrigger& trigger) {
    if (line.take("once")) {
        trigger.times = 1;
    } else if (line.nextIsNumber()) {
        trigger.times = line.number("a number of times", 1, kMostTimes);
        if (!line.take("times")) {
            line.fail("times");
        }
    }
}

ScenarioStatement readStatement(ScenarioLine& line) {
    ScenarioStatement statement;
    statement.where = line.where();
    statement.text = line.text();
    statement.trigger = ScenarioTrigger::read(line);
    statement.action = ScenarioAction::read(line);
    if (line.peek() == "for" && !statement.action.end) {
        line.fail("no for, since this does not last");
    }
    if (line.take("for")) {
        statement.lasts = line.duration("a time");
    }
    if (statement.trigger.kind == ScenarioTrigger::Kind::Time) {
        line.end("the end of the line");
        return statement;
    }
    const bool aboutHeard =
        statement.action.aboutHeard && statement.trigger.kind == ScenarioTrigger::Kind::Heard;
    if (line.peek() == "after" && aboutHeard) {
        line.fail(
            "a message id or the end of the line, since it is too late for this message then");
    }
    if (line.take("after")) {
        statement.after = line.duration("a delay");
        line.end("the end of the line");
    }
    line.end("after or the end of the line");
    return statement;
}

}  // namespace

ScenarioTrigger ScenarioTrigger::read(ScenarioLine& line) {
    ScenarioTrigger trigger;
    if (line.take("at")) {
        trigger.at = line.duration("a time");
    } else if (line.take("on")) {
        if (line.take("power-off")) {
            trigger.kind = Kind::PowerOff;
        } else if (line.take("power-on")) {
            trigger.kind = Kind::PowerOn;
        } else if (line.take("boot-done")) {
            trigger.kind = Kind::BootDone;
        } else {
            readHeard(line, trigger);
        }
        readTimes(line, trigger);
    }
    return trigger;
}

Scenario Scenario::read(const std::filesystem::path& file) {
    std::error_code error;
    std::ifstream stream(file);
    if (!std::filesystem::is_regular_file(file, error) || !stream) {
        throw ScenarioError(file.string() + ": expected a scenario file, cannot read it");
    }
    return parse(std::string(std::istreambuf_iterator<char>(stream), {}), file.string());
}

Scenario Scenario::parse(const std::string& text, const std::string& name) {
    Scenario scenario;
    std::istringstream lines(text);
    std::string content;
    for (unsigned number = 1; std::getline(lines, content); ++number) {
        ScenarioLine line(name + ':' + std::to_string(number), content);
        if (!line.atEnd()) {
            scenario.m_statements.push_back(readStatement(line));
        }
    }
    return scenario;
}

ScenarioStatement ScenarioStatement::parse(const std::string& where, const std::string& text) {
    ScenarioLine line(where, text);
    return readStatement(line);
}

ScenarioStatement ScenarioStatement::parseOption(const std::string& text) {
    std::string blanked = text;
    bool quoted = false;
    for (char& c : blanked) {
        quoted = quoted != (c == '"');
        if (!quoted && (c == '=' || c == ',')) {
            c = ' ';
        }
    }
    return parse("--fault " + text, blanked);
}

void Scenario::append(ScenarioStatement statement) {
    m_statements.push_back(std::move(statement));
}

void Scenario::append(const Scenario& other) {
    m_statements.insert(m_statements.end(), other.m_statements.begin(), other.m_statements.end());
}

}  // namespace Simulator
