// SPDX-License-Identifier: Apache-2.0
#pragma once

// The names under which the server looks its connections up in the configuration. The names of the
// FPGA's register blocks stand with their registers.
namespace ASPN2::ServerConnections {

// A connection on the bus, and the message type that the server sends and takes there.
struct BusConnection {
    const char* name;
    const char* type;  // without its namespace
};

constexpr BusConnection kCommand{"Command", "CommandResponse"};
constexpr BusConnection kResponse{"Response", "CommandResponse"};
constexpr BusConnection kEventLog{"EventLog", "EventLog"};
constexpr BusConnection kMaintenanceEvent{"MaintenanceEvent", "MaintenanceEvent"};
constexpr BusConnection kUtcDownlink{"UtcDownlink", "UtcDownlink"};
constexpr BusConnection kPositionVelocity{"PositionVelocity", "PositionVelocity"};
constexpr BusConnection kReceiverStatus{"ReceiverStatus", "ReceiverStatus"};
constexpr BusConnection kChannelStatus{"ChannelStatus", "ChannelStatus"};
constexpr BusConnection kGpsTime{"GPSTime", "GPSTime"};
constexpr BusConnection kUtcTime{"UTCTime", "UTCTime"};
constexpr BusConnection kChallengedEnvironment{"ChallengedEnvironment", "ChallengedEnvironment"};
constexpr BusConnection kGpsCryptoStatus{"GPSCryptoStatus", "GPSCryptoStatus"};
constexpr BusConnection kGpsLineOfSight{"GPSLineOfSight", "GPSLineOfSight"};
constexpr BusConnection kSvStatus{"SVStatus", "SVStatus"};

/// All of them, in the order in which the server makes them.
constexpr BusConnection kBus[] = {kCommand,
                                  kResponse,
                                  kEventLog,
                                  kMaintenanceEvent,
                                  kUtcDownlink,
                                  kPositionVelocity,
                                  kReceiverStatus,
                                  kChannelStatus,
                                  kGpsTime,
                                  kUtcTime,
                                  kChallengedEnvironment,
                                  kGpsCryptoStatus,
                                  kGpsLineOfSight,
                                  kSvStatus};

/// The serial line to the receiver.
constexpr const char* kReceiverLine = "Rovan";

// The queue devices: frames from the receiver for others, and frames of others for the receiver.
constexpr const char* kFromReceiver = "ROVAN_KD";
constexpr const char* kToReceiver = "KD_ROVAN";

}  // namespace ASPN2::ServerConnections
