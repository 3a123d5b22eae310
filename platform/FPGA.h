// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "face/FACE_IOSS.h"
#include "platform/FpgaRegisters.h"

// The unit's FPGA: time base, arrival time stamps, pulse generators, frequency estimators (PTFE)
// and control registers, reached through the memory service that InitFpga is given and shares.
//
// Any thread may call the operations between InitFpga and DoneFpga, which run while no other thread
// does. Each is one transaction on a mapped register, unless it says otherwise; those of several
// transactions (soft reset, adjust, fpga_ptfe_init) want one caller at a time.
//
// Nothing here fails visibly after InitFpga: without a memory service, with an index out of range
// or when the transaction fails, a read gives 0 and a write is dropped. All times are in ticks.
class FpgaFace {
  public:
    static FpgaFace& Instance();

    FpgaFace(const FpgaFace&) = delete;
    FpgaFace& operator=(const FpgaFace&) = delete;

    /// Opens all blocks, reads the counts of the hardware and checks the clock rate. Throws
    /// std::runtime_error on the first failure: without its time base the server cannot run.
    void InitFpga(const std::shared_ptr<FACE::IOSS::Devmem::IO_Service>& devmem);
    /// Closes all blocks. The memory service is kept, so what is called later just fails.
    void DoneFpga();

    uint64_t fpga_get_SystemCount() const;
    uint32_t fpga_timestamp_get_ticks_per_sec() const { return FpgaRegisters::kTicksPerSecond; }
    /// Time stamp of the latest data on the UART.
    uint64_t getUARTDataTimestampRaw(unsigned uart) const;
    uint64_t getPulseTimestampRaw(int pulse) const;

    /// The correction of the UART's time stamps, in ticks.
    void setUartDelay(unsigned uart, unsigned ticks);
    unsigned getUartDelay(unsigned uart) const;
    /// The same, given as the time of a x b bits at `baud` bits per second. A baud of 0 writes
    /// nothing, a time that does not fit the register the longest one.
    void setUartDelay(unsigned uart, unsigned baud, unsigned a, unsigned b);

    void fpga_set_periph_control(int i, unsigned v);
    unsigned fpga_get_periph_control(int i) const;
    /// Reads the register, writes 0 to it and returns the old value.
    unsigned fpga_reset_periph_control(int i);
    void fpga_set_ppsSlave_control(int i, unsigned v);
    unsigned fpga_get_ppsSlave_control(int i) const;
    void fpga_set_ptpClock_control(int i, unsigned v);
    unsigned fpga_get_ptpClock_control(int i) const;

    /// Sets the pulse generator to `cycles` ticks and both limits of the PTFE to `limit`.
    void fpga_ptfe_init(unsigned ptfe, unsigned limit, unsigned cycles);
    /// Sets the soft reset bit for a microsecond; the calling thread sleeps that long.
    void fpga_ptfe_soft_reset(unsigned ptfe);
    uint64_t getPtfeFirmwareId(unsigned ptfe) const;
    unsigned getPtfeStatus(unsigned ptfe) const;
    unsigned getAndClearPtfeStatus(unsigned ptfe);
    uint64_t getDfNcoRate(unsigned ptfe) const;   // 44 bits
    uint64_t getDtNcoPhase(unsigned ptfe) const;  // 40 bits
    unsigned getDtCycles(unsigned ptfe) const;
    /// The register plus one; so 1, not 0, for a bad index or a failed read.
    unsigned getPtfeMeasuredFreqEstimate(unsigned ptfe) const;
    void setPtfeDefaultNcoRate(unsigned ptfe, unsigned long long rate);

    void fpga_pulsegen_set_Int_phase(unsigned ptfe, unsigned phase);
    unsigned fpga_pulsegen_get_Int_phase(unsigned ptfe) const;
    void fpga_pulsegen_set_Ext_phase(unsigned ptfe, unsigned phase);
    unsigned fpga_pulsegen_get_Ext_phase(unsigned ptfe) const;
    /// Adds `delta` to the phase, wraps the sum once by the cycle length given to fpga_ptfe_init,
    /// and returns what was written. A delta of more than one cycle can leave the range.
    unsigned fpga_pulsegen_adjust_Int_phase(unsigned ptfe, int delta);
    unsigned fpga_pulsegen_adjust_Ext_phase(unsigned ptfe, int delta);

    /// When the firmware was built, as YYYY-MM-DDThh:mm:00.
    std::string getFirmwareBuildStamp() const;
    /// Name, build date and time, part number and revision in one text. A word that could not be
    /// read counts as 0, so zero bytes can stand in it.
    std::string getFirmwareConfiguration() const;

  private:
    using Register = FpgaRegisters::Register;
    using Code = FACE::RETURN_CODE_TYPE::Value;

    struct PtfeBlocks {
        long long ptfeId = -1;
        long long pulseGenId = -1;
        uint32_t pulseCycles = 0;
    };

    FpgaFace() = default;
    ~FpgaFace() = default;

    long long open(const std::string& connection, const std::string& failure);
    uint32_t readCount(Register reg, const char* failure) const;

    Code read(long long connection, Register reg, uint64_t& value) const;
    uint64_t read64(long long connection, Register reg) const;
    uint32_t read32(long long connection, Register reg) const;
    void write(long long connection, Register reg, uint64_t value);

    uint32_t readControl(long long connection, uint32_t count, int i) const;
    void writeControl(long long connection, uint32_t count, int i, uint32_t value);

    uint64_t readPtfe(unsigned ptfe, Register reg) const;
    void writePtfe(unsigned ptfe, Register reg, uint64_t value);
    uint32_t readPulseGen(unsigned ptfe, Register reg) const;
    void writePulseGen(unsigned ptfe, Register reg, uint32_t value);
    uint32_t adjustPhase(unsigned ptfe, Register reg, int delta);

    std::shared_ptr<FACE::IOSS::Devmem::IO_Service> m_io;
    long long m_processorId = -1;
    long long m_peripheralId = -1;
    long long m_timeStampId = -1;
    long long m_ppsSlaveId = -1;
    long long m_ptpClockId = -1;
    std::vector<PtfeBlocks> m_ptfes;
    uint32_t m_numUarts = 0;
    uint32_t m_numPulses = 0;
    uint32_t m_numPeriphs = 0;
};
