// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "face/KD_Config.h"
#include "face/KD_TSS.h"
#include "face/KD_TSS_Listeners.h"
#include "face/KD_TypedTS.h"
#include "tests/tools/TemporaryDirectory.h"

namespace tools_test {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A connection's container.
inline std::string connection(const std::string& name, const std::string& type) {
    return "  <Connection><Name>" + name +
           "</Name><Parameters>\n"
           "    <TopicType>aspn2_msgs::idl::" +
           type + "</TopicType><PubSubType>" + type +
           "PubSubType</PubSubType>\n"
           "  </Parameters></Connection>\n";
}

/// A connections file for that domain and transport with the topics that the tests use.
inline std::string connectionsXml(int domain, const std::string& transport, int port = 0) {
    return "<KD_Configurations>\n"
           "  <Transport><Name>FastRtps</Name><Parameters>\n"
           "    <DomainId>" +
           std::to_string(domain) +
           "</DomainId><HistoryDepth>64</HistoryDepth>\n"
           "    <UseBestEffort>FALSE</UseBestEffort><BackFillHistory>FALSE</BackFillHistory>\n"
           "    <UseTransport>" +
           transport + "</UseTransport><TcpAddress>127.0.0.1</TcpAddress><TcpPort>" +
           std::to_string(port) + "</TcpPort>\n  </Parameters></Transport>\n" +
           connection("Command", "CommandResponse") + connection("Response", "CommandResponse") +
           connection("EventLog", "EventLog") + connection("ReceiverStatus", "ReceiverStatus") +
           connection("PositionVelocity", "PositionVelocity") + "</KD_Configurations>\n";
}

/// Waits until `condition` holds; false when it does not within `limit`.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::seconds limit) {
    const auto deadline = steady_clock::now() + limit;
    while (!condition()) {
        if (steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(10));
    }
    return true;
}

// A server on the bus, made of the same transport as the real one.
class TestServer {
  public:
    TestServer(const std::string& connectionsFile, const std::string& name)
        : m_transport(std::make_shared<FACE::TSS::KD_TSS>(name)) {
        auto rc = RC::NO_ERROR;
        m_transport->Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
        m_transport->Initialize(connectionsFile.c_str(), rc);
        require(rc);
    }

    template <typename T>
    class Publisher {
      public:
        Publisher(const std::shared_ptr<FACE::TSS::KD_TSS>& transport, const std::string& topic)
            : m_transport(transport) {
            auto rc = RC::NO_ERROR;
            int size = 0;
            m_face.Set_Reference("", transport, 0, rc);
            transport->Create_Connection(topic.c_str(), 0, m_connection, size, rc);
            require(rc);
            m_face.Register_Sender(m_connection, rc);
            require(rc);
        }

        void publish(const T& message) {
            auto rc = RC::NO_ERROR;
            long long transaction = 0;
            m_face.Send_Message(m_connection, 0, transaction, message, rc);
            require(rc);
        }

        /// Waits until somebody has subscribed. Over TCP that takes several seconds.
        bool waitForSubscriber() const {
            auto& entry =
                m_transport->connectionMap_mutex_at(FACE::TSS::KD_TSS::connectionKey(m_connection));
            return waitUntil([&entry] { return entry.publisherListener->matched() > 0; },
                             std::chrono::seconds(30));
        }

      private:
        std::shared_ptr<FACE::TSS::KD_TSS> m_transport;
        FACE::TSS::Details::KD_TypedTS<T> m_face;
        long long m_connection = -1;
    };

    template <typename T>
    Publisher<T> publisher(const std::string& topic) const {
        return Publisher<T>(m_transport, topic);
    }

    /// Subscribes the topic and drops what comes.
    template <typename T>
    void subscribe(const std::string& topic) const {
        subscribe<T>(topic, [](const T&) {});
    }

    /// Subscribes the topic; `handler` runs on a thread of the bus library.
    template <typename T>
    void subscribe(const std::string& topic, std::function<void(const T&)> handler) const {
        auto rc = RC::NO_ERROR;
        int size = 0;
        long long id = -1;
        FACE::TSS::Details::KD_TypedTS<T> face;
        face.Set_Reference("", m_transport, 0, rc);
        m_transport->Create_Connection(topic.c_str(), 0, id, size, rc);
        face.Register_Callback(
            id,
            [handler](long long, long long, const T& message, const auto&, const auto&, auto&) {
                handler(message);
            },
            rc);
        require(rc);
    }

  private:
    using RC = FACE::RETURN_CODE_TYPE;

    static void require(RC::Value rc) {
        if (rc != RC::NO_ERROR) {
            throw std::runtime_error(FACE::toStdString(RC::ToString(rc)));
        }
    }

    std::shared_ptr<FACE::TSS::KD_TSS> m_transport;
};

}  // namespace tools_test
