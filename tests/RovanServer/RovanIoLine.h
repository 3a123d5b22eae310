// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "face/FACE_IOSS.h"
#include "tests/gssip/Frames.h"

// In the place of the serial service: one line whose far end is the test. Everything that happens
// on it is written down, in its order, as text: "open Rovan", "write 5001 9000" (message id and
// flags), "configure 2=9600 5=0", "read 0", "sleep 1500000000" (the test's own entry for a pause,
// in ns). Any thread may call.
class RovanIoLine : public FACE::IOSS::Serial::IO_Service {
  public:
    using Bytes = Frames::Bytes;
    using Code = FACE::RETURN_CODE_TYPE::Value;
    using RC = FACE::RETURN_CODE_TYPE;
    using Parameters = FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE;

    static constexpr long long kConnection = 3;

    // ---- The receiver's side.

    void send(const Bytes& bytes) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_incoming.insert(m_incoming.end(), bytes.begin(), bytes.end());
        m_changed.notify_all();
    }

    /// What is called, on the writing thread, for each frame that was written.
    void onFrame(std::function<void(uint16_t msgId, uint16_t flags)> callback) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_onFrame = std::move(callback);
    }

    /// Answers every frame that asks for an ACK with one header of these flags.
    void answerWith(uint16_t flags) {
        onFrame([this, flags](uint16_t msgId, uint16_t sentFlags) {
            if ((sentFlags & 0x1000) != 0) {
                send(Frames::frame(msgId, {}, flags));
            }
        });
    }

    std::vector<Bytes> written() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_written;
    }

    /// True as soon as `count` frames were written, false if they are not within ten seconds.
    bool waitForFrames(size_t count) {
        return waitUntil([this, count] { return m_written.size() >= count; });
    }

    // ---- The line's behaviour.

    void failOpen(Code code) { set(m_openCode, code); }
    void failConfigure(Code code) { set(m_configureCode, code); }
    void failWrites(Code code) { set(m_writeCode, code); }
    /// The next reads give these codes at once, before anything else.
    void failReads(const std::vector<Code>& codes) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_readCodes.insert(m_readCodes.end(), codes.begin(), codes.end());
        m_changed.notify_all();
    }
    /// The read under way, or the next one, calls this, which throws.
    void throwOnRead(std::function<void()> thrower) { set(m_readThrower, std::move(thrower)); }
    void throwOnWrite(std::function<void()> thrower) { set(m_writeThrower, std::move(thrower)); }
    /// While held, Write does not return.
    void holdWrites(bool held) { set(m_writesHeld, held); }
    /// From now on every read comes back empty at once.
    void hangUp() { set(m_hungUp, true); }

    // ---- What happened.

    void note(const std::string& entry) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        noteLocked(entry);
    }
    std::vector<std::string> journal() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_journal;
    }
    /// The entries that begin with `start`.
    std::vector<std::string> journal(const std::string& start) {
        std::vector<std::string> entries = journal();
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [&](const std::string& e) { return e.rfind(start, 0) != 0; }),
                      entries.end());
        return entries;
    }
    bool waitForEntry(const std::string& entry) {
        return waitUntil([this, entry] {
            return std::find(m_journal.begin(), m_journal.end(), entry) != m_journal.end();
        });
    }
    bool waitForReads(size_t count) {
        return waitUntil([this, count] { return m_reads >= count; });
    }
    size_t reads() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_reads;
    }
    bool waitUntilAllIsRead() {
        return waitUntil([this] { return m_incoming.empty(); });
    }

    // ---- The service.

    void Initialize(const FACE::String&, Code& rc) override { rc = RC::NO_ERROR; }

    void Open_Connection(const FACE::String& name, long long timeout, long long& id,
                         Code& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        noteLocked("open " + FACE::toStdString(name) + ' ' + std::to_string(timeout));
        rc = m_openCode;
        id = rc == RC::NO_ERROR ? kConnection : -1;
    }

    void Close_Connection(long long id, Code& rc) override {
        note("close " + std::to_string(id));
        rc = RC::NO_ERROR;
    }

    void Read(long long id, long long timeout, FACE::IOSS::Serial::READ_PAYLOAD_TYPE& payload,
              Code& rc) override {
        std::unique_lock<std::mutex> lock(m_mutex);
        ++m_reads;
        if (timeout == 0) {
            noteLocked("read 0");
        }
        m_changed.notify_all();
        const auto ready = [this] {
            return !m_incoming.empty() || !m_readCodes.empty() || m_hungUp || m_readThrower;
        };
        if (id != kConnection) {
            rc = RC::INVALID_PARAM;
            return;
        }
        m_changed.wait_for(lock, std::chrono::nanoseconds(timeout), ready);
        callOnce(m_readThrower);
        if (!m_readCodes.empty()) {
            rc = m_readCodes.front();
            m_readCodes.pop_front();
        } else if (m_hungUp || m_incoming.empty()) {
            rc = timeout == 0 ? RC::NOT_AVAILABLE : RC::TIMED_OUT;
        } else {
            const auto count =
                std::min(payload.payload.length(), static_cast<uint32_t>(m_incoming.size()));
            std::copy_n(m_incoming.begin(), count, payload.payload.buffer());
            m_incoming.erase(m_incoming.begin(), m_incoming.begin() + count);
            payload.payload.resize(count);
            rc = RC::NO_ERROR;
            m_changed.notify_all();
        }
    }

    void Write(long long id, long long timeout,
               const FACE::IOSS::Serial::WRITE_PAYLOAD_TYPE& payload, Code& rc) override {
        std::function<void(uint16_t, uint16_t)> onFrameNow;
        const uint8_t* first = payload.payload.buffer();
        const uint32_t count = payload.payload.length();
        const auto word = [first](unsigned i) {
            return static_cast<uint16_t>(first[2 * i] | first[2 * i + 1] << 8);
        };
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            char entry[64];
            std::snprintf(entry, sizeof entry, "write %u %04X", unsigned{word(1)},
                          unsigned{word(3)});
            noteLocked(entry);
            m_everyWriteUnlimited = m_everyWriteUnlimited && timeout == -1 && id == kConnection;
            m_changed.wait(lock, [this] { return !m_writesHeld; });
            callOnce(m_writeThrower);
            rc = m_writeCode;
            if (rc == RC::NO_ERROR) {
                m_written.emplace_back(first, first + count);
                onFrameNow = m_onFrame;
            }
            m_changed.notify_all();
        }
        if (onFrameNow) {
            onFrameNow(word(1), word(3));
        }
    }

    void Configure_Bus_Parameters(long long id, long long timeout, Parameters& parameters,
                                  Code& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::string entry = "configure " + std::to_string(id) + ' ' + std::to_string(timeout);
        for (uint32_t i = 0; i < parameters.parameters.length(); ++i) {
            const FACE::IOSS::IO_PARAMETER_TYPE& parameter = parameters.parameters[i];
            int32_t number = -1;
            uint16_t unsignedNumber = 0;
            FACE::IOSS::IO_PARAMETER_VALUE_TYPE::RETURN_CODE valueRc{};
            parameter.value.long_value(number, valueRc);
            if (valueRc != FACE::IOSS::IO_PARAMETER_VALUE_TYPE::NO_ERROR) {
                parameter.value.ushort_value(unsignedNumber, valueRc);
                number = unsignedNumber;
            }
            entry += ' ' + std::to_string(parameter.id) + '/' +
                     std::to_string(parameter.value.descriminator()) + '=' + std::to_string(number);
        }
        noteLocked(entry);
        rc = m_configureCode;
    }

    bool everyWriteUnlimited() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_everyWriteUnlimited;
    }

    // The link needs none of these.
    void Configure_Connection_Parameters(long long, long long, const Parameters&, Code&) override {}
    void Get_Connection_Configuration(long long, long long, Parameters&, Code&) override {}
    void Get_Bus_Configuration(long long, long long, Parameters&, Code&) override {}
    void Get_Connection_Status(long long, FACE::IOSS::CONNECTION_STATUS_TYPE&, Code&) override {}
    void Get_Bus_Status(long long, uint16_t&, Code&) override {}
    void Register_Notification_Event(long long, FACE::IOSS::IO_Callback*, Code&) override {}
    void Unregister_Notification_Event(long long, Code&) override {}

  private:
    template <typename Predicate>
    bool waitUntil(Predicate predicate) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10), predicate);
    }
    template <typename T, typename U>
    void set(T& member, U value) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        member = std::move(value);
        m_changed.notify_all();
    }
    void noteLocked(const std::string& entry) {
        m_journal.push_back(entry);
        m_changed.notify_all();
    }
    static void callOnce(std::function<void()>& thrower) {
        if (thrower) {
            const std::function<void()> now = std::move(thrower);
            thrower = nullptr;
            now();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<unsigned char> m_incoming;
    std::vector<Bytes> m_written;
    std::vector<std::string> m_journal;
    std::function<void(uint16_t, uint16_t)> m_onFrame;
    std::function<void()> m_readThrower;
    std::function<void()> m_writeThrower;
    std::deque<Code> m_readCodes;
    Code m_openCode = RC::NO_ERROR;
    Code m_configureCode = RC::NO_ERROR;
    Code m_writeCode = RC::NO_ERROR;
    bool m_writesHeld = false;
    bool m_hungUp = false;
    bool m_everyWriteUnlimited = true;
    size_t m_reads = 0;
};
