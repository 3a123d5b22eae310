// SPDX-License-Identifier: Apache-2.0
// The server's own threads. Each survives every exception of its work: it reports and goes on.
#include <chrono>
#include <exception>

#include "RovanServer/PassthroughQuery.h"
#include "RovanServer/RovanServer.h"
#include "RovanServer/TimeDataTransfer.h"
#include "utility/Console.h"
#include "utility/Sleep.h"

namespace {

constexpr std::chrono::seconds kServerRhythm{1};
constexpr std::chrono::seconds kPeriodicRhythm{1};
constexpr std::chrono::milliseconds kZeroizeRhythm{100};
constexpr std::chrono::seconds kTimeDataRhythm{1};

}  // namespace

const RovanServer::ExceptionTexts RovanServer::kPeriodicTexts{
    ": periodicThreadFunction() EXCEPTION: ", ": periodicThreadFunction() EXCEPTION: <unknown>"};
const RovanServer::ExceptionTexts RovanServer::kZeroizeTexts{
    " zeroizeThreadFunction() caught std::exception: ",
    " zeroizeThreadFunction() caught <unknown> exception"};
const RovanServer::ExceptionTexts RovanServer::kServerTexts{
    " serverThreadFunction() caught std::exception: ",
    " serverThreadFunction() caught <unknown> exception"};
const RovanServer::ExceptionTexts RovanServer::kTimeDataTexts{
    ": timeDataWorkerThreadFunction() EXCEPTION: ",
    ": timeDataWorkerThreadFunction() EXCEPTION: <unknown>"};
const RovanServer::ExceptionTexts RovanServer::kCommandTexts{": cbCmd() EXCEPTION: ",
                                                             ": cbCmd() EXCEPTION: <unknown>"};
const RovanServer::ExceptionTexts RovanServer::kResponseTexts{": cbRsp() EXCEPTION: ",
                                                              ": cbRsp() EXCEPTION: <unknown>"};

const RovanServer::ExceptionTexts RovanServer::kOutboxTexts{": commandOutbox EXCEPTION: ",
                                                            ": commandOutbox EXCEPTION: <unknown>"};

void RovanServer::survive(const ExceptionTexts& texts, const std::function<void()>& work) {
    const auto report = [this](const std::string& text) {
        sendEvent(__FILE__, __LINE__, EventTypes::eError, text);
        Console::line(text);
    };
    try {
        work();
    } catch (const std::exception& e) {
        report(m_serverName + texts.known + e.what());
    } catch (...) {
        report(m_serverName + texts.unknown);
    }
}

void RovanServer::startBit(const CommandResponse& cmd, bool restartPeriodic) {
    const std::lock_guard<std::mutex> lock(m_threadsMutex);
    if (m_stopping) {
        return;
    }
    m_bit.begin(cmd);
    // The thread of the BIT before has nothing left to do but to send its last answer.
    if (m_serverThread.joinable()) {
        m_serverThread.join();
    }
    m_serverThread.start([this] { serverThreadFunction(); });
    // A periodic thread that still runs goes on by itself after the BIT. It must not be waited for
    // here: it publishes commands, and their listener is the thread that this runs on.
    if (restartPeriodic && m_periodicThread.stopRequested()) {
        m_periodicThread.join();
        m_periodicThread.start([this] { periodicThreadFunction(); });
    }
}

void RovanServer::serverThreadFunction() {
    m_bit.enterThread();
    while (!m_serverThread.stopRequested()) {
        bool goesOn = true;
        survive(kServerTexts, [&] { goesOn = m_bit.step(); });
        if (!goesOn) {
            return;
        }
        Utility::sleepFor(kServerRhythm);
    }
}

void RovanServer::periodicThreadFunction() {
    while (!m_periodicThread.stopRequested()) {
        Utility::sleepFor(kPeriodicRhythm);
        if (m_bit.isRunning()) {
            continue;
        }
        survive(kPeriodicTexts, [this] {
            if (!m_passthroughQuery->check()) {
                m_periodicThread.requestStop();
            }
        });
    }
}

void RovanServer::zeroizeThreadFunction() {
    while (!m_zeroizeThread.stopRequested()) {
        survive(kZeroizeTexts, [this] {
            if (m_zeroize.isPending()) {
                m_zeroize.handleZeroize(0);
            }
        });
        Utility::sleepFor(kZeroizeRhythm);
    }
}

void RovanServer::timeDataWorkerThreadFunction() {
    while (!m_timeDataThread.stopRequested()) {
        Utility::sleepFor(kTimeDataRhythm);
        survive(kTimeDataTexts, [this] { m_timeDataTransfer->tick(); });
    }
}
