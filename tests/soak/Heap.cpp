// SPDX-License-Identifier: LicenseRef-HXAux
// This program's malloc: the C library's, with a mark at the end of each counted block.
#include "tests/soak/Heap.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

namespace soak {

Heap Heap::now()
{
    return {}; // the sanitizer owns the heap; it reports leaks at the end of the program
}

bool heapIsExact()
{
    return false;
}

} // namespace soak

#else

#include "simulator/interpose/Entry.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <malloc.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

constexpr std::uint64_t kCounted = 0x9D1C53AE70B24F86;
constexpr std::size_t kMark = sizeof kCounted;

std::atomic<std::size_t> blocksCounted{0};
std::atomic<std::size_t> bytesCounted{0};

unsigned char* markOf(void* block)
{
    return static_cast<unsigned char*>(block) + malloc_usable_size(block) - kMark;
}

bool isCounted(void* block)
{
    std::uint64_t mark = 0;
    std::memcpy(&mark, markOf(block), kMark);
    return mark == (kCounted ^ reinterpret_cast<std::uintptr_t>(block));
}

void* marked(void* block, bool counted)
{
    if (block == nullptr)
        return nullptr;
    const std::uint64_t mark = counted ? kCounted ^ reinterpret_cast<std::uintptr_t>(block) : 0;
    std::memcpy(markOf(block), &mark, kMark);
    if (counted) {
        ++blocksCounted;
        bytesCounted += malloc_usable_size(block);
    }
    return block;
}

/// Whether it was counted; afterwards it is not.
bool unmark(void* block)
{
    if (!isCounted(block))
        return false;
    --blocksCounted;
    bytesCounted -= malloc_usable_size(block);
    std::memset(markOf(block), 0, kMark);
    return true;
}

bool isTheUnits()
{
    return hxsim::KeepErrno::isAtWork();
}

} // namespace

extern "C" {

void* malloc(std::size_t size) noexcept
{
    return marked(__libc_malloc(size + kMark), !isTheUnits());
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    if (size != 0 && count > (SIZE_MAX - kMark) / size) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = __libc_malloc(count * size + kMark);
    if (block != nullptr)
        std::memset(block, 0, malloc_usable_size(block));
    return marked(block, !isTheUnits());
}

void* realloc(void* block, std::size_t size) noexcept
{
    if (block == nullptr)
        return malloc(size);
    const bool counted = unmark(block);
    void* const moved = __libc_realloc(block, size + kMark);
    return moved != nullptr ? marked(moved, counted) : (marked(block, counted), nullptr);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return marked(__libc_memalign(alignment, size + kMark), !isTheUnits());
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    *block = memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) noexcept
{
    if (block == nullptr)
        return;
    const int kept = errno;
    (void)unmark(block);
    __libc_free(block);
    errno = kept;
}
}

namespace soak {

Heap Heap::now()
{
    return {blocksCounted, bytesCounted};
}

bool heapIsExact()
{
    return true;
}

} // namespace soak

#endif
