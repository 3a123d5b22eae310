// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "aspn2_msgs/ChallengedEnvironment.h"
#include "aspn2_msgs/ChannelStatus.h"
#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/GPSCryptoStatus.h"
#include "aspn2_msgs/GPSLineOfSight.h"
#include "aspn2_msgs/GPSTime.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "aspn2_msgs/PositionVelocity.h"
#include "aspn2_msgs/ReceiverStatus.h"
#include "aspn2_msgs/SVStatus.h"
#include "aspn2_msgs/UTCTime.h"
#include "aspn2_msgs/UtcDownlink.h"
#include "face/KD_TSS.h"
#include "face/KD_TypedTS.h"

// Keeps all samples of one topic in the order of their arrival, and can publish on it.
template <typename T>
class Topic {
  public:
    Topic(std::shared_ptr<FACE::TSS::KD_TSS> tss, const char* name) : m_tss(std::move(tss)) {
        auto rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        int maxMessageSize = 0;
        m_tss->Create_Connection(name, -1, m_connection, maxMessageSize, rc);
        require(rc, name);
        m_typedTs.Set_Reference("", m_tss, 0, rc);
        require(rc, name);
        m_typedTs.Register_Callback(
            m_connection,
            [this](long long, long long, const T& message, const auto&, const auto&, auto&) {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_samples.push_back(message);
            },
            rc);
        require(rc, name);
        m_typedTs.Register_Sender(m_connection, rc);
        require(rc, name);
    }
    Topic(const Topic&) = delete;
    Topic& operator=(const Topic&) = delete;
    ~Topic() {
        auto ignored = FACE::RETURN_CODE_TYPE::NO_ERROR;
        m_tss->Unregister_Callback(m_connection, ignored);
        m_tss->Unregister_Sender(m_connection, ignored);
    }

    std::vector<T> samples() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_samples;
    }
    std::size_t count() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_samples.size();
    }

    void publish(const T& message) {
        auto rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        long long transaction = 0;
        m_typedTs.Send_Message(m_connection, -1, transaction, message, rc);
        require(rc, "publish");
    }

  private:
    static void require(FACE::RETURN_CODE_TYPE::Value rc, const char* what) {
        FACE::Return_Code_Value_No_Error("BusListener", 0, what, rc);
    }

    const std::shared_ptr<FACE::TSS::KD_TSS> m_tss;
    long long m_connection = -1;
    FACE::TSS::Details::KD_TypedTS<T> m_typedTs;
    mutable std::mutex m_mutex;
    std::vector<T> m_samples;
};

// Somebody else on the server's bus, who hears everything that the server publishes.
class BusListener {
  public:
    explicit BusListener(const std::filesystem::path& connectionsFile)
        : BusListener(join(connectionsFile)) {}

    /// The texts of all events so far, in order.
    std::vector<std::string> eventTexts() const;
    /// The texts of all commands or responses so far, in order.
    static std::vector<std::string> texts(
        const Topic<aspn2_msgs::idl::CommandResponse>& commandsOrResponses);

  private:
    explicit BusListener(const std::shared_ptr<FACE::TSS::KD_TSS>& tss);
    static std::shared_ptr<FACE::TSS::KD_TSS> join(const std::filesystem::path& connectionsFile);

  public:
    Topic<aspn2_msgs::idl::PositionVelocity> position;
    Topic<aspn2_msgs::idl::ReceiverStatus> receiverStatus;
    Topic<aspn2_msgs::idl::ChannelStatus> channelStatus;
    Topic<aspn2_msgs::idl::GPSTime> gpsTime;
    Topic<aspn2_msgs::idl::UTCTime> utcTime;
    Topic<aspn2_msgs::idl::UtcDownlink> utcDownlink;
    Topic<aspn2_msgs::idl::GPSCryptoStatus> cryptoStatus;
    Topic<aspn2_msgs::idl::GPSLineOfSight> lineOfSight;
    Topic<aspn2_msgs::idl::SVStatus> svStatus;
    Topic<aspn2_msgs::idl::ChallengedEnvironment> environment;
    Topic<aspn2_msgs::idl::CommandResponse> command;
    Topic<aspn2_msgs::idl::CommandResponse> response;
    Topic<aspn2_msgs::idl::EventLog> events;
    Topic<aspn2_msgs::idl::MaintenanceEvent> maintenance;
};
