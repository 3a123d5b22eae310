// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "face/FACE_IOSS.h"

// A memory service that keeps its registers in a map and writes down every call, as text:
// "open Name", "close Name", "read64 Name+128", "write32 Name+144=5". The first connection has the
// id 100, the next 101 and so on. Any thread may call the service; what it keeps is for the test
// alone, while no other thread calls.
class FakeDevmem : public FACE::IOSS::Devmem::IO_Service {
  public:
    using Code = FACE::RETURN_CODE_TYPE::Value;
    using Parameters = FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE;

    std::vector<std::string> trace;
    std::map<std::string, uint64_t> registers;  // by "Name+offset"; else 0
    std::map<std::string, Code> failures;       // "open Name", "read64 Name+0": what fails, and how
    bool everyTimeoutUnlimited = true;

    void Initialize(const FACE::String&, Code& rc) override {
        rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    }

    void Open_Connection(const FACE::String& name, long long timeout, long long& id,
                         Code& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_names.push_back(FACE::toStdString(name));
        id = 99 + static_cast<long long>(m_names.size());
        rc = note("open " + m_names.back(), timeout);
    }

    void Close_Connection(long long id, Code& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        rc = note("close " + nameOf(id), -1);
    }

    void Read(long long id, long long timeout, FACE::IOSS::Devmem::READ_PAYLOAD_TYPE& payload,
              Code& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::string reg = nameOf(id) + "+" + std::to_string(payload.offset);
        payload.data = registers[reg];
        rc = note("read" + std::to_string(payload.width) + " " + reg, timeout);
    }

    void Write(long long id, long long timeout,
               const FACE::IOSS::Devmem::WRITE_PAYLOAD_TYPE& payload, Code& rc) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::string reg = nameOf(id) + "+" + std::to_string(payload.offset);
        rc = note("write" + std::to_string(payload.width) + " " + reg + "=" +
                      std::to_string(payload.data),
                  timeout);
        if (rc == FACE::RETURN_CODE_TYPE::NO_ERROR) {
            registers[reg] = payload.data;
        }
    }

    // The FPGA needs none of these.
    void Configure_Connection_Parameters(long long, long long, const Parameters&, Code&) override {}
    void Get_Connection_Configuration(long long, long long, Parameters&, Code&) override {}
    void Configure_Bus_Parameters(long long, long long, Parameters&, Code&) override {}
    void Get_Bus_Configuration(long long, long long, Parameters&, Code&) override {}
    void Get_Connection_Status(long long, FACE::IOSS::CONNECTION_STATUS_TYPE&, Code&) override {}
    void Get_Bus_Status(long long, uint16_t&, Code&) override {}
    void Register_Notification_Event(long long, FACE::IOSS::IO_Callback*, Code&) override {}
    void Unregister_Notification_Event(long long, Code&) override {}

  private:
    std::string nameOf(long long id) const {
        const auto i = static_cast<std::size_t>(id - 100);
        return id >= 100 && i < m_names.size() ? m_names[i] : "unknown " + std::to_string(id);
    }

    Code note(const std::string& what, long long timeout) {
        everyTimeoutUnlimited = everyTimeoutUnlimited && timeout == -1;
        trace.push_back(what);
        const auto failure = failures.find(what.substr(0, what.find('=')));
        return failure == failures.end() ? FACE::RETURN_CODE_TYPE::NO_ERROR : failure->second;
    }

    std::mutex m_mutex;
    std::vector<std::string> m_names;
};
