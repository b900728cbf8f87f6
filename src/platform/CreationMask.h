// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/LinuxWrapper.h"
#include "platform/ProcessLocks.h"

namespace Halvix {

/// The process's file-creation mask for a scope, one scope at a time: if two overlapped, the later one would
/// permanently restore the mask of the earlier one. Files that the application itself creates in another thread during
/// the scope get this mask too.
class CreationMask {
public:
    explicit CreationMask(unsigned int mask)
        : exclusive_{processlocks::creationMask()}, previous_{LinuxWrapper::umask(mask)}
    {
    }
    ~CreationMask()
    {
        if (restores_)
            (void)LinuxWrapper::umask(previous_);
    }
    CreationMask(const CreationMask&) = delete;
    CreationMask& operator=(const CreationMask&) = delete;

    /// Keeps the mask when the scope ends.
    void keep() { restores_ = false; }

private:
    MutexLock exclusive_;
    unsigned int previous_;
    bool restores_ = true;
};

} // namespace Halvix
