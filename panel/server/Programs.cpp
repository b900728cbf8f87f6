// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Programs.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace hxpanel {

namespace {

/// Starts a program in a process group of its own, with default signals, and its output in a pipe. Returns an errno.
int spawn(const std::vector<std::string>& command, int output, pid_t& child)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    const int error = posix_spawnp(&child, words[0], &actions, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

Programs::~Programs()
{
    for (Run& run : running_) {
        loop_.cancel(run.limit);
        loop_.forget(run.pipe);
        loop_.forget(run.ended);
        (void)kill(-run.child, SIGKILL);
        (void)waitpid(run.child, nullptr, 0);
        close(run.pipe);
        close(run.ended);
    }
}

bool Programs::run(std::vector<std::string> command, OnEnd onEnd)
{
    if (running_.size() < kMostRunning)
        start(command, std::move(onEnd));
    else if (waiting_.size() < kMostWaiting)
        waiting_.emplace_back(std::move(command), std::move(onEnd));
    else
        return false;
    return true;
}

void Programs::start(const std::vector<std::string>& command, OnEnd onEnd)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return onEnd({Outcome::NotStarted, std::strerror(errno)});
    (void)fcntl(ends[1], F_SETFL, 0); // the program's end
    pid_t child = -1;
    const int error = spawn(command, ends[1], child);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        return onEnd({Outcome::NotStarted, "cannot start " + command[0] + ": " + std::strerror(error)});
    }
    const Running run = running_.insert(running_.end(), {.child = child, .pipe = ends[0], .onEnd = std::move(onEnd)});
    run->ended = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    loop_.watch(run->pipe, EPOLLIN, [this, run] { read(run); });
    loop_.watch(run->ended, EPOLLIN, [this, run] { finish(run); });
    run->limit = loop_.after(kLongest, [this, run] { stop(run, Outcome::TooLong); });
}

void Programs::read(Running run)
{
    std::array<char, 16384> bytes{};
    const ssize_t got = ::read(run->pipe, bytes.data(), bytes.size());
    if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR))
        return loop_.forget(run->pipe);
    if (got < 0 || run->result.outcome != Outcome::Ended)
        return;
    run->result.output.append(bytes.data(), static_cast<std::size_t>(got));
    if (run->result.output.size() > kMostOutput)
        stop(run, Outcome::TooMuch);
}

void Programs::stop(Running run, Outcome outcome)
{
    run->result = {outcome, ""};
    (void)kill(-run->child, SIGTERM);
    loop_.cancel(run->limit);
    run->limit = loop_.after(kLast, [run] { (void)kill(-run->child, SIGKILL); });
}

/// The program has ended; what it has started ends with it.
void Programs::finish(Running run)
{
    (void)kill(-run->child, SIGKILL);
    (void)waitpid(run->child, nullptr, 0);
    for (std::size_t before = 1; before != 0 && run->result.outcome == Outcome::Ended;) {
        before = run->result.output.size();
        read(run);
        before = run->result.output.size() - before;
    }
    loop_.cancel(run->limit);
    loop_.forget(run->pipe);
    loop_.forget(run->ended);
    close(run->pipe);
    close(run->ended);
    const Run ended = std::move(*run);
    running_.erase(run);
    if (!waiting_.empty()) {
        auto [command, onEnd] = std::move(waiting_.front());
        waiting_.pop_front();
        start(command, std::move(onEnd));
    }
    ended.onEnd(ended.result);
}

} // namespace hxpanel
