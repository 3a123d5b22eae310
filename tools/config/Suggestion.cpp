// SPDX-License-Identifier: Apache-2.0
#include "tools/config/Suggestion.h"

#include <algorithm>

namespace Config {
namespace {

// In halves of a letter.
constexpr std::size_t kLetter = 2;
constexpr std::size_t kCase = 1;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t replacement(char a, char b) {
    if (a == b) {
        return 0;
    }
    return lower(a) == lower(b) ? kCase : kLetter;
}

bool equalButForCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace

std::size_t distance(const std::string& a, const std::string& b) {
    constexpr std::size_t kLongest = 100;
    if (a.size() > kLongest || b.size() > kLongest) {
        return std::max(a.size(), b.size());
    }
    // Optimal string alignment: rows are the beginnings of `a`, columns those of `b`.
    const std::size_t width = b.size() + 1;
    std::vector<std::size_t> cost((a.size() + 1) * width);
    const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& {
        return cost[i * width + j];
    };
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                at(i, j) = kLetter * (i + j);
                continue;
            }
            at(i, j) = std::min({at(i - 1, j) + kLetter, at(i, j - 1) + kLetter,
                                 at(i - 1, j - 1) + replacement(a[i - 1], b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + kLetter);
            }
        }
    }
    return (at(a.size(), b.size()) + 1) / kLetter;
}

std::string suggestion(const std::string& text, const std::vector<std::string>& candidates) {
    std::string best;
    std::size_t smallest = 0;
    for (const std::string& candidate : candidates) {
        const std::size_t away = distance(text, candidate);
        // A third of the letters: one slip in three letters, two in six.
        const std::size_t slips =
            std::max<std::size_t>(1, std::min(text.size(), candidate.size()) / 3);
        const bool near = away <= slips || equalButForCase(text, candidate);
        if (candidate != text && near && (best.empty() || away < smallest)) {
            best = candidate;
            smallest = away;
        }
    }
    return best;
}

}  // namespace Config
