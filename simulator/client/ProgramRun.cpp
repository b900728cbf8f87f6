// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/ProgramRun.h"

#include "simulator/client/Follower.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kBetweenLooks{5};
constexpr std::chrono::milliseconds kBetweenChecks{500};
constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kMostOutput = 16U << 20U; ///< of a program's output

/// Starts a program in a process group of its own, whose output and error output go to a pipe; returns the pipe's end.
int spawn(const std::vector<std::string>& command, pid_t& child)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw BadText{std::string{"cannot make a pipe: "} + std::strerror(errno)};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int error = posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error == 0)
        return ends[0];
    close(ends[0]);
    throw BadText{"cannot start " + command[0] + ": " + std::strerror(error)};
}

/// The status of a child that has ended. It keeps its number until it is released, so that no other process has it.
std::optional<int> statusOf(pid_t child, int options)
{
    siginfo_t info{};
    while (waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT | options) != 0)
        if (errno != EINTR)
            return std::nullopt;
    if (info.si_pid == 0)
        return std::nullopt;
    return info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
}

/// The end of a child, to be waited for.
class ProcessEnd {
public:
    explicit ProcessEnd(pid_t child) : fd_{static_cast<int>(syscall(SYS_pidfd_open, child, 0))}
    {
        if (fd_ < 0)
            throw BadText{std::string{"cannot wait for a program: "} + std::strerror(errno)};
    }
    ProcessEnd(const ProcessEnd&) = delete;
    ProcessEnd& operator=(const ProcessEnd&) = delete;
    ~ProcessEnd() { close(fd_); }

    [[nodiscard]] bool within(std::chrono::nanoseconds time) const
    {
        return canBeRead(fd_, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(time).count()));
    }

private:
    int fd_;
};

void release(pid_t child)
{
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

/// The groups of running programs, for a signal's handler.
std::array<std::atomic<pid_t>, 64> groups{};

void note(pid_t was, pid_t now)
{
    for (std::atomic<pid_t>& group : groups)
        if (pid_t expected = was; group.compare_exchange_strong(expected, now))
            return;
}

void endWith(int signal)
{
    for (const std::atomic<pid_t>& group : groups)
        if (const pid_t program = group.load(); program != 0)
            kill(-program, SIGTERM);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

/// Passes each line of a pipe on, until its end.
template <typename Take>
void readLines(int pipe, Take take)
{
    std::array<char, 4096> bytes{};
    std::string text;
    for (ssize_t got = 0; (got = read(pipe, bytes.data(), bytes.size())) != 0;) {
        if (got < 0 && errno != EINTR)
            break;
        text.append(bytes.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
        for (std::size_t end; (end = text.find('\n')) != std::string::npos || text.size() > kLongestLine;) {
            end = std::min({end, kLongestLine, text.size()});
            take(text.substr(0, end));
            text.erase(0, end + (end < text.size() && text[end] == '\n' ? 1 : 0));
        }
    }
    if (!text.empty())
        take(text);
}

} // namespace

std::string hxSimProgram()
{
    if (const char* const named = std::getenv("HX_SIM"); named != nullptr && *named != '\0')
        return named;
    std::error_code ignored;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return self.filename() == "hx-sim" ? self.string() : "hx-sim";
}

void runHxSim(const std::vector<std::string>& words)
{
    std::vector<std::string> command{hxSimProgram()};
    command.insert(command.end(), words.begin(), words.end());
    pid_t child = -1;
    const int output = spawn(command, child);
    std::string text;
    readLines(output, [&](const std::string& line) { text += (text.empty() ? "" : "\n") + line; });
    close(output);
    const std::optional<int> status = statusOf(child, 0);
    release(child);
    if (status != 0)
        throw BadText{text.empty() ? "hx-sim " + words[0] + " failed" : text};
}

ProgramRun::ProgramRun(const std::string& unit, const std::vector<std::string>& command, Line line)
    : name_{std::filesystem::path{command.at(0)}.filename()}, unit_{unit}
{
    std::vector<std::string> whole{hxSimProgram(), "run", "--unit", unit, "--"};
    whole.insert(whole.end(), command.begin(), command.end());
    const int output = spawn(whole, child_);
    note(0, child_);
    pump_ = std::thread{[this, output, line] { pump(output, line); }};
}

void ProgramRun::keep(const std::string& text)
{
    const std::lock_guard guard{mutex_};
    output_ += text;
    output_ += '\n';
    if (output_.size() > kMostOutput)
        output_.erase(0, output_.size() - kMostOutput);
}

std::string ProgramRun::output() const
{
    const bool hasEnded = status().has_value();
    std::unique_lock lock{mutex_};
    if (hasEnded) // what it has started may still hold the pipe
        isOver_.wait_for(lock, kPatience, [this] { return hasClosed_; });
    return output_;
}

void ProgramRun::pump(int pipe, const Line& line)
{
    std::optional<Connection> connection;
    try {
        connection.emplace(unit_);
    } catch (const std::exception&) {
        connection.reset(); // the program's output must be read all the same
    }
    readLines(pipe, [&](const std::string& text) {
        keep(text);
        try {
            if (connection)
                (void)connection->command({"output", name_, text});
        } catch (const std::exception&) {
            connection.reset();
        }
        if (line)
            line(text);
    });
    close(pipe);
    const std::lock_guard guard{mutex_};
    hasClosed_ = true;
    isOver_.notify_all();
}

ProgramRun::~ProgramRun()
{
    stop();
    note(child_, 0);
    release(child_);
    pump_.join();
}

std::optional<int> ProgramRun::status() const
{
    return statusOf(child_, WNOHANG);
}

std::optional<int> ProgramRun::wait(std::chrono::nanoseconds patience) const
{
    TimePassing passing{unit_};
    const ProcessEnd hasEnded{child_};
    const auto start = std::chrono::steady_clock::now();
    std::optional<int> status;
    while (!(status = this->status())) {
        const auto left = patience - (std::chrono::steady_clock::now() - start);
        if (left <= 0ns)
            break;
        if (!hasEnded.within(std::min<std::chrono::nanoseconds>(left, kBetweenChecks)))
            passing.check();
    }
    return status;
}

void ProgramRun::stop()
{
    const TimePassing passing{unit_}; // it may sleep before it ends
    // The group, with what the program has started: it holds the pipe as well.
    kill(-child_, SIGTERM);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!status() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(kBetweenLooks);
    kill(-child_, SIGKILL);
    (void)statusOf(child_, 0);
}

void ProgramRun::stopWithThisProcess()
{
    struct sigaction action {};
    action.sa_handler = endWith;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

} // namespace hxsim
