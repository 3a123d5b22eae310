// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "simulator/Deployment.h"
#include "simulator/MemoryRegion.h"
#include "simulator/PhysicalMemory.h"
#include "utility/WorkerThread.h"

namespace Simulator {

// The FPGA as the server sees it: register blocks in the simulated memory, with a time base that
// runs. All registers start with what a healthy FPGA shows; each can be set to something else.
// Times are in ticks of 1/58,982,400 s. Any thread may call; the blocks must not be mapped
// elsewhere in a test at the same time with another width.
class FpgaRegisters {
  public:
    static constexpr std::uint64_t kTicksPerSecond = 58'982'400;

    /// Maps the blocks that the deployment names and fills them in. Throws std::runtime_error when
    /// one of the five fixed blocks is missing. `memory` must outlive the object's construction
    /// only.
    FpgaRegisters(const PhysicalMemory& memory, const std::map<std::string, MemoryBlock>& blocks);
    ~FpgaRegisters() { stop(); }

    /// Starts and ends the thread that moves the system count.
    void start();
    void stop();

    /// The system count at this moment.
    std::uint64_t systemCount() const;
    /// Holds the system count at `ticks` until run().
    void setSystemCount(std::uint64_t ticks);
    /// Holds the system count where it is.
    void freeze();
    /// Lets the system count run on from where it is.
    void run();
    /// Moves the system count by `ticks` at once, back when negative.
    void jump(std::int64_t ticks);

    /// Time stamp of the latest data on a UART: this moment, or a chosen value.
    void stampUart(unsigned uart);
    void setUartStamp(unsigned uart, std::uint64_t ticks);
    /// Time stamp of the latest pulse on a pulse input: this moment, or a chosen value.
    void stampPulse(unsigned pulse);
    void setPulseStamp(unsigned pulse, std::uint64_t ticks);

    void setClockRate(std::uint64_t hertz);
    void setUartCount(std::uint64_t count);
    void setPtfeCount(std::uint64_t count);
    void setPulseCount(std::uint64_t count);
    void setPeripheralCount(std::uint64_t count);

    /// The delay correction that the server wrote for a UART, in ticks.
    std::uint32_t uartDelay(unsigned uart) const;

    /// A register block by its connection name, for whatever else a test wants to read or set.
    /// Throws std::out_of_range for an unknown name.
    MemoryRegion& block(const std::string& name) { return m_blocks.at(name); }

  private:
    void fillIn();
    std::uint64_t countNow() const;
    void publishCount();

    std::map<std::string, MemoryRegion> m_blocks;
    MemoryRegion* m_timeStamp = nullptr;

    // Guards the three below: where the count stood at a moment, and whether it runs.
    mutable std::mutex m_mutex;
    std::uint64_t m_baseCount = 10 * kTicksPerSecond;
    std::chrono::steady_clock::time_point m_baseTime = std::chrono::steady_clock::now();
    bool m_running = true;

    Utility::WorkerThread m_clock;
};

}  // namespace Simulator
