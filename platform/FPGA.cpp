// SPDX-License-Identifier: Apache-2.0
#include "platform/FPGA.h"

#include <chrono>
#include <limits>

#include "utility/Sleep.h"

using namespace FpgaRegisters;

namespace {

constexpr long long kNoLimit = -1;
constexpr std::chrono::nanoseconds kSoftResetTime{1'000};

void check(int line, const std::string& failure, FACE::RETURN_CODE_TYPE::Value rc) {
    FACE::Return_Code_Value_No_Error(__FILE__, line, failure.c_str(), rc);
}

bool isBelow(uint32_t count, int i) {
    return i >= 0 && static_cast<uint32_t>(i) < count;
}

/// The four characters of the word, the top byte first.
std::string characters(uint32_t word) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += static_cast<char>(word >> shift & 0xFFu);
    }
    return text;
}

/// `count` BCD digits of the word from digit `first` on, 0 being the most significant of eight. A
/// nibble above 9 gives two digits.
std::string digits(uint32_t word, int first, int count) {
    std::string text;
    for (int i = first; i < first + count; ++i) {
        text += std::to_string(word >> (28 - 4 * i) & 0xFu);
    }
    return text;
}

}  // namespace

FpgaFace& FpgaFace::Instance() {
    static FpgaFace theFpga;
    return theFpga;
}

void FpgaFace::InitFpga(const std::shared_ptr<FACE::IOSS::Devmem::IO_Service>& devmem) {
    m_io = devmem;
    m_processorId = open(Processor::kConnection, "FpgaFace() FAILED to open processor interface");
    m_peripheralId =
        open(Peripheral::kConnection, "FpgaFace() FAILED to open peripheral interface");
    m_timeStampId = open(TimeStamp::kConnection, "FpgaFace() FAILED to open timestamp interface");
    m_ppsSlaveId = open(PpsSlave::kConnection, "FpgaFace() FAILED to open PPS Slave interface");
    m_ptpClockId = open(PtpClock::kConnection, "FpgaFace() FAILED to open PTP Clock interface");

    m_numUarts = readCount(TimeStamp::kNumUarts, "FpgaFace() FAILED to read FPGA number of UARTs");
    const uint32_t numPtfes =
        readCount(TimeStamp::kNumPtfes, "FpgaFace() FAILED to read FPGA number of PTFEs");
    m_numPulses =
        readCount(TimeStamp::kNumPulses, "FpgaFace() FAILED to read FPGA number of Pulses");
    m_numPeriphs =
        readCount(TimeStamp::kNumPeriphs, "FpgaFace() FAILED to read FPGA number of Periphs");

    // One by one: a count that is nonsense ends at the first missing connection and not in an
    // allocation of its size.
    m_ptfes.clear();
    for (uint32_t i = 0; i < numPtfes; ++i) {
        const std::string number = std::to_string(i);
        PtfeBlocks ptfe;
        ptfe.ptfeId = open(Ptfe::kConnection + number,
                           "FpgaFace() FAILED to open PTFE " + number + " interface");
        ptfe.pulseGenId = open(PulseGen::kConnection + number,
                               "FpgaFace() FAILED to open PulseGen " + number + " interface");
        m_ptfes.push_back(ptfe);
    }

    uint64_t rate = 0;
    check(__LINE__, "FpgaFace() FAILED to read FPGA clock rate",
          read(m_timeStampId, TimeStamp::kClockRate, rate));
    if (rate != kTicksPerSecond) {
        check(__LINE__,
              "FpgaFace() FPGA clock rate mismatch, got " + std::to_string(rate) + ", expected " +
                  std::to_string(kTicksPerSecond),
              FACE::RETURN_CODE_TYPE::INVALID_MODE);
    }
}

void FpgaFace::DoneFpga() {
    if (!m_io) {
        return;
    }
    Code ignored = FACE::RETURN_CODE_TYPE::NO_ERROR;
    for (const long long id :
         {m_processorId, m_peripheralId, m_timeStampId, m_ppsSlaveId, m_ptpClockId}) {
        m_io->Close_Connection(id, ignored);
    }
    for (const PtfeBlocks& ptfe : m_ptfes) {
        m_io->Close_Connection(ptfe.ptfeId, ignored);
        m_io->Close_Connection(ptfe.pulseGenId, ignored);
    }
}

// ---- Time stamps ------------------------------------------------------------------------------

uint64_t FpgaFace::fpga_get_SystemCount() const {
    return read64(m_timeStampId, TimeStamp::kSystemCount);
}

uint64_t FpgaFace::getUARTDataTimestampRaw(unsigned uart) const {
    return uart < m_numUarts ? read64(m_timeStampId, TimeStamp::kUartStamp[uart]) : 0;
}

uint64_t FpgaFace::getPulseTimestampRaw(int pulse) const {
    return isBelow(m_numPulses, pulse)
               ? read64(m_timeStampId, TimeStamp::kPulseStamp[static_cast<uint32_t>(pulse)])
               : 0;
}

void FpgaFace::setUartDelay(unsigned uart, unsigned ticks) {
    if (uart < m_numUarts) {
        write(m_timeStampId, TimeStamp::kUartDelay[uart], ticks);
    }
}

unsigned FpgaFace::getUartDelay(unsigned uart) const {
    return uart < m_numUarts ? read32(m_timeStampId, TimeStamp::kUartDelay[uart]) : 0;
}

void FpgaFace::setUartDelay(unsigned uart, unsigned baud, unsigned a, unsigned b) {
    if (baud == 0) {
        return;
    }
    const double ticks = double{kTicksPerSecond} / baud * a * b;
    constexpr uint32_t longest = std::numeric_limits<uint32_t>::max();
    setUartDelay(uart, ticks < longest ? static_cast<uint32_t>(ticks) : longest);
}

// ---- Control registers ------------------------------------------------------------------------

void FpgaFace::fpga_set_periph_control(int i, unsigned v) {
    writeControl(m_peripheralId, m_numPeriphs, i, v);
}

unsigned FpgaFace::fpga_get_periph_control(int i) const {
    return readControl(m_peripheralId, m_numPeriphs, i);
}

unsigned FpgaFace::fpga_reset_periph_control(int i) {
    const unsigned old = fpga_get_periph_control(i);
    fpga_set_periph_control(i, 0);
    return old;
}

void FpgaFace::fpga_set_ppsSlave_control(int i, unsigned v) {
    writeControl(m_ppsSlaveId, PpsSlave::kCount, i, v);
}

unsigned FpgaFace::fpga_get_ppsSlave_control(int i) const {
    return readControl(m_ppsSlaveId, PpsSlave::kCount, i);
}

void FpgaFace::fpga_set_ptpClock_control(int i, unsigned v) {
    writeControl(m_ptpClockId, PtpClock::kCount, i, v);
}

unsigned FpgaFace::fpga_get_ptpClock_control(int i) const {
    return readControl(m_ptpClockId, PtpClock::kCount, i);
}

// ---- PTFE and pulse generators ----------------------------------------------------------------

void FpgaFace::fpga_ptfe_init(unsigned ptfe, unsigned limit, unsigned cycles) {
    if (ptfe >= m_ptfes.size()) {
        return;
    }
    m_ptfes[ptfe].pulseCycles = cycles;
    writePulseGen(ptfe, PulseGen::kCycleLength, cycles - 1);
    write(m_timeStampId, TimeStamp::kPtfeInit, TimeStamp::kPtfeInitValue);
    writePtfe(ptfe, Ptfe::kLimit1, limit);
    writePtfe(ptfe, Ptfe::kLimit2, limit);
    writePtfe(ptfe, Ptfe::kInit, Ptfe::kInitValue);
}

void FpgaFace::fpga_ptfe_soft_reset(unsigned ptfe) {
    if (ptfe >= m_ptfes.size()) {
        return;
    }
    const uint64_t control = readPtfe(ptfe, Ptfe::kControl);
    const uint64_t reset = Ptfe::kSoftReset;
    writePtfe(ptfe, Ptfe::kControl, control | reset);
    Utility::sleepFor(kSoftResetTime);
    writePtfe(ptfe, Ptfe::kControl, control & ~reset);
}

uint64_t FpgaFace::getPtfeFirmwareId(unsigned ptfe) const {
    return readPtfe(ptfe, Ptfe::kFirmwareId);
}

unsigned FpgaFace::getPtfeStatus(unsigned ptfe) const {
    return static_cast<unsigned>(readPtfe(ptfe, Ptfe::kStatus));
}

unsigned FpgaFace::getAndClearPtfeStatus(unsigned ptfe) {
    const unsigned status = getPtfeStatus(ptfe);
    writePtfe(ptfe, Ptfe::kStatus, 0);
    return status;
}

uint64_t FpgaFace::getDfNcoRate(unsigned ptfe) const {
    return readPtfe(ptfe, Ptfe::kDfNcoRate) & Ptfe::kDfNcoRateMask;
}

uint64_t FpgaFace::getDtNcoPhase(unsigned ptfe) const {
    return readPtfe(ptfe, Ptfe::kDtNcoPhase) & Ptfe::kDtNcoPhaseMask;
}

unsigned FpgaFace::getDtCycles(unsigned ptfe) const {
    return static_cast<unsigned>(readPtfe(ptfe, Ptfe::kDtCycles));
}

unsigned FpgaFace::getPtfeMeasuredFreqEstimate(unsigned ptfe) const {
    return static_cast<unsigned>(readPtfe(ptfe, Ptfe::kFreqEstimate)) + 1;
}

void FpgaFace::setPtfeDefaultNcoRate(unsigned ptfe, unsigned long long rate) {
    writePtfe(ptfe, Ptfe::kDefaultNcoRate, rate);
}

void FpgaFace::fpga_pulsegen_set_Int_phase(unsigned ptfe, unsigned phase) {
    writePulseGen(ptfe, PulseGen::kIntPhase, phase);
}

unsigned FpgaFace::fpga_pulsegen_get_Int_phase(unsigned ptfe) const {
    return readPulseGen(ptfe, PulseGen::kIntPhase);
}

void FpgaFace::fpga_pulsegen_set_Ext_phase(unsigned ptfe, unsigned phase) {
    writePulseGen(ptfe, PulseGen::kExtPhase, phase);
}

unsigned FpgaFace::fpga_pulsegen_get_Ext_phase(unsigned ptfe) const {
    return readPulseGen(ptfe, PulseGen::kExtPhase);
}

unsigned FpgaFace::fpga_pulsegen_adjust_Int_phase(unsigned ptfe, int delta) {
    return adjustPhase(ptfe, PulseGen::kIntPhase, delta);
}

unsigned FpgaFace::fpga_pulsegen_adjust_Ext_phase(unsigned ptfe, int delta) {
    return adjustPhase(ptfe, PulseGen::kExtPhase, delta);
}

// ---- Firmware texts ---------------------------------------------------------------------------

std::string FpgaFace::getFirmwareBuildStamp() const {
    const uint32_t date = read32(m_processorId, Processor::kBuildDate);
    const uint32_t time = read32(m_processorId, Processor::kBuildTime);
    return digits(date, 0, 4) + "-" + digits(date, 4, 2) + "-" + digits(date, 6, 2) + "T" +
           digits(time, 4, 2) + ":" + digits(time, 6, 2) + ":00";
}

std::string FpgaFace::getFirmwareConfiguration() const {
    const uint32_t name1 = read32(m_processorId, Processor::kFirmwareName1);
    const uint32_t name2 = read32(m_processorId, Processor::kFirmwareName2);
    const uint32_t date = read32(m_processorId, Processor::kBuildDate);
    const uint32_t time = read32(m_processorId, Processor::kBuildTime);
    const uint32_t part1 = read32(m_processorId, Processor::kPartNumber1);
    const uint32_t part2 = read32(m_processorId, Processor::kPartNumber2);
    const uint32_t part3 = read32(m_processorId, Processor::kPartNumber3);
    const uint32_t revision = read32(m_processorId, Processor::kRevision);
    return "Tessaly FPGA Firmware:, " + characters(name1) + characters(name2) + ",Date YMD:," +
           digits(date, 0, 4) + "-" + digits(date, 4, 2) + "-" + digits(date, 6, 2) +
           ",Time  HHMM:," + digits(time, 4, 2) + ":" + digits(time, 6, 2) + ",HPN:," +
           characters(part1) + "-" + characters(part2) + "-" + characters(part3) +
           "Rev:" + characters(revision);
}

// ---- Access -----------------------------------------------------------------------------------

long long FpgaFace::open(const std::string& connection, const std::string& failure) {
    long long id = -1;
    Code rc = FACE::RETURN_CODE_TYPE::NOT_AVAILABLE;
    if (m_io) {
        m_io->Open_Connection(connection.c_str(), kNoLimit, id, rc);
    }
    check(__LINE__, failure, rc);
    return id;
}

uint32_t FpgaFace::readCount(Register reg, const char* failure) const {
    uint64_t count = 0;
    check(__LINE__, failure, read(m_timeStampId, reg, count));
    return static_cast<uint32_t>(count);
}

FpgaFace::Code FpgaFace::read(long long connection, Register reg, uint64_t& value) const {
    value = 0;
    if (!m_io) {
        return FACE::RETURN_CODE_TYPE::NOT_AVAILABLE;
    }
    FACE::IOSS::Devmem::READ_PAYLOAD_TYPE payload;
    payload.offset = reg.offset;
    payload.width = reg.width;
    Code rc = FACE::RETURN_CODE_TYPE::NO_ACTION;
    m_io->Read(connection, kNoLimit, payload, rc);
    if (rc == FACE::RETURN_CODE_TYPE::NO_ERROR) {
        value = payload.data;
    }
    return rc;
}

void FpgaFace::write(long long connection, Register reg, uint64_t value) {
    if (!m_io) {
        return;
    }
    FACE::IOSS::Devmem::WRITE_PAYLOAD_TYPE payload;
    payload.offset = reg.offset;
    payload.width = reg.width;
    payload.data = value;
    Code ignored = FACE::RETURN_CODE_TYPE::NO_ACTION;
    m_io->Write(connection, kNoLimit, payload, ignored);
}

uint64_t FpgaFace::read64(long long connection, Register reg) const {
    uint64_t value = 0;
    read(connection, reg, value);
    return value;
}

uint32_t FpgaFace::read32(long long connection, Register reg) const {
    return static_cast<uint32_t>(read64(connection, reg));
}

uint32_t FpgaFace::readControl(long long connection, uint32_t count, int i) const {
    return isBelow(count, i) ? read32(connection, kControl[static_cast<uint32_t>(i)]) : 0;
}

void FpgaFace::writeControl(long long connection, uint32_t count, int i, uint32_t value) {
    if (isBelow(count, i)) {
        write(connection, kControl[static_cast<uint32_t>(i)], value);
    }
}

uint64_t FpgaFace::readPtfe(unsigned ptfe, Register reg) const {
    return ptfe < m_ptfes.size() ? read64(m_ptfes[ptfe].ptfeId, reg) : 0;
}

void FpgaFace::writePtfe(unsigned ptfe, Register reg, uint64_t value) {
    if (ptfe < m_ptfes.size()) {
        write(m_ptfes[ptfe].ptfeId, reg, value);
    }
}

uint32_t FpgaFace::readPulseGen(unsigned ptfe, Register reg) const {
    return ptfe < m_ptfes.size() ? read32(m_ptfes[ptfe].pulseGenId, reg) : 0;
}

void FpgaFace::writePulseGen(unsigned ptfe, Register reg, uint32_t value) {
    if (ptfe < m_ptfes.size()) {
        write(m_ptfes[ptfe].pulseGenId, reg, value);
    }
}

uint32_t FpgaFace::adjustPhase(unsigned ptfe, Register reg, int delta) {
    if (ptfe >= m_ptfes.size()) {
        return 0;
    }
    // In unsigned arithmetic, which wraps where a signed sum would overflow; bit 31 is its sign.
    uint32_t phase = readPulseGen(ptfe, reg) + static_cast<uint32_t>(delta);
    const uint32_t cycles = m_ptfes[ptfe].pulseCycles;
    const bool negative = (phase & 0x8000'0000u) != 0;
    if (negative) {
        phase += cycles;
    } else if (phase >= cycles) {
        phase -= cycles;
    }
    writePulseGen(ptfe, reg, phase);
    return phase;
}
