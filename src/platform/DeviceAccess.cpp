// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "platform/Registers.h"
#include "platform/VersionText.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvix {

bool LinuxWrapper::open(int& handle, const char* path, bool readWrite)
{
    // File names of applications arrive unchecked; the C library must not get a null one.
    handle = path == nullptr ? -1 : ::open(path, (readWrite ? O_RDWR : O_RDONLY) | O_NONBLOCK);
    return handle >= 0;
}

void LinuxWrapper::close(int handle)
{
    ::close(handle);
}

bool LinuxWrapper::read(int handle, char* buffer, int length, unsigned int* count)
{
    const ssize_t got = ::read(handle, buffer, static_cast<std::size_t>(length));
    if (got < 0)
        return false;
    if (count != nullptr)
        *count = static_cast<unsigned int>(got);
    return true;
}

bool LinuxWrapper::write(int handle, const char* buffer, int length)
{
    return ::write(handle, buffer, static_cast<std::size_t>(length)) >= 0;
}

int LinuxWrapper::getFileSize(int handle)
{
    struct stat status {};
    const bool known = ::fstat(handle, &status) == 0 && status.st_size <= INT32_MAX;
    return known ? static_cast<int>(status.st_size) : 0;
}

bool LinuxWrapper::ReadID(int handle, unsigned char reg, unsigned short* value)
{
    return registers::read(handle, reg, *value);
}

bool LinuxWrapper::WriteID(int handle, unsigned char reg, unsigned short value)
{
    return registers::write(handle, reg, value);
}

bool LinuxWrapper::ParseFirmwareVersion(int handle, int& major, int& minor, int& release, int& build)
{
    constexpr int kLongest = 8192;
    char text[kLongest + 1];
    unsigned int count = 0;
    if (!read(handle, text, kLongest, &count))
        return false;
    text[count] = '\0';
    VersionParts parts{};
    // A signed comparison: a negative part passes.
    if (!scanVersion(text, parts) || !std::ranges::all_of(parts, [](int part) { return part < 256; }))
        return false;
    major = parts[0];
    minor = parts[1];
    release = parts[2];
    build = parts[3];
    return true;
}

} // namespace Halvix
