// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "face/ConnectionSettings.h"
#include "face/ConnectionTable.h"
#include "face/FACE_Configuration.h"
#include "face/FACE_IOSS.h"

namespace FACE::IOSS {

// What a connection of a ConnectionService is at least: a name, settings, a state and, added by the
// derived class, `bool open()` and `bool close()`. A connection without its resource, or with one
// that does not do all that the settings ask, is faulty and still counts as open.
template <typename SETTINGS>
struct ConfiguredConnection : NamedConnection {
    using Settings = SETTINGS;

    enum State : uint32_t { kClosed = 0, kOpening = 1, kOpen = 2, kFaulty = 4 };

    ConfiguredConnection(std::string itsName, const SETTINGS& itsSettings)
        : NamedConnection(std::move(itsName)), settings(itsSettings) {}

    SETTINGS settings;
    State state = kClosed;
};

// What the serial and the memory service have in common: named connections that are configured by a
// container each, and the operations that do not depend on what is carried. SERVICE is the
// interface that is implemented, CONNECTION the connection.
//
// Shares the configuration, owns the connections, and borrows the calls, which outlive it. There is
// no lock: opening, closing and configuring belong to bring-up and tear-down, while nobody reads or
// writes. An id that was never given out is INVALID_PARAM everywhere.
template <typename SERVICE, typename CONNECTION>
class ConnectionService : public SERVICE, public Configuration_Injectable::Injectable {
  public:
    using Code = RETURN_CODE_TYPE::Value;
    using Connection_t = CONNECTION;

    explicit ConnectionService(typename CONNECTION::Calls& calls) : m_calls(calls) {}
    ConnectionService(const ConnectionService&) = delete;
    ConnectionService& operator=(const ConnectionService&) = delete;

    void Set_Reference(const String&, const std::shared_ptr<Configuration>& configuration,
                       long long, Code& rc) override {
        if (m_configuration) {
            rc = RETURN_CODE_TYPE::NOT_AVAILABLE;
        } else if (!configuration) {
            rc = RETURN_CODE_TYPE::INVALID_PARAM;
        } else {
            m_configuration = configuration;
            rc = RETURN_CODE_TYPE::NO_ERROR;
        }
    }

    /// NO_ACTION when done before, NOT_AVAILABLE without a configuration, INVALID_CONFIG when that
    /// cannot be loaded.
    void Initialize(const String& path, Code& rc) override {
        if (m_initialised) {
            rc = RETURN_CODE_TYPE::NO_ACTION;
        } else if (!m_configuration) {
            rc = RETURN_CODE_TYPE::NOT_AVAILABLE;
        } else {
            m_configuration->Initialize(path, rc);
            m_initialised = rc == RETURN_CODE_TYPE::NO_ERROR || rc == RETURN_CODE_TYPE::NO_ACTION;
            rc = m_initialised ? RETURN_CODE_TYPE::NO_ERROR : RETURN_CODE_TYPE::INVALID_CONFIG;
        }
    }

    /// A connection is configured once, when its name is first seen; after that a closed one is
    /// opened again with what it has, and an open one left alone. INVALID_CONFIG without container
    /// or key, NO_ACTION when the device cannot be opened; `id` is -1 then.
    void Open_Connection(const String& name, long long, long long& id, Code& rc) override {
        id = m_connections.kNone;
        const std::string itsName = toStdString(name);
        long long found = m_connections.idOf(itsName);
        if (found == m_connections.kNone) {
            typename CONNECTION::Settings settings;
            rc = readContainer(name, settings);
            if (rc != RETURN_CODE_TYPE::NO_ERROR) {
                return;
            }
            found = m_connections.add(itsName, settings, m_calls);
        }
        CONNECTION* const connection = m_connections.find(found, rc);
        if (!connection->isOpen && !connection->open()) {
            rc = RETURN_CODE_TYPE::NO_ACTION;
            return;
        }
        id = found;
    }

    void Close_Connection(long long id, Code& rc) override {
        CONNECTION* const connection = m_connections.findOpen(id, rc);
        if (connection != nullptr && !connection->close()) {
            rc = RETURN_CODE_TYPE::NO_ACTION;
        }
    }

    /// Fills in the value of each parameter, also of a closed connection. INVALID_PARAM when any
    /// has an unknown id; the others are filled in all the same.
    void Get_Connection_Configuration(long long id, long long,
                                      IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                      Code& rc) override {
        const CONNECTION* const connection = m_connections.find(id, rc);
        if (connection != nullptr && !reportSettings(connection->settings, parameters.parameters)) {
            rc = RETURN_CODE_TYPE::INVALID_PARAM;
        }
    }

    void Get_Bus_Configuration(long long id, long long timeout,
                               IO_PARAMETER_TRANSACTION_TYPE& parameters, Code& rc) override {
        this->Get_Connection_Configuration(id, timeout, parameters, rc);
    }

    void Get_Connection_Status(long long id, CONNECTION_STATUS_TYPE& status, Code& rc) override {
        if (const CONNECTION* const connection = m_connections.findOpen(id, rc)) {
            status.timestamp = 0;
            status.kind = 1;
            status.state = connection->state;
        }
    }

    void Get_Bus_Status(long long id, uint16_t& status, Code& rc) override {
        if (m_connections.find(id, rc) != nullptr) {
            status = 0;
        }
    }

    /// There are no notifications: NO_ACTION, or CONNECTION_CLOSED.
    void Register_Notification_Event(long long id, IO_Callback*, Code& rc) override {
        if (m_connections.findOpen(id, rc) != nullptr) {
            rc = RETURN_CODE_TYPE::NO_ACTION;
        }
    }
    void Unregister_Notification_Event(long long id, Code& rc) override {
        if (m_connections.find(id, rc) != nullptr) {
            rc = RETURN_CODE_TYPE::NO_ACTION;
        }
    }

  protected:
    /// The connection for reading and writing, or null: CONNECTION_CLOSED when it is not open,
    /// INVALID_MODE when it is open but cannot be used.
    CONNECTION* findUsable(long long id, Code& rc) {
        CONNECTION* const connection = m_connections.findOpen(id, rc);
        if (connection != nullptr && !connection->usable()) {
            rc = RETURN_CODE_TYPE::INVALID_MODE;
            return nullptr;
        }
        return connection;
    }

    ConnectionTable<CONNECTION> m_connections;

  private:
    Code readContainer(const String& name, typename CONNECTION::Settings& settings) {
        if (!m_configuration) {
            return RETURN_CODE_TYPE::NOT_AVAILABLE;
        }
        KD_Config_Row row(*m_configuration, name);
        readSettings(row, settings);
        return row.code();
    }

    typename CONNECTION::Calls& m_calls;
    std::shared_ptr<Configuration> m_configuration;
    bool m_initialised = false;
};

}  // namespace FACE::IOSS
