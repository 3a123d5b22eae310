// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <iterator>

#include "face/FACE_IOSS.h"
#include "face/KD_Config_Row.h"

// The settings of a connection as a table: for each its key in the configuration and, by its type,
// the alternative of a parameter value that carries it. Its place in the table is its parameter id.
// So one row says all there is to say about a setting:
//
//   const Setting<DevmemSettings> DevmemSettings::kTable[2] = {
//       setting<&DevmemSettings::baseAddress>("BaseAddress"),  // id 0, ulong_value
//       setting<&DevmemSettings::size>("Size")};               // id 1, ulong_value
namespace FACE::IOSS {

template <typename SETTINGS>
struct Setting {
    const char* key;
    void (*read)(SETTINGS& settings, KD_Config_Row& row, const char* key);
    /// False, and nothing changes, when the value has another alternative.
    bool (*assign)(SETTINGS& settings, const IO_PARAMETER_VALUE_TYPE& value);
    void (*report)(const SETTINGS& settings, IO_PARAMETER_VALUE_TYPE& value);
};

namespace SettingDetails {

using Value = IO_PARAMETER_VALUE_TYPE;

inline void store(Value& value, uint8_t v) {
    value.octet_value(v);
}
inline void store(Value& value, int16_t v) {
    value.short_value(v);
}
inline void store(Value& value, uint16_t v) {
    value.ushort_value(v);
}
inline void store(Value& value, int32_t v) {
    value.long_value(v);
}
inline void store(Value& value, uint32_t v) {
    value.ulong_value(v);
}

inline void fetch(const Value& value, uint8_t& v, Value::RETURN_CODE& rc) {
    value.octet_value(v, rc);
}
inline void fetch(const Value& value, int16_t& v, Value::RETURN_CODE& rc) {
    value.short_value(v, rc);
}
inline void fetch(const Value& value, uint16_t& v, Value::RETURN_CODE& rc) {
    value.ushort_value(v, rc);
}
inline void fetch(const Value& value, int32_t& v, Value::RETURN_CODE& rc) {
    value.long_value(v, rc);
}
inline void fetch(const Value& value, uint32_t& v, Value::RETURN_CODE& rc) {
    value.ulong_value(v, rc);
}

template <typename T>
struct Member;
template <typename SETTINGS, typename T>
struct Member<T SETTINGS::*> {
    using Owner = SETTINGS;
};

}  // namespace SettingDetails

/// The row of the member MEMBER, a pointer such as &DevmemSettings::size.
template <auto MEMBER, typename SETTINGS = typename SettingDetails::Member<decltype(MEMBER)>::Owner>
constexpr Setting<SETTINGS> setting(const char* key) {
    return {key,
            [](SETTINGS& settings, KD_Config_Row& row, const char* itsKey) {
                row(itsKey, settings.*MEMBER);
            },
            [](SETTINGS& settings, const IO_PARAMETER_VALUE_TYPE& value) {
                auto rc = IO_PARAMETER_VALUE_TYPE::BAD_DISCRIMINATOR;
                SettingDetails::fetch(value, settings.*MEMBER, rc);
                return rc == IO_PARAMETER_VALUE_TYPE::NO_ERROR;
            },
            [](const SETTINGS& settings, IO_PARAMETER_VALUE_TYPE& value) {
                SettingDetails::store(value, settings.*MEMBER);
            }};
}

/// Reads every setting; each missing one is noted in the row's code.
template <typename SETTINGS>
void readSettings(KD_Config_Row& row, SETTINGS& settings) {
    for (const Setting<SETTINGS>& entry : SETTINGS::kTable) {
        entry.read(settings, row, entry.key);
    }
}

/// Takes over the parameters; of several with one id the last counts. False, and nothing changes,
/// when any has an unknown id or a value of another alternative.
template <typename SETTINGS>
bool assignSettings(const Sequence<IO_PARAMETER_TYPE>& parameters, SETTINGS& settings) {
    SETTINGS changed = settings;
    for (uint32_t i = 0; i < parameters.length(); ++i) {
        const IO_PARAMETER_TYPE& parameter = parameters[i];
        if (parameter.id >= std::size(SETTINGS::kTable) ||
            !SETTINGS::kTable[parameter.id].assign(changed, parameter.value)) {
            return false;
        }
    }
    settings = changed;
    return true;
}

/// Fills in the value of each parameter whose id is known. False when any is not.
template <typename SETTINGS>
bool reportSettings(const SETTINGS& settings, Sequence<IO_PARAMETER_TYPE>& parameters) {
    bool allKnown = true;
    for (uint32_t i = 0; i < parameters.length(); ++i) {
        IO_PARAMETER_TYPE& parameter = parameters[i];
        if (parameter.id < std::size(SETTINGS::kTable)) {
            SETTINGS::kTable[parameter.id].report(settings, parameter.value);
        } else {
            allKnown = false;
        }
    }
    return allKnown;
}

}  // namespace FACE::IOSS
