// SPDX-License-Identifier: LicenseRef-HXAux
// This program's operator new, and malloc, redirected here by the linker (--wrap).
#include "tests/faults/Allocations.h"

#include "simulator/interpose/Entry.h"
#include "tests/faults/Injector.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace {

/// Allocations of this file are neither counted nor failed.
thread_local bool inside = false;

/// The allocated blocks; allocates nothing itself.
class Blocks {
public:
    void start()
    {
        const std::lock_guard guard{lock_};
        for (void*& block : table_)
            block = nullptr;
        count_ = 0;
        on_ = true;
    }
    void stop() { on_ = false; }
    void took(void* block)
    {
        if (!on_ || block == nullptr)
            return;
        const std::lock_guard guard{lock_};
        for (std::size_t i = home(block);; i = (i + 1) % kSlots)
            if (table_[i] == nullptr || table_[i] == kGone) {
                table_[i] = block;
                ++count_;
                return;
            }
    }
    void gave(void* block)
    {
        if (!on_ || block == nullptr)
            return;
        const std::lock_guard guard{lock_};
        std::size_t i = home(block);
        for (std::size_t looked = 0; table_[i] != nullptr && looked < kSlots; i = (i + 1) % kSlots, ++looked)
            if (table_[i] == block) {
                table_[i] = kGone;
                --count_;
                return;
            }
    }
    [[nodiscard]] std::size_t count() const { return count_; }

private:
    static constexpr std::size_t kSlots = 1 << 14;
    static inline void* const kGone = reinterpret_cast<void*>(1);
    static std::size_t home(const void* block) { return (reinterpret_cast<std::uintptr_t>(block) >> 3) % kSlots; }

    std::mutex lock_;
    std::atomic<bool> on_{false};
    std::size_t count_ = 0;
    void* table_[kSlots] = {};
};

Blocks blocks;

bool isTheLibrarys()
{
    return !inside && !hxsim::KeepErrno::isAtWork();
}

/// Whether this allocation fails.
bool fails()
{
    if (!isTheLibrarys())
        return false;
    inside = true;
    const bool answer = faults::onAllocation();
    inside = false;
    return answer;
}

void* noted(void* block)
{
    if (isTheLibrarys())
        blocks.took(block);
    return block;
}

void* take(std::size_t size)
{
    return fails() ? nullptr : noted(__real_malloc(size != 0 ? size : 1));
}

void give(void* block)
{
    blocks.gave(block);
    __real_free(block);
}

} // namespace

namespace faults {

void trackMemory()
{
    blocks.start();
}

std::size_t blocksLeft()
{
    return blocks.count();
}

void stopTracking()
{
    blocks.stop();
}

} // namespace faults

extern "C" {

void* __wrap_malloc(std::size_t size)
{
    return take(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return fails() ? nullptr : noted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size)
{
    if (fails())
        return nullptr;
    blocks.gave(block);
    return noted(__real_realloc(block, size));
}

void __wrap_free(void* block)
{
    give(block);
}
}

// NOLINTBEGIN(misc-new-delete-overloads)

void* operator new(std::size_t size)
{
    if (void* block = take(size))
        return block;
    throw std::bad_alloc{};
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return take(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return take(size);
}

void operator delete(void* block) noexcept
{
    give(block);
}

void operator delete[](void* block) noexcept
{
    give(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    give(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    give(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept // if a constructor throws
{
    give(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    give(block);
}

// NOLINTEND(misc-new-delete-overloads)
