// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "tools/common/Output.h"
#include "tools/gssip/Commands.h"
#include "tools/gssip/FrameJson.h"
#include "tools/gssip/Input.h"
#include "tools/gssip/PieceText.h"
#include "tools/gssip/Summary.h"
#include "tools/gssip/Timeline.h"
#include "tools/gssip/Until.h"
#include "utility/Console.h"

namespace GssipTool {
namespace {

// Shows each piece as the options say.
class Show {
  public:
    Show(const Options& options, bool isLive) : m_options(options), m_summary(isLive) {}

    void piece(const Piece& piece, std::optional<int64_t> timeNs) {
        if (isComplete()) {
            return;  // there is more in what was read at once than was asked for
        }
        m_summary.count(piece);
        if (!m_options.summaryOnly && isWanted(piece)) {
            m_output.write(m_options.json
                               ? Tools::toLine(toJson(piece, timeNs, m_options.hex)) + '\n'
                               : textOf(piece, timeNs, m_options.hex, m_output));
        }
        m_shown += piece.isFrame && isWanted(piece) ? 1 : 0;
    }

    void end(size_t waiting) {
        m_summary.countWaiting(waiting);
        if (!m_options.noSummary) {
            m_output.write(m_options.json ? Tools::toLine(m_summary.json()) + '\n'
                                          : m_summary.text());
        }
        m_output.flush();
    }

    bool isComplete() const { return m_options.count > 0 && m_shown >= m_options.count; }
    Tools::Output& output() { return m_output; }
    ExitStatus status() const { return m_summary.status(); }

  private:
    // What went wrong is always wanted.
    bool isWanted(const Piece& piece) const {
        const auto& ids = m_options.ids;
        return !piece.isFrame || ids.empty() ||
               std::find(ids.begin(), ids.end(), FrameView(piece.bytes).msgId()) != ids.end();
    }

    const Options& m_options;
    Tools::Output m_output;
    Summary m_summary;
    uint64_t m_shown = 0;
};

}  // namespace

ExitStatus decode(const Options& options) {
    Input input(options.input, options.baud);
    Show show(options, input.isLive());
    Timeline timeline;
    FrameScanner scanner([&](Piece&& piece) {
        show.piece(piece, timeline.at(piece.offset + piece.bytes.size() - 1));
    });
    const Until until(options.durationSeconds);
    Input::Event event = Input::Event::kNothing;
    const auto sink = [&](const uint8_t* bytes, size_t count, std::optional<int64_t> timeNs) {
        timeline.add(count, timeNs);
        scanner.feed(bytes, count);
    };
    while (event != Input::Event::kEnd && event != Input::Event::kHangUp && !until.reached() &&
           !show.isComplete() && show.output().good()) {
        event = input.read(until.patience(), sink);
        if (event == Input::Event::kNothing) {  // let the reader see what there is
            scanner.flush();
            show.output().flush();
        }
    }
    const bool isWhole = !input.isLive() && event == Input::Event::kEnd;
    if (isWhole) {
        scanner.finish();
    } else {
        scanner.flush();
    }
    show.end(scanner.waiting());
    if (show.output().isReaderGone()) {
        return kFailed;
    }
    if (!show.output().good()) {
        throw std::runtime_error("standard output: " + show.output().problem());
    }
    if (event == Input::Event::kHangUp) {
        Console::errorLine(fmt::format("gssip: {}: the line was hung up", options.input));
        return kFailed;
    }
    if (input.isCutOff()) {
        Console::errorLine(fmt::format("gssip: {}: the recording is cut off", options.input));
        return kDataErrors;
    }
    return show.status();
}

}  // namespace GssipTool
