// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Command.h"

#include "testing/FileContent.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace hxtest {

namespace {

// A command that hangs ends its test, and only it.
constexpr unsigned kLongestRunSeconds = 90;

std::string searchPath()
{
    const char* path = std::getenv("PATH");
    return std::string(HXAUX_TEST_PATH) + ":" + (path != nullptr ? path : "/usr/bin:/bin");
}

[[noreturn]] void becomeShell(const std::string& command)
{
    setenv("PATH", searchPath().c_str(), 1);
    setenv("LC_ALL", "C", 1);
    alarm(kLongestRunSeconds);
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
}

int statusOf(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Reads what is available on a descriptor; false at its end.
bool readInto(int descriptor, std::string& text)
{
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count <= 0)
        return count < 0 && errno == EINTR;
    text.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

void readBoth(int out, int error, Outcome& outcome)
{
    std::array<pollfd, 2> sources{{{out, POLLIN, 0}, {error, POLLIN, 0}}};
    const std::array<std::string*, 2> texts{&outcome.output, &outcome.error};
    while (sources[0].fd >= 0 || sources[1].fd >= 0) {
        if (poll(sources.data(), sources.size(), -1) < 0)
            continue;
        for (std::size_t i = 0; i < sources.size(); ++i) {
            if (sources[i].fd >= 0 && sources[i].revents != 0 && !readInto(sources[i].fd, *texts[i]))
                sources[i].fd = -1;
        }
    }
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    return stream << "\n$ " << outcome.command << "\n-- output:\n"
                  << outcome.output << "-- error:\n"
                  << outcome.error << "-- status: " << outcome.status << "\n";
}

Outcome run(const std::string& command)
{
    Outcome outcome{.command = command};
    std::array<int, 2> out{};
    std::array<int, 2> error{};
    if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(error.data(), O_CLOEXEC) != 0)
        return outcome;
    const pid_t child = fork();
    if (child == 0) {
        const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
        dup2(nothing, STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(error[1], STDERR_FILENO);
        becomeShell(command);
    }
    close(out[1]);
    close(error[1]);
    readBoth(out[0], error[0], outcome);
    close(out[0]);
    close(error[0]);
    outcome.status = statusOf(child);
    return outcome;
}

std::string boundByPermissions()
{
    return geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search " : "";
}

Outcome runOnTerminal(const std::string& command)
{
    Outcome outcome{.command = command};
    winsize size{.ws_row = 40, .ws_col = 100, .ws_xpixel = 0, .ws_ypixel = 0};
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0)
        becomeShell(command);
    while (readInto(terminal, outcome.output)) {
    }
    close(terminal);
    outcome.status = statusOf(child);
    return outcome;
}

Unit::Unit(const std::vector<std::string>& settings, int scale)
{
    static int made = 0;
    name_ = "tool-" + std::to_string(getpid()) + "-" + std::to_string(++made);
    std::string command = "hx-sim start --scale " + std::to_string(scale) + " " + name_;
    for (const std::string& setting : settings)
        command += " --set '" + setting + "'";
    const Outcome outcome = hxtest::run(command);
    EXPECT_EQ(outcome.status, 0) << outcome;
}

Unit::~Unit()
{
    hxtest::run("hx-sim stop " + name_);
}

std::string Unit::line(const std::string& command) const
{
    return "hx-sim run --unit " + name_ + " -- " + command;
}

Outcome Unit::run(const std::string& command) const
{
    return hxtest::run(line(command));
}

Outcome Unit::runOnTerminal(const std::string& command) const
{
    return hxtest::runOnTerminal(line(command));
}

Process Unit::start(const std::vector<std::string>& words) const
{
    return program(HXAUX_PROGRAM, words);
}

Process Unit::child(const std::vector<std::string>& words) const
{
    return program(HXCHILD_PROGRAM, words);
}

Process Unit::program(const std::string& path, const std::vector<std::string>& words) const
{
    std::vector<std::string> command{HXSIM_PROGRAM, "run", "--unit", name_, "--", path};
    command.insert(command.end(), words.begin(), words.end());
    return Process{command};
}

void Unit::control(const std::string& command) const
{
    const auto space = command.find(' ');
    const Outcome outcome =
        hxtest::run("hx-sim " + command.substr(0, space) + " --unit " + name_ + command.substr(space));
    EXPECT_EQ(outcome.status, 0) << outcome;
}

std::string Unit::property(const std::string& name) const
{
    std::string text = hxtest::run("hx-sim get --unit " + name_ + " " + name).output;
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

std::string Unit::settingsFile() const
{
    const char* base = std::getenv("XDG_RUNTIME_DIR");
    const std::string folder = base != nullptr && *base != '\0' ? base : "/tmp";
    return folder + "/hx-sim-" + std::to_string(getuid()) + '/' + name_ + "/files/opt/etc/hxaux.ini";
}

std::string Unit::settings() const
{
    return fileContent(settingsFile());
}

void Unit::writeSettings(const std::string& text) const
{
    std::ofstream{settingsFile()} << text;
}

nlohmann::json jsonOf(const Outcome& outcome)
{
    nlohmann::json document = nlohmann::json::parse(outcome.output, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << "the output is not one JSON document: " << outcome;
    return document;
}

std::vector<nlohmann::json> jsonLinesOf(const Outcome& outcome)
{
    std::vector<nlohmann::json> documents;
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) {
        documents.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_FALSE(documents.back().is_discarded()) << "this line is not a JSON document: " << line;
    }
    return documents;
}

OutcomeMatcher outputIs(const std::string& text)
{
    return testing::Field("output", &Outcome::output, testing::StrEq(text));
}

OutcomeMatcher outputMatches(const std::string& pattern)
{
    return testing::Field("output", &Outcome::output, testing::ContainsRegex(pattern));
}

OutcomeMatcher errorIs(const std::string& text)
{
    return testing::Field("error", &Outcome::error, testing::StrEq(text));
}

OutcomeMatcher errorMatches(const std::string& pattern)
{
    return testing::Field("error", &Outcome::error, testing::ContainsRegex(pattern));
}

OutcomeMatcher statusIs(int status)
{
    return testing::Field("status", &Outcome::status, testing::Eq(status));
}

} // namespace hxtest
