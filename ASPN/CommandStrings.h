// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

// The vocabulary of the bus commands. A command on the bus is one of these texts, possibly followed
// by arguments after a comma; a response is the command's first word and a suffix, or one of the
// response texts. The strings are made at program start: no object at namespace scope may use them
// in its constructor.
namespace Sys {

namespace CommandString {
inline const std::string SystemModeLive = "SYSTEM_MODE_SELECT_LIVE";
inline const std::string SystemModeSim = "SYSTEM_MODE_SELECT_SIMULATION";
inline const std::string QueryVersioning = "QUERY_VERSIONING";
inline const std::string BitServerPing = "BITSERVER_PING";
inline const std::string BitServerReportClear = "BITSERVER_REPORT_CLEAR";
inline const std::string BitServerReportAppend = "BITSERVER_REPORT_APPEND";
inline const std::string BitServerReportRemove = "BITSERVER_REPORT_REMOVE";
inline const std::string RequestBitReport = "REQUEST_BIT_REPORT";
inline const std::string RequestSystemCBit = "REQUEST_CBIT";
inline const std::string RequestComponentCBit = "REQUEST_COMPONENT_CBIT";
inline const std::string NavigatorCommand = "NAVIGATOR_COMMAND";
inline const std::string NavigatorStatus = "NAVIGATOR_STATUS";
inline const std::string QueryRovanStatus = "QUERY_ROVAN_STATUS";
inline const std::string RovanSetStandby = "ROVAN_SET_STANDBY";
inline const std::string RovanSetContinuous = "ROVAN_SET_CONT";
inline const std::string RovanCVZeroize = "ROVAN_CV_ZEROIZE";
inline const std::string QueryTessalyStatus = "QUERY_TESSALY_STATUS";
inline const std::string SetTessalyStatus = "SET_TESSALY_STATUS";
inline const std::string SystemEnvRerad = "SYSTEM_ENV_RERAD";
inline const std::string SystemEnvLive = "SYSTEM_ENV_LIVE";
inline const std::string AltNavAssured = "ALTNAV_ASSURED";
inline const std::string AltNavUnassured = "ALTNAV_UNASSURED";
inline const std::string AltNavNotAvail = "ALTNAV_NOT_AVAILABLE";
inline const std::string InitSincgars = "INIT_SINCGARS";
inline const std::string InitHotStart = "INIT_HOTSTART";
inline const std::string InitWarmStart = "INIT_WARMSTART";
inline const std::string InitDataTransferOutLNav = "INIT_DATA_TRANSFER_OUT_LNAV";
inline const std::string SetHmiBlackoutEnable = "SET_BLACKOUT_ENABLED";
inline const std::string SetHmiBlackoutDisable = "SET_BLACKOUT_DISABLED";
inline const std::string RequestZeroize = "REQUEST_ZEROIZE";
inline const std::string RequestDestroy = "REQUEST_DESTROY";
inline const std::string StartSystemZeroize = "START_ZEROIZE";
inline const std::string StartSystemDestroy = "START_DESTROY";
inline const std::string RovanZeroize = "ROVAN_ZEROIZE";
inline const std::string RovanDestroy = "ROVAN_DESTROY";
inline const std::string QueryPassthrough = "QUERY_PASSTHROUGH_STATE";
inline const std::string ServerStarted = "SERVER_STARTED";
inline const std::string ServerStopped = "SERVER_STOPPED";
inline const std::string RequestPartNumbers = "REQUEST_PARTNUMBERS";
inline const std::string RequestRovanDestroyStatus = "ROVAN_DESTROY_STATUS";
inline const std::string RequestZelmCompatibilityDesignation = "GET_ZELM_COMPAT_DESIGN";
}  // namespace CommandString

namespace ResponseString {
// The first four are suffixes.
inline const std::string Pass = "_PASS";
inline const std::string Fail = "_FAIL";
inline const std::string Ack = "_ACK";
inline const std::string Nack = "_NACK";
inline const std::string ComponentZeroize = "COMPONENT_ZEROIZE";
inline const std::string ComponentDestroy = "COMPONENT_DESTROY";
inline const std::string SystemZeroize = "SYSTEM_ZEROIZE";
inline const std::string SystemDestroy = "SYSTEM_DESTROY";
inline const std::string CbitResponse = "CBIT_RESPONSE";
inline const std::string PassthroughEnabled = "PASSTHROUGH_ENABLED";
inline const std::string PassthroughDisabled = "PASSTHROUGH_DISABLED";
inline const std::string CurrentRovanStatus = "CURRENT_ROVAN_STATUS";
inline const std::string CurrentTessalyStatus = "CURRENT_TESSALY_STATUS";
}  // namespace ResponseString

}  // namespace Sys
