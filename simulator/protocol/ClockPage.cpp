// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/ClockPage.h"

#include "simulator/interpose/TimeValues.h"

#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hxsim {

namespace {

std::string pathIn(const std::string& folder)
{
    return folder + "/clock";
}

} // namespace

ClockPage::ClockPage(const std::string& folder)
{
    const int fd = ::open(pathIn(folder).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    void* memory = MAP_FAILED;
    if (fd >= 0 && ftruncate(fd, sizeof(ClockMemory)) == 0)
        memory = mmap(nullptr, sizeof(ClockMemory), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (fd >= 0)
        ::close(fd);
    if (memory == MAP_FAILED)
        throw std::runtime_error{"cannot create " + pathIn(folder)};
    memory_ = new (memory) ClockMemory{0, machineTime(CLOCK_REALTIME), machineTime(CLOCK_MONOTONIC)};
}

ClockPage::~ClockPage()
{
    munmap(memory_, sizeof(ClockMemory));
}

const ClockMemory* clockOfUnit(const std::string& folder)
{
    const int fd = HXSIM_REAL(open)(pathIn(folder).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    struct stat found {};
    void* memory = MAP_FAILED;
    if (fstat(fd, &found) == 0 && found.st_size == sizeof(ClockMemory))
        memory = mmap(nullptr, sizeof(ClockMemory), PROT_READ, MAP_SHARED, fd, 0);
    HXSIM_REAL(close)(fd);
    return memory == MAP_FAILED ? nullptr : static_cast<const ClockMemory*>(memory);
}

std::optional<std::int64_t> shownBy(const ClockMemory& clock, clockid_t id)
{
    const std::int64_t now = clock.now.load(std::memory_order_acquire);
    switch (id) {
    case CLOCK_REALTIME:
    case CLOCK_REALTIME_COARSE:
        return clock.realtime + now;
    case CLOCK_MONOTONIC:
    case CLOCK_MONOTONIC_RAW:
    case CLOCK_MONOTONIC_COARSE:
    case CLOCK_BOOTTIME:
        return clock.monotonic + now;
    default:
        return std::nullopt;
    }
}

} // namespace hxsim
