// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/Passthrough.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "utility/Console.h"

Passthrough::Passthrough(const std::vector<uint8_t>& frame) {
    std::copy_n(frame.begin(), std::min(frame.size(), kBlockBytes),
                reinterpret_cast<uint8_t*>(m_block.data()));
    const uint16_t wdcnt = m_block[Gssip::kWordCount];
    if (wdcnt > kMaxWords) {
        throw std::runtime_error("Passthrough() FAILED due to data word count exceeding maximum: " +
                                 std::to_string(wdcnt));
    }
    if (frame.size() > kBlockBytes) {
        Console::errorLine("Passthrough() of " + std::to_string(frame.size()) +
                           " bytes overruns the frame's " + std::to_string(kBlockBytes));
        std::abort();
    }
    attach(m_block.data(), m_block.data() + Gssip::kWordData, m_block[Gssip::kWordMsgId], wdcnt,
           kBlockBytes);
}

void forwardPassthrough(const std::vector<uint8_t>& sample, const std::set<uint16_t>& ids,
                        ServerActions& actions) {
    if (sample.size() < Gssip::kHeaderBytes ||
        ids.count(Gssip::wordAt(sample.data() + 2 * Gssip::kWordMsgId)) == 0) {
        return;
    }
    auto message = std::make_shared<Passthrough>(sample);
    if (sample.size() < Gssip::kHeaderBytes + 2 * size_t{message->wdcnt()}) {
        return;
    }
    actions.queueMessage(std::move(message));
}
