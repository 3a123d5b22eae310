// SPDX-License-Identifier: Apache-2.0
#include "utility/VersionStatus.h"

#include <algorithm>
#include <stdexcept>

#include "utility/StringUtils.h"

const std::array<const char*, VersionStatus::kFieldCount> VersionStatus::kKeys{
    "SW1", "SW2", "SW3", "SW4",   "SW5",   "SW6",   "SW7",   "SW8", "OS1",
    "OS2", "FW1", "FW2", "HWPN1", "HWPN2", "HWSN1", "HWSN2", "AT"};

VersionStatus& VersionStatus::Instance() {
    static VersionStatus instance;
    return instance;
}

void VersionStatus::reset() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    resetLocked();
}

bool VersionStatus::isVersionInfoSet() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_versionInfoSet;
}

std::string VersionStatus::createMessage() const {
    // The order of the message is not that of the fields: first all that belongs to the first unit.
    std::vector<std::string> fields = collect({SW1, FW1, HWPN1, HWSN1, OS1, SW2, FW2, HWPN2, HWSN2,
                                               OS2, SW3, SW4, SW5, SW6, SW7, SW8, AT});
    fields.insert(fields.begin(), "PARTNUMBERS");
    return StringUtils::join(fields, ',');
}

std::string VersionStatus::createSoftwareFirmwareOnlyMessage() const {
    return StringUtils::join(
        collect({SW1, FW1, OS1, SW2, FW2, OS2, SW3, SW4, SW5, SW6, SW7, SW8, AT}), ',');
}

std::string VersionStatus::createSerialNumberOnlyMessage() const {
    return StringUtils::join(collect({HWSN1, HWSN2}), ',');
}

void VersionStatus::decodeResponse(const char* text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    resetLocked();
    if (text == nullptr) {
        throw std::logic_error("VersionStatus::decodeResponse() called without a text");
    }
    for (const std::string& field : StringUtils::split(text, ',')) {
        const std::size_t colon = field.find(':');
        if (colon == std::string::npos || colon + 1 == field.size()) {
            continue;  // the leading word has no colon
        }
        const auto* const key = std::find(kKeys.begin(), kKeys.end(), field.substr(0, colon));
        if (key != kKeys.end()) {
            setLocked(static_cast<std::size_t>(key - kKeys.begin()), field.substr(colon + 1));
        }
    }
    m_versionInfoSet = true;
}

const char* VersionStatus::get(Field field) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isSet[field] ? m_values[field].c_str() : "";
}

void VersionStatus::set(Field field, std::string value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    setLocked(field, value);
}

void VersionStatus::resetLocked() {
    m_isSet.fill(false);
    m_versionInfoSet = false;
}

void VersionStatus::setLocked(std::size_t field, const std::string& value) {
    m_values[field] = StringUtils::rtrim(value);
    m_isSet[field] = !m_values[field].empty();
}

std::vector<std::string> VersionStatus::collect(const std::vector<Field>& fields) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> texts;
    for (const Field field : fields) {
        if (m_isSet[field]) {
            texts.push_back(std::string(kKeys[field]) + ':' + m_values[field]);
        }
    }
    return texts;
}
