// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Shell.h"

#include "simulator/hx-sim/CommandLine.h"
#include "simulator/hx-sim/UnitClient.h"
#include "simulator/model/Text.h"
#include "tools/cli/Printable.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <iostream>
#include <optional>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace hxsim {

namespace {

/// While it lives, Ctrl-C in the terminal is a key for the line editor instead of a signal for the programs.
class InterruptAsKey {
public:
    explicit InterruptAsKey(bool wanted) : isSet_{wanted && tcgetattr(STDIN_FILENO, &before_) == 0}
    {
        termios settings = before_;
        settings.c_cc[VINTR] = _POSIX_VDISABLE;
        if (isSet_)
            tcsetattr(STDIN_FILENO, TCSADRAIN, &settings);
    }
    InterruptAsKey(const InterruptAsKey&) = delete;
    InterruptAsKey& operator=(const InterruptAsKey&) = delete;
    ~InterruptAsKey()
    {
        if (isSet_)
            tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
    }

private:
    termios before_{};
    bool isSet_;
};

/// The source of lines. libedit is loaded at run time when input is a terminal, so it is not a dependency.
class Lines {
public:
    explicit Lines(const std::string& unit) : prompt_{unit + "> "}
    {
        if (!isTerminal_)
            return;
        void* const editor = dlopen("libedit.so.2", RTLD_NOW);
        if (editor == nullptr)
            return;
        const auto initialize = reinterpret_cast<Initialize>(dlsym(editor, "rl_initialize"));
        const auto bind = reinterpret_cast<Bind>(dlsym(editor, "rl_parse_and_bind"));
        if (initialize != nullptr && bind != nullptr && initialize() == 0)
            clearsLine_ = bind("bind ^C em-kill-line") == 0;
        read_ = reinterpret_cast<Read>(dlsym(editor, "readline"));
        remember_ = reinterpret_cast<Remember>(dlsym(editor, "add_history"));
    }

    [[nodiscard]] bool fromTerminal() const { return isTerminal_; }
    /// Nothing at the end of input.
    std::optional<std::string> next()
    {
        if (read_ != nullptr && remember_ != nullptr)
            return edited();
        if (isTerminal_)
            std::cout << prompt_ << std::flush;
        std::string line;
        return std::getline(std::cin, line) ? std::optional{line} : std::nullopt;
    }

private:
    using Read = char* (*)(const char*);
    using Remember = int (*)(const char*);
    using Initialize = int (*)();
    using Bind = int (*)(const char*);

    std::optional<std::string> edited() const
    {
        const InterruptAsKey key{clearsLine_};
        char* const typed = read_(prompt_.c_str());
        if (typed == nullptr)
            return std::nullopt;
        std::string line = typed;
        std::free(typed);
        if (!line.empty())
            remember_(line.c_str());
        return line;
    }

    std::string prompt_;
    bool isTerminal_ = isatty(STDIN_FILENO) != 0;
    Read read_ = nullptr;
    Remember remember_ = nullptr;
    bool clearsLine_ = false;
};

/// Splits a line at blanks; quotes group words. Throws BadText for an unbalanced quote.
std::vector<std::string> split(const std::string& line)
{
    std::vector<std::string> words;
    std::string word;
    bool begun = false;
    char quote = '\0';
    for (const char c : line + ' ') {
        if (quote != '\0' ? c == quote : c == '"' || c == '\'') {
            quote = quote == '\0' ? c : '\0';
            begun = true;
        } else if (quote == '\0' && (c == ' ' || c == '\t')) {
            if (begun)
                words.push_back(word);
            word.clear();
            begun = false;
        } else {
            word += c;
            begun = true;
        }
    }
    if (quote != '\0')
        throw BadText{"a quote is left open"};
    return words;
}

/// One line in a process of its own: programs become that process, and Ctrl-C ends it alone.
int carryOut(const std::string& unit, const std::string& place, const std::vector<std::string>& words)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGINT, SIG_DFL);
        const int status = executeInShell(words, unit, place);
        std::fflush(stdout);
        _exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool runs(const std::string& unit)
{
    try {
        (void)UnitClient{unit};
        return true;
    } catch (const UnitClient::NoUnit&) {
        return false;
    }
}

int lineStatus(const std::string& unit, const std::string& place, const std::string& line)
{
    try {
        const std::vector<std::string> words = split(line);
        if (words.empty() || words[0].starts_with('#'))
            return kDone;
        return carryOut(unit, place, words);
    } catch (const BadText& bad) {
        cli::show(stderr, place + bad.what() + '\n');
        return kUsage;
    }
}

} // namespace

int runShell(const std::string& unit)
{
    if (!runs(unit))
        throw UnitClient::NoUnit{"no unit named '" + unit + "' is running"};
    Lines lines{unit};
    std::signal(SIGINT, SIG_IGN);
    int first = kDone;
    for (int number = 1;; ++number) {
        const std::optional<std::string> line = lines.next();
        if (!line || trimmed(*line) == "exit" || trimmed(*line) == "quit")
            return first;
        const std::string place = lines.fromTerminal() ? "" : "hx-sim: line " + std::to_string(number) + ": ";
        const int status = lineStatus(unit, place, *line);
        first = first == kDone ? status : first;
        if (!runs(unit)) {
            if (trimmed(*line) != "stop")
                std::fprintf(stderr, "%sthe unit has stopped\n", place.c_str());
            return first;
        }
    }
}

} // namespace hxsim
