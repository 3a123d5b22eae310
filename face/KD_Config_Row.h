// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "face/KD_Config_Helpers.h"

namespace FACE {

// A row of parameters of one container, read into variables, with one test at the end:
//
//   KD_Config_Row row(config, "FastRtps");
//   row("DomainId", domainId)("HistoryDepth", m_historyDepth)("UseBestEffort", m_useBestEffort);
//   rc = row.code();
//
// Opens the container and closes it at the end of its life, so make one row at a time. A missing
// parameter leaves its variable untouched, and the rest of the row is read all the same; when the
// container itself is missing nothing is read.
class KD_Config_Row {
  public:
    KD_Config_Row(Configuration& config, const String& container) : m_config(config) {
        m_config.Open(container, m_handle, m_openCode);
        if (!isOpen()) {
            m_code = RETURN_CODE_TYPE::INVALID_CONFIG;
        }
    }
    KD_Config_Row(const KD_Config_Row&) = delete;
    KD_Config_Row& operator=(const KD_Config_Row&) = delete;
    ~KD_Config_Row() {
        if (isOpen()) {
            auto rc = RETURN_CODE_TYPE::NO_ERROR;
            m_config.Close(m_handle, rc);
        }
    }

    /// Reads one parameter: a string, a bool or a number of any width.
    template <typename T>
    KD_Config_Row& operator()(const char* name, T& value) {
        if (isOpen()) {
            KD_Config_Helpers::Get_Parameter(m_config, m_handle, name, value, m_code);
        }
        return *this;
    }

    /// NO_ERROR, or INVALID_CONFIG when the container or any parameter so far is missing.
    RETURN_CODE_TYPE::Value code() const { return m_code; }
    /// What opening the container gave.
    RETURN_CODE_TYPE::Value openCode() const { return m_openCode; }

  private:
    bool isOpen() const { return m_openCode == RETURN_CODE_TYPE::NO_ERROR; }

    Configuration& m_config;
    int m_handle = 0;
    RETURN_CODE_TYPE::Value m_openCode = RETURN_CODE_TYPE::NO_ERROR;
    RETURN_CODE_TYPE::Value m_code = RETURN_CODE_TYPE::NO_ERROR;
};

}  // namespace FACE
