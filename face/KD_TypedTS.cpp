// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TypedTS.h"

#include <fastrtps/publisher/Publisher.h>

#include <stdexcept>
#include <string>
#include <utility>

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
#include "face/KD_TSS_Listeners.h"
#include "utility/Console.h"

namespace FACE::TSS::Details {
namespace {

using RC = RETURN_CODE_TYPE;

// The name of a message type on the bus.
template <typename T>
extern const char* const kBusName;

// The library hands messages on as untyped pointers, so a face on a connection of another type
// would read and write foreign memory.
template <typename T>
void requireType(KD_TSS& transport, const KD_TSS::Connection_t& connection) {
    if (connection.typeName != kBusName<T> &&
        transport.isTopicRegistered(connection.typeName.c_str())) {
        throw std::runtime_error("Participant " + transport.participantName() + " topic " +
                                 connection.topicName + " carries " + connection.typeName +
                                 ", not " + kBusName<T>);
    }
}

// What the three working operations have in common: the lookup, and what becomes of exceptions.
template <typename Operation>
void onConnection(KD_TSS* transport, long long id, RC::Value& rc, Operation operation) {
    if (transport == nullptr || !transport->isInitialised()) {
        rc = RC::NOT_AVAILABLE;
        return;
    }
    try {
        rc = operation(transport->connectionMap_mutex_at(KD_TSS::connectionKey(id)));
    } catch (const std::out_of_range&) {
        rc = RC::INVALID_PARAM;
    } catch (const std::exception& problem) {
        Console::errorLine(problem.what());
        rc = RC::CONNECTION_CLOSED;
    } catch (...) {
        rc = RC::NO_ACTION;
    }
}

template <typename T>
void registerSubscriberTyped(KD_TSS& transport, long long id, KD_TSS::Connection_t& connection,
                             Read_Callback<T> callback) {
    transport.registerSubscriber(connection,
                                 std::make_unique<Listeners::SubscriberListenerTyped<T>>(
                                     transport.participantName(), id, std::move(callback)));
}

}  // namespace

template <typename T>
void KD_TypedTS<T>::Receive_Message(long long, long long, long long&, T&, HEADER_TYPE&,
                                    Sequence<QoS_Element>&, RC::Value&) {
    throw std::runtime_error("KD_TypedTS::Receive_Message() is not supported.");
}

template <typename T>
void KD_TypedTS<T>::Send_Message(long long connection, long long, long long&, const T& message,
                                 RC::Value& rc) {
    onConnection(m_transport.get(), connection, rc, [&](KD_TSS::Connection_t& c) {
        eprosima::fastrtps::Publisher* publisher = c.publisher;
        if (publisher == nullptr) {
            return RC::NOT_AVAILABLE;
        }
        requireType<T>(*m_transport, c);
        // The library takes a pointer to something writable and only reads it.
        return publisher->write(const_cast<T*>(&message)) ? RC::NO_ERROR : RC::DATA_OVERFLOW;
    });
}

template <typename T>
void KD_TypedTS<T>::Register_Sender(long long connection, RC::Value& rc) {
    onConnection(m_transport.get(), connection, rc, [&](KD_TSS::Connection_t& c) {
        if (c.isPublisher()) {
            return RC::NO_ACTION;
        }
        requireType<T>(*m_transport, c);
        m_transport->registerPublisher(c);
        return RC::NO_ERROR;
    });
}

template <typename T>
void KD_TypedTS<T>::Register_Callback(long long connection, Read_Callback<T> callback,
                                      RC::Value& rc) {
    onConnection(m_transport.get(), connection, rc, [&](KD_TSS::Connection_t& c) {
        if (c.isSubscriber()) {
            return RC::NO_ACTION;
        }
        requireType<T>(*m_transport, c);
        registerSubscriberTyped<T>(*m_transport, connection, c, std::move(callback));
        return RC::NO_ERROR;
    });
}

template <typename T>
void KD_TypedTS<T>::Set_Reference(const String&, const std::shared_ptr<Base>& base, long long,
                                  RC::Value& rc) {
    if (m_transport) {
        rc = RC::NOT_AVAILABLE;
        return;
    }
    m_transport = std::dynamic_pointer_cast<KD_TSS>(base);
    rc = m_transport ? RC::NO_ERROR : RC::INVALID_PARAM;
}

// A further message type is one line here.
#define ROVAN_TYPED_TS(TYPE)                                                       \
    namespace {                                                                    \
    template <>                                                                    \
    const char* const kBusName<aspn2_msgs::idl::TYPE> = "aspn2_msgs::idl::" #TYPE; \
    }                                                                              \
    template class KD_TypedTS<aspn2_msgs::idl::TYPE>;
ROVAN_TYPED_TS(EventLog)
ROVAN_TYPED_TS(CommandResponse)
ROVAN_TYPED_TS(MaintenanceEvent)
ROVAN_TYPED_TS(SVStatus)
ROVAN_TYPED_TS(GPSLineOfSight)
ROVAN_TYPED_TS(GPSCryptoStatus)
ROVAN_TYPED_TS(ChallengedEnvironment)
ROVAN_TYPED_TS(UTCTime)
ROVAN_TYPED_TS(GPSTime)
ROVAN_TYPED_TS(ChannelStatus)
ROVAN_TYPED_TS(ReceiverStatus)
ROVAN_TYPED_TS(PositionVelocity)
ROVAN_TYPED_TS(UtcDownlink)
#undef ROVAN_TYPED_TS

}  // namespace FACE::TSS::Details
