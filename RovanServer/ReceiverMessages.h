// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "gssip/GssipMessage.h"

// Builders of what the server sends to the receiver, ready for RovanIo::messageQueue.

using GssipMessagePtr = std::shared_ptr<GssipMessage>;

/// Header-only: the receiver is to stop sending `id` (0: everything), to start, to send once.
GssipMessagePtr make_disconnect(uint16_t id);
GssipMessagePtr make_connect(uint16_t id);
GssipMessagePtr make_request(uint16_t id);

/// 5331: pulse number and port.
GssipMessagePtr make_pps_setup(uint16_t pulse, uint16_t port);
/// 5313: code type.
GssipMessagePtr make_receiver_setup(uint16_t codeType);
/// 5001: a mode command, simple or in the extended form.
GssipMessagePtr make_simple_command(uint16_t command);
GssipMessagePtr make_mist_command(uint16_t command);
/// 5402: IP zeroize.
GssipMessagePtr make_ip_zeroize_command();

/// Decimal, low 16 bits kept; 0 means that the text names no message.
uint16_t toMsgId(const std::string& text);

/// Calls `use` for each message id of a comma list, in list order; entries that name no message are
/// skipped.
void forEachMsgId(const std::string& commaList, const std::function<void(uint16_t)>& use);

/// The last word of `text`, words being separated by white space; empty for a blank text.
std::string getLastWord(const std::string& text);
