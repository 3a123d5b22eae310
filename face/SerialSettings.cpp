// SPDX-License-Identifier: Apache-2.0
#include "face/SerialSettings.h"

namespace FACE::IOSS {

const Setting<SerialSettings> SerialSettings::kTable[7] = {
    setting<&SerialSettings::channelNum>("ChannelNum"),
    setting<&SerialSettings::serialMode>("SerialMode"),
    setting<&SerialSettings::baudrate>("Baudrate"),
    setting<&SerialSettings::dataBits>("DataBits"),
    setting<&SerialSettings::stopBits>("StopBits"),
    setting<&SerialSettings::parity>("Parity"),
    setting<&SerialSettings::flowControl>("FlowControl"),
};

}  // namespace FACE::IOSS
