// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// The record of the versions and part numbers that make up the receiver and its host: collects the
// values as they arrive and turns them into one line of text, which another server can decode
// again.
//
// The text is a list of fields joined by commas, each "<key>:<value>"; values that are not set are
// left out with their keys. Nothing is escaped: a comma in a value ends the field.
//
// Any thread may call; each operation is atomic by itself. What a getter returns points into the
// record and is valid until the next setter of that value or the next decodeResponse, so a thread
// that reads beside a writer uses the create... functions.
class VersionStatus {
  public:
    VersionStatus() = default;
    VersionStatus(const VersionStatus&) = delete;
    VersionStatus& operator=(const VersionStatus&) = delete;

    /// The record of the process. Others may exist beside it.
    static VersionStatus& Instance();

    /// Nothing is set any more.
    void reset();
    /// True once decodeResponse has run, until reset.
    bool isVersionInfoSet() const;

    /// The value, or the empty string if it is not set; never null.
    const char* getSoftware1Version() const { return get(SW1); }
    const char* getSoftware2Version() const { return get(SW2); }
    const char* getSoftware3Version() const { return get(SW3); }
    const char* getSoftware4Version() const { return get(SW4); }
    const char* getSoftware5Version() const { return get(SW5); }
    const char* getSoftware6Version() const { return get(SW6); }
    const char* getSoftware7Version() const { return get(SW7); }
    const char* getSoftware8Version() const { return get(SW8); }
    const char* getOs1Version() const { return get(OS1); }
    const char* getOs2Version() const { return get(OS2); }
    const char* getFirmware1Version() const { return get(FW1); }
    const char* getFirmware2Version() const { return get(FW2); }
    const char* getHardware1Version() const { return get(HWPN1); }
    const char* getHardware2Version() const { return get(HWPN2); }
    const char* getSerialNumber1() const { return get(HWSN1); }
    const char* getSerialNumber2() const { return get(HWSN2); }
    const char* getAntennaTable() const { return get(AT); }

    /// Stores the value without its trailing whitespace. An empty rest means not set.
    void setSoftware1Version(std::string value) { set(SW1, std::move(value)); }
    void setSoftware2Version(std::string value) { set(SW2, std::move(value)); }
    void setSoftware3Version(std::string value) { set(SW3, std::move(value)); }
    void setSoftware4Version(std::string value) { set(SW4, std::move(value)); }
    void setSoftware5Version(std::string value) { set(SW5, std::move(value)); }
    void setSoftware6Version(std::string value) { set(SW6, std::move(value)); }
    void setSoftware7Version(std::string value) { set(SW7, std::move(value)); }
    void setSoftware8Version(std::string value) { set(SW8, std::move(value)); }
    void setOs1Version(std::string value) { set(OS1, std::move(value)); }
    void setOs2Version(std::string value) { set(OS2, std::move(value)); }
    void setFirmware1Version(std::string value) { set(FW1, std::move(value)); }
    void setFirmware2Version(std::string value) { set(FW2, std::move(value)); }
    void setHardware1Version(std::string value) { set(HWPN1, std::move(value)); }
    void setHardware2Version(std::string value) { set(HWPN2, std::move(value)); }
    void setSerialNumber1(std::string value) { set(HWSN1, std::move(value)); }
    void setSerialNumber2(std::string value) { set(HWSN2, std::move(value)); }
    void setAntennaTable(std::string value) { set(AT, std::move(value)); }

    /// All fields that are set, after the word "PARTNUMBERS".
    std::string createMessage() const;
    /// The same without that word, part numbers and serial numbers.
    std::string createSoftwareFirmwareOnlyMessage() const;
    /// Only the serial numbers; empty with none set.
    std::string createSerialNumberOnlyMessage() const;

    /// Replaces the record by what a create... function wrote. Unknown keys and fields without a
    /// key or a value are skipped. Throws std::logic_error for a null `text`, with the record
    /// reset.
    void decodeResponse(const char* text);

  private:
    enum Field : std::size_t {
        SW1,
        SW2,
        SW3,
        SW4,
        SW5,
        SW6,
        SW7,
        SW8,
        OS1,
        OS2,
        FW1,
        FW2,
        HWPN1,
        HWPN2,
        HWSN1,
        HWSN2,
        AT,
        kFieldCount
    };
    static const std::array<const char*, kFieldCount> kKeys;

    const char* get(Field field) const;
    void set(Field field, std::string value);
    void resetLocked();
    void setLocked(std::size_t field, const std::string& value);
    /// "<key>:<value>" of each of these fields that is set, in this order.
    std::vector<std::string> collect(const std::vector<Field>& fields) const;

    mutable std::mutex m_mutex;
    std::array<std::string, kFieldCount> m_values;
    std::array<bool, kFieldCount> m_isSet{};
    bool m_versionInfoSet = false;
};
