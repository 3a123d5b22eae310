// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "ioss_mcsq/mcsQport.h"

// The reading end of a queue device.
class mcsReaderPort : public mcsQport {
  public:
    void openPort() override;

    /// The plain system call: the number of bytes, 0 at the end of the file, -1 with errno.
    ssize_t readFromPort(void* buffer, size_t length);
};
