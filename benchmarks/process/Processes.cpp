// SPDX-License-Identifier: LicenseRef-HXAux
// Whole processes, one after the other in turn: their run time, as medians and as ratios.
//
//     hx-bench-process FOLDER         FOLDER has hx-bench-load-empty and hx-bench-load, its parent has hxaux
//
// Run it on a simulated unit (hx-sim run -- ...), so that `hxaux voltage 0` has a voltage to read.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr int kRounds = 201;

struct Program {
    std::string name;
    std::vector<std::string> words;
    std::vector<double> milliseconds = {};

    [[nodiscard]] double median()
    {
        std::sort(milliseconds.begin(), milliseconds.end());
        return milliseconds[milliseconds.size() / 2];
    }
};

int run(const std::vector<std::string>& words)
{
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = -1;
    if (posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0)
        waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    return status;
}

bool measure(Program& program)
{
    const auto start = std::chrono::steady_clock::now();
    const int status = run(program.words);
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    program.milliseconds.push_back(taken.count());
    return status == 0;
}

long memoryOf(const std::string& program)
{
    long kibibytes = -1;
    if (std::FILE* pipe = popen((program + " memory").c_str(), "r"); pipe != nullptr) {
        if (std::fscanf(pipe, "%ld", &kibibytes) != 1)
            kibibytes = -1;
        pclose(pipe);
    }
    return kibibytes;
}

} // namespace

int main(int count, char** words)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: hx-bench-process FOLDER\n");
        return 2;
    }
    const std::string folder = words[1];
    std::array<Program, 5> programs{{
        {"/bin/true", {"/bin/true"}},
        {"program with an empty object", {folder + "/hx-bench-load-empty"}},
        {"program with libhx-aux", {folder + "/hx-bench-load"}},
        {"hxaux --version", {folder + "/../hxaux", "--version"}},
        {"hxaux voltage 0", {folder + "/../hxaux", "voltage", "0"}},
    }};
    for (int round = 0; round < kRounds; ++round)
        for (Program& program : programs)
            if (!measure(program)) {
                std::fprintf(stderr, "%s failed\n", program.name.c_str());
                return 2;
            }
    for (Program& program : programs)
        std::printf("  %-28s %10.2f ms %10.2f times /bin/true\n", program.name.c_str(), program.median(),
                    program.median() / programs[0].median());
    const long empty = memoryOf(folder + "/hx-bench-load-empty");
    const long library = memoryOf(folder + "/hx-bench-load");
    std::printf("  %-28s %10ld KiB\n  %-28s %10ld KiB, %ld more\n", "memory, empty object", empty, "memory, libhx-aux",
                library, library - empty);
    return 0;
}
