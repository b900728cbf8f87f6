// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/metrics/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hxaux::metrics {

namespace {

bool writeAll(int file, const std::string& text)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = write(file, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR)
            return false;
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    constexpr mode_t kReadableByAll = 0644; // the reader is another user
    return fchmod(file, kReadableByAll) == 0 && fsync(file) == 0;
}

// A folder that cannot be opened or synchronized only makes the change less durable.
void syncFolder(const std::string& folder)
{
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    (void)fsync(handle);
    close(handle);
}

} // namespace

std::string replaceFile(const std::string& name, const std::string& text)
{
    struct stat known {};
    if (stat(name.c_str(), &known) == 0 && !S_ISREG(known.st_mode))
        return name + " is not a regular file";
    const std::size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1);
    std::string temporary = (slash == std::string::npos ? "" : folder) + ".hxaux-metrics.XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0)
        return "no file can be created in " + folder + ": " + std::strerror(errno);
    bool done = writeAll(file, text);
    int error = errno;
    close(file);
    if (done && std::rename(temporary.c_str(), name.c_str()) != 0) {
        done = false;
        error = errno;
    }
    if (done) {
        syncFolder(folder);
        return "";
    }
    (void)unlink(temporary.c_str());
    return name + " cannot be written: " + std::strerror(error);
}

} // namespace hxaux::metrics
