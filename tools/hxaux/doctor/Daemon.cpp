// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/doctor/Doctor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hxaux::doctor {

namespace {

constexpr const char* kFifo = "/tmp/hxauxd.fifo";
constexpr const char* kPlainFile = "is a plain file, made by a shell's '>'";
constexpr const char* kStart = "sudo systemctl restart hxauxd";

// A non-blocking open for writing succeeds only while a process reads the FIFO; nothing is written.
std::string problemOf(const char* path)
{
    struct stat status {};
    if (stat(path, &status) != 0)
        return errno == ENOENT ? "missing: the daemon has not run yet" : std::strerror(errno);
    if (S_ISREG(status.st_mode))
        return kPlainFile;
    const int descriptor = open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return errno == ENXIO ? "no process reads it: the daemon does not run" : std::strerror(errno);
    close(descriptor);
    return "";
}

std::string mendOf(const std::string& problem)
{
    if (problem == std::strerror(EACCES))
        return "sudo adduser \"$USER\" hxaux   # and log in again";
    return problem == kPlainFile ? std::string("sudo rm ") + kFifo + " && " + kStart : kStart;
}

} // namespace

Findings daemon()
{
    const std::string problem = problemOf(kFifo);
    return {{kFifo, problem, problem.empty() ? "" : mendOf(problem)}};
}

} // namespace hxaux::doctor
