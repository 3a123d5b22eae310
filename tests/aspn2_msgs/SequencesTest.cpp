// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>

#include "SampleMessages.h"

// Messages beyond the figures that the maximum sizes are reckoned with, and other single cases.
namespace {

using namespace aspn2_msgs::idl;
using eprosima::fastrtps::rtps::SerializedPayload_t;

template <typename PUBSUB>
uint32_t sizeOf(PUBSUB& type, typename PUBSUB::type& message) {
    return type.getSerializedSizeProvider(&message)();
}

// Serializes into a payload of just the size that the type announces, and back.
template <typename PUBSUB>
typename PUBSUB::type roundTrip(PUBSUB& type, typename PUBSUB::type& message) {
    SerializedPayload_t payload(sizeOf(type, message));
    typename PUBSUB::type back;
    EXPECT_TRUE(type.serialize(&message, &payload));
    EXPECT_EQ(payload.length, payload.max_size);
    EXPECT_TRUE(type.deserialize(&payload, &back));
    return back;
}

TEST(Sequences, AreNotStoppedAtAHundredElements) {
    ChannelStatusPubSubType type;
    ChannelStatus message;
    message.num_channels(101);
    message.channels().resize(101, samples::make<channel_status_obs>());

    // Header, count, sequence length and 101 records of 44 bytes, and the encapsulation.
    EXPECT_EQ(sizeOf(type, message), 44u + 4 + 4 + 101 * 44 + 4);
    EXPECT_GT(sizeOf(type, message), type.m_typeSize);
    EXPECT_TRUE(roundTrip(type, message) == message);
}

TEST(Sequences, OfAHundredElementsJustFitTheTypeSize) {
    SVStatusPubSubType type;
    SVStatus message;
    message.svs().resize(100);

    EXPECT_EQ(sizeOf(type, message), type.m_typeSize);
}

TEST(Sequences, TravelWithTheirOwnLengthBesideTheCount) {
    GPSCryptoStatusPubSubType type;
    GPSCryptoStatus message;
    message.num_key_types(7);
    message.key_types().resize(2);

    const GPSCryptoStatus back = roundTrip(type, message);

    EXPECT_EQ(back.num_key_types(), 7);
    EXPECT_EQ(back.key_types().size(), 2u);
}

TEST(ChannelStatusOf32Channels, Is1460Bytes) {
    ChannelStatusPubSubType type;
    ChannelStatus message;
    message.channels().resize(32);

    EXPECT_EQ(ChannelStatus::getCdrSerializedSize(message), 1460u);
    EXPECT_EQ(sizeOf(type, message), 1464u);
}

TEST(GssipOfMoreThanAHundredBytes, IsSizedByItsOwnSize) {
    GSSIPPubSubType type;
    GSSIP message = samples::make<GSSIP>();
    message.data().resize(604);
    for (size_t i = 0; i < message.data().size(); ++i) {
        message.data()[i] = static_cast<uint8_t>(i * 7);
    }
    message.num_bytes(604);

    EXPECT_EQ(sizeOf(type, message), 44u + 4 + 4 + 604 + 4);
    EXPECT_TRUE(roundTrip(type, message) == message);
    SerializedPayload_t tooSmall(type.m_typeSize);
    EXPECT_FALSE(type.serialize(&message, &tooSmall));
}

TEST(Strings, MayBeLongerThanTheFigureOf255) {
    CommandResponsePubSubType type;
    CommandResponse message = samples::make<CommandResponse>();
    message.command_response(std::string(255, 'x'));
    EXPECT_EQ(sizeOf(type, message), type.m_typeSize);

    message.command_response(std::string(4000, 'y'));
    EXPECT_EQ(sizeOf(type, message), 60u + 4001 + 4);
    EXPECT_TRUE(roundTrip(type, message) == message);
}

TEST(MaintenanceEventArrays, TravelWholeWithWhatFollowsTheTerminator) {
    MaintenanceEventPubSubType type;
    MaintenanceEvent message;
    message.identity().fill('i');
    message.identity()[3] = '\0';
    message.description().fill('d');
    message.description()[0] = '\0';

    EXPECT_EQ(sizeOf(type, message), 168u + 4);
    const MaintenanceEvent back = roundTrip(type, message);
    EXPECT_EQ(std::count(back.identity().begin(), back.identity().end(), 'i'), 15);
    EXPECT_EQ(std::count(back.description().begin(), back.description().end(), 'd'), 55);
}

TEST(Enumerations, KeepEveryNumberThatHasNoEnumerator) {
    EventLogPubSubType type;
    for (const uint32_t number : {0u, 5u, 6u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        EventLog message;
        message.event_log_type(static_cast<event_log_type_enum>(number));
        EXPECT_EQ(static_cast<uint32_t>(roundTrip(type, message).event_log_type()), number);
    }
}

TEST(Booleans, AreRefusedOnTheWireUnlessZeroOrOne) {
    ReceiverStatusPubSubType type;
    ReceiverStatus message = samples::make<ReceiverStatus>();
    SerializedPayload_t payload(sizeOf(type, message));
    ASSERT_TRUE(type.serialize(&message, &payload));
    constexpr size_t kRcvrFail = 4 + 44;

    payload.data[kRcvrFail] = 0;
    ASSERT_TRUE(type.deserialize(&payload, &message));
    EXPECT_FALSE(message.rcvr_fail());
    payload.data[kRcvrFail] = 2;
    EXPECT_FALSE(type.deserialize(&payload, &message));
}

TEST(EmptyPayloads, AreRefused) {
    ReceiverStatusPubSubType type;
    ReceiverStatus message = samples::make<ReceiverStatus>();
    SerializedPayload_t payload;
    EXPECT_FALSE(type.deserialize(&payload, &message));
    EXPECT_FALSE(type.serialize(&message, &payload));
}

}  // namespace
