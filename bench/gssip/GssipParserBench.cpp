// SPDX-License-Identifier: Apache-2.0
// Bytes and frames each second through the parser, fed as the read thread feeds it: 128 bytes at a
// time. Read the figures as ratios between the streams; a byte of any stream should cost about the
// same.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>

#include "gssip/GssipParser.h"
#include "tests/gssip/Frames.h"

namespace {

using Frames::Bytes;
using Frames::operator+;

constexpr size_t kReadBytes = 128;

struct Counter : IHandleGpsipMessages {
    void OnGpsMessageReceived(unsigned char*, unsigned, unsigned) override { ++frames; }
    void OnParserChecksumError(unsigned) override { ++errors; }
    int64_t frames = 0;
    int64_t errors = 0;
};

Bytes noise(size_t count) {
    std::mt19937 random(1);
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
    return bytes;
}

void run(benchmark::State& state, const Bytes& stream) {
    const auto parser = std::make_unique<GssipParser>();
    Counter counter;
    parser->ProcessMessagesWithThis(&counter, 0);
    for (auto _ : state) {
        for (size_t at = 0; at < stream.size(); at += kReadBytes) {
            const size_t count = std::min(kReadBytes, stream.size() - at);
            parser->LoadBytes(stream.data() + at, static_cast<uint16_t>(count));
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
    state.counters["frames"] =
        benchmark::Counter(static_cast<double>(counter.frames), benchmark::Counter::kIsRate);
    state.counters["errors"] =
        benchmark::Counter(static_cast<double>(counter.errors), benchmark::Counter::kIsRate);
}

void clean8504Frames(benchmark::State& state) {
    std::mt19937 random(1);
    Bytes stream;
    for (int i = 0; i < 100; ++i) {
        stream = std::move(stream) + Frames::randomFrame(random, 8504, 200);
    }
    run(state, stream);
}
BENCHMARK(clean8504Frames);

void headerOnlyFrames(benchmark::State& state) {
    Bytes stream;
    for (int i = 0; i < 4000; ++i) {
        stream = std::move(stream) + Frames::frame(5001, {}, 0x8800);
    }
    run(state, stream);
}
BENCHMARK(headerOnlyFrames);

void randomNoise(benchmark::State& state) {
    run(state, noise(40000));
}
BENCHMARK(randomNoise);

void firstDelimiterBytesOnly(benchmark::State& state) {
    run(state, Bytes(40000, 0xFF));
}
BENCHMARK(firstDelimiterBytesOnly);

// Good headers that promise the given number of words, then what completes them.
void hostileHeaders(benchmark::State& state) {
    const auto wdcnt = static_cast<uint16_t>(state.range(0));
    Bytes stream;
    for (uint16_t i = 0; i < 2000; ++i) {
        stream = std::move(stream) + Frames::header(i, wdcnt);
    }
    run(state, stream + noise(2u * wdcnt + 12));
}
BENCHMARK(hostileHeaders)->Arg(100)->Arg(1000)->Arg(10000)->Arg(65535);

}  // namespace
