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

bool CharacterSource::next(char& character)
{
    unsigned count = 0;
    return LinuxWrapper::read(file_.handle(), &character, 1, &count) && count == 1;
}

bool BufferedSource::next(char& character)
{
    if (position_ == count_) {
        position_ = count_ = 0;
        if (!LinuxWrapper::read(file_.handle(), buffer_.data(), static_cast<int>(buffer_.size()), &count_) ||
            count_ == 0)
            return false;
    }
    character = buffer_[position_++];
    return true;
}

} // namespace Halvix
