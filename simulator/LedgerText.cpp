// SPDX-License-Identifier: Apache-2.0
#include "simulator/LedgerText.h"

#include <fmt/color.h>
#include <fmt/format.h>

#include <iterator>
#include <nlohmann/json.hpp>

namespace Simulator {
namespace {

// A run that went wrong altogether must not fill the screen; the JSON has them all.
constexpr std::size_t kTimesShown = 20;

double seconds(const LedgerBalance& balance, LedgerTime time) {
    return std::chrono::duration<double>(time - balance.begin).count();
}

std::vector<double> seconds(const LedgerBalance& balance, const std::vector<LedgerTime>& times) {
    std::vector<double> result;
    for (const LedgerTime time : times) {
        result.push_back(seconds(balance, time));
    }
    return result;
}

std::string listed(const char* what, const std::string& topic, const std::vector<double>& times) {
    std::string text;
    for (std::size_t i = 0; i < times.size() && i < kTimesShown; ++i) {
        fmt::format_to(std::back_inserter(text), "  {} {} at {:.3f} s\n", what, topic, times[i]);
    }
    if (times.size() > kTimesShown) {
        fmt::format_to(std::back_inserter(text), "  {} {}: {} more\n", what, topic,
                       times.size() - kTimesShown);
    }
    return text;
}

std::string verdict(const LedgerBalance& balance) {
    if (!balance.started) {
        return "does not balance: the server never said that it had started";
    }
    if (balance.unseen > 0) {
        return fmt::format("cannot be told: {} frames went by unseen", balance.unseen);
    }
    if (!balance.hasFrames()) {
        return "does not balance: no frame was due";
    }
    return balance.balances() ? "balances" : "does not balance";
}

}  // namespace

std::string ledgerText(const LedgerBalance& balance, bool colours) {
    std::string text = fmt::format("Ledger: {} frames intact, {} damaged, {} undelivered",
                                   balance.intact, balance.damaged, balance.undelivered);
    if (balance.started) {
        fmt::format_to(std::back_inserter(text), "; the server started at {:.3f} s",
                       seconds(balance, *balance.started));
    }
    text += fmt::format("\n  {:<21}{:>8}{:>9}{:>9}{:>9}{:>6}{:>7}{:>11}\n", "", "frames", "samples",
                        "missing", "surplus", "gaps", "early", "early out");
    for (const TopicBalance& topic : balance.topics) {
        fmt::format_to(std::back_inserter(text), "  {:<21}{:>8}{:>9}{:>9}{:>9}{:>6}{:>7}{:>11}\n",
                       topic.topic, topic.due, topic.samples, topic.missing.size(),
                       topic.surplus.size(), topic.gaps, topic.early, topic.earlyOut);
    }
    for (const TopicBalance& topic : balance.topics) {
        text += listed("missing", topic.topic, seconds(balance, topic.missing));
        text += listed("surplus", topic.topic, seconds(balance, topic.surplus));
    }
    fmt::format_to(std::back_inserter(text),
                   "  not judged: {} frames 7270, {} measurements in GPSLineOfSight; "
                   "{} frames 5047 and 5048, {} SVStatus\n",
                   balance.measurementFrames, balance.measurements, balance.satelliteFrames,
                   balance.satelliteSamples);
    const auto style =
        fmt::fg(balance.balances() ? fmt::terminal_color::green : fmt::terminal_color::red);
    const std::string end = verdict(balance);
    return text + "  " + (colours ? fmt::format(style, "{}", end) : end) + '\n';
}

std::string ledgerJson(const LedgerBalance& balance) {
    using Json = nlohmann::ordered_json;
    Json json;
    json["balances"] = balance.balances();
    json["started"] = balance.started ? Json(seconds(balance, *balance.started)) : Json();
    json["frames"] = {{"intact", balance.intact},
                      {"damaged", balance.damaged},
                      {"undelivered", balance.undelivered},
                      {"unseen", balance.unseen}};
    json["topics"] = Json::array();
    for (const TopicBalance& topic : balance.topics) {
        json["topics"].push_back({{"topic", topic.topic},
                                  {"frames", topic.due},
                                  {"samples", topic.samples},
                                  {"missing", seconds(balance, topic.missing)},
                                  {"surplus", seconds(balance, topic.surplus)},
                                  {"gaps", topic.gaps},
                                  {"early", topic.early},
                                  {"early_out", topic.earlyOut}});
    }
    json["not_judged"] = {{"frames_7270", balance.measurementFrames},
                          {"measurements", balance.measurements},
                          {"frames_5047_5048", balance.satelliteFrames},
                          {"SVStatus", balance.satelliteSamples}};
    return json.dump();
}

}  // namespace Simulator
