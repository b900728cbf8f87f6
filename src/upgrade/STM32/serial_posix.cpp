// SPDX-License-Identifier: LicenseRef-HXAux
#include "serial_posix.h"

// The assertions below are active in release builds too, with exactly these texts.
#undef NDEBUG
#include <cassert>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <termios.h>
#include <unistd.h>

struct serial_port {
    int fd;
    termios saved;   ///< settings found at open; restored at close
    termios working; ///< settings that serial_setup builds and applies
    bool configured;
    unsigned baud;
    unsigned bits;
    unsigned parity;
    unsigned stop;
};

namespace {

constexpr speed_t kSpeeds[] = {B1200, B2400, B4800, B9600, B19200, B38400, B57600, B115200, B230400};
constexpr tcflag_t kCharacterSizes[] = {CS5, CS6, CS7, CS8};
// PARENB (and PARODD), each together with the low bit of the character size. With eight data bits that bit changes
// nothing; five become six and seven become eight, as they always did.
constexpr tcflag_t kParities[] = {0, 0x110, 0x310};
constexpr tcflag_t kStopBits[] = {0, CSTOPB};

using std::chrono::steady_clock;

constexpr std::chrono::seconds kReadTimeout{3};
constexpr cc_t kReadTimeoutTenths = 10 * kReadTimeout.count();

int checkParameters(unsigned baud, unsigned bits, unsigned parity, unsigned stop)
{
    if (baud >= std::size(kSpeeds))
        return SERIAL_INVALID_BAUD;
    if (bits >= std::size(kCharacterSizes))
        return SERIAL_INVALID_BITS;
    if (parity >= std::size(kParities))
        return SERIAL_INVALID_PARITY;
    if (stop >= std::size(kStopBits))
        return SERIAL_INVALID_STOP;
    return SERIAL_OK;
}

void makeRaw(termios& settings)
{
    cfmakeraw(&settings);
    settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CRTSCTS);
    settings.c_iflag &= ~static_cast<tcflag_t>(IXON | IXANY | IXOFF | IGNPAR);
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHOK | ECHOCTL | ECHOKE);
    settings.c_oflag &= ~static_cast<tcflag_t>(OPOST | ONLCR);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = kReadTimeoutTenths;
}

bool sameFlags(const termios& a, const termios& b)
{
    return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag && a.c_lflag == b.c_lflag;
}

int apply(const serial_port* h)
{
    tcflush(h->fd, TCIFLUSH);
    if (tcsetattr(h->fd, TCSANOW, &h->working) != 0)
        return SERIAL_SYSTEM_CALL_FAILED;
    termios taken{};
    tcgetattr(h->fd, &taken);
    return sameFlags(taken, h->working) ? SERIAL_OK : SERIAL_SETTINGS_NOT_TAKEN;
}

} // namespace

serial_port* serial_open(const char* path)
{
    auto* h = static_cast<serial_port*>(std::calloc(1, sizeof(serial_port)));
    if (h == nullptr)
        return nullptr;
    h->fd = ::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (h->fd < 0) {
        std::free(h);
        return nullptr;
    }
    fcntl(h->fd, F_SETFL, 0); // reads block from now on
    tcgetattr(h->fd, &h->saved);
    h->working = h->saved;
    return h;
}

void serial_close(serial_port* h)
{
    assert(h && h->fd > -1);
    serial_flush(h);
    tcsetattr(h->fd, TCSANOW, &h->saved);
    ::close(h->fd);
    std::free(h);
}

int serial_flush(const serial_port* h)
{
    assert(h && h->fd > -1);
    return tcflush(h->fd, TCIFLUSH);
}

int serial_setup(serial_port* h, unsigned baud, unsigned bits, unsigned parity, unsigned stop)
{
    assert(h && h->fd > -1);
    if (const int invalid = checkParameters(baud, bits, parity, stop); invalid != SERIAL_OK)
        return invalid;
    if (h->configured && baud == h->baud && bits == h->bits && parity == h->parity && stop == h->stop)
        return SERIAL_OK;

    makeRaw(h->working);
    cfsetispeed(&h->working, kSpeeds[baud]);
    cfsetospeed(&h->working, kSpeeds[baud]);
    // Added to the current flags: a second set-up cannot clear odd parity or two stop bits.
    h->working.c_cflag |= kCharacterSizes[bits] | kParities[parity] | kStopBits[stop] | CLOCAL | CREAD;
    if (const int failed = apply(h); failed != SERIAL_OK)
        return failed;

    h->configured = true;
    h->baud = baud;
    h->bits = bits;
    h->parity = parity;
    h->stop = stop;
    return SERIAL_OK;
}

int serial_write(const serial_port* h, const void* buffer, size_t length)
{
    assert(h && h->fd > -1 && h->configured);
    const auto* next = static_cast<const unsigned char*>(buffer);
    while (length > 0) {
        const ssize_t written = ::write(h->fd, next, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 1)
            return SERIAL_SYSTEM_CALL_FAILED;
        next += written;
        length -= static_cast<size_t>(written);
    }
    return SERIAL_OK;
}

int serial_read(const serial_port* h, void* buffer, size_t length)
{
    assert(h && h->fd > -1 && h->configured);
    auto* next = static_cast<unsigned char*>(buffer);
    auto lastByte = steady_clock::now();
    while (length > 0) {
        const ssize_t got = ::read(h->fd, next, length);
        if (got < 0 && errno == EINTR) {
            if (steady_clock::now() - lastByte >= kReadTimeout)
                return SERIAL_NO_DATA; // the port's own time-out starts again with each call
            continue;
        }
        if (got == 0)
            return SERIAL_NO_DATA;
        if (got < 0)
            return SERIAL_SYSTEM_CALL_FAILED;
        next += got;
        length -= static_cast<size_t>(got);
        lastByte = steady_clock::now();
    }
    return SERIAL_OK;
}

const char* serial_get_setup_str(void)
{
    static char text[1] = "";
    return text;
}
