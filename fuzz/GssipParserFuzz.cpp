// SPDX-License-Identifier: Apache-2.0
// The parser against the plain state machine that defines it, on streams that the fuzzer composes.
#include <cstdlib>
#include <memory>

#include "gssip/GssipParser.h"
#include "tests/gssip/Frames.h"
#include "tests/gssip/PlainParser.h"

namespace {

using Frames::Bytes;
using Frames::operator+;

class Recorder : public IHandleGpsipMessages {
  public:
    void OnGpsMessageReceived(unsigned char* message, unsigned length, unsigned) override {
        events.push_back({load, Bytes(message, message + length)});
    }
    void OnParserChecksumError(unsigned) override { events.push_back({load, {}}); }

    size_t load = 0;
    std::vector<ParserEvent> events;
};

// The fuzzer's input, taken byte by byte; zeros behind its end.
class Script {
  public:
    Script(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_left(size) {}
    bool atEnd() const { return m_left == 0; }
    unsigned char byte() {
        if (m_left == 0) {
            return 0;
        }
        --m_left;
        return *m_bytes++;
    }
    uint16_t word() {
        const unsigned low = byte();
        return static_cast<uint16_t>(low | byte() * 256u);
    }

  private:
    const uint8_t* m_bytes;
    size_t m_left;
};

// Right checksums are beyond what mutation finds, so that the script names whole pieces.
Bytes nextPiece(Script& script) {
    switch (script.byte() % 6) {
        case 0:
            return Frames::header(script.word(), script.byte(), script.word());
        case 1:
            return Frames::header(script.word(), script.word());
        case 2: {
            std::vector<uint16_t> data(script.byte() % 64);
            for (uint16_t& word : data) {
                word = script.word();
            }
            return Frames::frame(script.word(), data);
        }
        case 3: {
            Bytes frame = Frames::frame(script.word(), {script.word(), 0x81FF, script.word()});
            frame[script.byte() % frame.size()] ^= script.byte();
            return frame;
        }
        case 4:
            return Bytes(script.byte(), script.byte());
        default:
            return {script.byte(), script.byte(), script.byte()};
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    static const auto parser = std::make_unique<GssipParser>();
    parser->reset();
    Recorder recorder;
    parser->ProcessMessagesWithThis(&recorder, 0);
    PlainParser plain;
    Script script(bytes, size);
    while (!script.atEnd()) {
        const Bytes piece = nextPiece(script);
        plain.load(piece.data(), piece.size());
        parser->LoadBytes(piece.data(), static_cast<uint16_t>(piece.size()));
        ++recorder.load;
    }
    if (!(recorder.events == plain.events())) {
        std::abort();
    }
    return 0;
}
