// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/mcsQport.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "utility/Console.h"

namespace {

constexpr const char* kInput = "input";
constexpr const char* kOutput = "output";

// A queue may be a FIFO, which an ordinary open would wait on for ever, or a terminal, which must
// not become the one whose hang-up ends this process.
int openWithoutWaiting(const std::string& fileName, int flags) {
    return open(fileName.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

mcsQport::~mcsQport() {
    closePort();
}

void mcsQport::closePort() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}

void mcsQport::set_filename(const std::string& name) {
    m_fileName = name;
    m_hasFileName = true;
}

int mcsQport::can_open_file() const {
    if (!m_hasFileName) {
        return -1;
    }
    int descriptor = openWithoutWaiting(m_fileName, O_WRONLY);
    if (descriptor < 0 && errno == ENXIO) {
        // A FIFO that nobody reads yet; opened both ways it is its own reader.
        descriptor = openWithoutWaiting(m_fileName, O_RDWR);
    }
    if (descriptor < 0) {
        reportUnableToOpen(kOutput);
        return 0;
    }
    close(descriptor);
    return 1;
}

void mcsQport::openPortForRead() {
    closePort();
    m_descriptor = openOrReport(O_RDONLY, kInput);
}

void mcsQport::openPortForWrite() {
    closePort();
    m_descriptor = openOrReport(O_WRONLY, kOutput);
}

int mcsQport::openOrReport(int flags, const char* direction) const {
    const int descriptor = openWithoutWaiting(m_fileName, flags);
    if (descriptor < 0) {
        reportUnableToOpen(direction);
    }
    return descriptor;
}

void mcsQport::reportUnableToOpen(const char* direction) const {
    const int reason = errno;
    std::string text = std::string("Unable to open ") + direction + " pipe file: " + get_filename();
    if (m_debug > 0) {
        text += std::string(" (") + std::strerror(reason) + ')';
    }
    Console::errorLine(text);
}
