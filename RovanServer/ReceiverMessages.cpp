// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverMessages.h"

#include <cstdlib>
#include <sstream>

#include "MSID_messages/RovanCommandMsg.h"
#include "MSID_messages/RovanHeaderOnlyMsg.h"
#include "MSID_messages/RovanReceiverSetupMsg.h"
#include "MSID_messages/Rovan_5402_Msg.h"
#include "MSID_messages/RovancomPortSetup.h"
#include "gssip/GssipFrame.h"
#include "utility/StringUtils.h"

GssipMessagePtr make_disconnect(uint16_t id) {
    return std::make_shared<RovanHeaderOnlyMsg>(id, Gssip::kFlagsDisconnect);
}

GssipMessagePtr make_connect(uint16_t id) {
    return std::make_shared<RovanHeaderOnlyMsg>(id, Gssip::kFlagsConnect);
}

GssipMessagePtr make_request(uint16_t id) {
    return std::make_shared<RovanHeaderOnlyMsg>(id, Gssip::kFlagsRequest);
}

GssipMessagePtr make_pps_setup(uint16_t pulse, uint16_t port) {
    auto message = std::make_shared<RovancomPortSetup>();
    message->setPulse(static_cast<RovancomPortSetup::e5331Pulse>(pulse));
    message->setPort(static_cast<RovancomPortSetup::e5331Port>(port));
    return message;
}

GssipMessagePtr make_receiver_setup(uint16_t codeType) {
    auto message = std::make_shared<RovanReceiverSetupMsg>();
    message->setCodeType(static_cast<RovanReceiverSetupMsg::e5313_CodeType>(codeType));
    return message;
}

GssipMessagePtr make_simple_command(uint16_t command) {
    auto message = std::make_shared<RovanCommandMsg>();
    message->setSimpleModeCommand(static_cast<RovanCommandMsg::e5001_Command>(command));
    return message;
}

GssipMessagePtr make_mist_command(uint16_t command) {
    auto message = std::make_shared<RovanCommandMsg>();
    message->setMistMode(static_cast<RovanCommandMsg::e5001_Mist_Command>(command));
    return message;
}

GssipMessagePtr make_ip_zeroize_command() {
    auto message = std::make_shared<Rovan_5402_Msg>();
    message->setIpZeroize();
    return message;
}

uint16_t toMsgId(const std::string& text) {
    return static_cast<uint16_t>(std::strtoul(text.c_str(), nullptr, 10));
}

void forEachMsgId(const std::string& commaList, const std::function<void(uint16_t)>& use) {
    for (const std::string& entry : StringUtils::split(commaList, ',')) {
        if (const uint16_t id = toMsgId(entry); id != 0) {
            use(id);
        }
    }
}

std::string getLastWord(const std::string& text) {
    std::istringstream words(text);
    std::string last;
    for (std::string word; words >> word;) {
        last = word;
    }
    return last;
}
