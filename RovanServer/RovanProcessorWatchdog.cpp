// SPDX-License-Identifier: Apache-2.0
// 253: the receiver is alive, and the watch over its silence.
#include <utility>

#include "ASPN/HealthReporter.h"
#include "RovanServer/RovanProcessor.h"

namespace {

constexpr std::chrono::seconds kSilenceLimit{18};

}  // namespace

// Whatever the frame holds: that it came is all.
void RovanProcessor::process253(const GSSIP&) {
    const Time now = m_clock();
    bool wasOk = false;
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        m_last253Time = now;
        wasOk = std::exchange(m_commOk, true);
    }
    if (!wasOk) {
        HealthReporter::Instance().SendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                                             "ROVAN present and communicating.");
    }
}

// Silence is reported again after each further limit, also when nothing was ever heard.
void RovanProcessor::periodic253Checker() {
    const Time now = m_clock();
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        if (now - m_last253Time <= kSilenceLimit) {
            return;
        }
        m_last253Time = now;
        m_commOk = false;
    }
    HealthReporter::Instance().SendEvent(__FILE__, __LINE__, EventTypes::eFailure,
                                         m_name + ": periodic253Checker() ROVAN COMM ERROR!");
}
