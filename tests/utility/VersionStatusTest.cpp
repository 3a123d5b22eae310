// SPDX-License-Identifier: Apache-2.0
#include "utility/VersionStatus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace {

struct Value {
    const char* key;
    const char* (VersionStatus::*get)() const;
    void (VersionStatus::*set)(std::string);
};

const std::array<Value, 17> kValues{{
    {"SW1", &VersionStatus::getSoftware1Version, &VersionStatus::setSoftware1Version},
    {"SW2", &VersionStatus::getSoftware2Version, &VersionStatus::setSoftware2Version},
    {"SW3", &VersionStatus::getSoftware3Version, &VersionStatus::setSoftware3Version},
    {"SW4", &VersionStatus::getSoftware4Version, &VersionStatus::setSoftware4Version},
    {"SW5", &VersionStatus::getSoftware5Version, &VersionStatus::setSoftware5Version},
    {"SW6", &VersionStatus::getSoftware6Version, &VersionStatus::setSoftware6Version},
    {"SW7", &VersionStatus::getSoftware7Version, &VersionStatus::setSoftware7Version},
    {"SW8", &VersionStatus::getSoftware8Version, &VersionStatus::setSoftware8Version},
    {"OS1", &VersionStatus::getOs1Version, &VersionStatus::setOs1Version},
    {"OS2", &VersionStatus::getOs2Version, &VersionStatus::setOs2Version},
    {"FW1", &VersionStatus::getFirmware1Version, &VersionStatus::setFirmware1Version},
    {"FW2", &VersionStatus::getFirmware2Version, &VersionStatus::setFirmware2Version},
    {"HWPN1", &VersionStatus::getHardware1Version, &VersionStatus::setHardware1Version},
    {"HWPN2", &VersionStatus::getHardware2Version, &VersionStatus::setHardware2Version},
    {"HWSN1", &VersionStatus::getSerialNumber1, &VersionStatus::setSerialNumber1},
    {"HWSN2", &VersionStatus::getSerialNumber2, &VersionStatus::setSerialNumber2},
    {"AT", &VersionStatus::getAntennaTable, &VersionStatus::setAntennaTable},
}};

/// Every value set to "<key in lower case>".
void fill(VersionStatus& status) {
    for (const Value& value : kValues) {
        std::string text = value.key;
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        (status.*value.set)(text);
    }
}

constexpr const char* kFullMessage =
    "PARTNUMBERS,SW1:sw1,FW1:fw1,HWPN1:hwpn1,HWSN1:hwsn1,OS1:os1,SW2:sw2,FW2:fw2,HWPN2:hwpn2,"
    "HWSN2:hwsn2,OS2:os2,SW3:sw3,SW4:sw4,SW5:sw5,SW6:sw6,SW7:sw7,SW8:sw8,AT:at";

TEST(VersionStatus, StartsWithNothingSet) {
    const VersionStatus status;
    for (const Value& value : kValues) {
        EXPECT_STREQ("", (status.*value.get)()) << value.key;
    }
    EXPECT_FALSE(status.isVersionInfoSet());
    EXPECT_EQ("PARTNUMBERS", status.createMessage());
    EXPECT_EQ("", status.createSoftwareFirmwareOnlyMessage());
    EXPECT_EQ("", status.createSerialNumberOnlyMessage());
}

TEST(VersionStatus, EachSetterServesItsOwnGetterAndKeyOnly) {
    for (const Value& value : kValues) {
        VersionStatus status;
        (status.*value.set)("x");
        EXPECT_EQ(std::string("PARTNUMBERS,") + value.key + ":x", status.createMessage());
        for (const Value& other : kValues) {
            EXPECT_STREQ(value.key == other.key ? "x" : "", (status.*other.get)()) << other.key;
        }
    }
}

TEST(VersionStatus, SettersCutTrailingWhitespaceAndKeepLeading) {
    VersionStatus status;
    status.setSoftware1Version("1.2 \r\n");
    status.setOs1Version(" \t3.4 5\f\v");
    EXPECT_STREQ("1.2", status.getSoftware1Version());
    EXPECT_STREQ(" \t3.4 5", status.getOs1Version());
}

TEST(VersionStatus, ABlankValueClears) {
    VersionStatus status;
    fill(status);
    status.setSoftware1Version("   ");
    status.setAntennaTable("");
    EXPECT_STREQ("", status.getSoftware1Version());
    EXPECT_STREQ("", status.getAntennaTable());
    const std::string expected(kFullMessage);
    EXPECT_EQ("PARTNUMBERS" + expected.substr(expected.find(",FW1"),
                                              expected.find(",AT") - expected.find(",FW1")),
              status.createMessage());
}

TEST(VersionStatus, TheFullMessageHasItsOwnOrder) {
    VersionStatus status;
    fill(status);
    EXPECT_EQ(kFullMessage, status.createMessage());
}

TEST(VersionStatus, TheFullMessageLeavesOutWhatIsNotSet) {
    VersionStatus status;
    status.setSerialNumber2("value");
    EXPECT_EQ("PARTNUMBERS,HWSN2:value", status.createMessage());
}

TEST(VersionStatus, TheSoftwareMessageHasNeitherLeadingWordNorPartAndSerialNumbers) {
    VersionStatus status;
    fill(status);
    EXPECT_EQ(
        "SW1:sw1,FW1:fw1,OS1:os1,SW2:sw2,FW2:fw2,OS2:os2,SW3:sw3,SW4:sw4,SW5:sw5,SW6:sw6,SW7:sw7,"
        "SW8:sw8,AT:at",
        status.createSoftwareFirmwareOnlyMessage());
}

TEST(VersionStatus, TheSerialNumberMessageHasOneCommaBetweenTwo) {
    VersionStatus status;
    status.setSerialNumber2("value");
    EXPECT_EQ("HWSN2:value", status.createSerialNumberOnlyMessage());
    status.setSerialNumber1("one");
    EXPECT_EQ("HWSN1:one,HWSN2:value", status.createSerialNumberOnlyMessage());
    status.setSerialNumber2("");
    EXPECT_EQ("HWSN1:one", status.createSerialNumberOnlyMessage());
}

TEST(VersionStatus, ResetClearsEverything) {
    VersionStatus status;
    status.decodeResponse(kFullMessage);
    ASSERT_TRUE(status.isVersionInfoSet());
    status.reset();
    EXPECT_FALSE(status.isVersionInfoSet());
    EXPECT_EQ("PARTNUMBERS", status.createMessage());
    EXPECT_STREQ("", status.getSoftware1Version());
}

TEST(VersionStatus, SettersDoNotTouchTheFlagOfTheRecord) {
    VersionStatus status;
    fill(status);
    EXPECT_FALSE(status.isVersionInfoSet());
}

TEST(VersionStatus, DecodeSkipsWhatIsNoField) {
    VersionStatus status;
    status.decodeResponse("PARTNUMBERS,SW1:a,BAD,FW1:,XX:1");
    EXPECT_EQ("PARTNUMBERS,SW1:a", status.createMessage());
    EXPECT_TRUE(status.isVersionInfoSet());
}

TEST(VersionStatus, DecodeRestoresWhatCreateWrote) {
    VersionStatus written;
    fill(written);
    VersionStatus read;
    read.decodeResponse(written.createMessage().c_str());
    for (const Value& value : kValues) {
        EXPECT_STREQ((written.*value.get)(), (read.*value.get)()) << value.key;
    }
}

TEST(VersionStatus, DecodeReplacesTheWholeRecord) {
    VersionStatus status;
    fill(status);
    status.decodeResponse("OS2:new");
    EXPECT_EQ("PARTNUMBERS,OS2:new", status.createMessage());
}

TEST(VersionStatus, DecodeOfAnEmptyTextSetsTheFlagAllTheSame) {
    VersionStatus status;
    fill(status);
    status.decodeResponse("");
    EXPECT_TRUE(status.isVersionInfoSet());
    EXPECT_EQ("PARTNUMBERS", status.createMessage());
}

TEST(VersionStatus, DecodeSplitsAtTheFirstColonAndComparesKeysExactly) {
    VersionStatus status;
    status.decodeResponse("SW1:a:b:,sw2:c, SW3:d,:e,HWPN1: f ,SW4::");
    EXPECT_STREQ("a:b:", status.getSoftware1Version());
    EXPECT_STREQ(" f", status.getHardware1Version());
    EXPECT_STREQ(":", status.getSoftware4Version());
    EXPECT_EQ("PARTNUMBERS,SW1:a:b:,HWPN1: f,SW4::", status.createMessage());
}

TEST(VersionStatus, TheLastFieldOfAKeyCounts) {
    VersionStatus status;
    status.decodeResponse("SW1:a,SW1:b,SW2:c,SW2: ");
    EXPECT_EQ("PARTNUMBERS,SW1:b", status.createMessage());
}

TEST(VersionStatus, DecodeOfNullThrowsAndLeavesAnEmptyRecord) {
    VersionStatus status;
    status.decodeResponse(kFullMessage);
    EXPECT_THROW(status.decodeResponse(nullptr), std::logic_error);
    EXPECT_FALSE(status.isVersionInfoSet());
    EXPECT_EQ("PARTNUMBERS", status.createMessage());
}

TEST(VersionStatus, InstanceIsOneRecordForTheProcess) {
    VersionStatus::Instance().setOs1Version("x");
    EXPECT_EQ("PARTNUMBERS,OS1:x", VersionStatus::Instance().createMessage());
}

// A reader beside a writer sees each value whole, old or new. The two values are longer than a
// string's own store, so that a torn one would also be memory freed under the reader.
TEST(VersionStatus, AReaderBesideAWriterSeesWholeValues) {
    const std::string one(40, '1');
    const std::string two(60, '2');
    VersionStatus status;
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            status.setSoftware1Version(i % 2 == 0 ? one : two);
            status.decodeResponse(("HWSN1:" + (i % 2 == 0 ? one : two)).c_str());
        }
    });
    for (int i = 0; i < 2000; ++i) {
        const std::string text = status.createMessage();
        EXPECT_TRUE(text == "PARTNUMBERS" || text == "PARTNUMBERS,SW1:" + one ||
                    text == "PARTNUMBERS,SW1:" + two || text == "PARTNUMBERS,HWSN1:" + one ||
                    text == "PARTNUMBERS,HWSN1:" + two ||
                    text == "PARTNUMBERS,SW1:" + one + ",HWSN1:" + two ||
                    text == "PARTNUMBERS,SW1:" + two + ",HWSN1:" + one)
            << text;
    }
    writer.join();
}

}  // namespace
