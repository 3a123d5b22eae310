// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <limits>

// Root of the sum of squares, for combining independent error terms. All in double; any unit, the
// result has the same. A not-a-number or infinite term comes through.
namespace RSS {

/// `acc` plus the square of `x`.
inline double SquareSum(double acc, double x) {
    return acc + x * x;
}

/// The square root of `x`, and exactly 0.0 for everything below the machine epsilon, negative input
/// included.
inline double RootIt(double x) {
    return x < std::numeric_limits<double>::epsilon() ? 0.0 : std::sqrt(x);
}

inline double Rss(double a, double b) {
    return RootIt(SquareSum(SquareSum(0.0, a), b));
}

inline double Rss(double a, double b, double c) {
    return RootIt(SquareSum(SquareSum(SquareSum(0.0, a), b), c));
}

inline double Rss(double a, double b, double c, double d) {
    return RootIt(SquareSum(SquareSum(SquareSum(SquareSum(0.0, a), b), c), d));
}

inline double Rss(double a, double b, double c, double d, double e) {
    return RootIt(SquareSum(SquareSum(SquareSum(SquareSum(SquareSum(0.0, a), b), c), d), e));
}

inline double Rss(double a, double b, double c, double d, double e, double f) {
    return RootIt(
        SquareSum(SquareSum(SquareSum(SquareSum(SquareSum(SquareSum(0.0, a), b), c), d), e), f));
}

}  // namespace RSS
