// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hxsim {

/// A thread of a program as the kernel shows it.
struct ThreadState {
    int process = 0;
    int thread = 0;
    char state = '?';           ///< as in /proc: 'R' runs, 'S' waits, 'T' is stopped, ...
    std::uint64_t switches = 0; ///< how often it has left a processor
};

/// Finds out whether programs do anything by themselves: whether all threads of these processes, and of all that they
/// have started and those have started, wait. This program itself, which may have started them, does not count.
///
/// The kernel shows a thread as waiting already while it prepares to, and still while it leaves a wait; but it names
/// the place of a wait only for a thread that is off its processor. A thread that waits at two looks, and has not left
/// a processor between them, has waited all the time between them. So all of them have waited at one moment when a look
/// at all finds nothing changed since the look before. A sleeper is a thread that has told this server that it waits
/// from now on: it may have run between the two looks.
class Stillness {
public:
    using IsSleeper = std::function<bool(int thread)>;

    Stillness() = default;
    Stillness(const Stillness&) = delete;
    Stillness& operator=(const Stillness&) = delete;
    ~Stillness();

    /// Nothing when all of them wait; otherwise a thread that did not.
    std::optional<ThreadState> threadThatRuns(const std::vector<int>& processes, const IsSleeper& isSleeper);

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Watched {
        ThreadState last;
        int status; ///< open files of /proc
        int place;
        Time changed{};
    };
    enum class Change { None, Any };

    void find(const std::vector<int>& processes);
    void findThreads(int process, std::vector<int>& processes, std::vector<Watched>& before);
    void keep(int process, int thread, const std::string& task, std::vector<Watched>& before);
    static void close(const Watched& thread);
    static bool isOffItsProcessor(const Watched& thread);
    void forget();
    Change look(const IsSleeper& isSleeper, std::optional<ThreadState>& running);

    std::vector<Watched> threads_;
    std::vector<int> processes_; ///< for which they were found
    std::string newest_;         ///< the machine's newest process or thread when all of them waited last
};

/// "console", or empty for a process that is gone.
std::string nameOfProcess(int process);

} // namespace hxsim
