// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Devmem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/face/FakeConfiguration.h"
#include "tests/platform/FakeMemoryDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using RC = FACE::RETURN_CODE_TYPE;
using Parameters = FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE;

// A service with one region, "Block": 64 bytes from 0x40000010, which lies 16 bytes into a page.
class KD_Devmem : public testing::Test {
  protected:
    using Code = RC::Value;

    KD_Devmem() {
        configuration->containers["Block"] = {{"BaseAddress", "0x40000010"}, {"Size", "64"}};
        Code rc = RC::NO_ACTION;
        service->Set_Reference("", configuration, 0, rc);
        service->Initialize("io.xml", rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
    }

    Code open(const char* name = "Block") {
        Code rc = RC::NO_ACTION;
        service->Open_Connection(name, -1, id, rc);
        return rc;
    }
    Code close() {
        Code rc = RC::NO_ACTION;
        service->Close_Connection(id, rc);
        return rc;
    }
    uint32_t state() {
        FACE::IOSS::CONNECTION_STATUS_TYPE status;
        Code rc = RC::NO_ACTION;
        service->Get_Connection_Status(id, status, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        return status.state;
    }
    Code read(uint32_t offset, uint8_t width) {
        input.offset = offset;
        input.width = width;
        Code rc = RC::INVALID_CONFIG;
        service->Read(id, -1, input, rc);
        return rc;
    }
    Code write(uint32_t offset, uint8_t width, uint64_t data) {
        Code rc = RC::INVALID_CONFIG;
        service->Write(id, -1, {offset, width, data}, rc);
        return rc;
    }
    Code configure(const Parameters& parameters) {
        Code rc = RC::INVALID_CONFIG;
        service->Configure_Connection_Parameters(id, -1, parameters, rc);
        return rc;
    }
    static Parameters settings(const std::vector<std::pair<uint16_t, uint32_t>>& values) {
        Parameters parameters;
        for (const auto& [parameterId, value] : values) {
            FACE::IOSS::IO_PARAMETER_TYPE parameter;
            parameter.id = parameterId;
            parameter.value.ulong_value(value);
            parameters.parameters.append(parameter);
        }
        return parameters;
    }
    /// "base size" as the service reports them.
    std::string reported() {
        Parameters parameters = settings({{0, 0}, {1, 0}});
        Code rc = RC::NO_ACTION;
        service->Get_Connection_Configuration(id, 0, parameters, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        return std::to_string(parameters.parameters[0].value.ulong_value()) + " " +
               std::to_string(parameters.parameters[1].value.ulong_value());
    }

    FakeMemoryDevice device;
    std::shared_ptr<FakeConfiguration> configuration = std::make_shared<FakeConfiguration>();
    std::unique_ptr<FACE::IOSS::KD_Devmem> service =
        std::make_unique<FACE::IOSS::KD_Devmem>(device);
    long long id = -1;
    FACE::IOSS::Devmem::READ_PAYLOAD_TYPE input;
};

// ---- Open and close ---------------------------------------------------------------------------

TEST_F(KD_Devmem, MapsItsRegion) {
    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(id, 0);
    EXPECT_EQ(state(), 2u);
    ASSERT_EQ(device.mappings.size(), 1u);
    EXPECT_EQ(device.mappings[0].offset, 0x4000'0000u);
    EXPECT_EQ(device.mappings[0].length, 4096u);
}

TEST_F(KD_Devmem, ReadsItsKeysInAnyBase) {
    configuration->containers["Octal"] = {{"BaseAddress", "010000000000"}, {"Size", "0x20"}};
    open("Octal");
    EXPECT_EQ(reported(), "1073741824 32");

    configuration->containers["Wide"] = {{"BaseAddress", "0x140000000"}, {"Size", "16 bytes"}};
    open("Wide");
    EXPECT_EQ(reported(), "1073741824 16");
}

TEST_F(KD_Devmem, TellsARegionThatCannotBeMappedByItsState) {
    device.failMmap = true;

    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(id, 0);
    EXPECT_EQ(state(), 4u);
    EXPECT_EQ(read(0, 32), RC::INVALID_MODE);
    EXPECT_EQ(write(0, 32, 1), RC::INVALID_MODE);
    EXPECT_EQ(close(), RC::NO_ERROR);
    EXPECT_EQ(read(0, 32), RC::CONNECTION_CLOSED);
}

// The descriptor of the device stays open for the life of a process: this runs in one of its own.
class KD_DevmemInAProcess : public KD_Devmem {
  protected:
    KD_DevmemInAProcess() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(KD_DevmemInAProcess, ToleratesAMemoryDeviceThatIsNotThere) {
    EXPECT_EXIT(
        {
            device.failOpen = true;
            EXPECT_EQ(open(), RC::NO_ERROR);
            EXPECT_EQ(id, 0);
            EXPECT_EQ(state(), 4u);
            EXPECT_EQ(read(0, 32), RC::INVALID_MODE);

            EXPECT_EQ(open(), RC::NO_ERROR);
            EXPECT_EQ(device.openedPaths.size(), 1u) << "an open connection is left alone";

            device.failOpen = false;
            EXPECT_EQ(close(), RC::NO_ERROR);
            EXPECT_EQ(open(), RC::NO_ERROR);
            EXPECT_EQ(state(), 2u);
            EXPECT_EQ(read(0, 32), RC::NO_ERROR);
            EXPECT_THAT(device.openedPaths, ElementsAre("/dev/mem", "/dev/mem"));
            std::exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(KD_Devmem, UnmapsWhatItCloses) {
    open();

    EXPECT_EQ(close(), RC::NO_ERROR);

    EXPECT_THAT(device.unmappedLengths, ElementsAre(4096u));
    EXPECT_EQ(read(0, 8), RC::CONNECTION_CLOSED);
    EXPECT_EQ(write(0, 8, 0), RC::CONNECTION_CLOSED);
}

TEST_F(KD_Devmem, UnmapsWhatIsOpenAtTheEndOfItsLife) {
    open();
    EXPECT_THAT(device.unmappedLengths, IsEmpty());

    service.reset();

    EXPECT_THAT(device.unmappedLengths, ElementsAre(4096u));
}

// ---- Access -----------------------------------------------------------------------------------

TEST_F(KD_Devmem, ReadsEachWidthExtendedWithZeros) {
    open();
    device.setBytes(0x4000'0018, {0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88});
    const std::pair<uint8_t, uint64_t> rows[] = {
        {8, 0x81}, {16, 0x8281}, {32, 0x8483'8281}, {64, 0x8887'8685'8483'8281}};
    for (const auto& [width, expected] : rows) {
        input.data = 0xFFFF'FFFF'FFFF'FFFF;
        input.timestamp = 99;

        EXPECT_EQ(read(8, width), RC::NO_ERROR);

        EXPECT_EQ(input.data, expected) << int{width};
        EXPECT_EQ(input.timestamp, 0);
        EXPECT_EQ(input.offset, 8u);
        EXPECT_EQ(input.width, width);
    }
}

TEST_F(KD_Devmem, WritesTheLowBytesOfEachWidth) {
    open();
    const std::pair<uint8_t, std::vector<uint8_t>> rows[] = {
        {8, {0x88, 0, 0, 0, 0, 0, 0, 0}},
        {16, {0x88, 0x77, 0, 0, 0, 0, 0, 0}},
        {32, {0x88, 0x77, 0x66, 0x55, 0, 0, 0, 0}},
        {64, {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11}},
    };
    for (const auto& [width, expected] : rows) {
        device.setBytes(0x4000'0018, std::vector<uint8_t>(8, 0));

        EXPECT_EQ(write(8, width, 0x1122'3344'5566'7788), RC::NO_ERROR);

        EXPECT_EQ(device.bytesAt(0x4000'0018, 8), expected) << int{width};
    }
}

TEST_F(KD_Devmem, ReachesTheLastByteOfTheRegionAndNoFurther) {
    open();
    device.setBytes(0x4000'004C, {1, 2, 3, 4, 5, 6, 7, 8});
    for (const uint8_t width : {uint8_t{8}, uint8_t{16}, uint8_t{32}, uint8_t{64}}) {
        const uint32_t last = 64 - width / 8u;
        EXPECT_EQ(read(last, width), RC::NO_ERROR) << int{width};
        EXPECT_EQ(write(last, width, 0xFFFF'FFFF'FFFF'FFFF), RC::NO_ERROR) << int{width};
        for (const uint32_t beyond : {last + 1, 64u, 0xFFFF'FFF8u, 0xFFFF'FFFFu}) {
            EXPECT_EQ(read(beyond, width), RC::NO_ACTION) << int{width} << " at " << beyond;
            EXPECT_EQ(write(beyond, width, 0), RC::NO_ACTION) << int{width} << " at " << beyond;
        }
    }
    EXPECT_EQ(read(60, 32), RC::NO_ERROR);
    EXPECT_EQ(read(61, 32), RC::NO_ACTION);
    EXPECT_THAT(device.bytesAt(0x4000'0050, 4), ElementsAre(5, 6, 7, 8)) << "behind the region";
}

TEST_F(KD_Devmem, RefusesEveryAccessThatIsLargerThanTheRegion) {
    configuration->containers["Tiny"] = {{"BaseAddress", "0x40000000"}, {"Size", "3"}};
    open("Tiny");

    EXPECT_EQ(read(0, 16), RC::NO_ERROR);
    for (const uint32_t offset : {0u, 1u, 4u, 0x7FFF'FFFCu, 0xFFFF'FFFCu}) {
        EXPECT_EQ(read(offset, 32), RC::NO_ACTION) << offset;
        EXPECT_EQ(write(offset, 64, 1), RC::NO_ACTION) << offset;
    }

    configuration->containers["Empty"] = {{"BaseAddress", "0x40000000"}, {"Size", "0"}};
    open("Empty");
    EXPECT_EQ(read(0, 8), RC::NO_ACTION);
}

TEST_F(KD_Devmem, KnowsFourWidths) {
    open();
    device.setBytes(0x4000'0010, {1, 2, 3, 4, 5, 6, 7, 8});
    input.data = 77;
    for (int width = 0; width < 256; ++width) {
        if (width == 8 || width == 16 || width == 32 || width == 64) {
            continue;
        }
        EXPECT_EQ(read(0, static_cast<uint8_t>(width)), RC::NO_ACTION) << width;
        EXPECT_EQ(write(0, static_cast<uint8_t>(width), 0), RC::NO_ACTION) << width;
    }
    EXPECT_EQ(input.data, 77u);
    EXPECT_THAT(device.bytesAt(0x4000'0010, 8), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_F(KD_Devmem, NeverReadsHalfOfA64BitValue) {
    configuration->containers["Stamp"] = {{"BaseAddress", "0x40000000"}, {"Size", "64"}};
    open("Stamp");
    ASSERT_EQ(write(8, 64, 0), RC::NO_ERROR);
    std::atomic<bool> stop{false};
    // Values whose halves are equal: a torn one would show.
    std::thread writer([&] {
        for (uint64_t i = 1; !stop; ++i) {
            const uint64_t half = i & 0xFFFF'FFFF;
            EXPECT_EQ(write(8, 64, half << 32 | half), RC::NO_ERROR);
        }
    });

    unsigned torn = 0;
    unsigned changes = 0;
    uint64_t last = 0;
    for (int i = 0; i < 50'000 || changes == 0; ++i) {
        EXPECT_EQ(read(8, 64), RC::NO_ERROR);
        torn += input.data >> 32 == (input.data & 0xFFFF'FFFF) ? 0u : 1u;
        changes += input.data == last ? 0u : 1u;
        last = input.data;
    }
    stop = true;
    writer.join();

    EXPECT_EQ(torn, 0u);
}

TEST_F(KD_Devmem, KeepsItsRegionsApart) {
    configuration->containers["Other"] = {{"BaseAddress", "0x40001000"}, {"Size", "16"}};
    open();
    const long long block = id;
    open("Other");
    device.setBytes(0x4000'0010, {11});
    device.setBytes(0x4000'1000, {22});

    EXPECT_EQ(read(0, 8), RC::NO_ERROR);
    EXPECT_EQ(input.data, 22u);
    id = block;
    EXPECT_EQ(read(0, 8), RC::NO_ERROR);
    EXPECT_EQ(input.data, 11u);
}

// ---- Configuration ----------------------------------------------------------------------------

TEST_F(KD_Devmem, ChangesNothingOfAnOpenRegion) {
    open();

    EXPECT_EQ(configure(settings({{0, 0x4000'1000}})), RC::NO_ACTION);
    EXPECT_EQ(configure(settings({{9, 0}})), RC::NO_ACTION);
    EXPECT_EQ(configure({}), RC::NO_ACTION);

    EXPECT_EQ(reported(), "1073741840 64");
    EXPECT_EQ(device.mappings.size(), 1u);
    EXPECT_THAT(device.unmappedLengths, IsEmpty());
}

TEST_F(KD_Devmem, TakesNewSettingsForTheNextOpen) {
    open();
    close();

    EXPECT_EQ(configure(settings({{1, 8}, {0, 0x4000'2000}})), RC::NO_ERROR);
    EXPECT_EQ(device.mappings.size(), 1u);
    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(device.mappings.at(1).offset, 0x4000'2000u);
    EXPECT_EQ(read(0, 64), RC::NO_ERROR);
    EXPECT_EQ(read(8, 8), RC::NO_ACTION);
}

TEST_F(KD_Devmem, KeepsTheSettingThatIsNotGiven) {
    open();
    close();

    EXPECT_EQ(configure(settings({{1, 8}})), RC::NO_ERROR);
    EXPECT_EQ(reported(), "1073741840 8");
    EXPECT_EQ(configure(settings({{0, 0x4000'0000}})), RC::NO_ERROR);
    EXPECT_EQ(reported(), "1073741824 8");
}

TEST_F(KD_Devmem, TakesNoneOfTheSettingsWhenAnyIsWrong) {
    open();
    close();
    Parameters wrongTag = settings({{0, 0x4000'0000}, {1, 8}});
    wrongTag.parameters[1].value.long_value(8);

    EXPECT_EQ(configure(settings({{0, 0x4000'0000}, {2, 1}})), RC::INVALID_PARAM);
    EXPECT_EQ(configure(settings({{0xFFFF, 1}, {1, 8}})), RC::INVALID_PARAM);
    EXPECT_EQ(configure(wrongTag), RC::INVALID_PARAM);

    EXPECT_EQ(reported(), "1073741840 64");
}

TEST_F(KD_Devmem, AcceptsHavingNothingToChange) {
    open();
    close();
    FACE::Sequence<FACE::IOSS::IO_PARAMETER_TYPE>::RETURN_CODE made;

    EXPECT_EQ(configure({}), RC::NO_ERROR);
    EXPECT_EQ(configure({0, {nullptr, 1, 1, made}}), RC::NO_ERROR);

    EXPECT_EQ(reported(), "1073741840 64");
}

TEST_F(KD_Devmem, OnlyReportsWhenAskedToConfigureTheBus) {
    open();
    for (const bool isOpen : {true, false}) {
        if (!isOpen) {
            close();
        }
        Parameters parameters = settings({{1, 8}, {0, 0}});
        Code rc = RC::NO_ACTION;

        service->Configure_Bus_Parameters(id, 0, parameters, rc);

        EXPECT_EQ(rc, RC::NO_ERROR);
        EXPECT_EQ(parameters.parameters[0].value.ulong_value(), 64u);
        EXPECT_EQ(parameters.parameters[1].value.ulong_value(), 0x4000'0010u);
    }
    Parameters unknown = settings({{2, 8}});
    Code rc = RC::NO_ACTION;
    service->Configure_Bus_Parameters(id, 0, unknown, rc);
    EXPECT_EQ(rc, RC::INVALID_PARAM);
}

}  // namespace
