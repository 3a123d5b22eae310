// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "face/KD_TypedTS.h"

// What the tests of the reporters have in common: a transport that writes down what it is given,
// and the console as a text that can be looked at while it grows.
namespace reporter_test {

using RC = FACE::RETURN_CODE_TYPE;
using SteadyTime = std::chrono::steady_clock::time_point;

// In the place of the bus. Any thread may call.
template <typename T>
class RecordingTransport : public FACE::TSS::Details::KD_TypedTS<T> {
  public:
    void Register_Sender(long long connection, RC::Value& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_senders.push_back(connection);
        rc = m_registerCode;
    }
    void Send_Message(long long connection, long long, long long&, const T& message,
                      RC::Value& rc) override {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_held; });
        m_messages.push_back(message);
        m_connections.push_back(connection);
        m_times.push_back(std::chrono::steady_clock::now());
        rc = m_sendCode;
        m_changed.notify_all();
    }

    void answerRegistrationsWith(RC::Value code) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_registerCode = code;
    }
    void answerMessagesWith(RC::Value code) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_sendCode = code;
    }
    /// While held, Send_Message does not return.
    void hold(bool held) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_held = held;
        m_changed.notify_all();
    }

    /// True as soon as so many messages have come, false if they do not within ten seconds.
    bool receives(std::size_t count) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10),
                                  [&] { return m_messages.size() >= count; });
    }
    std::vector<T> messages() { return copyOf(m_messages); }
    std::vector<long long> connections() { return copyOf(m_connections); }
    std::vector<long long> senders() { return copyOf(m_senders); }
    std::vector<SteadyTime> times() { return copyOf(m_times); }

  private:
    template <typename V>
    V copyOf(const V& values) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return values;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_held = false;
    RC::Value m_registerCode = RC::NO_ERROR;
    RC::Value m_sendCode = RC::NO_ERROR;
    std::vector<T> m_messages;
    std::vector<long long> m_connections;
    std::vector<long long> m_senders;
    std::vector<SteadyTime> m_times;
};

// Standard output or standard error, for as long as the object lives, in a file without a name.
class CapturedStream {
  public:
    explicit CapturedStream(int stream) : m_stream(stream), m_saved(dup(stream)) {
        std::fflush(nullptr);
        dup2(fileno(m_file), m_stream);
    }
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;
    ~CapturedStream() {
        std::fflush(nullptr);
        dup2(m_saved, m_stream);
        close(m_saved);
        std::fclose(m_file);
    }

    /// What has been written so far.
    std::string text() const {
        std::string text;
        char buffer[4096];
        for (ssize_t count = 0; (count = pread(fileno(m_file), buffer, sizeof buffer,
                                               static_cast<off_t>(text.size()))) > 0;) {
            text.append(buffer, static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    int m_stream;
    int m_saved;
    std::FILE* m_file = std::tmpfile();
};

}  // namespace reporter_test
