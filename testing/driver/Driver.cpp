// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/driver/Driver.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace driver {

int (*unscripted)(unsigned long request, void* argument) = nullptr;

namespace {

Script* current = nullptr;

bool isDevice(const char* path)
{
    return std::strncmp(path, "/dev/", 5) == 0;
}

/// Paths of the unit, as opposed to the machine that runs the test.
bool isOfTheUnit(const char* path)
{
    return (isDevice(path) && std::strcmp(path, "/dev/null") != 0) || std::strcmp(path, "/etc/firmware.ver") == 0 ||
           std::strncmp(path, "/sys/class/net/", 15) == 0;
}

void put(std::ostream& out, const Bytes& bytes)
{
    for (const unsigned byte : bytes)
        out << std::hex << std::setw(2) << std::setfill('0') << byte << std::dec;
}

Bytes word(std::uint16_t value)
{
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
}

Bytes words(std::uint16_t first, std::uint16_t second)
{
    Bytes bytes = word(first);
    const Bytes rest = word(second);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

} // namespace

Bytes operator""_hex(const char* digits, std::size_t length)
{
    std::string text(digits, length);
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

bool operator==(const Exchange& a, const Exchange& b)
{
    return a.request == b.request && a.block == b.block && a.seen == b.seen;
}

std::ostream& operator<<(std::ostream& out, const Exchange& exchange)
{
    static const char* const kBlocks[] = {"the caller's block", "a local block", "null"};
    out << "0x" << std::hex << exchange.request << std::dec << " with " << kBlocks[static_cast<int>(exchange.block)]
        << " ";
    put(out, exchange.seen);
    return out;
}

Exchange local(std::uint32_t request, Bytes seen, Bytes answer)
{
    return {request, Block::Local, std::move(seen), std::move(answer)};
}

Exchange callers(std::uint32_t request, Bytes seen, Bytes answer)
{
    return {request, Block::Callers, std::move(seen), std::move(answer)};
}

Exchange null(std::uint32_t request)
{
    return {request, Block::Null, {}, {}};
}

Exchange readsRegister(std::uint8_t reg, std::uint16_t value)
{
    return local(0xC004003A, words(reg, 0), words(reg, value));
}

Exchange writesRegister(std::uint8_t reg, std::uint16_t value)
{
    return local(0xC004003B, words(reg, value));
}

Script::Script(std::vector<Exchange> script) : expected_{std::move(script)}
{
    current = this;
}

Script::~Script()
{
    current = nullptr;
}

void Script::callersBlock(const void* begin, std::size_t size)
{
    blockBegin_ = static_cast<const std::uint8_t*>(begin);
    blockSize_ = size;
}

void Script::failAt(std::size_t index, int error)
{
    expected_.at(index).error = error;
}

Block Script::kindOf(const void* argument) const
{
    if (argument == nullptr)
        return Block::Null;
    return argument == blockBegin_ && blockSize_ != 0 ? Block::Callers : Block::Local;
}

int Script::ioctl(unsigned long request, void* argument)
{
    const std::size_t index = made_.size();
    Exchange call{static_cast<std::uint32_t>(request), kindOf(argument), {}, {}};
    if (request != call.request)
        firstComplaint_ = "the request was sign-extended";
    if (index >= expected_.size()) {
        made_.push_back(call);
        errno = ENOTTY;
        return -1;
    }
    const Exchange& script = expected_[index];
    auto* bytes = static_cast<std::uint8_t*>(argument);
    if (bytes != nullptr)
        call.seen.assign(bytes, bytes + script.seen.size());
    made_.push_back(call);
    if (script.error != 0) {
        errno = script.error;
        return -1;
    }
    if (bytes != nullptr)
        std::copy(script.answer.begin(), script.answer.end(), bytes);
    return 0;
}

int Script::open(const char* path, int openFlags)
{
    paths_.emplace_back(path);
    flags_ = openFlags;
    if (absent_ && isDevice(path)) {
        errno = ENOENT;
        return -1;
    }
    if (!isDevice(path))
        return openFile(path);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR, 0));
}

int Script::openFile(const char* path) const
{
    const auto found = files_.find(path);
    if (found == files_.end()) {
        errno = ENOENT;
        return -1;
    }
    const int handle = memfd_create("file", 0);
    if (syscall(SYS_write, handle, found->second.data(), found->second.size()) < 0)
        return -1;
    lseek(handle, 0, SEEK_SET);
    return handle;
}

long Script::write(int handle, const void* bytes, std::size_t count)
{
    return writesAnswer_ ? *writesAnswer_ : syscall(SYS_write, handle, bytes, count);
}

std::string Script::complaint() const
{
    if (!firstComplaint_.empty())
        return firstComplaint_;
    std::ostringstream text;
    for (std::size_t i = 0; i < std::max(made_.size(), expected_.size()); ++i) {
        if (i < made_.size() && i < expected_.size() && made_[i] == expected_[i])
            continue;
        text << "call " << i << ": expected ";
        i < expected_.size() ? text << expected_[i] : text << "none";
        text << ", got ";
        i < made_.size() ? text << made_[i] : text << "none";
        break;
    }
    return text.str();
}

namespace {

int openFile(const char* path, int flags, mode_t mode)
{
    if (current != nullptr && isOfTheUnit(path))
        return current->open(path, flags);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
}

mode_t modeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

} // namespace

} // namespace driver

// The functions of the C library, under all names by which the library may call them.

extern "C" {

int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (driver::unscripted != nullptr)
        return driver::unscripted(request, argument);
    if (driver::current != nullptr)
        return driver::current->ioctl(request, argument);
    return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

#undef open
#undef open64
int hx_driver_open(const char* path, int flags, ...) __asm__("open");
int hx_driver_open64(const char* path, int flags, ...) __asm__("open64");
int hx_driver_open_2(const char* path, int flags) __asm__("__open_2");
int hx_driver_open64_2(const char* path, int flags) __asm__("__open64_2");

int hx_driver_open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = driver::modeOf(flags, arguments);
    va_end(arguments);
    return driver::openFile(path, flags, mode);
}

int hx_driver_open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = driver::modeOf(flags, arguments);
    va_end(arguments);
    return driver::openFile(path, flags, mode);
}

int hx_driver_open_2(const char* path, int flags)
{
    return driver::openFile(path, flags, 0);
}

int hx_driver_open64_2(const char* path, int flags)
{
    return driver::openFile(path, flags, 0);
}

ssize_t write(int handle, const void* bytes, size_t count)
{
    return driver::current != nullptr ? driver::current->write(handle, bytes, count)
                                      : syscall(SYS_write, handle, bytes, count);
}
}
