// SPDX-License-Identifier: Apache-2.0
// What a receiver frame costs from the parser to the bus, in its parts: finding it in the stream,
// and turning it into three messages that go out. Read the figures as ratios to each other.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>

#include "RovanServer/RovanProcessor.h"
#include "gssip/GssipParser.h"
#include "tests/face/TransportBus.h"
#include "tests/gssip/Frames.h"

namespace {

using aspn2_msgs::idl::GSSIP;
using aspn2_msgs::idl::PositionVelocity;
using transport_test::carries;
using transport_test::Parameters;

constexpr int kDomain = 200;

Frames::Bytes frame8504() {
    std::mt19937 random(1);
    return Frames::randomFrame(random, 8504, 200);
}

struct Counter : IHandleGpsipMessages {
    void OnGpsMessageReceived(unsigned char*, unsigned, unsigned) override { ++frames; }
    void OnParserChecksumError(unsigned) override {}
    int64_t frames = 0;
};

void findFrame(benchmark::State& state) {
    const auto parser = std::make_unique<GssipParser>();
    Counter counter;
    parser->ProcessMessagesWithThis(&counter, 0);
    const Frames::Bytes frame = frame8504();
    for (auto _ : state) {
        parser->LoadBytes(frame.data(), static_cast<uint16_t>(frame.size()));
    }
    if (counter.frames != state.iterations()) {
        state.SkipWithError("a frame was not found");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(findFrame);

// A processor on a bus where nobody else is, and, if wanted, a listener in the same process.
void translateAndPublish(benchmark::State& state, const char* transport, bool listened) {
    std::map<std::string, Parameters> containers{
        {"FastRtps", transport_test::busSettings(kDomain, {{"UseTransport", transport}})}};
    for (const char* topic : {"UtcDownlink", "PositionVelocity", "ReceiverStatus", "ChannelStatus",
                              "GPSTime", "UTCTime", "ChallengedEnvironment", "GPSCryptoStatus",
                              "GPSLineOfSight", "MaintenanceEvent", "SVStatus"}) {
        containers[topic] = carries(topic);
    }
    const transport_test::ConnectionsFile file(containers);
    int64_t heard = 0;
    const auto tss = transport_test::join(file);
    transport_test::Face<PositionVelocity> face(tss);
    if (listened) {
        face.registerCallback(transport_test::connect(*tss, "PositionVelocity"),
                              [&heard](auto&&...) { ++heard; });
    }
    RovanProcessor processor("Rovan", tss, ASPN2::DeviceIdFactory("TessalyPlus", 39), false);
    processor.Framework_Connect();

    GSSIP sample;
    const Frames::Bytes frame = frame8504();
    sample.num_bytes(static_cast<int32_t>(frame.size()));
    sample.data(std::vector<uint8_t>(frame.begin(), frame.end()));
    for (auto _ : state) {
        processor.process8504(sample);
    }
    if (heard != (listened ? state.iterations() : 0)) {
        state.SkipWithError("a message was not heard");
    }
    state.SetItemsProcessed(state.iterations());
    processor.Framework_Disconnect();
}
BENCHMARK_CAPTURE(translateAndPublish, udp, "UDP", false);
BENCHMARK_CAPTURE(translateAndPublish, shm, "SHM", false);
BENCHMARK_CAPTURE(translateAndPublish, udpListened, "UDP", true);

}  // namespace
