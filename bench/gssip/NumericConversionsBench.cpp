// SPDX-License-Identifier: Apache-2.0
// One conversion of each kind over the same 64 numbers; the items are single conversions.
#include <benchmark/benchmark.h>

#include <array>
#include <random>

#include "gssip/NumericConversions.h"

namespace {

constexpr size_t kNumbers = 64;

struct Numbers {
    Numbers() {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> inside(-7e6, 7e6);
        for (size_t i = 0; i < kNumbers; ++i) {
            doubles[i] = inside(random);
            floats[i] = static_cast<float>(doubles[i]);
            for (uint16_t& word : words[i]) {
                word = static_cast<uint16_t>(random());
            }
        }
    }
    std::array<double, kNumbers> doubles{};
    std::array<float, kNumbers> floats{};
    std::array<std::array<uint16_t, 4>, kNumbers> words{};
};

template <typename Convert>
void run(benchmark::State& state, Convert convert) {
    Numbers numbers;
    for (auto _ : state) {
        for (size_t i = 0; i < kNumbers; ++i) {
            convert(numbers, i);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kNumbers));
}

template <typename Result>
void read(benchmark::State& state, Result (*convert)(const uint16_t*)) {
    run(state, [convert](Numbers& numbers, size_t i) {
        benchmark::DoNotOptimize(convert(numbers.words[i].data()));
    });
}

void writePdpDouble(benchmark::State& state) {
    run(state, [](Numbers& n, size_t i) { cnvpcd(&n.doubles[i], n.words[i].data()); });
}

void writePdpSingle(benchmark::State& state) {
    run(state, [](Numbers& n, size_t i) { cnvpcs(&n.floats[i], n.words[i].data()); });
}

void writeVeskExtended(benchmark::State& state) {
    run(state, [](Numbers& n, size_t i) { CnvPcD2VeskE(n.doubles[i], n.words[i].data()); });
}

void splitPdpDouble(benchmark::State& state) {
    run(state, [](Numbers& n, size_t i) {
        double integerPart;
        benchmark::DoNotOptimize(PdpD_modf(n.words[i].data(), &integerPart));
        benchmark::DoNotOptimize(integerPart);
    });
}

BENCHMARK_CAPTURE(read, PdpDouble, CnvPdpD2PcD);
BENCHMARK_CAPTURE(read, PdpSingle, CnvPdpF2PcF);
BENCHMARK_CAPTURE(read, VeskExtended, CnvVeskD2PcD);
BENCHMARK_CAPTURE(read, VeskSingle, CnvVeskF2PcF);
BENCHMARK_CAPTURE(read, TExtended, cnvte);
BENCHMARK_CAPTURE(read, TSingle, cnvts);
BENCHMARK(writePdpDouble);
BENCHMARK(writePdpSingle);
BENCHMARK(writeVeskExtended);
BENCHMARK(splitPdpDouble);

}  // namespace
