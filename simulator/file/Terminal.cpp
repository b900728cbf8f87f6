// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/Terminal.h"

#include <algorithm>
#include <cstring>

namespace hxsim {

namespace {

struct BaudRow {
    speed_t code;
    std::uint32_t baud;
};

constexpr BaudRow kBauds[] = {
    {B1200, 1200},     {B1800, 1800},     {B2400, 2400},     {B4800, 4800},     {B9600, 9600},
    {B19200, 19200},   {B38400, 38400},   {B57600, 57600},   {B115200, 115200}, {B230400, 230400},
    {B460800, 460800}, {B500000, 500000}, {B576000, 576000}, {B921600, 921600}, {B1000000, 1000000},
};

std::uint32_t baudOf(speed_t code)
{
    for (const BaudRow& row : kBauds)
        if (row.code == code)
            return row.baud;
    return 0;
}

int dataBitsOf(tcflag_t control)
{
    switch (control & CSIZE) {
    case CS5:
        return 5;
    case CS6:
        return 6;
    case CS7:
        return 7;
    default:
        return 8;
    }
}

} // namespace

termios freshTerminal()
{
    termios settings{};
    settings.c_iflag = ICRNL | IXON;
    settings.c_oflag = OPOST | ONLCR;
    settings.c_cflag = CS8 | CREAD | HUPCL | CLOCAL;
    settings.c_lflag = ISIG | ICANON | ECHO | ECHOE | ECHOK | IEXTEN;
    settings.c_cc[VMIN] = 1;
    cfsetispeed(&settings, B9600);
    cfsetospeed(&settings, B9600);
    return settings;
}

std::vector<std::uint8_t> terminalBytes(const termios& settings)
{
    std::vector<std::uint8_t> bytes(sizeof settings);
    std::memcpy(bytes.data(), &settings, sizeof settings);
    return bytes;
}

std::optional<termios> terminalFrom(std::span<const std::uint8_t> bytes)
{
    static_assert(sizeof(termios) == 60, "the same in 32-bit and 64-bit programs");
    termios settings{};
    if (bytes.size() != sizeof settings)
        return std::nullopt;
    std::memcpy(&settings, bytes.data(), sizeof settings);
    return settings;
}

LineSettings lineOf(const termios& settings)
{
    LineSettings line;
    line.baud = baudOf(cfgetospeed(&settings));
    line.dataBits = dataBitsOf(settings.c_cflag);
    line.parity = (settings.c_cflag & PARENB) == 0 ? 'n' : (settings.c_cflag & PARODD) != 0 ? 'o' : 'e';
    line.stopBits = (settings.c_cflag & CSTOPB) != 0 ? 2 : 1;
    line.vmin = settings.c_cc[VMIN];
    line.vtime = settings.c_cc[VTIME];
    line.canonical = (settings.c_lflag & ICANON) != 0;
    return line;
}

void setLineOf(termios& settings, const LineSettings& line)
{
    constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
    cfmakeraw(&settings);
    settings.c_cflag &= ~tcflag_t{CSIZE | PARENB | PARODD | CSTOPB};
    settings.c_cflag |= CLOCAL | CREAD | kSizes[std::clamp(line.dataBits, 5, 8) - 5];
    settings.c_cflag |= line.parity == 'n' ? 0U : line.parity == 'o' ? PARENB | PARODD : PARENB;
    settings.c_cflag |= line.stopBits == 2 ? CSTOPB : 0U;
    settings.c_cc[VMIN] = line.vmin;
    settings.c_cc[VTIME] = line.vtime;
    for (const BaudRow& row : kBauds)
        if (row.baud == line.baud)
            cfsetspeed(&settings, row.code);
}

} // namespace hxsim
