// SPDX-License-Identifier: LicenseRef-HXAux
// Loading the library does nothing. This program's own allocation, file, semaphore and thread functions record their
// callers.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <link.h>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
}

namespace {

std::array<std::uintptr_t, 65536> callers;
std::atomic<std::size_t> noted{0};

void note(const void* caller)
{
    const std::size_t index = noted++;
    if (index < callers.size())
        callers[index] = reinterpret_cast<std::uintptr_t>(caller);
}

struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

int findLibrary(dl_phdr_info* info, std::size_t, void* found)
{
    if (std::strstr(info->dlpi_name, "libhx-aux.so") == nullptr)
        return 0;
    auto& range = *static_cast<Range*>(found);
    range.begin = info->dlpi_addr;
    for (int i = 0; i < info->dlpi_phnum; ++i)
        if (info->dlpi_phdr[i].p_type == PT_LOAD)
            range.end = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr + info->dlpi_phdr[i].p_memsz;
    return 1;
}

/// Number of recorded calls from inside the library.
std::size_t callsFromTheLibrary()
{
    Range range;
    dl_iterate_phdr(findLibrary, &range);
    std::size_t count = 0;
    for (std::size_t i = 0; i < noted && i < callers.size(); ++i)
        count += callers[i] >= range.begin && callers[i] < range.end ? 1U : 0U;
    return count;
}

template <class Folder>
std::ptrdiff_t entries(Folder folder)
{
    return std::distance(std::filesystem::directory_iterator{folder}, {});
}

int refuseDevices(const char* path, int flags)
{
    if (std::strncmp(path, "/dev/", 5) == 0) {
        errno = ENOENT;
        return -1;
    }
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, 0600));
}

} // namespace

void* operator new(std::size_t size)
{
    note(__builtin_return_address(0));
    if (void* block = __libc_malloc(size))
        return block;
    throw std::bad_alloc{};
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

extern "C" {

void* malloc(std::size_t size)
{
    note(__builtin_return_address(0));
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    note(__builtin_return_address(0));
    return __libc_calloc(count, size);
}

#define HX_NOTED_OPEN(name, symbol)                                                                                    \
    int name(const char* path, int flags, ...) __asm__(symbol);                                                        \
    int name(const char* path, int flags, ...)                                                                         \
    {                                                                                                                  \
        note(__builtin_return_address(0));                                                                             \
        return refuseDevices(path, flags);                                                                             \
    }
HX_NOTED_OPEN(notedOpen, "open")
HX_NOTED_OPEN(notedOpen64, "open64")
HX_NOTED_OPEN(notedOpen2, "__open_2")
HX_NOTED_OPEN(notedOpen642, "__open64_2")

#define HX_NOTED_REFUSAL(name, symbol)                                                                                 \
    int name() __asm__(symbol);                                                                                        \
    int name()                                                                                                         \
    {                                                                                                                  \
        note(__builtin_return_address(0));                                                                             \
        errno = EPERM;                                                                                                 \
        return 0;                                                                                                      \
    }
HX_NOTED_REFUSAL(notedSemOpen, "sem_open")
HX_NOTED_REFUSAL(notedPthreadCreate, "pthread_create")
HX_NOTED_REFUSAL(notedMkfifo, "mkfifo")
}

TEST(Loading, RunsNothingOfTheLibrary)
{
    const auto threads = entries("/proc/self/task");
    const auto files = entries("/proc/self/fd");

    void* library = dlopen(HX_LIBRARY, RTLD_NOW);

    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(callsFromTheLibrary(), 0U);
    EXPECT_EQ(entries("/proc/self/task"), threads);
    EXPECT_EQ(entries("/proc/self/fd"), files);
    EXPECT_EQ(dlclose(library), 0);
}

TEST(Unloading, LeavesTheLibraryMappedForItsThreads)
{
    void* library = dlopen(HX_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();

    EXPECT_EQ(dlclose(library), 0);

    EXPECT_NE(dlopen(HX_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(Loading, WouldBeNoticedIfItDid)
{
    void* library = dlopen(HX_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();

    void* adc = reinterpret_cast<void* (*)()>(dlsym(library, "GetAdc"))();

    EXPECT_EQ(callsFromTheLibrary(), 2U) << "one allocation, one device";
    reinterpret_cast<void (*)(void*)>((*static_cast<void***>(adc))[1])(adc);
}
