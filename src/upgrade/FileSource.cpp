// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/FileSource.h"

namespace Halvix {

namespace {

/// What one read of the file returned.
std::span<const char> readInto(std::span<char> buffer, const File& file)
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
