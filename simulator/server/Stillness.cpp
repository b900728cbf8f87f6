// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Stillness.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace hxsim {

namespace {

/// Looks until nothing has changed, before the caller waits for a while.
constexpr int kLooks = 3;

/// No thread is between two waits of the kernel for so long.
constexpr std::chrono::milliseconds kLongWait{500};

/// The beginning of a file of /proc; empty when there is none.
class ProcText {
public:
    explicit ProcText(int fd) { read(fd); }
    explicit ProcText(const std::string& path)
    {
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        read(fd);
        if (fd >= 0)
            ::close(fd);
    }
    [[nodiscard]] std::string_view text() const { return {bytes_.data(), size_}; }
    [[nodiscard]] bool isEmpty() const { return size_ == 0; }
    /// What follows this label; empty without it.
    [[nodiscard]] const char* after(std::string_view label) const
    {
        const std::size_t at = text().find(label);
        return at == std::string_view::npos ? "" : bytes_.data() + at + label.size();
    }

private:
    void read(int fd)
    {
        const ssize_t got = fd < 0 ? 0 : ::pread(fd, bytes_.data(), bytes_.size() - 1, 0);
        size_ = got > 0 ? static_cast<std::size_t>(got) : 0;
        bytes_[size_] = '\0';
    }

    std::array<char, 4096> bytes_;
    std::size_t size_ = 0;
};

/// Those that wait, and those that have ended and reported it.
bool isAtRest(char state)
{
    return state == 'S' || state == 'I' || state == 'Z';
}

/// The number that the kernel gave last, to whatever process or thread; empty where it does not show it.
std::string newestNumber()
{
    const ProcText load{"/proc/loadavg"};
    const std::size_t at = load.text().rfind(' ');
    return at == std::string_view::npos ? "" : std::string{load.text().substr(at + 1)};
}

void add(int process, std::vector<int>& processes)
{
    if (std::ranges::find(processes, process) == processes.end())
        processes.push_back(process);
}

void addChildren(const std::string& task, std::vector<int>& processes)
{
    const ProcText children{task + "/children"};
    for (const char* at = children.text().data(); *at != '\0';) {
        char* end = nullptr;
        add(static_cast<int>(std::strtol(at, &end, 10)), processes);
        at = *end == ' ' ? end + 1 : "";
    }
}

} // namespace

Stillness::~Stillness()
{
    forget();
}

void Stillness::close(const Watched& thread)
{
    ::close(thread.status);
    if (thread.place >= 0)
        ::close(thread.place);
}

/// Where the kernel names no place, as for another user's program: a thread that has done nothing for a while.
bool Stillness::isOffItsProcessor(const Watched& thread)
{
    const ProcText place{thread.place};
    return (!place.isEmpty() && place.text() != "0") || std::chrono::steady_clock::now() - thread.changed > kLongWait;
}

void Stillness::forget()
{
    for (const Watched& thread : threads_)
        close(thread);
    threads_.clear();
}

void Stillness::keep(int process, int thread, const std::string& task, std::vector<Watched>& before)
{
    const auto known = std::ranges::find_if(
        before, [&](const Watched& each) { return each.last.process == process && each.last.thread == thread; });
    if (known != before.end()) {
        threads_.push_back(*known);
        before.erase(known);
        return;
    }
    const int status = ::open((task + "/status").c_str(), O_RDONLY | O_CLOEXEC);
    if (status >= 0)
        threads_.push_back({{process, thread}, status, ::open((task + "/wchan").c_str(), O_RDONLY | O_CLOEXEC)});
}

/// What is known of a thread is kept.
void Stillness::find(const std::vector<int>& processes)
{
    processes_ = processes;
    std::vector<Watched> before = std::exchange(threads_, {});
    std::vector<int> all;
    for (const int process : processes)
        add(process, all);
    for (std::size_t i = 0; i < all.size(); ++i)
        findThreads(all[i], all, before);
    std::swap(before, threads_);
    forget();
    std::swap(before, threads_);
}

void Stillness::findThreads(int process, std::vector<int>& processes, std::vector<Watched>& before)
{
    const std::string tasks = "/proc/" + std::to_string(process) + "/task/";
    const std::unique_ptr<DIR, int (*)(DIR*)> folder{opendir(tasks.c_str()), &closedir};
    while (const dirent* const entry = folder == nullptr ? nullptr : readdir(folder.get())) {
        if (entry->d_name[0] == '.')
            continue;
        const std::string task = tasks + entry->d_name;
        addChildren(task, processes);
        if (process != getpid())
            keep(process, std::atoi(entry->d_name), task, before);
    }
}

Stillness::Change Stillness::look(const IsSleeper& isSleeper, std::optional<ThreadState>& running)
{
    Change change = Change::None;
    for (auto thread = threads_.begin(); thread != threads_.end();) {
        const ProcText status{thread->status};
        if (status.isEmpty()) { // its end may be what another one waits for
            close(*thread);
            running = thread->last;
            thread = threads_.erase(thread);
            change = Change::Any;
            continue;
        }
        ThreadState& last = thread->last;
        const ThreadState before = last;
        last.state = *status.after("\nState:\t");
        last.switches = std::strtoull(status.after("\nvoluntary_ctxt_switches:\t"), nullptr, 10) +
                        std::strtoull(status.after("\nnonvoluntary_ctxt_switches:\t"), nullptr, 10);
        const bool isUnchanged = isAtRest(before.state) && last.switches == before.switches;
        if (!isUnchanged)
            thread->changed = std::chrono::steady_clock::now();
        if (last.state == 'S' && !isSleeper(last.thread) && !isOffItsProcessor(*thread))
            last.state = 'R';
        if (!isAtRest(last.state) || (!isUnchanged && !isSleeper(last.thread))) {
            running = last;
            change = Change::Any;
        }
        if (!isAtRest(last.state))
            return change;
        ++thread;
    }
    return change;
}

std::optional<ThreadState> Stillness::threadThatRuns(const std::vector<int>& processes, const IsSleeper& isSleeper)
{
    std::optional<ThreadState> running;
    for (int i = 0; i < kLooks; ++i) {
        running.reset();
        // Threads make threads: while all that are known waited, no other can have come, or be about to come.
        const std::string newest = newestNumber();
        if (processes != processes_ || newest.empty() || newest != newest_)
            find(processes);
        if (look(isSleeper, running) == Change::None) {
            newest_ = newest;
            return std::nullopt;
        }
        if (!isAtRest(running->state))
            return running;
    }
    return running;
}

std::string nameOfProcess(int process)
{
    std::ifstream file{"/proc/" + std::to_string(process) + "/comm"};
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace hxsim
