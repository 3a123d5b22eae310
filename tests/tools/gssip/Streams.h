// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/MSID_messages/GoldenFrames.h"
#include "tests/gssip/Frames.h"
#include "tools/gssip/FrameJson.h"
#include "tools/gssip/FrameScanner.h"

// Streams for the tests of gssip, and the way through its library and back.
namespace Streams {

using Frames::Bytes;

/// Every golden frame of every message.
inline const std::vector<Bytes>& golden() {
    static const std::vector<Bytes> kAll = [] {
        std::vector<Bytes> all;
        const auto addSamples = [&all](const auto& samples) {
            for (const auto& sample : samples) {
                all.push_back(sample.frame);
            }
        };
        addSamples(Golden::k5040);
        addSamples(Golden::k5042);
        addSamples(Golden::k7270);
        addSamples(Golden::k8040);
        addSamples(Golden::k8080);
        addSamples(Golden::k8504);
        addSamples(Golden::k9391);
        addSamples(Golden::k30409);
        addSamples(Golden::k5047);
        for (const Bytes* frame :
             {&Golden::kPowerOnCommand, &Golden::kContinuousCommand, &Golden::kStandbyCommand,
              &Golden::kEmergencyZeroize, &Golden::kCvZeroizeCommand, &Golden::kMistCommand,
              &Golden::kLineSpeed115200, &Golden::kRedundantPort, &Golden::kPulseOnPort15,
              &Golden::kSentences, &Golden::kReceiverSetup, &Golden::kIpZeroize,
              &Golden::kCvZeroize, &Golden::kMission84, &Golden::kConnect8504,
              &Golden::kDisconnect0, &Golden::kRequest9225, &Golden::kAcknowledge8504}) {
            all.push_back(*frame);
        }
        return all;
    }();
    return kAll;
}

inline Bytes joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// Flips, drops, doubles and inserts bytes here and there.
inline Bytes damaged(Bytes stream, unsigned seed, unsigned times) {
    std::mt19937 random(seed);
    for (unsigned i = 0; i < times && !stream.empty(); ++i) {
        const auto at = stream.begin() + static_cast<long>(random() % stream.size());
        switch (random() % 4) {
            case 0:
                *at = static_cast<uint8_t>(*at ^ 1u << random() % 8);
                break;
            case 1:
                stream.erase(at);
                break;
            case 2:
                stream.insert(at, *at);
                break;
            default:
                stream.insert(at, {0xFF, 0x81});
        }
    }
    return stream;
}

/// Random bytes, rich in what begins a frame.
inline Bytes noise(unsigned seed, size_t count) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) {
        constexpr uint8_t kFavourites[] = {0xFF, 0x81, 0x00};
        const auto choice = random() % 5;
        byte = choice < 3 ? kFavourites[choice] : static_cast<uint8_t>(random());
    }
    return bytes;
}

/// The pieces of a stream that comes in pieces of up to `largest` bytes.
inline std::vector<GssipTool::Piece> pieces(const Bytes& stream, size_t largest = 4096,
                                            unsigned seed = 1) {
    std::vector<GssipTool::Piece> all;
    GssipTool::FrameScanner scanner(
        [&all](GssipTool::Piece&& piece) { all.push_back(std::move(piece)); });
    std::mt19937 random(seed);
    for (size_t at = 0; at < stream.size();) {
        const size_t count = std::min<size_t>(random() % (largest + 1), stream.size() - at);
        scanner.feed(stream.data() + at, count);
        at += count;
    }
    scanner.finish();
    return all;
}

/// The JSON of a stream that is one good frame.
inline Tools::Json jsonOf(const Bytes& frame) {
    const auto all = pieces(frame);
    return all.size() == 1 && all[0].isFrame ? toJson(all[0], std::nullopt, false) : Tools::Json();
}

/// From a line of JSON text to bytes, as encode does it.
inline Bytes bytesOfText(const std::string& line) {
    return GssipTool::bytesOf(Tools::Json::parse(line));
}

/// To lines of JSON text and back.
inline Bytes throughJson(const Bytes& stream, bool allWords = false) {
    Bytes back;
    for (const auto& piece : pieces(stream)) {
        const Bytes bytes = bytesOfText(Tools::toLine(toJson(piece, 1, allWords)));
        back.insert(back.end(), bytes.begin(), bytes.end());
    }
    return back;
}

}  // namespace Streams
