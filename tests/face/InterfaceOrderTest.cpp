// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

#include "face/FACE_Configuration.h"
#include "face/FACE_IOSS.h"
#include "face/FACE_LCM.h"
#include "face/FACE_TSS.h"

// Whoever implements or calls these interfaces from a separately built library depends on the order
// of their virtual operations.
namespace {

// The slot of a virtual operation in its class's table, as the C++ ABI of this platform keeps it in
// a pointer to member: on ARM the plain offset, elsewhere the offset and one.
template <typename MEMBER>
std::ptrdiff_t slotOf(MEMBER member) {
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof(offset));
#if !defined(__arm__) && !defined(__aarch64__)
    offset -= 1;
#endif
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <typename... MEMBERS>
std::vector<std::ptrdiff_t> slotsOf(MEMBERS... members) {
    return {slotOf(members)...};
}

// The two slots of the destructor come first.
std::vector<std::ptrdiff_t> inOrder(std::size_t count) {
    std::vector<std::ptrdiff_t> slots(count);
    for (std::size_t i = 0; i < count; ++i) {
        slots[i] = static_cast<std::ptrdiff_t>(i) + 2;
    }
    return slots;
}

TEST(InterfaceOrder, OfTheLifeCycle) {
    using FACE::LCM::Configurable::ConfigurableInstance;
    using FACE::LCM::Connectable::ConnectableInstance;
    using FACE::LCM::Initializable::InitializableInstance;
    using FACE::LCM::Keldra::RequestedState_ReportedState::Stateful::StatefulInstance;
    EXPECT_EQ(slotsOf(&InitializableInstance::Initialize, &InitializableInstance::Finalize),
              inOrder(2));
    EXPECT_EQ(slotsOf(&ConfigurableInstance::Configure), inOrder(1));
    EXPECT_EQ(slotsOf(&ConnectableInstance::Framework_Connect,
                      &ConnectableInstance::Framework_Disconnect),
              inOrder(2));
    EXPECT_EQ(slotsOf(&StatefulInstance::Query_State, &StatefulInstance::Request_State_Transition),
              inOrder(2));
}

TEST(InterfaceOrder, OfTheLifeCyclesStates) {
    using FACE::LCM::Keldra::ReportedState;
    using FACE::LCM::Keldra::RequestedState;
    EXPECT_EQ(sizeof(RequestedState::Value), 4u);
    EXPECT_EQ(sizeof(ReportedState::Value), 4u);
    EXPECT_EQ(RequestedState::START, 0u);
    EXPECT_EQ(RequestedState::STOP, 1u);
    EXPECT_EQ(ReportedState::RUNNING, 0u);
    EXPECT_EQ(ReportedState::STOPPED, 1u);
}

TEST(InterfaceOrder, OfTheConfiguration) {
    using FACE::Configuration;
    EXPECT_EQ(slotsOf(&Configuration::Initialize, &Configuration::Open, &Configuration::Get_Size,
                      &Configuration::Read, &Configuration::Write, &Configuration::Seek,
                      &Configuration::Close),
              inOrder(7));
    EXPECT_EQ(slotsOf(&FACE::Configuration_Injectable::Injectable::Set_Reference), inOrder(1));
}

TEST(InterfaceOrder, OfTheTransport) {
    using FACE::TSS::Base;
    using Typed = FACE::TSS::TypedTS<int>;
    EXPECT_EQ(slotsOf(&Base::Initialize, &Base::Create_Connection, &Base::Destroy_Connection,
                      &Base::Unregister_Sender, &Base::Unregister_Callback),
              inOrder(5));
    EXPECT_EQ(slotsOf(&FACE::TSS::Base_Injectable::Injectable::Set_Reference), inOrder(1));
    EXPECT_EQ(slotsOf(&Typed::Receive_Message, &Typed::Send_Message, &Typed::Register_Sender,
                      &Typed::Register_Callback),
              inOrder(4));
}

template <typename SERVICE>
std::vector<std::ptrdiff_t> slotsOfService() {
    return slotsOf(&SERVICE::Initialize, &SERVICE::Open_Connection, &SERVICE::Close_Connection,
                   &SERVICE::Read, &SERVICE::Write, &SERVICE::Configure_Connection_Parameters,
                   &SERVICE::Get_Connection_Configuration, &SERVICE::Configure_Bus_Parameters,
                   &SERVICE::Get_Bus_Configuration, &SERVICE::Get_Connection_Status,
                   &SERVICE::Get_Bus_Status, &SERVICE::Register_Notification_Event,
                   &SERVICE::Unregister_Notification_Event);
}

TEST(InterfaceOrder, OfTheInputAndOutputServices) {
    EXPECT_EQ(slotsOfService<FACE::IOSS::Serial::IO_Service>(), inOrder(13));
    EXPECT_EQ(slotsOfService<FACE::IOSS::Devmem::IO_Service>(), inOrder(13));
    EXPECT_EQ(slotsOfService<FACE::IOSS::MCSQ::IO_Service>(), inOrder(13));
}

TEST(InterfaceOrder, HasAVirtualDestructorEverywhere) {
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::Configuration>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::Configuration_Injectable::Injectable>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::TSS::Base>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::TSS::Base_Injectable::Injectable>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::TSS::TypedTS<int>>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::IOSS::Serial::IO_Service>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::IOSS::IO_Callback>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::LCM::Initializable::InitializableInstance>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::LCM::Configurable::ConfigurableInstance>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FACE::LCM::Connectable::ConnectableInstance>);
    EXPECT_TRUE(std::has_virtual_destructor_v<
                FACE::LCM::Keldra::RequestedState_ReportedState::Stateful::StatefulInstance>);
}

}  // namespace
