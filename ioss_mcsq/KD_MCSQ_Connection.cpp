// SPDX-License-Identifier: Apache-2.0
#include <poll.h>

#include <cerrno>
#include <chrono>
#include <utility>

#include "ioss_mcsq/KD_MCSQ.h"
#include "utility/Sleep.h"

namespace FACE::IOSS {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// The states of a connection, as the other services have them.
constexpr uint32_t kClosed = 0;
constexpr uint32_t kOpen = 2;
constexpr uint32_t kFaulty = 4;

// How long a writer waits for room to finish what the device has taken a part of.
constexpr milliseconds kFinishTimeout{100};

// Writes the rest of a sample and returns how much of it went out within the time.
size_t finishWrite(mcsWriterPort& port, const uint8_t* rest, size_t length) {
    const auto end = steady_clock::now() + kFinishTimeout;
    size_t done = 0;
    while (done < length) {
        const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
        if (left <= milliseconds::zero()) {
            break;
        }
        pollfd entry{port.getFileDescriptor(), POLLOUT, 0};
        if (poll(&entry, 1, static_cast<int>(left.count())) <= 0) {
            continue;
        }
        const ssize_t written = port.writeToPort(rest + done, length - done);
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else if (written < 0 && errno != EAGAIN && errno != EINTR) {
            break;
        } else {
            // A queue may call itself writable and still want more room than it has.
            Utility::sleepFor(milliseconds(1));
        }
    }
    return done;
}

}  // namespace

KD_MCSQ::Connection_t::Connection_t(std::string itsName, uint16_t port,
                                    const std::string& devicePrefix)
    : NamedConnection(std::move(itsName)), m_devicePath(devicePrefix + std::to_string(port)) {
}

void KD_MCSQ::Connection_t::open() {
    const std::scoped_lock lock(m_readMutex, m_writeMutex);
    closePorts();
    m_reader = std::make_unique<mcsReaderPort>();
    m_writer = std::make_unique<mcsWriterPort>();
    m_reader->set_filename(m_devicePath);
    m_writer->set_filename(m_devicePath);
    if (m_reader->can_open_file() != 0 && m_writer->can_open_file() != 0) {
        m_reader->openPort();
        m_writer->openPort();
    }
    isOpen = m_reader->is_file_open() && m_writer->is_file_open();
    if (!isOpen) {
        closePorts();
    }
    m_state = isOpen ? kOpen : kFaulty;
}

void KD_MCSQ::Connection_t::close() {
    const std::scoped_lock lock(m_readMutex, m_writeMutex);
    closePorts();
    m_state = kClosed;
}

void KD_MCSQ::Connection_t::closePorts() {
    isOpen = false;
    // The writer first: a writer without its reader may meet a queue that nobody reads.
    m_writer.reset();
    m_reader.reset();
}

int KD_MCSQ::Connection_t::readerDescriptor() const {
    return m_reader != nullptr ? m_reader->getFileDescriptor() : -1;
}

ssize_t KD_MCSQ::Connection_t::read(void* buffer, size_t length) {
    const std::lock_guard<std::mutex> lock(m_readMutex);
    if (m_reader == nullptr) {
        errno = EBADF;
        return -1;
    }
    return m_reader->readFromPort(buffer, length);
}

ssize_t KD_MCSQ::Connection_t::write(const void* buffer, size_t length) {
    const std::lock_guard<std::mutex> lock(m_writeMutex);
    if (m_writer == nullptr) {
        errno = EBADF;
        return -1;
    }
    ssize_t written = 0;
    do {
        written = m_writer->writeToPort(buffer, length);
    } while (written < 0 && errno == EINTR);
    if (written <= 0 || static_cast<size_t>(written) == length) {
        return written;
    }
    auto done = static_cast<size_t>(written);
    done += finishWrite(*m_writer, static_cast<const uint8_t*>(buffer) + done, length - done);
    if (done < length) {
        m_writer->openPort();
    }
    return static_cast<ssize_t>(done);
}

}  // namespace FACE::IOSS
