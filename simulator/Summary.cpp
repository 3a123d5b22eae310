// SPDX-License-Identifier: Apache-2.0
#include "simulator/Summary.h"

#include <fmt/color.h>
#include <fmt/format.h>

#include <iterator>

namespace Simulator {
namespace {

// The lines of the summary, each with its name in front.
class Lines {
  public:
    explicit Lines(bool colours) : m_colours(colours) {}

    void add(const char* name, const std::string& value) {
        fmt::format_to(std::back_inserter(m_text), "  {:<18}{}\n", name, value);
    }
    void judge(const char* name, bool good, const std::string& value) {
        const auto style = fmt::fg(good ? fmt::terminal_color::green : fmt::terminal_color::red);
        add(name, m_colours ? fmt::format(style, "{}", value) : value);
    }
    void title(const std::string& value) {
        m_text += m_colours ? fmt::format(fmt::emphasis::bold, "{}", value) : value;
        m_text += '\n';
    }
    const std::string& text() const { return m_text; }

  private:
    const bool m_colours;
    std::string m_text;
};

std::string list(const FrameLedger::Counts& counts) {
    std::string text;
    for (const auto& [msgId, count] : counts) {
        fmt::format_to(std::back_inserter(text), "{}{} x{}", text.empty() ? "" : ", ", msgId,
                       count);
    }
    return text.empty() ? "none" : text;
}

double seconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

}  // namespace

std::string summary(SimulatedUnit& unit, const std::optional<ProcessEnd>& serverEnd,
                    std::chrono::steady_clock::time_point started, bool colours) {
    const FrameLedger& ledger = unit.receiver().ledger();
    const FrameLedger::Totals totals = ledger.totals();
    Lines lines(colours);
    lines.title(fmt::format("Simulated unit: {:.1f} s",
                            seconds(std::chrono::steady_clock::now() - started)));
    lines.add("receiver sent", list(ledger.saidById()));
    lines.add("receiver got", list(ledger.heardById()));
    lines.add("answers", fmt::format("{} ACKs and {} NAKs sent, {} ACKs received", totals.acksSaid,
                                     totals.naksSaid, totals.acksHeard));
    lines.judge("damaged", totals.heardDamaged == 0 && totals.strayBytes == 0,
                fmt::format("{} sent, {} received, {} stray bytes received", totals.saidDamaged,
                            totals.heardDamaged, totals.strayBytes));
    if (unit.server() != nullptr) {
        const FrameLedger::Counts missing = ledger.unacknowledged();
        lines.judge("ACKs missing", missing.empty(), list(missing));
    }
    lines.judge("ROVAN_KD", unit.queues().malformed() == 0,
                fmt::format("{} samples, {} malformed", unit.queues().samples().count(),
                            unit.queues().malformed()));
    for (const PowerChange& change : unit.power().changes().entries()) {
        lines.add("power",
                  fmt::format("{:8.3f} s  {} {}{}", seconds(change.seen - started),
                              change.which == PowerChange::Switch::PowerOn ? "Power_On" : "3.3 V",
                              change.on ? "on" : "off",
                              change.orderKnown ? "" : ", at once with the other"));
    }
    for (const PlayedStatement& played : unit.scenario().played().entries()) {
        lines.add("scenario", fmt::format("{:8.3f} s  {}{}", seconds(played.at),
                                          played.ended ? "end of: " : "", played.statement->text));
    }
    for (const std::string& call : unit.devmem().calls()) {
        lines.add("devmem", call);
    }
    if (unit.server() != nullptr) {
        lines.judge("server", serverEnd && serverEnd->good(),
                    serverEnd ? serverEnd->text() : "did not end");
    }
    return lines.text();
}

}  // namespace Simulator
