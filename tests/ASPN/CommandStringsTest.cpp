// SPDX-License-Identifier: Apache-2.0
#include "ASPN/CommandStrings.h"

#include <gtest/gtest.h>

#include <iterator>
#include <set>

namespace {

struct Word {
    const std::string& actual;
    const char* expected;
};

const Word kCommands[] = {
    {Sys::CommandString::SystemModeLive, "SYSTEM_MODE_SELECT_LIVE"},
    {Sys::CommandString::SystemModeSim, "SYSTEM_MODE_SELECT_SIMULATION"},
    {Sys::CommandString::QueryVersioning, "QUERY_VERSIONING"},
    {Sys::CommandString::BitServerPing, "BITSERVER_PING"},
    {Sys::CommandString::BitServerReportClear, "BITSERVER_REPORT_CLEAR"},
    {Sys::CommandString::BitServerReportAppend, "BITSERVER_REPORT_APPEND"},
    {Sys::CommandString::BitServerReportRemove, "BITSERVER_REPORT_REMOVE"},
    {Sys::CommandString::RequestBitReport, "REQUEST_BIT_REPORT"},
    {Sys::CommandString::RequestSystemCBit, "REQUEST_CBIT"},
    {Sys::CommandString::RequestComponentCBit, "REQUEST_COMPONENT_CBIT"},
    {Sys::CommandString::NavigatorCommand, "NAVIGATOR_COMMAND"},
    {Sys::CommandString::NavigatorStatus, "NAVIGATOR_STATUS"},
    {Sys::CommandString::QueryRovanStatus, "QUERY_ROVAN_STATUS"},
    {Sys::CommandString::RovanSetStandby, "ROVAN_SET_STANDBY"},
    {Sys::CommandString::RovanSetContinuous, "ROVAN_SET_CONT"},
    {Sys::CommandString::RovanCVZeroize, "ROVAN_CV_ZEROIZE"},
    {Sys::CommandString::QueryTessalyStatus, "QUERY_TESSALY_STATUS"},
    {Sys::CommandString::SetTessalyStatus, "SET_TESSALY_STATUS"},
    {Sys::CommandString::SystemEnvRerad, "SYSTEM_ENV_RERAD"},
    {Sys::CommandString::SystemEnvLive, "SYSTEM_ENV_LIVE"},
    {Sys::CommandString::AltNavAssured, "ALTNAV_ASSURED"},
    {Sys::CommandString::AltNavUnassured, "ALTNAV_UNASSURED"},
    {Sys::CommandString::AltNavNotAvail, "ALTNAV_NOT_AVAILABLE"},
    {Sys::CommandString::InitSincgars, "INIT_SINCGARS"},
    {Sys::CommandString::InitHotStart, "INIT_HOTSTART"},
    {Sys::CommandString::InitWarmStart, "INIT_WARMSTART"},
    {Sys::CommandString::InitDataTransferOutLNav, "INIT_DATA_TRANSFER_OUT_LNAV"},
    {Sys::CommandString::SetHmiBlackoutEnable, "SET_BLACKOUT_ENABLED"},
    {Sys::CommandString::SetHmiBlackoutDisable, "SET_BLACKOUT_DISABLED"},
    {Sys::CommandString::RequestZeroize, "REQUEST_ZEROIZE"},
    {Sys::CommandString::RequestDestroy, "REQUEST_DESTROY"},
    {Sys::CommandString::StartSystemZeroize, "START_ZEROIZE"},
    {Sys::CommandString::StartSystemDestroy, "START_DESTROY"},
    {Sys::CommandString::RovanZeroize, "ROVAN_ZEROIZE"},
    {Sys::CommandString::RovanDestroy, "ROVAN_DESTROY"},
    {Sys::CommandString::QueryPassthrough, "QUERY_PASSTHROUGH_STATE"},
    {Sys::CommandString::ServerStarted, "SERVER_STARTED"},
    {Sys::CommandString::ServerStopped, "SERVER_STOPPED"},
    {Sys::CommandString::RequestPartNumbers, "REQUEST_PARTNUMBERS"},
    {Sys::CommandString::RequestRovanDestroyStatus, "ROVAN_DESTROY_STATUS"},
    {Sys::CommandString::RequestZelmCompatibilityDesignation, "GET_ZELM_COMPAT_DESIGN"},
};

const Word kResponses[] = {
    {Sys::ResponseString::Pass, "_PASS"},
    {Sys::ResponseString::Fail, "_FAIL"},
    {Sys::ResponseString::Ack, "_ACK"},
    {Sys::ResponseString::Nack, "_NACK"},
    {Sys::ResponseString::ComponentZeroize, "COMPONENT_ZEROIZE"},
    {Sys::ResponseString::ComponentDestroy, "COMPONENT_DESTROY"},
    {Sys::ResponseString::SystemZeroize, "SYSTEM_ZEROIZE"},
    {Sys::ResponseString::SystemDestroy, "SYSTEM_DESTROY"},
    {Sys::ResponseString::CbitResponse, "CBIT_RESPONSE"},
    {Sys::ResponseString::PassthroughEnabled, "PASSTHROUGH_ENABLED"},
    {Sys::ResponseString::PassthroughDisabled, "PASSTHROUGH_DISABLED"},
    {Sys::ResponseString::CurrentRovanStatus, "CURRENT_ROVAN_STATUS"},
    {Sys::ResponseString::CurrentTessalyStatus, "CURRENT_TESSALY_STATUS"},
};

TEST(CommandStrings, AreTheAgreedTexts) {
    std::set<std::string> distinct;
    for (const Word& word : kCommands) {
        EXPECT_EQ(word.actual, word.expected);
        distinct.insert(word.actual);
    }
    EXPECT_EQ(std::size(kCommands), 41u);
    EXPECT_EQ(distinct.size(), 41u);
}

TEST(ResponseStrings, AreTheAgreedTexts) {
    std::set<std::string> distinct;
    for (const Word& word : kResponses) {
        EXPECT_EQ(word.actual, word.expected);
        distinct.insert(word.actual);
    }
    EXPECT_EQ(std::size(kResponses), 13u);
    EXPECT_EQ(distinct.size(), 13u);
}

}  // namespace
