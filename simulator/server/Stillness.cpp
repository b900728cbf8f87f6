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

namespace hxsim {

namespace {

/// Looks until nothing has changed, before the caller waits for a while.
constexpr int kLooks = 3;

/// The begin of a file of /proc; empty when there is none.
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

/// Those that wait, and those that have ended.
bool isAtRest(char state)
{
    return state == 'S' || state == 'I' || state == 'Z' || state == 'X';
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

void Stillness::forget()
{
    for (const Watched& thread : threads_)
        ::close(thread.status);
    threads_.clear();
}

void Stillness::find(const std::vector<int>& processes)
{
    forget();
    processes_ = processes;
    newest_ = newestNumber();
    std::vector<int> all;
    for (const int process : processes)
        add(process, all);
    for (std::size_t i = 0; i < all.size(); ++i)
        findThreads(all[i], all);
}

void Stillness::findThreads(int process, std::vector<int>& processes)
{
    const std::string tasks = "/proc/" + std::to_string(process) + "/task/";
    const std::unique_ptr<DIR, int (*)(DIR*)> folder{opendir(tasks.c_str()), &closedir};
    while (const dirent* const entry = folder == nullptr ? nullptr : readdir(folder.get())) {
        if (entry->d_name[0] == '.')
            continue;
        const std::string task = tasks + entry->d_name;
        addChildren(task, processes);
        const int status = process == getpid() ? -1 : ::open((task + "/status").c_str(), O_RDONLY | O_CLOEXEC);
        if (status >= 0)
            threads_.push_back({{process, std::atoi(entry->d_name), '?', ~std::uint64_t{0}}, status});
    }
}

Stillness::Change Stillness::look(const IsSleeper& isSleeper, std::optional<ThreadState>& running)
{
    Change change = Change::None;
    for (auto thread = threads_.begin(); thread != threads_.end();) {
        const ProcText status{thread->status};
        if (status.isEmpty()) { // its end may be what another one waits for
            ::close(thread->status);
            running = thread->last;
            thread = threads_.erase(thread);
            change = Change::Any;
            continue;
        }
        ThreadState& last = thread->last;
        const std::uint64_t before = last.switches;
        last.state = *status.after("\nState:\t");
        last.switches = std::strtoull(status.after("\nvoluntary_ctxt_switches:\t"), nullptr, 10) +
                        std::strtoull(status.after("\nnonvoluntary_ctxt_switches:\t"), nullptr, 10);
        if (!isAtRest(last.state) || (last.switches != before && !isSleeper(last.thread))) {
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
    if (processes != processes_ || newest_.empty() || newestNumber() != newest_)
        find(processes);
    std::optional<ThreadState> running;
    for (int i = 0; i < kLooks; ++i) {
        running.reset();
        if (look(isSleeper, running) == Change::None && newestNumber() == newest_)
            return std::nullopt;
        if (running && !isAtRest(running->state))
            return running;
    }
    return running ? running : std::optional{ThreadState{}};
}

std::string nameOfProcess(int process)
{
    std::ifstream file{"/proc/" + std::to_string(process) + "/comm"};
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace hxsim
