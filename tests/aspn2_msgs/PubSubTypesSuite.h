// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastcdr/Cdr.h>
#include <fastcdr/FastBuffer.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Golden.h"
#include "SampleMessages.h"

// What the bus expects of every type. The bytes are worked out from the rules of plain CDR alone.
namespace pubsub {

using eprosima::fastrtps::rtps::InstanceHandle_t;
using eprosima::fastrtps::rtps::SerializedPayload_t;

using golden::Bytes;
using golden::Payload;

inline constexpr uint32_t kEncapsulation = 4;
inline constexpr uint16_t kLittleEndian = 1;
inline constexpr uint16_t kBigEndian = 0;

template <typename PUBSUB>
class PubSubTypes : public ::testing::Test {
  protected:
    using Message = typename PUBSUB::type;

    /// The type's name without its modules.
    std::string name() const {
        const std::string qualified = m_type.getName();
        return qualified.substr(qualified.rfind(':') + 1);
    }
    Bytes expectedBytes(const char* order) const {
        const Bytes bytes = golden::bytes(name(), order);
        EXPECT_FALSE(bytes.empty()) << name() << ".hex";
        return bytes;
    }

    PUBSUB m_type;
    Message m_sample = samples::make<Message>();
};

TYPED_TEST_SUITE_P(PubSubTypes);

TYPED_TEST_P(PubSubTypes, HaveNoKey) {
    EXPECT_FALSE(TypeParam::type::isKeyDefined());
    EXPECT_FALSE(this->m_type.m_isGetKeyDefined);

    InstanceHandle_t handle;
    for (uint8_t i = 0; i < 16; ++i) {
        handle.value[i] = static_cast<uint8_t>(0xA0 + i);
    }
    for (const bool forceMd5 : {false, true}) {
        EXPECT_FALSE(this->m_type.getKey(&this->m_sample, &handle, forceMd5));
    }
    for (uint8_t i = 0; i < 16; ++i) {
        EXPECT_EQ(handle.value[i], 0xA0 + i);
    }
}

TYPED_TEST_P(PubSubTypes, KeepAZeroedKeyBufferOfAtLeastSixteenBytes) {
    EXPECT_LE(TypeParam::type::getKeyMaxCdrSerializedSize(), 16u);
    const auto* const key = this->m_type.m_keyBuffer;
    EXPECT_EQ(std::count(key, key + 16, 0), 16);
}

TYPED_TEST_P(PubSubTypes, SerializeToTheGoldenBytes) {
    const Bytes golden = this->expectedBytes("little");
    Payload payload(golden.size());

    ASSERT_TRUE(this->m_type.serialize(&this->m_sample, &payload));

    EXPECT_EQ(payload.bytes(), golden);
    EXPECT_EQ(payload.encapsulation, kLittleEndian);
}

TYPED_TEST_P(PubSubTypes, SerializeToTheGoldenBytesInBigEndianToo) {
    using eprosima::fastcdr::Cdr;
    const Bytes golden = this->expectedBytes("big");
    Bytes bytes(golden.size());
    eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(bytes.data()), bytes.size());
    Cdr cdr(buffer, Cdr::BIG_ENDIANNESS, Cdr::DDS_CDR);

    cdr.serialize_encapsulation();
    this->m_sample.serialize(cdr);

    EXPECT_EQ(bytes, golden);
    EXPECT_EQ(cdr.getSerializedDataLength(), golden.size());
}

TYPED_TEST_P(PubSubTypes, DeserializeTheGoldenBytesOfEitherOrder) {
    for (const char* order : {"little", "big"}) {
        Payload payload(this->expectedBytes(order));
        typename TypeParam::type message;

        ASSERT_TRUE(this->m_type.deserialize(&payload, &message)) << order;

        EXPECT_TRUE(message == this->m_sample) << order;
        EXPECT_EQ(payload.encapsulation, *order == 'l' ? kLittleEndian : kBigEndian);
    }
}

TYPED_TEST_P(PubSubTypes, SurviveARoundTrip) {
    Payload payload(this->m_type.getSerializedSizeProvider(&this->m_sample)());
    typename TypeParam::type message;

    ASSERT_TRUE(this->m_type.serialize(&this->m_sample, &payload));
    ASSERT_TRUE(this->m_type.deserialize(&payload, &message));

    EXPECT_TRUE(message == this->m_sample);
}

TYPED_TEST_P(PubSubTypes, AnnounceTheExactSizeAndFour) {
    const Bytes golden = this->expectedBytes("little");
    EXPECT_EQ(this->m_type.getSerializedSizeProvider(&this->m_sample)(), golden.size());
    EXPECT_EQ(TypeParam::type::getCdrSerializedSize(this->m_sample),
              golden.size() - kEncapsulation);
}

TYPED_TEST_P(PubSubTypes, RefuseEveryPayloadThatIsTooSmall) {
    for (size_t size = 0; size < this->expectedBytes("little").size(); ++size) {
        Payload payload(size);
        EXPECT_FALSE(this->m_type.serialize(&this->m_sample, &payload)) << size;
    }
}

TYPED_TEST_P(PubSubTypes, RefuseEveryPayloadThatIsCutShort) {
    for (const char* order : {"little", "big"}) {
        const Bytes golden = this->expectedBytes(order);
        for (size_t size = 0; size < golden.size(); ++size) {
            Payload payload(Bytes(golden.begin(), golden.begin() + static_cast<long>(size)));
            typename TypeParam::type message;
            EXPECT_FALSE(this->m_type.deserialize(&payload, &message)) << order << size;
        }
    }
}

// Whatever a payload holds, it is taken or refused: nothing may be thrown on the bus's thread, and
// no length field may ask for more memory than the payload could fill.
TYPED_TEST_P(PubSubTypes, SurviveAnyDamagedByte) {
    const Bytes golden = this->expectedBytes("little");
    for (size_t i = 0; i < golden.size(); ++i) {
        for (const uint8_t byte : Bytes{0x00, 0x01, 0x02, 0x7F, 0x80, 0xFF}) {
            Bytes damaged = golden;
            damaged[i] = byte;
            Payload payload(damaged);
            typename TypeParam::type message;
            EXPECT_NO_THROW(this->m_type.deserialize(&payload, &message)) << i << ' ' << int{byte};
        }
    }
}

TYPED_TEST_P(PubSubTypes, StartWithEveryFieldZero) {
    typename TypeParam::type message;
    Payload payload(this->m_type.getSerializedSizeProvider(&message)());
    ASSERT_TRUE(this->m_type.serialize(&message, &payload));

    Bytes expected(payload.length, 0);
    expected[1] = kLittleEndian;
    const std::string name = this->name();
    if (name == "CommandResponse" || name == "EventLog") {
        expected[payload.length - 5] = 1;  // the length of an empty string counts its terminator
    }
    EXPECT_EQ(payload.bytes(), expected);
}

TYPED_TEST_P(PubSubTypes, CreateAndDeleteMessages) {
    void* const data = this->m_type.createData();
    ASSERT_NE(data, nullptr);
    EXPECT_TRUE(*static_cast<typename TypeParam::type*>(data) == typename TypeParam::type());
    this->m_type.deleteData(data);
}

TYPED_TEST_P(PubSubTypes, CopyAndMoveMessages) {
    static_assert(std::is_nothrow_move_constructible_v<typename TypeParam::type>);
    static_assert(std::is_nothrow_move_assignable_v<typename TypeParam::type>);

    const typename TypeParam::type copied(this->m_sample);
    typename TypeParam::type assigned;
    assigned = copied;
    typename TypeParam::type moved(std::move(assigned));
    typename TypeParam::type moveAssigned;
    moveAssigned = std::move(moved);

    EXPECT_TRUE(copied == this->m_sample);
    EXPECT_TRUE(moveAssigned == this->m_sample);
    EXPECT_FALSE(moveAssigned == typename TypeParam::type());
}

REGISTER_TYPED_TEST_SUITE_P(PubSubTypes, HaveNoKey, KeepAZeroedKeyBufferOfAtLeastSixteenBytes,
                            SerializeToTheGoldenBytes, SerializeToTheGoldenBytesInBigEndianToo,
                            DeserializeTheGoldenBytesOfEitherOrder, SurviveARoundTrip,
                            AnnounceTheExactSizeAndFour, RefuseEveryPayloadThatIsTooSmall,
                            RefuseEveryPayloadThatIsCutShort, SurviveAnyDamagedByte,
                            StartWithEveryFieldZero, CreateAndDeleteMessages, CopyAndMoveMessages);

}  // namespace pubsub
