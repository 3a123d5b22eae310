// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "simulator/BoundedLog.h"
#include "simulator/FileDescriptor.h"
#include "simulator/GssipSample.h"
#include "simulator/PseudoTerminal.h"
#include "utility/WorkerThread.h"

namespace Simulator {

// The two queue devices, /dev/mcs and a number. "ROVAN_KD", which the server reads and writes, is a
// pseudo-terminal whose other end is always drained here: a FIFO would hand the server its own
// samples back. "KD_ROVAN", which the server only reads, is a FIFO, which keeps whole what was
// written whole. Any thread may call.
class QueueDevices {
  public:
    /// Throws as PseudoTerminal does.
    QueueDevices(unsigned rovanKdPort, unsigned kdRovanPort);
    QueueDevices(const QueueDevices&) = delete;
    QueueDevices& operator=(const QueueDevices&) = delete;
    ~QueueDevices();

    void start();
    void stop();

    /// The samples that the server put on "ROVAN_KD".
    const BoundedLog<GssipSample>& samples() const { return m_samples; }
    /// How often what the server put there was no sample.
    std::uint64_t malformed() const { return m_malformed; }

    /// Puts a frame on "KD_ROVAN" as another process of the unit does, to be passed through to the
    /// receiver. False when the device is full.
    bool passThrough(const Bytes& frame);
    /// Puts bytes as they are on "KD_ROVAN" or "ROVAN_KD", where the server reads them.
    bool writeKdRovan(const Bytes& bytes);
    bool writeRovanKd(const Bytes& bytes);

    /// "ROVAN_KD" is not drained any more, and fills up.
    void fillRovanKd() { m_draining = false; }
    /// Whoever is at the other end of "ROVAN_KD" is gone, and the device too: the server's open end
    /// is dead for good.
    void removeRovanKd();
    /// Undoes both. After a removal there is a new device under the same name.
    void restoreRovanKd();
    /// Nobody has "KD_ROVAN" open for writing any more, and again somebody has.
    void removeKdRovan();
    void restoreKdRovan();

  private:
    void drain();
    std::shared_ptr<PseudoTerminal> rovanKd() const;

    const std::string m_rovanKdDevice;
    const std::string m_kdRovanDevice;
    mutable std::mutex m_mutex;                 // guards the two below
    std::shared_ptr<PseudoTerminal> m_rovanKd;  // null while it is gone
    FileDescriptor m_kdRovan;                   // closed while it is gone
    std::atomic<bool> m_draining{true};
    BoundedLog<GssipSample> m_samples;
    std::atomic<std::uint64_t> m_malformed{0};
    std::atomic<std::int64_t> m_sequenceNumber{0};
    Utility::WorkerThread m_thread;
};

}  // namespace Simulator
