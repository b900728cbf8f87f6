// SPDX-License-Identifier: LicenseRef-HXAux
// Terminal settings of the unit's serial ports. They are kept here and not by a pseudo terminal, because that drops the
// parity bit which programs read back.
#include "simulator/file/Terminal.h"
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"

#include <termios.h>
#include <unistd.h>

namespace hxsim {

namespace {

/// Records the call on a serial port of the unit; the errno with which it must fail, or 0.
int fateOf(const Descriptor& descriptor, const std::string& call, const std::string& action)
{
    Link* const link = Link::current();
    int error = descriptor.serial ? 0 : ENOTTY;
    if (link != nullptr) {
        if (error == 0)
            error = link->fault(descriptor.path, call);
        link->note(descriptor.path, action, error);
    }
    return -error;
}

std::string actionOf(int when, const termios& settings)
{
    const LineSettings line = lineOf(settings);
    const char* const moment = when == TCSANOW ? "now" : when == TCSADRAIN ? "drain" : "flush";
    return std::string{"tcsetattr "} + moment + ' ' + std::to_string(line.baud) + ' ' + std::to_string(line.dataBits) +
           line.parity + std::to_string(line.stopBits) + " vmin " + std::to_string(line.vmin) + " vtime " +
           std::to_string(line.vtime);
}

int setTerminal(const Descriptor& descriptor, int when, const termios& settings)
{
    if (when != TCSANOW && when != TCSADRAIN && when != TCSAFLUSH)
        return -EINVAL; // the C library looks at this before anything else
    if (const int error = fateOf(descriptor, "tcsetattr", actionOf(when, settings)); error != 0)
        return error;
    if (when != TCSANOW)
        descriptor.device->drain();
    if (when == TCSAFLUSH)
        descriptor.device->flush(true, false);
    descriptor.device->setTerminal(settings);
    return 0;
}

int flushTerminal(const Descriptor& descriptor, int queue)
{
    if (queue != TCIFLUSH && queue != TCOFLUSH && queue != TCIOFLUSH)
        return descriptor.serial ? -EINVAL : -ENOTTY;
    const char* const name = queue == TCIFLUSH ? "input" : queue == TCOFLUSH ? "output" : "both";
    if (const int error = fateOf(descriptor, "tcflush", std::string{"tcflush "} + name); error != 0)
        return error;
    descriptor.device->flush(queue != TCOFLUSH, queue != TCIFLUSH);
    return 0;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int tcgetattr(int fd, termios* settings) noexcept
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(tcgetattr)(fd, settings);
    KeepErrno keep;
    const int error = fateOf(*descriptor, "tcgetattr", "tcgetattr");
    if (error != 0)
        return keep.answer(error);
    *settings = descriptor->device->terminal().value_or(freshTerminal());
    return 0;
}

HXSIM_ENTRY int tcsetattr(int fd, int when, const termios* settings) noexcept
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(tcsetattr)(fd, when, settings);
    KeepErrno keep;
    return keep.answer(setTerminal(*descriptor, when, *settings));
}

HXSIM_ENTRY int tcflush(int fd, int queue) noexcept
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(tcflush)(fd, queue);
    KeepErrno keep;
    return keep.answer(flushTerminal(*descriptor, queue));
}

HXSIM_ENTRY int tcdrain(int fd)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(tcdrain)(fd);
    KeepErrno keep;
    const int error = fateOf(*descriptor, "tcdrain", "tcdrain");
    return keep.answer(error != 0 ? error : descriptor->device->drain());
}

HXSIM_ENTRY int isatty(int fd) noexcept
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(isatty)(fd);
    if (descriptor->serial)
        return 1;
    errno = ENOTTY;
    return 0;
}
