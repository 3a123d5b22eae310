// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "MSID_messages/RovanCommandMsg.h"
#include "MSID_messages/RovanHeaderOnlyMsg.h"
#include "MSID_messages/RovanReceiverSetupMsg.h"
#include "MSID_messages/Rovan_30409_Msg.h"
#include "MSID_messages/Rovan_5040_Msg.h"
#include "MSID_messages/Rovan_5042_Msg.h"
#include "MSID_messages/Rovan_5044_Msg.h"
#include "MSID_messages/Rovan_5402_Msg.h"
#include "MSID_messages/Rovan_5404_Msg.h"
#include "MSID_messages/Rovan_7270_Msg.h"
#include "MSID_messages/Rovan_8040_Msg.h"
#include "MSID_messages/Rovan_8080_Msg.h"
#include "MSID_messages/Rovan_8504_Msg.h"
#include "MSID_messages/Rovan_9225_Msg.h"
#include "MSID_messages/Rovan_9391_Msg.h"
#include "MSID_messages/Rovan_9405_Msg.h"
#include "MSID_messages/Rovan_SVRise_Msg.h"
#include "MSID_messages/RovancomPortSetup.h"

// Every message class, with what a new object of it must be.
namespace AllMessages {

struct Row {
    std::string name;
    uint16_t msgId;
    unsigned wdcnt;
    uint16_t flagWord;
    std::function<std::unique_ptr<GssipMessage>()> make;
    /// The class's own loader where it has one, else OkSetContent.
    std::function<bool(GssipMessage&, const void*, unsigned)> load;
};

inline std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

template <typename MESSAGE, typename... ARGUMENTS>
Row row(const std::string& name, uint16_t msgId, unsigned wdcnt, uint16_t flagWord,
        bool (MESSAGE::*load)(const void*, unsigned), ARGUMENTS... arguments) {
    return {
        name,
        msgId,
        wdcnt,
        flagWord,
        [=]() -> std::unique_ptr<GssipMessage> { return std::make_unique<MESSAGE>(arguments...); },
        [=](GssipMessage& message, const void* bytes, unsigned size) {
            return (static_cast<MESSAGE&>(message).*load)(bytes, size);
        }};
}

template <typename MESSAGE>
constexpr bool (MESSAGE::*kOkSetContent)(const void*, unsigned) = &GssipMessage::OkSetContent;

inline const std::vector<Row>& rows() {
    static const std::vector<Row> all{
        row("5001", 5001, 31, 0x9000, kOkSetContent<RovanCommandMsg>),
        row("5313", 5313, 100, 0x9000, kOkSetContent<RovanReceiverSetupMsg>),
        row("5331", 5331, 50, 0x9000, kOkSetContent<RovancomPortSetup>),
        row("5402", 5402, 67, 0x9000, kOkSetContent<Rovan_5402_Msg>),
        row("HeaderOnly", 0, 0, 0x9000, kOkSetContent<RovanHeaderOnlyMsg>),
        row("5040", 5040, 88, 0x9000, &Rovan_5040_Msg::ok_set_5040_gpsip),
        row("5042", 5042, 100, 0x9000, &Rovan_5042_Msg::ok_set_5042_gpsip),
        row("5044", 5044, 21, 0x9000, &Rovan_5044_Msg::ok_set_5044_gpsip),
        row("5404", 5404, 60, 0x9000, &Rovan_5404_Msg::ok_set_5404_gpsip),
        row("7270", 7270, 59, 0x9000, &Rovan_7270_Msg::ok_set_7270_gpsip),
        row("8040", 8040, 25, 0x9000, &Rovan_8040_Msg::ok_set_8040_gpsip),
        row("8080", 8080, 6, 0x9000, &Rovan_8080_Msg::ok_set_8080_gpsip),
        row("8504", 8504, 200, 0x9000, &Rovan_8504_Msg::ok_set_8504_gpsip),
        row("9225", 9225, 416, 0x9000, kOkSetContent<Rovan_9225_Msg>),
        row("9391", 9391, 84, 0x9000, &Rovan_9391_Msg::ok_set_9391_gpsip),
        row("9405", 9405, 104, 0x9000, &Rovan_9405_Msg::ok_set_9405_gpsip),
        row("30409", 30409, 32, 0x9000, &Rovan_30409_Msg::ok_set_30409_gpsip),
        row("5047", 5047, 100, 0x8000, &Rovan_SVRise_Msg::ok_set_SVRiseMsg_gpsip, uint16_t{5047}),
        row("5048", 5048, 100, 0x8000, &Rovan_SVRise_Msg::ok_set_SVRiseMsg_gpsip, uint16_t{5048}),
    };
    return all;
}

}  // namespace AllMessages
