// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Launch.h"

#include "simulator/hx-sim/ProgramCheck.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/EventJson.h"
#include "simulator/protocol/Wire.h"
#include "simulator/server/Host.h"
#include "simulator/server/PlainFile.h"
#include "tools/cli/Printable.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace hxsim {

namespace fs = std::filesystem;

namespace {

void describe(Host& host, const UnitOptions& options)
{
    if (!options.keep.empty())
        host.running().keepIn(options.keep);
    for (const std::string& file : options.descriptions) {
        try {
            host.running().describe(contentOf(file));
        } catch (const BadText& bad) {
            throw BadText{file + ": " + bad.what()};
        }
    }
    for (const std::string& line : options.settings)
        host.running().describe(line);
}

/// The folder that holds lib/<ABI>/libhxsim-preload.so: beside this program in a build, under lib/ when installed.
std::string preloadFolder()
{
    const fs::path own = fs::read_symlink("/proc/self/exe").parent_path();
    for (const fs::path& folder : {own / "preload", own.parent_path() / "lib/hx-sim/preload"})
        if (fs::exists(folder / "lib"))
            return folder;
    throw BadText{"the backend of the simulated unit is not installed beside " + own.string()};
}

void append(const char* variable, const std::string& value)
{
    const char* const before = std::getenv(variable);
    const bool isSet = before != nullptr && *before != '\0';
    if (isSet && std::string_view{before}.find(value) != std::string_view::npos)
        return; // a program on a unit starts a unit
    setenv(variable, (isSet ? before + (':' + value) : value).c_str(), 1);
}

[[noreturn]] void become(const std::string& folder, double scale, const std::vector<std::string>& command)
{
    const std::string program = findProgram(command[0]);
    const std::string preload = preloadFolder();
    if (const std::string why = whyNotSimulated(program, preload); !why.empty())
        cli::show(stderr, "hx-sim run: " + command[0] + ' ' + why + ": it will not see the unit\n");
    append("LD_PRELOAD", preload + "/$LIB/libhxsim-preload.so");
    append("ASAN_OPTIONS", "verify_asan_link_order=0"); // the backend replaces no memory functions
    setenv(wire::kFolderVariable, folder.c_str(), 1);
    setenv(wire::kScaleVariable, std::to_string(scale).c_str(), 1);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execv(program.c_str(), arguments.data());
    const int error = errno;
    cli::show(stderr, "hx-sim run: cannot start " + command[0] + ": " + std::strerror(error) + '\n');
    _exit(error == ENOENT ? kCannotStart : kCannotStart - 1);
}

/// Signals that stop a unit or report the end of its program arrive through a descriptor, so that the loop sees them.
class Signals {
public:
    Signals()
    {
        sigemptyset(&set_);
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGCHLD})
            sigaddset(&set_, signal);
        sigset_t blocked = set_;
        for (const int signal : {SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF, SIGPIPE, SIGIO, SIGXFSZ})
            sigaddset(&blocked, signal); // a stray one stops no unit
        sigprocmask(SIG_BLOCK, &blocked, &before_);
        fd_ = signalfd(-1, &set_, SFD_CLOEXEC);
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals() { close(fd_); }

    [[nodiscard]] int fd() const { return fd_; }
    [[nodiscard]] int next() const
    {
        signalfd_siginfo info{};
        return ::read(fd_, &info, sizeof info) == sizeof info ? static_cast<int>(info.ssi_signo) : 0;
    }
    /// In the child, before it becomes the program.
    void restore() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t set_{};
    sigset_t before_{};
    int fd_ = -1;
};

int statusOf(int wait)
{
    return WIFEXITED(wait) ? WEXITSTATUS(wait) : 128 + WTERMSIG(wait);
}

std::string ownName()
{
    return "run-" + std::to_string(getpid());
}

void serve(const UnitOptions& options, int ready)
{
    const Signals signals;
    Host host{options.name, {options.scale, options.isVirtual}};
    describe(host, options);
    (void)!::write(ready, "+", 1);
    close(ready);
    host.run(signals.fd(), [&] {
        const int signal = signals.next();
        return signal == SIGTERM || signal == SIGINT || signal == SIGHUP;
    });
}

/// The unit's process: it writes "+" or an error message to the pipe.
[[noreturn]] void becomeHost(const UnitOptions& options, int ready)
{
    setsid();
    const int null = open("/dev/null", O_RDWR);
    for (int fd = 0; fd < 3; ++fd)
        dup2(null, fd);
    try {
        serve(options, ready);
    } catch (const std::exception& error) {
        const std::string text = error.what();
        (void)!::write(ready, text.data(), text.size());
        _exit(1);
    }
    _exit(0);
}

} // namespace

int runOnOwnUnit(const UnitOptions& options, const std::vector<std::string>& command)
{
    const Signals signals;
    Host host{options.name.empty() ? ownName() : options.name, {options.scale, options.isVirtual}};
    host.whenHeld([](const Event& event) { cli::show(stderr, "hx-sim: " + textOfHeld(event) + '\n'); });
    describe(host, options);
    if (options.before)
        options.before(host);
    const pid_t child = fork();
    if (child == 0) {
        signals.restore();
        become(host.folder(), options.scale, command);
    }
    if (options.started)
        options.started(child);
    if (options.endAfter > 0) {
        const auto time = std::chrono::duration_cast<Time>(std::chrono::duration<double>(options.endAfter));
        host.unit().clock().after(time, [child] { kill(child, SIGTERM); });
    }
    int status = 0;
    host.run(signals.fd(), [&] {
        const int signal = signals.next();
        if (signal == SIGTERM || signal == SIGHUP) // the terminal's own go to the program as well
            kill(child, signal);
        return signal == SIGCHLD && waitpid(child, &status, WNOHANG) == child;
    });
    if (options.afterwards)
        options.afterwards(host);
    return statusOf(status);
}

int runOnUnit(const std::string& unit, double scale, const std::vector<std::string>& command)
{
    become(UnitFolder::pathOf(unit), scale, command);
}

int runOnUnitAndWait(const std::string& unit, double scale, const std::vector<std::string>& command)
{
    const Signals signals;
    const pid_t child = fork();
    if (child == 0) {
        signals.restore();
        become(UnitFolder::pathOf(unit), scale, command);
    }
    int status = 0;
    for (;;) {
        const int signal = signals.next();
        if (signal == SIGTERM || signal == SIGHUP) // the terminal's own go to the program as well
            kill(child, signal);
        if (signal == SIGCHLD && waitpid(child, &status, WNOHANG) == child)
            return statusOf(status);
    }
}

void startUnit(const UnitOptions& options)
{
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0)
        throw BadText{"cannot make a pipe"};
    const pid_t child = fork();
    if (child == 0) {
        close(ready[0]);
        becomeHost(options, ready[1]);
    }
    close(ready[1]);
    std::string word(4096, '\0');
    const ssize_t got = ::read(ready[0], word.data(), word.size());
    close(ready[0]);
    word.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    if (word == "+")
        return;
    waitpid(child, nullptr, 0);
    throw BadText{word.empty() ? "the unit ended immediately" : word};
}

} // namespace hxsim
