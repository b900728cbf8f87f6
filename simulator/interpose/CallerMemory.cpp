// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/CallerMemory.h"

#include <cerrno>
#include <cstring>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace hxsim {

namespace {

/// The kernel copies, so that a bad address is an error, not a crash. Where that is not permitted, the address is used
/// unchecked.
bool copy(long call, void* ours, const void* theirs, std::size_t size, void* to, const void* from)
{
    if (size == 0)
        return true;
    iovec local{ours, size};
    iovec remote{const_cast<void*>(theirs), size};
    const long copied = syscall(call, getpid(), &local, 1, &remote, 1, 0);
    if (copied < 0 && errno != EFAULT) {
        std::memcpy(to, from, size);
        return true;
    }
    return copied == static_cast<long>(size);
}

} // namespace

bool copyFromCaller(void* to, const void* from, std::size_t size)
{
    return copy(SYS_process_vm_readv, to, from, size, to, from);
}

bool copyToCaller(void* to, const void* from, std::size_t size)
{
    return copy(SYS_process_vm_writev, const_cast<void*>(from), to, size, to, from);
}

bool isReachable(const void* block, std::size_t size)
{
    char byte = 0;
    const char* const bytes = static_cast<const char*>(block);
    return size == 0 || (copyFromCaller(&byte, bytes, 1) && copyFromCaller(&byte, bytes + size - 1, 1));
}

} // namespace hxsim
