// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "ioss_mcsq/mcsQport.h"

// The writing end of a queue device.
class mcsWriterPort : public mcsQport {
  public:
    void openPort() override;

    /// The plain system call: the number of bytes taken, which may be fewer, or -1 with errno.
    ssize_t writeToPort(const void* buffer, size_t length);
};
