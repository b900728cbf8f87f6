// SPDX-License-Identifier: LicenseRef-HXAux
// open, read, write, ioctl and their like in front of the C library's: devices and files of the unit are numbers
// outside the range of real descriptors.
#include "fuzz/Require.h"
#include "fuzz/system/Internal.h"
#include "platform/LinuxWrapper.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <map>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

namespace fuzzed {

namespace {

constexpr int kFirst = 1000000;

Input* theInput = nullptr;
std::map<int, std::string> files;
std::map<std::string, OwnFile*> ownFiles;
int nextFile = kFirst;
Driver driver;
termios terminal{};

const int kSettingsFile = memfd_create("settings", MFD_CLOEXEC);
const std::string kSettingsPath = "/proc/self/fd/" + std::to_string(kSettingsFile);

bool isOurs(int file)
{
    return file >= kFirst;
}

bool isOfTheUnit(const char* path)
{
    const std::string_view name = path;
    return theInput != nullptr && !name.starts_with("/proc/");
}

/// A block of the request's own size: sent ones are read, so that a sanitizer detects missing bytes.
int exchange(unsigned long request, unsigned char* block)
{
    const unsigned size = _IOC_SIZE(request);
    if (block == nullptr)
        return theInput->oneIn(16) ? -1 : 0;
    if (driver)
        return driver(request, block, size);
    unsigned char sum = 0;
    for (unsigned i = 0; i < size; ++i)
        sum = static_cast<unsigned char>(sum + block[i]);
    if (theInput->oneIn(16)) {
        errno = sum % 2 == 0 ? EIO : EINTR;
        return -1;
    }
    // The request for the flash's state is of the sending kind, but is answered.
    if ((_IOC_DIR(request) & _IOC_READ) != 0 || request == 0x4001004d)
        theInput->answer(block, size);
    return 0;
}

OwnFile* ownFile(int file)
{
    const auto found = ownFiles.find(files.at(file));
    return found == ownFiles.end() ? nullptr : found->second;
}

ssize_t readSome(int file, void* buffer, std::size_t size)
{
    if (OwnFile* const own = ownFile(file))
        return static_cast<ssize_t>(own->read(static_cast<unsigned char*>(buffer), size));
    if (theInput->oneIn(16)) {
        errno = EIO;
        return -1;
    }
    const std::size_t count = std::min<std::size_t>(size, theInput->answer());
    theInput->answer(buffer, count);
    return static_cast<ssize_t>(count);
}

ssize_t writeSome(int file, const void* buffer, std::size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(buffer);
    if (OwnFile* const own = ownFile(file)) {
        own->write(bytes, size);
        return static_cast<ssize_t>(size);
    }
    unsigned char sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum = static_cast<unsigned char>(sum + bytes[i]);
    if (theInput->oneIn(16)) {
        errno = sum % 2 == 0 ? EAGAIN : EIO;
        return -1;
    }
    return static_cast<ssize_t>(theInput->oneIn(16) ? size / 2 : size);
}

} // namespace

Input& input()
{
    return *theInput;
}

void begin(Input& input)
{
    theInput = &input;
    beginFiles();
    beginBoard();
    beginSemaphores();
    beginThreads();
}

void beginFiles()
{
    files.clear();
    ownFiles.clear();
    driver = {};
    writeSettings("");
}

void setDriver(Driver itsDriver)
{
    driver = std::move(itsDriver);
}

void setFile(const std::string& path, OwnFile& file)
{
    ownFiles[path] = &file;
}

int openFiles(const std::string& except)
{
    return static_cast<int>(
        std::count_if(files.begin(), files.end(), [&](const auto& file) { return !file.second.starts_with(except); }));
}

void writeSettings(const std::string& text)
{
    REQUIRE(ftruncate(kSettingsFile, 0) == 0);
    REQUIRE(pwrite(kSettingsFile, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
}

std::string settings()
{
    std::string text(static_cast<std::size_t>(lseek(kSettingsFile, 0, SEEK_END)), '\0');
    REQUIRE(pread(kSettingsFile, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    return text;
}

} // namespace fuzzed

using namespace fuzzed;

const char* Halvix::LinuxWrapper::GetSettingsFileName()
{
    return kSettingsPath.c_str();
}

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    if (!isOfTheUnit(path))
        return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
    if (theInput->oneIn(16)) {
        errno = ENOENT;
        return -1;
    }
    files[nextFile] = path;
    return nextFile++;
}

int close(int file)
{
    if (!isOurs(file))
        return static_cast<int>(syscall(SYS_close, file));
    REQUIRE(files.erase(file) == 1); // nothing is closed twice
    return 0;
}

ssize_t read(int file, void* buffer, size_t size)
{
    return isOurs(file) ? readSome(file, buffer, size) : static_cast<ssize_t>(syscall(SYS_read, file, buffer, size));
}

ssize_t write(int file, const void* buffer, size_t size)
{
    return isOurs(file) ? writeSome(file, buffer, size) : static_cast<ssize_t>(syscall(SYS_write, file, buffer, size));
}

int ioctl(int file, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (isOurs(file)) {
        REQUIRE(files.contains(file));
        return exchange(request, static_cast<unsigned char*>(argument));
    }
    return static_cast<int>(syscall(SYS_ioctl, file, request, argument));
}

int fstat(int file, struct stat* status) noexcept
{
    if (!isOurs(file))
        return fstatat(file, "", status, AT_EMPTY_PATH);
    *status = {};
    unsigned short half = 0;
    theInput->answer(&half, sizeof half);
    status->st_size = off_t{half} * 2;
    return 0;
}

int mkfifo(const char*, mode_t) noexcept
{
    if (!theInput->oneIn(4))
        return 0;
    errno = theInput->oneIn(2) ? EEXIST : EACCES;
    return -1;
}

int tcgetattr(int, termios* settings) noexcept
{
    *settings = terminal;
    return 0;
}

int tcsetattr(int, int, const termios* settings) noexcept
{
    terminal = *settings;
    return theInput->oneIn(16) ? -1 : 0;
}

int tcflush(int, int) noexcept
{
    return 0;
}
}
