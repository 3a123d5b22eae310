// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/GssipMcsq.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <utility>

#include "ASPN/HealthReporter.h"
#include "face/KD_Config.h"
#include "gssip/GssipFrame.h"

namespace {

using aspn2_msgs::idl::GSSIP;
using FACE::RETURN_CODE_TYPE;

std::vector<unsigned short> toMessageIds(const std::vector<std::string>& texts) {
    std::vector<unsigned short> ids;
    for (const std::string& text : texts) {
        const auto id = static_cast<unsigned short>(std::strtoul(text.c_str(), nullptr, 10));
        if (id != 0) {
            ids.push_back(id);
        }
    }
    return ids;
}

// The second word of the frame.
constexpr size_t kMsgIdByte = 2 * Gssip::kWordMsgId;

void reportError(int line, const std::string& text) {
    HealthReporter::Instance().SendEvent(__FILE__, line, EventTypes::eError, text);
}

}  // namespace

GssipMcsq::GssipMcsq(std::string name, std::vector<unsigned short> excludedIds,
                     const std::string& devicePrefix)
    : m_name(std::move(name)),
      m_excludedIds(std::move(excludedIds)),
      m_receiveBuffer(FACE::IOSS::KD_MCSQ::kMaxReadBytes),
      m_queue(std::make_unique<FACE::IOSS::KD_MCSQ>(devicePrefix)) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    m_queue->Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
}

GssipMcsq::GssipMcsq(std::string name, const std::vector<std::string>& excludedIds,
                     const std::string& devicePrefix)
    : GssipMcsq(std::move(name), toMessageIds(excludedIds), devicePrefix) {
}

GssipMcsq::~GssipMcsq() = default;

void GssipMcsq::Connect_WriteOnly(const FACE::String& ioDevicesFile,
                                  const FACE::String& connectionName, long long& handle,
                                  RETURN_CODE_TYPE::Value& rc) {
    handle = -1;
    m_queue->Initialize(ioDevicesFile, rc);
    if (rc <= RETURN_CODE_TYPE::NO_ACTION) {
        m_queue->Open_Connection(connectionName, -1, handle, rc);
    }
}

void GssipMcsq::Connect_ReadOnly(const FACE::String& ioDevicesFile,
                                 const FACE::String& connectionName, Callback callback,
                                 RETURN_CODE_TYPE::Value& rc) {
    long long handle = -1;
    Connect_IOWrite(ioDevicesFile, connectionName, handle, std::move(callback), rc);
}

void GssipMcsq::Connect_IOWrite(const FACE::String& ioDevicesFile,
                                const FACE::String& connectionName, long long& handle,
                                Callback callback, RETURN_CODE_TYPE::Value& rc) {
    Connect_WriteOnly(ioDevicesFile, connectionName, handle, rc);
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        return;
    }
    if (callback) {
        const std::lock_guard<std::mutex> lock(m_callbackMutex);
        m_callbacks[handle] = std::make_shared<const Callback>(std::move(callback));
    }
    m_queue->Register_Notification_Event(handle, this, rc);
}

bool GssipMcsq::IsInitialized(long long handle) const {
    uint16_t status = 1;
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    m_queue->Get_Bus_Status(handle, status, rc);
    return status == 0;
}

void GssipMcsq::Write(long long handle, const GSSIP& sample, RETURN_CODE_TYPE::Value& rc) {
    if (!IsInitialized(handle)) {
        return;
    }
    writeToQueue(handle, sample, rc);
    if (rc == RETURN_CODE_TYPE::DATA_OVERFLOW) {
        reportError(__LINE__,
                    m_name + ": Write() GSSIP QUEUE WRITE ERROR, the sample was cut short");
    }
    callCallback(handle, sample);
}

void GssipMcsq::writeToQueue(long long handle, const GSSIP& sample, RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::NO_ACTION;
    if (sample.data().size() < kMsgIdByte + 2) {
        return;
    }
    if (isExcluded(Gssip::wordAt(&sample.data()[kMsgIdByte]))) {
        rc = RETURN_CODE_TYPE::NO_ERROR;
        return;
    }
    const std::lock_guard<std::mutex> lock(m_writeMutex);
    if (!m_writeSerializer.Serialize(sample, m_writeBuffer)) {
        return;
    }
    const auto length = static_cast<uint32_t>(m_writeBuffer.size());
    FACE::IOSS::MCSQ::WRITE_PAYLOAD_TYPE payload;
    FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
    payload.payload = {m_writeBuffer.data(), length, length, viewed};
    m_queue->Write(handle, -1, payload, rc);
}

bool GssipMcsq::isExcluded(unsigned short msgId) const {
    return std::find(m_excludedIds.begin(), m_excludedIds.end(), msgId) != m_excludedIds.end();
}

void GssipMcsq::callCallback(long long handle, const GSSIP& sample) {
    std::shared_ptr<const Callback> callback;
    {
        const std::lock_guard<std::mutex> lock(m_callbackMutex);
        const auto found = m_callbacks.find(handle);
        if (found == m_callbacks.end()) {
            return;
        }
        callback = found->second;
    }
    (*callback)(sample);
}

void GssipMcsq::Process_Notification_Event(long long handle, int event) {
    if (event != 0) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_readMutex);
    try {
        processMessage(handle);
    } catch (...) {
        reportError(__LINE__,
                    m_name + ": Process_Notification_Event(): A memory exception occurred ");
    }
}

void GssipMcsq::processMessage(long long handle) {
    const auto room = static_cast<uint32_t>(m_receiveBuffer.size());
    FACE::IOSS::MCSQ::READ_PAYLOAD_TYPE payload;
    FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
    payload.payload = {m_receiveBuffer.data(), 0, room, viewed};
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    m_queue->Read(handle, 0, payload, rc);

    const size_t length = payload.payload.length();
    size_t remainder = length;
    while (remainder > 0) {
        GSSIP sample;
        const size_t used = takeSample(&m_receiveBuffer[length - remainder], remainder, sample);
        if (used == 0) {
            reportError(__LINE__, m_name +
                                      ": Process_Notification_Event(): A memory exception occurred "
                                      "on deserialize. Max Length: " +
                                      std::to_string(length) +
                                      " MCSQ remainder: " + std::to_string(remainder));
            return;
        }
        remainder -= used;
        callCallback(handle, sample);
    }
}

size_t GssipMcsq::takeSample(const uint8_t* bytes, size_t length, GSSIP& sample) {
    try {
        if (!m_readSerializer.Deserialize(bytes, length, sample)) {
            return 0;
        }
    } catch (const std::exception&) {
        return 0;
    }
    // The count comes from the stream, and the next sample is read where it says.
    if (sample.num_bytes() < 0) {
        return 0;
    }
    const size_t used =
        static_cast<size_t>(sample.num_bytes()) + GssipTopicSerializer::kBytesAroundData;
    return used <= length ? used : 0;
}
