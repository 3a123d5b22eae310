// SPDX-License-Identifier: Apache-2.0
#include "face/TermiosLine.h"

#include <algorithm>
#include <iterator>

namespace FACE::IOSS::TermiosLine {
namespace {

struct Speed {
    int32_t baudrate;
    speed_t speed;
};

constexpr Speed kSpeeds[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000},
};

// What a value of a setting does to a flag word: the bits of the mask become those of `set`.
struct Choice {
    int32_t value;
    tcflag_t mask;
    tcflag_t set;
};

constexpr Choice kParities[] = {
    {0, PARENB, 0},
    {1, PARENB | PARODD | CMSPAR, PARENB | PARODD},
    {2, PARENB | PARODD | CMSPAR, PARENB},
    {3, PARENB | PARODD | CMSPAR, PARENB | PARODD | CMSPAR},
    {4, PARENB | PARODD | CMSPAR, PARENB | CMSPAR},
};

constexpr Choice kStopBits[] = {{1, CSTOPB, 0}, {2, CSTOPB, CSTOPB}};

constexpr Choice kDataBits[] = {
    {5, CSIZE, CS5},
    {6, CSIZE, CS6},
    {7, CSIZE, CS7},
    {8, CSIZE, CS8},
};

constexpr Choice kHardwareFlow[] = {{0, CRTSCTS, 0}, {1, CRTSCTS, 0}, {2, CRTSCTS, CRTSCTS}};

constexpr tcflag_t kXonXoff = IXON | IXOFF | IXANY;
constexpr Choice kSoftwareFlow[] = {{0, kXonXoff, 0}, {1, kXonXoff, kXonXoff}, {2, kXonXoff, 0}};

constexpr long long kTenthNs = 100'000'000;
constexpr long long kLongestNs = 25'500'000'000;

/// False, and nothing changes, when the value is not among the choices.
template <std::size_t N>
bool apply(const Choice (&choices)[N], int32_t value, tcflag_t& flags) {
    const auto* const choice = std::find_if(std::begin(choices), std::end(choices),
                                            [value](const Choice& c) { return c.value == value; });
    if (choice == std::end(choices)) {
        return false;
    }
    flags = (flags & ~choice->mask) | choice->set;
    return true;
}

bool applySpeed(int32_t baudrate, termios& line) {
    const auto* const entry =
        std::find_if(std::begin(kSpeeds), std::end(kSpeeds),
                     [baudrate](const Speed& s) { return s.baudrate == baudrate; });
    if (entry == std::end(kSpeeds)) {
        return false;
    }
    cfsetispeed(&line, entry->speed);
    cfsetospeed(&line, entry->speed);
    return true;
}

}  // namespace

std::vector<std::string> configure(const SerialSettings& settings, termios& line) {
    std::vector<std::string> errors;
    const auto expect = [&errors](bool valid, const char* what, int32_t value) {
        if (!valid) {
            errors.push_back(std::string("Invalid ") + what + " parameter " +
                             std::to_string(value));
        }
    };

    cfmakeraw(&line);
    setReadTimeout(0, line);
    expect(applySpeed(settings.baudrate, line), "baud rate", settings.baudrate);
    line.c_cflag |= CLOCAL | CREAD;
    expect(apply(kParities, settings.parity, line.c_cflag), "parity", settings.parity);
    expect(apply(kStopBits, settings.stopBits, line.c_cflag), "stop bits", settings.stopBits);
    line.c_cflag &= ~tcflag_t{CSIZE};
    expect(apply(kDataBits, settings.dataBits, line.c_cflag), "data bits", settings.dataBits);
    expect(apply(kHardwareFlow, settings.flowControl, line.c_cflag) &&
               apply(kSoftwareFlow, settings.flowControl, line.c_iflag),
           "flow control", settings.flowControl);
    return errors;
}

void setReadTimeout(long long timeoutNs, termios& line) {
    const bool forever = timeoutNs == -1;
    long long tenths = 0;
    if (timeoutNs > kLongestNs) {
        tenths = 255;
    } else if (timeoutNs > 0) {
        tenths = (timeoutNs + kTenthNs - 1) / kTenthNs;
    }
    line.c_cc[VTIME] = static_cast<cc_t>(tenths);
    line.c_cc[VMIN] = forever ? 1 : 0;
}

}  // namespace FACE::IOSS::TermiosLine
