// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/soak/Holdings.h"

#include "simulator/protocol/UnitFolder.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <thread>

namespace soak {

namespace {

constexpr std::chrono::seconds kPatience{20};

long semaphores = 0;
std::size_t ownThreads = 0;

std::size_t entriesOf(const char* folder, const std::string& start = "")
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator{folder})
        count += entry.path().filename().string().starts_with(start) ? 1 : 0;
    return count;
}

std::size_t linesOf(const char* file)
{
    std::ifstream stream{file};
    std::size_t lines = 0;
    for (std::string line; std::getline(stream, line);)
        ++lines;
    return lines;
}

std::size_t threadsNow()
{
    return entriesOf("/proc/self/task");
}

} // namespace

void startMeasurement()
{
    semaphores = 0;
    ownThreads = threadsNow();
}

void digestJournal()
{
    const auto unit = dynamic_cast<hxsim::LinkedUnit&>(*hxsim::Link::current()).unit();
    for (const hxsim::Entry& entry : unit->journal().entries())
        if (entry.error == 0)
            semaphores += entry.action.starts_with("sem_open") ? 1 : entry.action == "sem_close" ? -1 : 0;
    unit->journal().clear();
}

void waitForThreads(std::size_t lasting)
{
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (threadsNow() > ownThreads + lasting && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
}

Holdings Holdings::now(const SimulatedUnit& unit, std::size_t lasting)
{
    waitForThreads(lasting);
    const std::string prefix = hxsim::UnitFolder::semaphorePrefix(hxsim::UnitFolder::markOf(unit.folder()));
    Holdings all;
    all.heap = Heap::now(); // before the allocations of this function
    all.semaphoresOpen = semaphores;
    all.descriptors = entriesOf("/proc/self/fd");
    all.threads = threadsNow();
    all.locksOnDisk = entriesOf("/dev/shm", "sem." + prefix.substr(1));
    if (heapIsExact()) // a sanitizer maps memory as it likes
        all.mappings = linesOf("/proc/self/maps");
    return all;
}

std::ostream& operator<<(std::ostream& stream, const Holdings& holdings)
{
    return stream << holdings.descriptors << " descriptors, " << holdings.mappings << " mappings, " << holdings.threads
                  << " threads, " << holdings.semaphoresOpen << " open semaphores, " << holdings.locksOnDisk
                  << " locks on disk, " << holdings.heap.blocks << " blocks of " << holdings.heap.bytes << " bytes";
}

} // namespace soak
