// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/CreationMask.h"
#include "platform/LinuxWrapper.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvix {

namespace {

constexpr char kFifo[] = "/tmp/hxauxd.fifo";
constexpr int kAttempts = 6; // at a full FIFO
constexpr unsigned long kPauseMs = 200;

/// Writes the command. Only a full FIFO counts as an attempt: any other error is retried at once and without limit;
/// operators of the daemon rely on it.
eErr send(int fifo, std::int32_t command)
{
    int full = 0;
    while (::write(fifo, &command, sizeof command) < 0) {
        if (errno != EAGAIN)
            continue;
        if (++full == kAttempts)
            return ERR_COMMAND_FAILED;
        LinuxWrapper::SleepFully(kPauseMs); // the daemon gets this time, whatever signals arrive
    }
    return ERR_SUCCESS;
}

} // namespace

int LinuxWrapper::open_write_fifo(const char* path, unsigned int mode)
{
    {
        CreationMask forEverybody{0};
        if (::mkfifo(path, mode) != 0 && errno != EEXIST) {
            forEverybody.keep(); // the mask stays 0; callers rely on it
            return -1;
        }
    }
    const int fifo = ::open(path, O_WRONLY | O_NONBLOCK);
    return fifo >= 0 ? fifo : -2;
}

eErr LinuxWrapper::ControlDaemon(int command)
{
    if (command < 0)
        return ERR_INVALID_PARAMETER;
    const int fifo = open_write_fifo(kFifo, 0666);
    if (fifo < 0)
        return ERR_OPEN_FAILED;
    const eErr err = send(fifo, command);
    ::close(fifo);
    return err;
}

} // namespace Halvix
