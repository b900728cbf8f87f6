// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/faults/Forked.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" void __gcov_dump() __attribute__((weak));

namespace faults {

namespace {

constexpr unsigned kPatienceSeconds = 60; // for a run of milliseconds

void redirectOutput(int errors)
{
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    close(nowhere);
}

std::string contentOf(int file)
{
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t count = pread(file, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

[[noreturn]] void live(int output, int errors, const std::function<std::string()>& action)
{
    redirectOutput(errors);
    alarm(kPatienceSeconds);
    const std::string text = action();
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(output, text.data() + done, text.size() - done);
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    if (__gcov_dump != nullptr)
        __gcov_dump();
    _exit(0);
}

} // namespace

Ended inAChild(const std::function<std::string()>& action)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {.signal = SIGPIPE};
    const int errors = memfd_create("errors", MFD_CLOEXEC);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        live(ends[1], errors, action);
    }
    close(ends[1]);
    Ended ended;
    char bytes[4096];
    for (ssize_t count; (count = read(ends[0], bytes, sizeof bytes)) > 0;)
        ended.output.append(bytes, static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    ended.errors = contentOf(errors);
    close(errors);
    ended.signal = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status) != 0 ? SIGABRT : 0;
    return ended;
}

} // namespace faults
