// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/SparseMemory.h"

#include <sys/mman.h>

namespace Halvix {

SparseMemory::~SparseMemory()
{
    if (bytes_ != nullptr)
        ::munmap(bytes_, size_);
}

bool SparseMemory::grow(std::size_t bytes)
{
    if (bytes <= size_)
        return true;
    // Mapped without a reservation: the system supplies a page of zeros at the first write to it.
    void* const grown = bytes_ == nullptr ? ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)
                                          : ::mremap(bytes_, size_, bytes, MREMAP_MAYMOVE);
    if (grown == MAP_FAILED)
        return false;
    (void)::madvise(grown, bytes, MADV_NOHUGEPAGE); // otherwise a single byte would take up two megabytes
    bytes_ = static_cast<unsigned char*>(grown);
    size_ = bytes;
    return true;
}

} // namespace Halvix
