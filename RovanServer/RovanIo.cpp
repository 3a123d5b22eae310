// SPDX-License-Identifier: Apache-2.0
// Configuration and life cycle of the link.
#include "RovanServer/RovanIo.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "ASPN/HealthReporter.h"
#include "ASPN/ServerConnections.h"
#include "MSID_messages/RovancomPortSetup.h"
#include "gssip/GssipFrame.h"
#include "ioss_mcsq/GssipMcsq.h"
#include "platform/FPGA.h"
#include "utility/Console.h"

using FACE::RETURN_CODE_TYPE;

namespace {

constexpr unsigned char kDeviceCode = 46;
constexpr uint32_t kMessageQueueSize = 64;
constexpr uint32_t kWriteQueueSize = 32;

constexpr std::chrono::milliseconds kReceiverSetupTime{1500};
constexpr std::chrono::milliseconds kPauseAfterReadStart{100};
// Within one of these a resting thread notices that it is to stop.
constexpr std::chrono::nanoseconds kRestStep = std::chrono::milliseconds(50);
constexpr long long kNoLimit = -1;
constexpr long long kNoWait = 0;

// Parameters of the serial service.
constexpr uint16_t kParameterBaud = 2;
constexpr uint16_t kParameterParity = 5;

// The FPGA takes the time of this many characters off the arrival of each frame.
constexpr unsigned kUartDelayCharacters = 10;

using Setup = RovancomPortSetup;

Setup::e5331_SerialParity parityCode(uint16_t parity) {
    switch (parity) {
        case 1:
            return Setup::e5331_Parity_1;
        case 2:
            return Setup::e5331_Parity_2;
        default:
            return Setup::e5331_Parity_0;
    }
}

}  // namespace

RovanIo::RovanIo(std::string name, uint8_t uartIndex, uint8_t pulseIndex,
                 std::shared_ptr<SerialService> io, std::shared_ptr<GssipMcsq> gssipQueue,
                 long long gssipConnection, const ASPN2::DeviceIdFactory& deviceIdFactory,
                 bool debug, SleepFunction sleep)
    : messageQueue(kMessageQueueSize),
      m_name(std::move(name)),
      m_uartIndex(uartIndex),
      m_pulseIndex(pulseIndex),
      m_debug(debug),
      m_sleep(std::move(sleep)),
      m_io(std::move(io)),
      m_gssipQueue(std::move(gssipQueue)),
      m_gssipConnection(gssipConnection),
      m_writeQueue(kWriteQueueSize) {
    m_sample.header().device_id(deviceIdFactory.makeDeviceId(kDeviceCode, 0));
    FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
    m_readPayload.payload = {m_readBuffer.data(), kReadBytes, kReadBytes, viewed};
    m_parser.ProcessMessagesWithThis(this, 0);
    m_parser.doDebug(debug ? 1 : 0);
    if (!m_gssipQueue->IsInitialized(m_gssipConnection)) {
        FACE::Return_Code_Value_No_Error(__FILE__, __LINE__, "GSSIP Queue was not initialized",
                                         RETURN_CODE_TYPE::NOT_AVAILABLE);
    }
}

RovanIo::~RovanIo() {
    stop();
    Code ignored = RETURN_CODE_TYPE::NO_ERROR;
    m_io->Close_Connection(m_connection, ignored);
}

void RovanIo::configure(bool setupRedundantPort, int32_t baud, uint16_t parity) {
    stop();
    Code rc = RETURN_CODE_TYPE::NO_ERROR;
    m_io->Open_Connection(ASPN2::ServerConnections::kReceiverLine, kNoLimit, m_connection, rc);
    FACE::Return_Code_Value_No_Error(__FILE__, __LINE__, "Unable to open I/O connection", rc);

    if (setupRedundantPort) {
        Setup setup;
        setup.setPort(Setup::e5331_Port_2);
        setup.setRedundantComPorts(false);
        writePortSetup(setup);
    }
    // The receiver learns the new settings at the old ones.
    const Setup::e5331_SerialParity mappedParity = parityCode(parity);
    Setup setup;
    setup.setBaud(Setup::baudCode(baud), mappedParity);
    setup.setPort(Setup::e5331_Port_0);
    writePortSetup(setup);

    configureLine(baud, mappedParity);
    m_protocol = std::make_unique<RovanIoProtocol>(baud, mappedParity);
    FpgaFace::Instance().setUartDelay(m_uartIndex, static_cast<unsigned>(std::max(baud, 0)),
                                      kUartDelayCharacters, mappedParity != 0 ? 11 : 10);
}

void RovanIo::writePortSetup(RovancomPortSetup& setup) {
    // Straight to the line: no thread runs that could send it and wait for its answer.
    setup.WriteMessage(this);
    m_sleep(kReceiverSetupTime);
}

void RovanIo::configureLine(int32_t baud, uint16_t parity) {
    FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE transaction;
    FACE::IOSS::IO_PARAMETER_TYPE parameter;
    parameter.id = kParameterBaud;
    parameter.value.long_value(baud);
    transaction.parameters.append(parameter);
    parameter.id = kParameterParity;
    parameter.value.ushort_value(parity);
    transaction.parameters.append(parameter);

    Code rc = RETURN_CODE_TYPE::NO_ERROR;
    m_io->Configure_Bus_Parameters(m_connection, kNoLimit, transaction, rc);
    FACE::Return_Code_Value_No_Error(
        __FILE__, __LINE__, "Unable to configure I/O parameters for baud rate and parity", rc);
}

void RovanIo::start() {
    stop();
    flush();
    m_readThread.start(
        [this] { runThread(m_readThread, "readThreadFunction", &RovanIo::readRound); });
    m_sleep(kPauseAfterReadStart);
    m_writeThread.start(
        [this] { runThread(m_writeThread, "writeThreadFunction", &RovanIo::writeRound); });
    m_protocolThread.start(
        [this] { runThread(m_protocolThread, "protocolThreadFunction", &RovanIo::protocolRound); });
}

// What a thread left is forgotten only when it ran: the receiver's setup waits on messageQueue for
// the first start.
void RovanIo::stop() {
    if (m_protocolThread.joinable()) {
        m_protocolThread.stop();
        messageQueue.clear();
    }
    if (m_writeThread.joinable()) {
        m_writeThread.stop();
        m_writeQueue.clear();
    }
    if (m_readThread.joinable()) {
        m_readThread.stop();
        m_parser.reset();
        m_parseUnfinished = false;
    }
}

void RovanIo::flush() {
    uint8_t byte = 0;
    FACE::IOSS::Serial::READ_PAYLOAD_TYPE payload;
    FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
    Code rc = RETURN_CODE_TYPE::NO_ERROR;
    for (uint64_t count = 0;; ++count) {
        payload.payload = {&byte, 1, 1, viewed};
        m_io->Read(m_connection, kNoWait, payload, rc);
        if (rc == RETURN_CODE_TYPE::NOT_AVAILABLE || rc == RETURN_CODE_TYPE::TIMED_OUT) {
            return debugLine("RovanIo::flush() number of bytes flushed: " + std::to_string(count));
        }
        if (rc != RETURN_CODE_TYPE::NO_ERROR) {
            return debugLine("RovanIo::flush() received unexpected return code: " +
                             FACE::toStdString(RETURN_CODE_TYPE::ToString(rc)));
        }
    }
}

std::chrono::nanoseconds RovanIo::timeToSendDataWordCount(uint16_t words) const {
    return std::chrono::microseconds(m_protocol ? m_protocol->timeToSendDataWordCount(words) : 0);
}

std::chrono::nanoseconds RovanIo::timeToSendMessageByteCount(uint16_t bytes) const {
    return std::chrono::microseconds(m_protocol ? m_protocol->timeToSendMessageByteCount(bytes)
                                                : 0);
}

void RovanIo::runThread(const Utility::WorkerThread& thread, const char* functionName,
                        void (RovanIo::*round)()) {
    while (!thread.stopRequested()) {
        try {
            (this->*round)();
        } catch (const std::exception& e) {
            reportException(functionName, e.what());
        } catch (...) {
            reportException(functionName, "<unknown>");
        }
    }
}

void RovanIo::rest(const Utility::WorkerThread& thread, std::chrono::nanoseconds time) const {
    while (time > std::chrono::nanoseconds::zero() && !thread.stopRequested()) {
        const auto step = std::min(time, kRestStep);
        m_sleep(step);
        time -= step;
    }
}

void RovanIo::report(const char* file, int line, const std::string& text) const {
    const std::string whole = m_name + ": " + text;
    HealthReporter::Instance().SendEvent(file, line, EventTypes::eError, whole);
    Console::line(whole);
}

// Not even the lack of memory to report with may end a thread.
void RovanIo::reportException(const char* functionName, const char* what) const noexcept {
    try {
        report(__FILE__, __LINE__, std::string(functionName) + "() EXCEPTION: " + what);
    } catch (...) {}
}

void RovanIo::trace(const char* prefix, const void* bytes, unsigned count) const {
    if (m_debug) {
        const std::vector<uint16_t> words = Gssip::toWords(bytes, count);
        PrintMessageInHex(words.data(), prefix);
    }
}

void RovanIo::debugLine(const std::string& text) const {
    if (m_debug) {
        Console::line(text);
    }
}
