// SPDX-License-Identifier: Apache-2.0
#include "face/DevmemConnection.h"

#include <atomic>
#include <utility>

namespace FACE::IOSS {
namespace {

// The compiler's own atomics, because std::atomic cannot be laid over memory that is there already.
// The fences make the access a full barrier in both directions also where a sequentially consistent
// load or store alone lets later or earlier accesses pass.
template <typename T>
uint64_t load(const unsigned char* address) {
    std::atomic_thread_fence(std::memory_order_seq_cst);
    const T data = __atomic_load_n(reinterpret_cast<const volatile T*>(address), __ATOMIC_SEQ_CST);
    std::atomic_thread_fence(std::memory_order_seq_cst);
    return data;
}

template <typename T>
void store(unsigned char* address, uint64_t data) {
    std::atomic_thread_fence(std::memory_order_seq_cst);
    __atomic_store_n(reinterpret_cast<volatile T*>(address), static_cast<T>(data),
                     __ATOMIC_SEQ_CST);
    std::atomic_thread_fence(std::memory_order_seq_cst);
}

}  // namespace

const Setting<DevmemSettings> DevmemSettings::kTable[2] = {
    setting<&DevmemSettings::baseAddress>("BaseAddress"),
    setting<&DevmemSettings::size>("Size"),
};

DevmemConnection::DevmemConnection(std::string itsName, const DevmemSettings& itsSettings,
                                   MemoryCalls& calls)
    : ConfiguredConnection(std::move(itsName), itsSettings), m_calls(calls) {
}

bool DevmemConnection::open() {
    state = kOpening;
    try {
        m_map = std::make_unique<MemoryMap>(settings.baseAddress, settings.size, m_calls);
        m_basePointer = static_cast<unsigned char*>(m_map->getPointerToBase());
        state = kOpen;
    } catch (...) {
        m_basePointer = nullptr;
        state = kFaulty;
    }
    isOpen = true;
    return true;
}

bool DevmemConnection::close() {
    m_map.reset();
    state = kClosed;
    m_basePointer = nullptr;
    isOpen = false;
    return true;
}

DevmemConnection::Code DevmemConnection::read(Devmem::READ_PAYLOAD_TYPE& payload) const {
    if (!contains(payload.offset, payload.width)) {
        return RETURN_CODE_TYPE::NO_ACTION;
    }
    const unsigned char* const address = m_basePointer + payload.offset;
    switch (payload.width) {
        case 8:
            payload.data = load<uint8_t>(address);
            break;
        case 16:
            payload.data = load<uint16_t>(address);
            break;
        case 32:
            payload.data = load<uint32_t>(address);
            break;
        case 64:
            payload.data = load<uint64_t>(address);
            break;
        default:
            return RETURN_CODE_TYPE::NO_ACTION;
    }
    payload.timestamp = 0;
    return RETURN_CODE_TYPE::NO_ERROR;
}

DevmemConnection::Code DevmemConnection::write(const Devmem::WRITE_PAYLOAD_TYPE& payload) const {
    if (!contains(payload.offset, payload.width)) {
        return RETURN_CODE_TYPE::NO_ACTION;
    }
    unsigned char* const address = m_basePointer + payload.offset;
    switch (payload.width) {
        case 8:
            store<uint8_t>(address, payload.data);
            break;
        case 16:
            store<uint16_t>(address, payload.data);
            break;
        case 32:
            store<uint32_t>(address, payload.data);
            break;
        case 64:
            store<uint64_t>(address, payload.data);
            break;
        default:
            return RETURN_CODE_TYPE::NO_ACTION;
    }
    return RETURN_CODE_TYPE::NO_ERROR;
}

// In signed arithmetic of 64 bits: a region smaller than the access holds it nowhere.
bool DevmemConnection::contains(uint32_t offset, uint8_t width) const {
    return int64_t{offset} <= int64_t{settings.size} - width / 8;
}

}  // namespace FACE::IOSS
