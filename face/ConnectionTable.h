// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <utility>

#include "face/FACE_Common.h"

namespace FACE::IOSS {

// What the table asks of a connection; derive from it.
struct NamedConnection {
    explicit NamedConnection(std::string itsName) : name(std::move(itsName)) {}

    const std::string name;
    bool isOpen = false;
};

// The connections of an I/O service. A connection is entered once, keeps its place and its id for
// the life of the table, also while it is closed, and never moves in memory.
//
// The table does not lock: any thread may look up, but not while another one adds.
template <typename CONNECTION>
class ConnectionTable {
  public:
    static constexpr long long kNone = -1;

    /// Makes a connection of these arguments at the end of the table and returns its id.
    template <typename... Args>
    long long add(Args&&... args) {
        m_connections.emplace_back(std::forward<Args>(args)...);
        return static_cast<long long>(m_connections.size()) - 1;
    }

    /// The first connection of that name, or kNone.
    long long idOf(const std::string& name) const {
        for (std::size_t i = 0; i < m_connections.size(); ++i) {
            if (m_connections[i].name == name) {
                return static_cast<long long>(i);
            }
        }
        return kNone;
    }

    /// NO_ERROR and the connection, or INVALID_PARAM and null for an id that was never given out.
    CONNECTION* find(long long id, RETURN_CODE_TYPE::Value& rc) {
        if (id < 0 || static_cast<unsigned long long>(id) >= m_connections.size()) {
            rc = RETURN_CODE_TYPE::INVALID_PARAM;
            return nullptr;
        }
        rc = RETURN_CODE_TYPE::NO_ERROR;
        return &m_connections[static_cast<std::size_t>(id)];
    }

    /// The same, and CONNECTION_CLOSED and null for a connection that is not open.
    CONNECTION* findOpen(long long id, RETURN_CODE_TYPE::Value& rc) {
        CONNECTION* const connection = find(id, rc);
        if (connection != nullptr && !connection->isOpen) {
            rc = RETURN_CODE_TYPE::CONNECTION_CLOSED;
            return nullptr;
        }
        return connection;
    }

    std::size_t size() const { return m_connections.size(); }
    auto begin() { return m_connections.begin(); }
    auto end() { return m_connections.end(); }

  private:
    std::deque<CONNECTION> m_connections;
};

}  // namespace FACE::IOSS
