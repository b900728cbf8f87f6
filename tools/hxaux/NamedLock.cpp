// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/NamedLock.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace hxaux {

namespace {

namespace fs = std::filesystem;

// One line of /proc/PID/maps.
struct Mapping {
    unsigned long long start = 0;
    unsigned long long end = 0;
    std::string device;
    std::string inode;
    std::string path;

    [[nodiscard]] bool holds(unsigned long long address) const { return address >= start && address < end; }
    [[nodiscard]] bool sameFile(const Mapping& other) const
    {
        return device == other.device && inode == other.inode && inode != "0";
    }
};

std::optional<Mapping> parsed(const std::string& line)
{
    std::istringstream words(line);
    Mapping mapping;
    std::string permissions;
    std::string offset;
    char dash = 0;
    if (!(words >> std::hex >> mapping.start >> dash >> mapping.end >> permissions >> offset >> mapping.device >>
          mapping.inode))
        return std::nullopt;
    std::getline(words >> std::ws, mapping.path);
    return mapping;
}

// Nothing when the process is gone or not accessible.
template <typename Claim>
std::optional<Mapping> findMapping(const fs::path& process, Claim claim)
{
    std::ifstream maps(process / "maps");
    for (std::string line; std::getline(maps, line);)
        if (auto mapping = parsed(line); mapping && claim(*mapping))
            return mapping;
    return std::nullopt;
}

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The system calls in which threads of 64-bit and 32-bit programs wait for a semaphore.
constexpr int kFutexCalls[] = {202, 240, 422};

// "202 0x7f0012345678 ..." of a thread in a system call; "running" and "-1 ..." of others.
bool waitsIn(const std::string& call, const Mapping& semaphore)
{
    std::istringstream words(call);
    int number = -1;
    std::string address;
    if (!(words >> number >> address) || !address.starts_with("0x"))
        return false;
    unsigned long long value = 0;
    std::from_chars(address.data() + 2, address.data() + address.size(), value, 16);
    return std::ranges::find(kFutexCalls, number) != std::end(kFutexCalls) && semaphore.holds(value);
}

// A process may end while its entries are read; the entries read until then count.
template <typename Look>
void forEachEntry(const fs::path& folder, Look look)
{
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        look(entry->path());
}

LockUser userOf(const fs::path& process, int pid, const Mapping& semaphore)
{
    LockUser user{pid, contentOf(process / "comm")};
    if (!user.program.empty() && user.program.back() == '\n')
        user.program.pop_back();
    forEachEntry(process / "task", [&](const fs::path& thread) {
        const std::string call = contentOf(thread / "syscall");
        user.visible = user.visible && !call.empty();
        user.waits = user.waits || waitsIn(call, semaphore);
    });
    return user;
}

std::optional<int> pidOf(const fs::path& process)
{
    const std::string name = process.filename();
    int pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    return error == std::errc() && end == name.data() + name.size() && pid != getpid() ? std::optional(pid)
                                                                                       : std::nullopt;
}

// A process whose memory this one may not inspect; kernel threads have no command line and do not count.
bool isHidden(const fs::path& process)
{
    std::ifstream maps(process / "maps");
    return !maps.is_open() && !contentOf(process / "cmdline").empty();
}

} // namespace

bool LockState::looksStale() const
{
    return kind == Kind::Known && value == 0 && everyoneSeen &&
           std::ranges::all_of(users, [](const LockUser& user) { return user.visible && user.waits; });
}

NamedLock::NamedLock(const std::string& name) : semaphore_(sem_open(("/" + name).c_str(), 0))
{
    if (semaphore_ == SEM_FAILED)
        error_ = errno;
}

NamedLock::~NamedLock()
{
    if (semaphore_ != SEM_FAILED)
        sem_close(semaphore_);
}

LockState NamedLock::look() const
{
    if (semaphore_ == SEM_FAILED) {
        if (error_ == ENOENT)
            return {};
        return {.kind = LockState::Kind::Refused, .error = std::strerror(error_)};
    }
    // Found through this program's own mapping: on a simulated unit the file has another name.
    const auto here = reinterpret_cast<std::uintptr_t>(semaphore_);
    const auto mine = findMapping("/proc/self", [&](const Mapping& mapping) { return mapping.holds(here); });
    struct stat file {};
    if (!mine || stat(mine->path.c_str(), &file) != 0)
        return {};
    if (file.st_size != static_cast<off_t>(sizeof(sem_t)))
        return {.kind = LockState::Kind::OtherAbi};

    LockState state{.kind = LockState::Kind::Known};
    int value = 0;
    sem_getvalue(semaphore_, &value);
    state.value = static_cast<unsigned>(std::max(value, 0));
    const bool sharedWithOthers = file.st_uid != geteuid();
    forEachEntry("/proc", [&](const fs::path& process) {
        const auto pid = pidOf(process);
        if (!pid)
            return;
        const auto theirs = findMapping(process, [&](const Mapping& mapping) { return mapping.sameFile(*mine); });
        if (theirs)
            state.users.push_back(userOf(process, *pid, *theirs));
        else if (sharedWithOthers && isHidden(process))
            state.everyoneSeen = false;
    });
    std::ranges::sort(state.users, {}, &LockUser::pid);
    return state;
}

bool NamedLock::isStale() const
{
    if (!look().looksStale())
        return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return look().looksStale();
}

void NamedLock::giveBack() const
{
    sem_post(semaphore_);
    int value = 0;
    if (sem_getvalue(semaphore_, &value) == 0 && value > 1)
        (void)sem_trywait(semaphore_); // another process released it at the same moment
}

} // namespace hxaux
