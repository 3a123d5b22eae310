// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "aspn2_msgs/GSSIP.h"

// The receiver frame inside a sample, as the message classes take it. A sample that claims more
// bytes than it carries gives a frame of size 0, which every message class refuses. Valid as long
// as the sample.
struct RovanProcessorFrame {
    explicit RovanProcessorFrame(const aspn2_msgs::idl::GSSIP& gssip)
        : bytes(gssip.data().data()), size(0) {
        const int32_t claimed = gssip.num_bytes();
        if (claimed > 0 && static_cast<uint32_t>(claimed) <= gssip.data().size()) {
            size = static_cast<unsigned>(claimed);
        }
    }

    const uint8_t* bytes;
    unsigned size;
};
