// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/MemoryFile.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace hxaux {

namespace {

bool writeAll(int file, const std::string& text)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t written = ::write(file, text.data() + done, text.size() - done);
        if (written <= 0)
            return false;
        done += static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

MemoryFile::MemoryFile(const std::string& text) : file_(::memfd_create("hxaux", MFD_CLOEXEC))
{
    if (file_ < 0)
        throw std::bad_alloc();
    if (!writeAll(file_, text)) {
        ::close(file_);
        throw std::bad_alloc();
    }
}

MemoryFile::~MemoryFile()
{
    ::close(file_);
}

std::string MemoryFile::name() const
{
    return "/proc/self/fd/" + std::to_string(file_);
}

} // namespace hxaux
