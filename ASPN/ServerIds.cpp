// SPDX-License-Identifier: Apache-2.0
#include "ASPN/ServerIds.h"

namespace ASPN2 {
namespace {

struct Server {
    unsigned char id;
    const char* name;
};

// The two that this server deals with bear their names. The others are known to exist, and a
// deployment names them here.
constexpr Server kServers[] = {
    {1, "Server1"},
    {16, "Server16"},
    {32, "Server32"},
    {33, "Server33"},
    {34, "Server34"},
    {35, "Server35"},
    {36, "Server36"},
    {37, "Server37"},
    {38, "Server38"},
    {ServerIds::kRovan, "Rovan"},
    {40, "Server40"},
    {41, "Server41"},
    {42, "Server42"},
    {44, "Server44"},
    {45, "Server45"},
    {46, "Server46"},
    {ServerIds::kZelmServer, "ZelmServer"},
    {48, "Server48"},
    {49, "Server49"},
    {50, "Server50"},
    {51, "Server51"},
    {52, "Server52"},
    {53, "Server53"},
    {54, "Server54"},
    {80, "Server80"},
    {96, "Server96"},
    {97, "Server97"},
    {113, "Server113"},
    {114, "Server114"},
    {115, "Server115"},
    {116, "Server116"},
    {117, "Server117"},
    {118, "Server118"},
    {119, "Server119"},
    {120, "Server120"},
    {121, "Server121"},
    {122, "Server122"},
    {123, "Server123"},
    {124, "Server124"},
    {125, "Server125"},
};

}  // namespace

const char* ServerIds::to_string(unsigned char serverId) {
    for (const Server& server : kServers) {
        if (server.id == serverId) {
            return server.name;
        }
    }
    return kInvalid;
}

}  // namespace ASPN2
