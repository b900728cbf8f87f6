// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

void become(const std::vector<std::string>& command)
{
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
}

} // namespace

Process::Process(const std::vector<std::string>& command)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error{"no pipe"};
    pid_ = fork();
    if (pid_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        become(command);
    }
    close(ends[1]);
    output_ = ends[0];
}

Process::Process(Process&& other) noexcept
    : pid_{std::exchange(other.pid_, -1)}, output_{std::exchange(other.output_, -1)}, ended_{other.ended_},
      unread_{std::move(other.unread_)}
{
}

Process::~Process()
{
    kill();
    if (output_ >= 0)
        close(output_);
}

bool Process::more(std::chrono::milliseconds patience)
{
    pollfd watched{output_, POLLIN, 0};
    if (poll(&watched, 1, static_cast<int>(patience.count())) <= 0)
        return false;
    char bytes[4096];
    const ssize_t count = ::read(output_, bytes, sizeof bytes);
    ended_ = count <= 0;
    if (count > 0)
        unread_.append(bytes, static_cast<std::size_t>(count));
    return true;
}

std::string Process::line(std::chrono::milliseconds patience)
{
    std::size_t end = unread_.find('\n');
    while (end == std::string::npos && !ended_) {
        if (!more(patience))
            return "(silent)";
        end = unread_.find('\n');
    }
    if (end == std::string::npos)
        return "(ended)";
    std::string found = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    return found;
}

std::string Process::rest()
{
    while (!ended_ && more(std::chrono::seconds{120})) {
    }
    return std::exchange(unread_, "");
}

int Process::status()
{
    if (pid_ < 0)
        return -1;
    int state = 0;
    while (waitpid(pid_, &state, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

void Process::kill()
{
    if (pid_ < 0)
        return;
    ::kill(pid_, SIGKILL);
    (void)status();
}
