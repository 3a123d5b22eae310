// SPDX-License-Identifier: Apache-2.0
#include "simulator/FpgaRegisters.h"

#include <array>
#include <stdexcept>

#include "utility/Sleep.h"

namespace Simulator {
namespace {

constexpr const char* kFixedBlocks[] = {"Processor_Interface", "Peripheral_Interface",
                                        "TimeStamp_Interface", "PpsSlave_Interface",
                                        "PtpClock_Interface"};

// TimeStamp_Interface, byte offsets.
constexpr std::size_t kClockRate = 0;
constexpr std::size_t kUartCount = 8;
constexpr std::size_t kPtfeCount = 16;
constexpr std::size_t kPulseCount = 24;
constexpr std::size_t kPeripheralCount = 32;
constexpr std::size_t kSystemCount = 128;
constexpr std::size_t kPulseStamps = 136;
constexpr std::size_t kUartDelays = 384;
constexpr std::size_t kUartStamps = 512;
constexpr std::size_t kPerInput = 8;

constexpr std::uint64_t kUarts = 4;
constexpr std::uint64_t kPulses = 4;

// Processor_Interface: four characters a word with the first on top, and BCD digits.
constexpr std::uint32_t characters(const char (&text)[5]) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        word = word << 8 | static_cast<unsigned char>(text[i]);
    }
    return word;
}
constexpr std::array<std::uint32_t, 8> kProcessorWords = {
    characters("SIMU"), characters("LATE"), 0x20240918,         0x1348,
    characters("100 "), characters("2000"), characters("300B"), characters("A   ")};

// How often the register follows the clock. Time stamps are exact all the same.
constexpr std::chrono::milliseconds kRhythm{1};

constexpr std::uint64_t ticksIn(std::chrono::nanoseconds time) {
    // Seconds apart, so that nothing overflows: 58,982,400 / 1e9 is 36,864 / 625,000.
    const auto ns = static_cast<std::uint64_t>(time.count());
    const std::uint64_t seconds = ns / 1'000'000'000;
    return seconds * FpgaRegisters::kTicksPerSecond + ns % 1'000'000'000 * 36'864 / 625'000;
}

}  // namespace

FpgaRegisters::FpgaRegisters(const PhysicalMemory& memory,
                             const std::map<std::string, MemoryBlock>& blocks) {
    for (const auto& [name, block] : blocks) {
        m_blocks.emplace(name, memory.map(block.base, block.size));
    }
    for (const char* const name : kFixedBlocks) {
        if (m_blocks.count(name) == 0) {
            throw std::runtime_error(std::string("the deployment has no register block ") + name);
        }
    }
    m_timeStamp = &m_blocks.at("TimeStamp_Interface");
    fillIn();
}

void FpgaRegisters::fillIn() {
    std::uint64_t ptfes = 0;
    while (m_blocks.count("Ptfe_Interface" + std::to_string(ptfes)) != 0) {
        m_blocks.at("Ptfe_Interface" + std::to_string(ptfes)).write64(0, 0x5054'4645'0001'0000);
        ++ptfes;
    }
    setClockRate(kTicksPerSecond);
    setUartCount(kUarts);
    setPtfeCount(ptfes);
    setPulseCount(kPulses);
    setPeripheralCount(16);
    for (std::size_t i = 0; i < kProcessorWords.size(); ++i) {
        m_blocks.at("Processor_Interface").write32(4 * i, kProcessorWords[i]);
    }
    for (unsigned i = 0; i < kUarts; ++i) {
        stampUart(i);
    }
    for (unsigned i = 0; i < kPulses; ++i) {
        stampPulse(i);
    }
    publishCount();
}

void FpgaRegisters::start() {
    m_clock.start([this] {
        while (!m_clock.stopRequested()) {
            publishCount();
            Utility::sleepFor(kRhythm);
        }
    });
}

void FpgaRegisters::stop() {
    m_clock.stop();
}

std::uint64_t FpgaRegisters::systemCount() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return countNow();
}

void FpgaRegisters::setSystemCount(std::uint64_t ticks) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_baseCount = ticks;
    m_running = false;
    m_timeStamp->write64(kSystemCount, ticks);
}

void FpgaRegisters::freeze() {
    setSystemCount(systemCount());
}

void FpgaRegisters::run() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_baseCount = countNow();
    m_baseTime = std::chrono::steady_clock::now();
    m_running = true;
}

void FpgaRegisters::jump(std::int64_t ticks) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_baseCount += static_cast<std::uint64_t>(ticks);
    m_timeStamp->write64(kSystemCount, countNow());
}

void FpgaRegisters::stampUart(unsigned uart) {
    setUartStamp(uart, systemCount());
}

void FpgaRegisters::setUartStamp(unsigned uart, std::uint64_t ticks) {
    m_timeStamp->write64(kUartStamps + kPerInput * uart, ticks);
}

void FpgaRegisters::stampPulse(unsigned pulse) {
    setPulseStamp(pulse, systemCount());
}

void FpgaRegisters::setPulseStamp(unsigned pulse, std::uint64_t ticks) {
    m_timeStamp->write64(kPulseStamps + kPerInput * pulse, ticks);
}

void FpgaRegisters::setClockRate(std::uint64_t hertz) {
    m_timeStamp->write64(kClockRate, hertz);
}

void FpgaRegisters::setUartCount(std::uint64_t count) {
    m_timeStamp->write64(kUartCount, count);
}

void FpgaRegisters::setPtfeCount(std::uint64_t count) {
    m_timeStamp->write64(kPtfeCount, count);
}

void FpgaRegisters::setPulseCount(std::uint64_t count) {
    m_timeStamp->write64(kPulseCount, count);
}

void FpgaRegisters::setPeripheralCount(std::uint64_t count) {
    m_timeStamp->write64(kPeripheralCount, count);
}

std::uint32_t FpgaRegisters::uartDelay(unsigned uart) const {
    return m_timeStamp->read32(kUartDelays + kPerInput * uart);
}

std::uint64_t FpgaRegisters::countNow() const {
    return m_running ? m_baseCount + ticksIn(std::chrono::steady_clock::now() - m_baseTime)
                     : m_baseCount;
}

void FpgaRegisters::publishCount() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_timeStamp->write64(kSystemCount, countNow());
}

}  // namespace Simulator
