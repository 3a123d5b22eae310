// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Bus {

// How a command ends, for the shell.
enum ExitStatus { kOk = 0, kNothingSeen = 1, kUsage = 2 };

// What `send` has besides. The ids are 32 bits wide, with or without sign.
struct SendOptions {
    /// Of a person at a desk: a server number that no server has, the message code of commands. It
    /// is not 0, which to a server means that nobody has asked.
    static constexpr int64_t kDeskDeviceId = 0x00FF0200;

    std::string text;
    bool asResponse = false;
    int64_t deviceId = kDeskDeviceId;
    std::optional<uint32_t> server;  // in place of the one in the device id
    int64_t to = 0;
    std::optional<int64_t> identifier;  // a new one when empty
    bool wait = false;                  // for answers, as long as the duration says
    std::vector<std::string> until;     // ends of an answer that end the wait
    double patienceSeconds = 0;         // for somebody who listens; 0: what is usual
};

// What the commands have that work with a recording.
struct RecordingOptions {
    std::string file;
    bool force = false;          // replace a file that exists
    bool partial = false;        // of a damaged file play what stands before the damage
    double speed = 1;            // times the original one; 0: as fast as the subscribers take it
    double patienceSeconds = 0;  // for somebody who listens; 0: what is usual
};

// What `watch` has besides.
struct WatchOptions {
    bool once = false;  // one screen as text, without a terminal
    int width = 80;     // of that
    int height = 24;
};

// What the command line says. Zero is without limit.
struct Options {
    std::string connections;  // path of the connections file
    bool listen = false;      // on TCP: take the place of the process that the server connects to
    std::vector<std::string> topics;
    bool json = false;
    bool summary = false;
    bool all = false;
    uint64_t count = 0;
    double durationSeconds = 0;
    double everySeconds = 1;
    double windowSeconds = 10;
    SendOptions send;
    RecordingOptions recording;
    WatchOptions watch;
};

/// The connections file that is meant when none is named: $ROVAN_CONNECTIONS, or connections.xml in
/// this directory if there is one, or the installed one.
std::string defaultConnections();

}  // namespace Bus
