// SPDX-License-Identifier: LicenseRef-HXAux
// The library's calls of the C library pass through the functions of these names in the program, on their way to a
// simulated unit or to the kernel. This file includes no header that declares them: it could rename them.
#include "tools/hxaux/Requests.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <string>

namespace hxaux {

namespace {

std::atomic<bool> printing = false;
constexpr int kMostFiles = 256;

struct Device {
    char path[64]; // empty: not a device, or closed
};
std::array<Device, kMostFiles> devices;

template <typename Call>
Call* next(const char* name)
{
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

// Drivers take the byte of these requests from behind the payload: the levels of the backlight and of the sensor.
constexpr std::array kByteWrites = {0x40010003UL, 0x4001004aUL};

// The payload of a request: its size is a part of the code.
std::size_t sizeOf(unsigned long request)
{
    const bool isByteWrite = std::ranges::find(kByteWrites, request & 0xFFFFFFFF) != kByteWrites.end();
    return isByteWrite ? 2 : request >> 16 & 0x3FFF;
}

std::string bytes(const void* payload, std::size_t size)
{
    constexpr std::size_t kMost = 16;
    std::string text;
    for (std::size_t i = 0; i < size && i < kMost; ++i) {
        std::array<char, 4> byte{};
        std::snprintf(byte.data(), byte.size(), " %02x", static_cast<const unsigned char*>(payload)[i]);
        text += byte.data();
    }
    return text + (size > kMost ? " ..." : "");
}

// Errors of the printing itself must not be seen by the library.
void printRequest(const std::string& line)
{
    const int error = errno;
    std::fputs((line + "\n").c_str(), stderr);
    errno = error;
}

std::string outcome(int result)
{
    return result < 0 ? std::string(": ") + std::strerror(errno) : "";
}

int opened(int descriptor, const char* path)
{
    if (descriptor >= 0 && descriptor < kMostFiles)
        std::snprintf(devices[static_cast<std::size_t>(descriptor)].path, sizeof(Device::path), "%s",
                      std::strncmp(path, "/dev/", 5) == 0 ? path : "");
    if (printing && std::strncmp(path, "/dev/", 5) == 0)
        printRequest(std::string(path) + " open" + outcome(descriptor));
    return descriptor;
}

int requested(int descriptor, unsigned long request, void* payload)
{
    const auto call = next<int(int, unsigned long, void*)>("ioctl");
    const bool known = descriptor >= 0 && descriptor < kMostFiles;
    const char* const path = known ? devices[static_cast<std::size_t>(descriptor)].path : "";
    if (!printing || *path == '\0')
        return call(descriptor, request, payload);
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "0x%08lx", request & 0xFFFFFFFF);
    const std::size_t size = payload == nullptr ? 0 : sizeOf(request);
    const std::string before = bytes(payload, size);
    const int result = call(descriptor, request, payload);
    const std::string after = bytes(payload, size);
    printRequest(std::string(path) + " " + code.data() + before + (after == before ? "" : " ->" + after) +
                 outcome(result));
    return result;
}

} // namespace

void printRequests(bool on)
{
    printing = on;
}

} // namespace hxaux

extern "C" {

// The mode is passed on even when there is none: it is then not looked at.
int open64(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const unsigned mode = va_arg(more, unsigned);
    va_end(more);
    return hxaux::opened(hxaux::next<int(const char*, int, ...)>("open64")(path, flags, mode), path);
}

int __open64_2(const char* path, int flags)
{
    return hxaux::opened(hxaux::next<int(const char*, int)>("__open64_2")(path, flags), path);
}

int ioctl(int descriptor, unsigned long request, ...)
{
    va_list more;
    va_start(more, request);
    void* const payload = va_arg(more, void*);
    va_end(more);
    return hxaux::requested(descriptor, request, payload);
}
}
