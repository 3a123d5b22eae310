// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/mcsWriterPort.h"

#include <unistd.h>

void mcsWriterPort::openPort() {
    openPortForWrite();
}

ssize_t mcsWriterPort::writeToPort(const void* buffer, size_t length) {
    return write(getFileDescriptor(), buffer, length);
}
