// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/mcsReaderPort.h"

#include <unistd.h>

void mcsReaderPort::openPort() {
    openPortForRead();
}

ssize_t mcsReaderPort::readFromPort(void* buffer, size_t length) {
    return read(getFileDescriptor(), buffer, length);
}
