// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/KD_MCSQ.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <exception>
#include <utility>

#include "face/KD_Config_Row.h"
#include "ioss_mcsq/KD_MCSQ_Settings.h"
#include "utility/Console.h"
#include "utility/Sleep.h"

namespace FACE::IOSS {
namespace {

// Also how long a stop may take to be noticed.
constexpr std::chrono::milliseconds kPollTimeout{50};

}  // namespace

KD_MCSQ::KD_MCSQ(std::string devicePrefix) : m_devicePrefix(std::move(devicePrefix)) {
}

KD_MCSQ::~KD_MCSQ() {
    m_callbackThread.stop();
}

void KD_MCSQ::Set_Reference(const String&, const std::shared_ptr<Configuration>& configuration,
                            long long, RETURN_CODE_TYPE::Value& rc) {
    if (m_configuration != nullptr) {
        rc = RETURN_CODE_TYPE::NOT_AVAILABLE;
    } else if (configuration == nullptr) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
    } else {
        m_configuration = configuration;
        rc = RETURN_CODE_TYPE::NO_ERROR;
    }
}

void KD_MCSQ::Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) {
    if (m_configuration == nullptr) {
        rc = RETURN_CODE_TYPE::NOT_AVAILABLE;
        return;
    }
    if (m_initialized) {
        rc = RETURN_CODE_TYPE::NO_ACTION;
        return;
    }
    m_configuration->Initialize(path, rc);
    m_initialized = rc <= RETURN_CODE_TYPE::NO_ACTION;
    rc = m_initialized ? RETURN_CODE_TYPE::NO_ERROR : RETURN_CODE_TYPE::INVALID_CONFIG;
}

void KD_MCSQ::Open_Connection(const String& name, long long, long long& id,
                              RETURN_CODE_TYPE::Value& rc) {
    id = m_connections.kNone;
    if (!m_initialized) {
        rc = RETURN_CODE_TYPE::NOT_AVAILABLE;
        return;
    }
    uint16_t port = 0;
    {
        KD_Config_Row row(*m_configuration, name);
        readQueueSettings(row, port);
        rc = row.code();
    }
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::string connectionName = toStdString(name);
        id = m_connections.idOf(connectionName);
        if (id == m_connections.kNone) {
            id = m_connections.add(connectionName, port, m_devicePrefix);
        }
        m_connections.find(id, rc)->open();
        updatePollList();
    }
    watch();
}

void KD_MCSQ::Close_Connection(long long id, RETURN_CODE_TYPE::Value& rc) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Connection_t* connection = m_connections.findOpen(id, rc)) {
        connection->close();
        updatePollList();
    }
}

void KD_MCSQ::Read(long long id, long long, MCSQ::READ_PAYLOAD_TYPE& payload,
                   RETURN_CODE_TYPE::Value& rc) {
    Sequence<uint8_t>& bytes = payload.payload;
    Connection_t* connection = getOpenConnection(id, rc);
    const uint32_t room =
        bytes.is_bounded() ? std::min(bytes.bound(), kMaxReadBytes) : kMaxReadBytes;
    if (connection == nullptr || bytes.resize(room) != bytes.NO_ERROR) {
        bytes.clear();
        rc = connection == nullptr ? rc : RETURN_CODE_TYPE::INVALID_PARAM;
        return;
    }
    const ssize_t count = connection->read(bytes.buffer(), room);
    const int reason = errno;
    bytes.resize(count > 0 ? static_cast<uint32_t>(count) : 0);
    if (count > 0) {
        m_bytesRead += static_cast<uint64_t>(count);
        rc = RETURN_CODE_TYPE::NO_ERROR;
    } else {
        const bool nothingThere = count == 0 || reason == EAGAIN || reason == EINTR;
        rc = nothingThere ? RETURN_CODE_TYPE::NOT_AVAILABLE : RETURN_CODE_TYPE::NO_ACTION;
    }
}

void KD_MCSQ::Write(long long id, long long, const MCSQ::WRITE_PAYLOAD_TYPE& payload,
                    RETURN_CODE_TYPE::Value& rc) {
    Connection_t* connection = getOpenConnection(id, rc);
    if (connection == nullptr) {
        return;
    }
    const size_t length = payload.payload.length();
    const ssize_t written = connection->write(payload.payload.buffer(), length);
    if (written <= 0) {
        rc = RETURN_CODE_TYPE::NO_ACTION;
    } else if (static_cast<size_t>(written) < length) {
        rc = RETURN_CODE_TYPE::DATA_OVERFLOW;
    }
}

void KD_MCSQ::Configure_Connection_Parameters(long long id, long long,
                                              const IO_PARAMETER_TRANSACTION_TYPE&,
                                              RETURN_CODE_TYPE::Value& rc) {
    getConnection(id, rc);
}

void KD_MCSQ::Get_Connection_Configuration(long long id, long long, IO_PARAMETER_TRANSACTION_TYPE&,
                                           RETURN_CODE_TYPE::Value& rc) {
    getConnection(id, rc);
}

void KD_MCSQ::Configure_Bus_Parameters(long long id, long long, IO_PARAMETER_TRANSACTION_TYPE&,
                                       RETURN_CODE_TYPE::Value& rc) {
    getConnection(id, rc);
}

void KD_MCSQ::Get_Bus_Configuration(long long id, long long, IO_PARAMETER_TRANSACTION_TYPE&,
                                    RETURN_CODE_TYPE::Value& rc) {
    getConnection(id, rc);
}

void KD_MCSQ::Get_Connection_Status(long long id, CONNECTION_STATUS_TYPE& status,
                                    RETURN_CODE_TYPE::Value& rc) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const Connection_t* connection = m_connections.find(id, rc)) {
        status.timestamp = 0;
        status.kind = 1;
        status.state = connection->state();
    }
}

void KD_MCSQ::Get_Bus_Status(long long id, uint16_t& status, RETURN_CODE_TYPE::Value& rc) {
    status = getConnection(id, rc) != nullptr ? 0 : 1;
}

void KD_MCSQ::Register_Notification_Event(long long id, IO_Callback* callback,
                                          RETURN_CODE_TYPE::Value& rc) {
    if (getConnection(id, rc) == nullptr) {
        return;
    }
    if (callback == nullptr) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_callback = callback;
    }
    watch();
}

void KD_MCSQ::Unregister_Notification_Event(long long id, RETURN_CODE_TYPE::Value& rc) {
    if (getConnection(id, rc) == nullptr) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_callback = nullptr;
    }
    m_callbackThread.stop();
}

KD_MCSQ::Connection_t* KD_MCSQ::getConnection(long long id, RETURN_CODE_TYPE::Value& rc) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections.find(id, rc);
}

KD_MCSQ::Connection_t* KD_MCSQ::getOpenConnection(long long id, RETURN_CODE_TYPE::Value& rc) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections.findOpen(id, rc);
}

void KD_MCSQ::updatePollList() {
    m_pollList.clear();
    for (const Connection_t& connection : m_connections) {
        if (connection.isOpen) {
            m_pollList.push_back({connection.readerDescriptor(), POLLIN, 0});
        }
    }
}

// Starts the thread when there is something to watch and it has not been started or has ended.
void KD_MCSQ::watch() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_watching || m_callback == nullptr || m_pollList.empty()) {
            return;
        }
        m_watching = true;
    }
    m_callbackThread.stop();
    m_callbackThread.start([this] { callbackThreadFunction(); });
}

void KD_MCSQ::callbackThreadFunction() {
    std::vector<pollfd> polled;
    while (copyPollList(polled)) {
        const auto roundEnd = std::chrono::steady_clock::now() + kPollTimeout;
        const uint64_t bytesBefore = m_bytesRead;
        if (poll(polled.data(), polled.size(), static_cast<int>(kPollTimeout.count())) > 0) {
            std::for_each(polled.begin(), polled.end(),
                          [this](const pollfd& entry) { notify(entry); });
        }
        // A device that has hung up is always ready and never gives anything.
        if (m_bytesRead == bytesBefore) {
            Utility::sleepFor(roundEnd - std::chrono::steady_clock::now());
        }
    }
}

// False when the thread shall end. Polling a copy leaves the list free for those who open and
// close.
bool KD_MCSQ::copyPollList(std::vector<pollfd>& polled) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    polled = m_pollList;
    m_watching = !m_callbackThread.stopRequested() && !polled.empty();
    return m_watching;
}

void KD_MCSQ::notify(const pollfd& entry) {
    if ((entry.revents & POLLIN) == 0) {
        return;
    }
    IO_Callback* callback = nullptr;
    long long id = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = std::find_if(
            m_connections.begin(), m_connections.end(), [&entry](const Connection_t& connection) {
                return connection.isOpen && connection.readerDescriptor() == entry.fd;
            });
        if (found == m_connections.end()) {
            return;  // closed since the poll
        }
        id = std::distance(m_connections.begin(), found);
        callback = m_callback;
    }
    try {
        if (callback != nullptr) {
            callback->Process_Notification_Event(id, 0);
        }
    } catch (const std::exception& error) {
        Console::errorLine(std::string("KD_MCSQ callback failed: ") + error.what());
    } catch (...) {
        Console::errorLine("KD_MCSQ callback failed");
    }
}

}  // namespace FACE::IOSS
