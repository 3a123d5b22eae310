// SPDX-License-Identifier: Apache-2.0
// What a time stamp costs on the way of each message: one register of a region that is mapped from
// a sparse file instead of the memory device.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "face/KD_Config.h"
#include "face/KD_Devmem.h"
#include "platform/FPGA.h"

namespace {

class SparseFile : public MemoryCalls {
  public:
    SparseFile() : m_file(std::tmpfile()) {
        if (m_file == nullptr || ftruncate(fileno(m_file), 0x2'0000) != 0) {
            abort();
        }
    }
    ~SparseFile() { std::fclose(m_file); }
    SparseFile(const SparseFile&) = delete;
    SparseFile& operator=(const SparseFile&) = delete;

    int open(const char*, int) override { return dup(fileno(m_file)); }
    void set(long address, uint64_t value) {
        if (pwrite(fileno(m_file), &value, sizeof(value), address) != sizeof(value)) {
            abort();
        }
    }

  private:
    std::FILE* m_file;
};

// Blocks of a page each, "TimeStamp_Interface" at 0x2000; one UART, one pulse input, no PTFE.
const char* const kConfiguration = R"(<KD_Configurations>
<D><Name>Processor_Interface</Name><Parameters><BaseAddress>0</BaseAddress><Size>4096</Size></Parameters></D>
<D><Name>Peripheral_Interface</Name><Parameters><BaseAddress>0x1000</BaseAddress><Size>4096</Size></Parameters></D>
<D><Name>TimeStamp_Interface</Name><Parameters><BaseAddress>0x2000</BaseAddress><Size>4096</Size></Parameters></D>
<D><Name>PpsSlave_Interface</Name><Parameters><BaseAddress>0x3000</BaseAddress><Size>4096</Size></Parameters></D>
<D><Name>PtpClock_Interface</Name><Parameters><BaseAddress>0x4000</BaseAddress><Size>4096</Size></Parameters></D>
</KD_Configurations>)";

std::shared_ptr<FACE::KD_Config> loadConfiguration() {
    char path[] = "/tmp/rovan-bench-XXXXXX";
    const int fd = mkstemp(path);
    const std::string text = kConfiguration;
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        abort();
    }
    auto configuration = std::make_shared<FACE::KD_Config>();
    auto rc = FACE::RETURN_CODE_TYPE::NO_ACTION;
    configuration->Initialize(path, rc);
    close(fd);
    unlink(path);
    return configuration;
}

FpgaFace& fpga() {
    static SparseFile memory;
    static bool ready = false;
    if (!ready) {
        memory.set(0x2000, 58982400);
        memory.set(0x2008, 1);
        memory.set(0x2018, 1);
        const auto devmem = std::make_shared<FACE::IOSS::KD_Devmem>(memory);
        auto rc = FACE::RETURN_CODE_TYPE::NO_ACTION;
        devmem->Set_Reference("", loadConfiguration(), 0, rc);
        FpgaFace::Instance().InitFpga(devmem);
        ready = true;
    }
    return FpgaFace::Instance();
}

void uartTimeStamp(benchmark::State& state) {
    FpgaFace& face = fpga();
    for (auto _ : state) {
        benchmark::DoNotOptimize(face.getUARTDataTimestampRaw(0));
    }
}
BENCHMARK(uartTimeStamp);

void pulseTimeStamp(benchmark::State& state) {
    FpgaFace& face = fpga();
    for (auto _ : state) {
        benchmark::DoNotOptimize(face.getPulseTimestampRaw(0));
    }
}
BENCHMARK(pulseTimeStamp);

void systemCount(benchmark::State& state) {
    FpgaFace& face = fpga();
    for (auto _ : state) {
        benchmark::DoNotOptimize(face.fpga_get_SystemCount());
    }
}
BENCHMARK(systemCount)->Threads(1)->Threads(2);

}  // namespace
