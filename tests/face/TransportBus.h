// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "face/KD_Config.h"
#include "face/KD_TSS.h"
#include "face/KD_TypedTS.h"

// What the tests of the transport have in common: connections files in a directory of their own,
// transports that have joined a bus, and inboxes that collect what callbacks bring.
namespace transport_test {

using RC = FACE::RETURN_CODE_TYPE;

/// True as soon as `condition` holds, false if it does not within the bound.
inline bool eventually(const std::function<bool()>& condition,
                       std::chrono::seconds bound = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

using Parameters = std::map<std::string, std::string>;

/// The container "FastRtps" of a bus on the loopback interface; `changes` replaces or adds keys.
inline Parameters busSettings(int domain, const Parameters& changes = {}) {
    Parameters settings = changes;
    settings.insert({{"DomainId", std::to_string(domain)},
                     {"HistoryDepth", "64"},
                     {"UseBestEffort", "FALSE"},
                     {"BackFillHistory", "FALSE"},
                     {"UseTransport", "UDP"},
                     {"TcpAddress", "127.0.0.1"},
                     {"TcpPort", "0"}});
    return settings;
}

/// The container of a connection that carries the message type of that name.
inline Parameters carries(const std::string& type) {
    return {{"TopicType", "aspn2_msgs::idl::" + type}, {"PubSubType", type + "PubSubType"}};
}

// A connections file in a fresh directory, which goes with the object.
class ConnectionsFile {
  public:
    explicit ConnectionsFile(const std::map<std::string, Parameters>& containers) {
        std::string pattern = std::filesystem::temp_directory_path() / "transport_XXXXXX";
        m_directory = mkdtemp(pattern.data());
        std::ofstream file(path());
        file << "<KD_Configurations>\n";
        for (const auto& [name, parameters] : containers) {
            file << "<Container><Name>" << name << "</Name><Parameters>";
            for (const auto& [key, value] : parameters) {
                file << '<' << key << '>' << value << "</" << key << '>';
            }
            file << "</Parameters></Container>\n";
        }
        file << "</KD_Configurations>\n";
    }
    ConnectionsFile(const ConnectionsFile&) = delete;
    ConnectionsFile& operator=(const ConnectionsFile&) = delete;
    ~ConnectionsFile() { std::filesystem::remove_all(m_directory); }

    std::string path() const { return m_directory + "/connections.xml"; }

  private:
    std::string m_directory;
};

inline RC::Value initialize(FACE::TSS::KD_TSS& transport, const std::string& path) {
    auto rc = RC::NO_ERROR;
    transport.Set_Reference("Configuration", std::make_shared<FACE::KD_Config>(), 0, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    transport.Initialize(path.c_str(), rc);
    return rc;
}

/// A transport that has joined the bus of the file.
inline std::shared_ptr<FACE::TSS::KD_TSS> join(const ConnectionsFile& file,
                                               const std::string& participantName = "Tester") {
    auto transport = std::make_shared<FACE::TSS::KD_TSS>(participantName);
    EXPECT_EQ(initialize(*transport, file.path()), RC::NO_ERROR);
    return transport;
}

inline long long connect(FACE::TSS::Base& transport, const char* name) {
    auto rc = RC::NO_ERROR;
    long long id = -1;
    int size = 0;
    transport.Create_Connection(name, 0, id, size, rc);
    EXPECT_EQ(rc, RC::NO_ERROR) << name;
    return id;
}

// A typed face with operations that return their code.
template <typename T>
class Face {
  public:
    explicit Face(const std::shared_ptr<FACE::TSS::Base>& transport) {
        auto rc = RC::NO_ERROR;
        m_face.Set_Reference("TSS", transport, 0, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
    }
    RC::Value send(long long connection, const T& message) {
        auto rc = RC::INVALID_MODE;
        long long transaction = 0;
        m_face.Send_Message(connection, 0, transaction, message, rc);
        return rc;
    }
    RC::Value registerSender(long long connection) {
        auto rc = RC::INVALID_MODE;
        m_face.Register_Sender(connection, rc);
        return rc;
    }
    RC::Value registerCallback(long long connection, FACE::TSS::Read_Callback<T> callback) {
        auto rc = RC::INVALID_MODE;
        m_face.Register_Callback(connection, std::move(callback), rc);
        return rc;
    }

  private:
    FACE::TSS::Details::KD_TypedTS<T> m_face;
};

// Collects the messages of a callback; any thread may look.
template <typename T>
class Inbox {
  public:
    FACE::TSS::Read_Callback<T> callback() {
        return [this](long long, long long, const T& message, const FACE::TSS::HEADER_TYPE&,
                      const FACE::Sequence<FACE::TSS::QoS_Element>&, RC::Value&) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_messages.push_back(message);
        };
    }
    std::vector<T> messages() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_messages;
    }
    size_t count() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_messages.size();
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<T> m_messages;
};

}  // namespace transport_test
