// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/PassthroughQuery.h"

#include "ASPN/CommandStrings.h"
#include "MSID_messages/RovanCommandMsg.h"

PassthroughQuery::PassthroughQuery(ServerActions& actions, const std::string& environment)
    : m_actions(actions), m_isRerad(environment == Sys::CommandString::SystemEnvRerad) {
}

bool PassthroughQuery::check() {
    if (!m_isRerad) {
        return false;
    }
    m_actions.sendCommand(Sys::CommandString::QueryPassthrough);
    if (!m_passthroughEnabled) {
        return true;
    }
    m_actions.queueMessage(make_mist_command(RovanCommandMsg::e5001_Mist_Cmd_3));
    m_actions.queueMessage(make_simple_command(RovanCommandMsg::e5001_Cmd_1));
    return false;
}
