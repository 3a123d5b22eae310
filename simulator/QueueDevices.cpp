// SPDX-License-Identifier: Apache-2.0
#include "simulator/QueueDevices.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

#include "simulator/SystemError.h"
#include "utility/Sleep.h"

namespace Simulator {
namespace {

constexpr std::size_t kSamplesKept = 10'000;
constexpr std::chrono::milliseconds kReadRhythm{20};
constexpr std::chrono::milliseconds kPatience{100};

std::string device(unsigned port) {
    return "/dev/mcs" + std::to_string(port);
}

}  // namespace

QueueDevices::QueueDevices(unsigned rovanKdPort, unsigned kdRovanPort)
    : m_rovanKdDevice(device(rovanKdPort)),
      m_kdRovanDevice(device(kdRovanPort)),
      m_rovanKd(std::make_shared<PseudoTerminal>(m_rovanKdDevice)),
      m_samples(kSamplesKept) {
    checked(mkfifo(m_kdRovanDevice.c_str(), 0600), m_kdRovanDevice);
    restoreKdRovan();
}

QueueDevices::~QueueDevices() {
    stop();
    unlink(m_kdRovanDevice.c_str());
}

void QueueDevices::start() {
    m_thread.start([this] { drain(); });
}

void QueueDevices::stop() {
    m_thread.stop();
}

bool QueueDevices::passThrough(const Bytes& frame) {
    GssipSample sample;
    sample.sequenceNumber = m_sequenceNumber++;
    sample.frame = frame;
    return writeKdRovan(sample.encode());
}

bool QueueDevices::writeKdRovan(const Bytes& bytes) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const ssize_t written = write(m_kdRovan.get(), bytes.data(), bytes.size());
    return written == static_cast<ssize_t>(bytes.size());
}

bool QueueDevices::writeRovanKd(const Bytes& bytes) {
    const std::shared_ptr<PseudoTerminal> terminal = rovanKd();
    return terminal && terminal->write(bytes.data(), bytes.size(), kPatience) == bytes.size();
}

void QueueDevices::removeRovanKd() {
    std::weak_ptr<PseudoTerminal> old;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        old = m_rovanKd;
        m_rovanKd.reset();
    }
    // Whoever reads or writes at this moment lets go of it soon.
    while (!old.expired()) {
        Utility::sleepFor(std::chrono::milliseconds(1));
    }
}

void QueueDevices::restoreRovanKd() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_rovanKd) {
        m_rovanKd = std::make_shared<PseudoTerminal>(m_rovanKdDevice);
    }
    m_draining = true;
}

void QueueDevices::removeKdRovan() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_kdRovan.reset();
}

void QueueDevices::restoreKdRovan() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    // Open for both directions: it neither blocks nor ends, whether the server is there or not.
    m_kdRovan.reset(
        checked(open(m_kdRovanDevice.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC), m_kdRovanDevice));
}

std::shared_ptr<PseudoTerminal> QueueDevices::rovanKd() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_rovanKd;
}

void QueueDevices::drain() {
    std::uint8_t buffer[4096];
    Bytes pending;
    while (!m_thread.stopRequested()) {
        const std::shared_ptr<PseudoTerminal> terminal = rovanKd();
        if (!terminal || !m_draining) {
            // What was taken in part has no end on a new device.
            if (!terminal) {
                pending.clear();
            }
            Utility::sleepFor(kReadRhythm);
            continue;
        }
        const std::size_t count = terminal->read(buffer, sizeof buffer, kReadRhythm);
        pending.insert(pending.end(), buffer, buffer + count);
        std::size_t done = 0;
        try {
            while (done < pending.size()) {
                const auto sample =
                    GssipSample::decode(pending.data() + done, pending.size() - done);
                if (!sample) {
                    break;
                }
                done += GssipSample::kOverhead + sample->frame.size();
                m_samples.add(*sample);
            }
        } catch (const std::runtime_error&) {
            ++m_malformed;
            done = pending.size();
        }
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(done));
    }
}

}  // namespace Simulator
