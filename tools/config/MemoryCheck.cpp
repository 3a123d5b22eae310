// SPDX-License-Identifier: Apache-2.0
#include "tools/config/MemoryCheck.h"

#include <fmt/format.h>

#include <deque>
#include <optional>
#include <set>
#include <string>

#include "face/DevmemConnection.h"
#include "platform/FpgaRegisters.h"
#include "tools/config/CheckedRow.h"
#include "tools/config/RegisterBlocks.h"
#include "tools/config/SettingsTable.h"

namespace Config {
namespace {

// The registers of the receiver's power: a discrete and the supply, of four bytes each.
constexpr std::uint64_t kPowerBegin = 0x4000045C;
constexpr std::uint64_t kPowerEnd = 0x40000464;

// Beyond this a number behind the name is no number of a PTFE but a slip of the pen.
constexpr unsigned kMostPtfes = 64;

struct Region {
    std::string name;
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    CheckedRow row;
};

// The number behind a name, if it is one as the server would write it.
std::optional<unsigned> numberBehind(const std::string& name, const std::string& start) {
    if (name.rfind(start, 0) != 0) {
        return std::nullopt;
    }
    for (unsigned i = 0; i < kMostPtfes; ++i) {
        if (name == start + std::to_string(i)) {
            return i;
        }
    }
    return std::nullopt;
}

std::vector<RegisterBlock> blocksOf(const ConfigFile& file, const ASPN2::ServerSettings& settings,
                                    Findings& findings) {
    unsigned ptfes = 0;
    for (const ConfigFile::Container& container : file.containers()) {
        for (const char* const start :
             {FpgaRegisters::Ptfe::kConnection, FpgaRegisters::PulseGen::kConnection}) {
            if (const auto number = numberBehind(container.name, start)) {
                ptfes = std::max(ptfes, *number + 1);
            }
        }
    }
    if (ptfes == 0 && file.isGood()) {
        Finding finding;
        finding.severity = Severity::kWarning;
        finding.kind = "missing-container";
        finding.file = file.path();
        finding.container = FpgaRegisters::Ptfe::kConnection + std::string("0");
        finding.problem = "there is no container of this name; only an FPGA without PTFEs starts";
        findings.push_back(finding);
    }
    std::vector<RegisterBlock> blocks = fixedBlocks(settings.uartIndex, settings.pulseIndex);
    for (unsigned i = 0; i < ptfes; ++i) {
        for (RegisterBlock& block : ptfeBlocks(i)) {
            blocks.push_back(std::move(block));
        }
    }
    return blocks;
}

// What is wrong with a block by itself.
void checkBlock(CheckedRow& row, const RegisterBlock& block,
                const FACE::IOSS::DevmemSettings& settings) {
    constexpr std::uint64_t kEndOfAddresses = std::uint64_t{1} << 32;
    const std::uint64_t end = std::uint64_t{settings.baseAddress} + settings.size;
    if (settings.size < block.bytes) {
        row.error("Size", "is too small for the registers of this block",
                  fmt::format("at least 0x{:X}", block.bytes));
    }
    if (settings.baseAddress % block.alignment != 0) {
        row.error("BaseAddress", "is between two addresses that a register can have",
                  fmt::format("a multiple of {}", block.alignment));
    }
    if (row.isGood("Size") && end > kEndOfAddresses) {
        row.error("BaseAddress", "with the size goes beyond the last address",
                  fmt::format("at most 0x{:X}", kEndOfAddresses - settings.size));
    }
}

void checkApart(Region& region, std::deque<Region>& others) {
    for (const Region& other : others) {
        if (region.begin < other.end && other.begin < region.end) {
            region.row.error(
                "BaseAddress", fmt::format("lies in the block {}", other.name),
                fmt::format("an address outside 0x{:X} to 0x{:X}", other.begin, other.end - 1));
        }
    }
    if (region.begin < kPowerEnd && kPowerBegin < region.end) {
        region.row.warning("BaseAddress",
                           fmt::format("has the registers of the receiver's power inside, at "
                                       "0x{:X} to 0x{:X}",
                                       kPowerBegin, kPowerEnd - 1),
                           "an address apart from them");
    }
}

}  // namespace

void checkMemory(ConfigFile& file, const ASPN2::ServerSettings& settings, Findings& findings) {
    std::deque<Region> regions;
    for (const RegisterBlock& block : blocksOf(file, settings, findings)) {
        FACE::IOSS::DevmemSettings memory;
        CheckedRow row(file, block.name, findings);
        readSettings(row, memory);
        checkBlock(row, block, memory);
        if (row.isGood("BaseAddress") && row.isGood("Size")) {
            Region region{block.name, memory.baseAddress,
                          std::uint64_t{memory.baseAddress} + memory.size, row};
            checkApart(region, regions);
            regions.push_back(region);
        }
    }
}

}  // namespace Config
