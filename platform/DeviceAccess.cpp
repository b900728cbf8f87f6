// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "platform/VersionText.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace Halvix {

namespace {

// The drivers' two requests for the supervisor's registers, and the block that both exchange.
constexpr unsigned long kReadRegister = 0xC004003A;
constexpr unsigned long kWriteRegister = 0xC004003B;

struct RegisterBlock {
    std::uint16_t reg;
    std::uint16_t value;
};
static_assert(sizeof(RegisterBlock) == 4);

} // namespace

bool LinuxWrapper::open(int& handle, const char* path, bool readWrite)
{
    handle = ::open(path, (readWrite ? O_RDWR : O_RDONLY) | O_NONBLOCK);
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
    return ::fstat(handle, &status) == 0 ? static_cast<int>(status.st_size) : 0;
}

bool LinuxWrapper::ReadID(int handle, unsigned char reg, unsigned short* value)
{
    RegisterBlock block{reg, 0};
    if (::ioctl(handle, kReadRegister, &block) < 0)
        return false;
    *value = block.value;
    return true;
}

bool LinuxWrapper::WriteID(int handle, unsigned char reg, unsigned short value)
{
    RegisterBlock block{reg, value};
    return ::ioctl(handle, kWriteRegister, &block) >= 0;
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
