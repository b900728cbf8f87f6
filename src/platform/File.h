// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/LinuxWrapper.h"

#include <algorithm>

namespace Halvix {

/// A plain file or an attribute: opened in the constructor, closed by the destructor.
class File {
public:
    enum class Access { Read, ReadWrite };

    explicit File(const char* name, Access access = Access::Read)
    {
        if (!LinuxWrapper::open(handle_, name, access == Access::ReadWrite))
            handle_ = -1;
    }
    ~File()
    {
        if (isOpen())
            LinuxWrapper::close(handle_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    [[nodiscard]] bool isOpen() const { return handle_ >= 0; }
    [[nodiscard]] int handle() const { return handle_; }
    /// 0 when it is not known.
    [[nodiscard]] unsigned size() const
    {
        return static_cast<unsigned>(std::max(0, LinuxWrapper::getFileSize(handle_)));
    }
    /// The descriptor stays open.
    void leaveOpen() { handle_ = -1; }

private:
    int handle_ = -1;
};

} // namespace Halvix
