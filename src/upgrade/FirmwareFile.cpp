// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/FirmwareFile.h"

#include "platform/LinuxWrapper.h"

#include <algorithm>

namespace Halvix {

FirmwareFile::FirmwareFile(const char* name)
{
    if (!LinuxWrapper::open(handle_, name, false))
        handle_ = -1;
}

FirmwareFile::~FirmwareFile()
{
    if (isOpen())
        LinuxWrapper::close(handle_);
}

unsigned FirmwareFile::size() const
{
    return static_cast<unsigned>(std::max(0, LinuxWrapper::getFileSize(handle_)));
}

namespace {

/// What one read of the file returned.
std::span<const char> readInto(std::span<char> buffer, const FirmwareFile& file)
{
    unsigned count = 0;
    if (!LinuxWrapper::read(file.handle(), buffer.data(), static_cast<int>(buffer.size()), &count))
        return {};
    return buffer.first(count);
}

} // namespace

std::span<const char> CharacterSource::more()
{
    return readInto({&character_, 1}, file_);
}

std::span<const char> BufferedSource::more()
{
    return readInto(buffer_, file_);
}

} // namespace Halvix
