// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "face/ConnectionSettings.h"
#include "tools/config/CheckedRow.h"

namespace Config {

namespace Details {

// Reads the key as a T if that is what the value holds.
template <typename T>
bool readAs(CheckedRow& row, const char* key, FACE::IOSS::IO_PARAMETER_VALUE_TYPE& value) {
    T number{};
    auto rc = FACE::IOSS::IO_PARAMETER_VALUE_TYPE::BAD_DISCRIMINATOR;
    FACE::IOSS::SettingDetails::fetch(value, number, rc);
    if (rc != FACE::IOSS::IO_PARAMETER_VALUE_TYPE::NO_ERROR) {
        return false;
    }
    row(key, number);
    FACE::IOSS::SettingDetails::store(value, number);
    return true;
}

}  // namespace Details

/// Reads every setting of a connection's table; the type of each says what it can hold.
template <typename SETTINGS>
void readSettings(CheckedRow& row, SETTINGS& settings) {
    for (const FACE::IOSS::Setting<SETTINGS>& entry : SETTINGS::kTable) {
        FACE::IOSS::IO_PARAMETER_VALUE_TYPE value;
        entry.report(settings, value);
        const bool known = Details::readAs<uint8_t>(row, entry.key, value) ||
                           Details::readAs<int16_t>(row, entry.key, value) ||
                           Details::readAs<uint16_t>(row, entry.key, value) ||
                           Details::readAs<int32_t>(row, entry.key, value) ||
                           Details::readAs<uint32_t>(row, entry.key, value);
        if (known) {
            entry.assign(settings, value);
        }
    }
}

}  // namespace Config
