// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "ASPN/DeviceIdFactory.h"
#include "RovanServer/RovanIoProtocol.h"
#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/GSSIP.h"
#include "face/FACE_IOSS.h"
#include "gssip/GssipMessage.h"
#include "gssip/GssipParser.h"
#include "gssip/IHandleGpsipMessages.h"
#include "gssip/IWriteByteStreams.h"
#include "utility/Sleep.h"
#include "utility/SyncQueue.h"
#include "utility/WorkerThread.h"

class GssipMcsq;
class RovancomPortSetup;

// The link to the receiver: owns the serial connection and the three threads that serve it.
//
// - The read thread feeds the parser. A good frame is stamped, put on the queue devices and
//   delivered to the queue's callback, all on that thread; an answer of the link protocol ends
//   here.
// - The protocol thread takes one message at a time from messageQueue, has it sent, waits for its
//   answers, sends it once more if they fail, and reports the outcome by the item's callbacks.
// - The write thread puts one frame after the other on the line, at the line's pace.
//
// The owner calls configure, then start and stop, from one thread. Any thread may put something on
// messageQueue, which is the only way to send to the receiver; the callbacks run on the protocol
// thread. What callbacks are bound to must outlive the threads. The services are shared. The object
// holds the parser and is over 128 KB: not one for the stack.
//
// The sources are split by duty: RovanIo.cpp (configuration and life cycle), RovanIoReceive.cpp
// (read thread), RovanIoSend.cpp (protocol and write thread).
class RovanIo : public IHandleGpsipMessages, public IWriteByteStreams {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;
    using SerialService = FACE::IOSS::Serial::IO_Service;
    using SleepFunction = std::function<void(std::chrono::nanoseconds)>;

    // A message to send, with what is to be called when its outcome is known.
    struct MessageQueueItem_t {
        /// Gets `response` back, and whether the message was acknowledged and accepted.
        using CommandCallback = std::function<void(const CommandResponse&, bool success)>;
        using AckCallback =
            std::function<void(unsigned short msgId, bool success, bool nak, bool rejected)>;

        MessageQueueItem_t() = default;
        explicit MessageQueueItem_t(std::shared_ptr<GssipMessage> m) : message(std::move(m)) {}
        MessageQueueItem_t(std::shared_ptr<GssipMessage> m, CommandCallback callback,
                           CommandResponse r)
            : message(std::move(m)), commandCallback(std::move(callback)), response(std::move(r)) {}
        MessageQueueItem_t(std::shared_ptr<GssipMessage> m, AckCallback callback)
            : message(std::move(m)), ackCallback(std::move(callback)) {}

        std::shared_ptr<GssipMessage> message;
        CommandCallback commandCallback;
        CommandResponse response;
        AckCallback ackCallback;
    };

    // What happened since construction; any thread may look.
    struct Counters {
        std::atomic<uint32_t> rxMessages{0};
        std::atomic<uint32_t> rxChecksumErrors{0};
        std::atomic<uint32_t> writeErrors{0};
        std::atomic<uint32_t> protocolTimeouts{0};
        std::atomic<uint32_t> txChecksumErrors{0};
        std::atomic<uint32_t> rejectedMessages{0};
    };

    /// `name` begins every report. The indices are those of the receiver's UART and of the pulse
    /// that marks the validity of its data. Throws std::runtime_error when `gssipConnection` is no
    /// open connection of `gssipQueue`. `sleep` is what pauses the threads; the process's own but
    /// for tests.
    RovanIo(std::string name, uint8_t uartIndex, uint8_t pulseIndex,
            std::shared_ptr<SerialService> io, std::shared_ptr<GssipMcsq> gssipQueue,
            long long gssipConnection, const ASPN2::DeviceIdFactory& deviceIdFactory, bool debug,
            SleepFunction sleep = Utility::sleepFor);
    RovanIo(const RovanIo&) = delete;
    RovanIo& operator=(const RovanIo&) = delete;
    /// Stops and closes the connection.
    ~RovanIo() override;

    /// Stops, opens the connection, tells the receiver the line settings and takes them over; takes
    /// 1.5 s, 3 s with `setupRedundantPort`. `baud` in bits per second; `parity` 1 is odd, 2 even,
    /// anything else none. Throws std::runtime_error when the connection cannot be opened or set.
    void configure(bool setupRedundantPort, int32_t baud, uint16_t parity);

    /// Starts the threads, after configure. What is on messageQueue by then is sent.
    void start();
    /// Joins the threads and forgets what they left undone: messages without their callbacks,
    /// frames not yet written, a partial frame. Without running threads it does nothing.
    void stop();
    /// Reads and drops what the line holds, as long as it gives something at once.
    void flush();

    /// The time that a frame takes on the line; 0 before configure.
    std::chrono::nanoseconds timeToSendDataWordCount(uint16_t words) const;
    std::chrono::nanoseconds timeToSendMessageByteCount(uint16_t bytes) const;

    const Counters& counters() const { return m_counters; }

    // Called by the parser and by the messages.
    void OnGpsMessageReceived(unsigned char* message, unsigned int length,
                              unsigned int cookie) override;
    void OnParserChecksumError(unsigned int cookie) override;
    int WriteBytes(const void* bytes, unsigned int count) override;

    Utility::SyncQueue<MessageQueueItem_t> messageQueue;

  private:
    using Code = FACE::RETURN_CODE_TYPE::Value;
    static constexpr uint32_t kReadBytes = 128;

    /// Runs `round` until the thread is asked to stop. An exception is reported and survived.
    void runThread(const Utility::WorkerThread& thread, const char* functionName,
                   void (RovanIo::*round)());
    void readRound();
    void writeRound();
    void protocolRound();

    void parse(const unsigned char* bytes, uint32_t count);
    /// Sleeps in short steps, no further when `thread` is asked to stop.
    void rest(const Utility::WorkerThread& thread, std::chrono::nanoseconds time) const;
    void queueHeader(uint16_t msgId, uint16_t flagWord);
    void publish(const unsigned char* message, unsigned length);
    bool sendAndWait(const std::shared_ptr<GssipMessage>& message, bool& nak, bool& rejected);

    void writePortSetup(RovancomPortSetup& setup);
    void configureLine(int32_t baud, uint16_t parity);

    /// Event of type 3 and line on standard output; `text` follows the name.
    void report(const char* file, int line, const std::string& text) const;
    /// The same for a failed exchange with the receiver.
    void reportProtocol(int line, const char* what, uint16_t msgId, uint32_t count) const;
    void reportException(const char* functionName, const char* what) const noexcept;
    /// In debug: the frame in hexadecimal.
    void trace(const char* prefix, const void* bytes, unsigned count) const;
    void debugLine(const std::string& text) const;

    const std::string m_name;
    const uint8_t m_uartIndex;
    const uint8_t m_pulseIndex;
    const bool m_debug;
    const SleepFunction m_sleep;
    const std::shared_ptr<SerialService> m_io;
    long long m_connection = -1;
    const std::shared_ptr<GssipMcsq> m_gssipQueue;
    const long long m_gssipConnection;

    // Of the read thread: one sample and one buffer serve all frames.
    uint64_t m_sequenceNumber = 0;
    aspn2_msgs::idl::GSSIP m_sample;
    std::array<uint8_t, kReadBytes> m_readBuffer{};
    FACE::IOSS::Serial::READ_PAYLOAD_TYPE m_readPayload;
    bool m_parseUnfinished = false;  // a handler threw, and the parser may hold more frames

    Utility::SyncQueue<std::shared_ptr<GssipMessage>> m_writeQueue;
    GssipParser m_parser;
    Counters m_counters;
    std::unique_ptr<RovanIoProtocol> m_protocol;

    Utility::WorkerThread m_readThread;
    Utility::WorkerThread m_writeThread;
    Utility::WorkerThread m_protocolThread;
};
