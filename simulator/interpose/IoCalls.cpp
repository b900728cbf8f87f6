// SPDX-License-Identifier: LicenseRef-HXAux
// read, write and ioctl on descriptors of the unit.
#include "simulator/interpose/CallerMemory.h"
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Transfers.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace hxsim {

namespace {

/// The largest block that any driver exchanges; requests beyond it would be a defect of the model.
constexpr std::size_t kLargestBlock = 4096;

/// Upper limit of one call; a short count is allowed.
constexpr std::size_t kLargestTransfer = 65536;

bool isNonblocking(int fd)
{
    return (HXSIM_REAL(fcntl)(fd, F_GETFL) & O_NONBLOCK) != 0;
}

std::int64_t deviceIoctl(DeviceFile& device, std::uint32_t request, void* argument)
{
    const std::optional<Node::Shape> shape = device.shape(request);
    if (!shape)
        return device.ioctl(request, {}, {}); // refused, and recorded
    if (shape->takes > kLargestBlock || shape->gives > kLargestBlock)
        return -EINVAL;
    if (argument == nullptr && shape->takes + shape->gives > 0)
        return -EFAULT;
    std::array<std::uint8_t, kLargestBlock> in;
    std::array<std::uint8_t, kLargestBlock> out;
    if (!copyFromCaller(in.data(), argument, shape->takes))
        return -EFAULT;
    std::fill_n(out.begin(), shape->gives, std::uint8_t{0});
    const std::int64_t result = device.ioctl(request, Bytes{in}.first(shape->takes), Space{out}.first(shape->gives));
    if (result >= 0 && !copyToCaller(argument, out.data(), shape->gives))
        return -EFAULT;
    return result;
}

/// A real file of the unit: the call is forwarded to it, and recorded in the journal.
std::int64_t fileWrite(const Descriptor& descriptor, int fd, Bytes bytes)
{
    Link* const link = Link::current();
    std::int64_t result = link == nullptr ? 0 : -link->fault(descriptor.path, "write");
    if (result == 0)
        result = HXSIM_REAL(write)(fd, bytes.data(), bytes.size());
    if (result == -1)
        result = -errno;
    if (link != nullptr && !descriptor.stream)
        link->note(descriptor.path, "write", result < 0 ? static_cast<int>(-result) : 0, bytes);
    return result;
}

std::int64_t fileRead(const Descriptor& descriptor, int fd, Space space)
{
    Link* const link = Link::current();
    std::int64_t result = link == nullptr ? 0 : -link->fault(descriptor.path, "read");
    if (result == 0)
        result = HXSIM_REAL(read)(fd, space.data(), space.size());
    if (result == -1)
        result = -errno;
    if (link != nullptr && !descriptor.stream)
        link->note(descriptor.path, "read " + std::to_string(space.size()), result < 0 ? static_cast<int>(-result) : 0);
    return result;
}

/// Requests that the kernel handles for every file, whatever its driver.
bool isOfEveryFile(unsigned long request)
{
    return request == FIOCLEX || request == FIONCLEX || request == FIONBIO;
}

template <typename Forward>
int ioctlOr(int fd, unsigned long request, void* argument, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr || (isOfEveryFile(request) && (descriptor->flags & O_PATH) == 0))
        return forward();
    KeepErrno keep;
    if ((descriptor->flags & O_PATH) != 0)
        return static_cast<int>(keep.answer(-EBADF));
    return static_cast<int>(
        keep.answer(deviceIoctl(*descriptor->device, static_cast<std::uint32_t>(request), argument)));
}

} // namespace

std::int64_t readUnit(const Descriptor& descriptor, int fd, Space space)
{
    if (descriptor.device == nullptr)
        return fileRead(descriptor, fd, space);
    if ((descriptor.flags & O_PATH) != 0 || (descriptor.flags & O_ACCMODE & ~O_RDWR) != 0)
        return -EBADF;
    if (!isReachable(space.data(), space.size()))
        return -EFAULT;
    return descriptor.device->read(space.first(std::min(space.size(), kLargestTransfer)), isNonblocking(fd));
}

std::int64_t writeUnit(const Descriptor& descriptor, int fd, Bytes bytes)
{
    if (descriptor.device == nullptr)
        return fileWrite(descriptor, fd, bytes);
    const int mode = descriptor.flags & O_ACCMODE;
    if ((descriptor.flags & O_PATH) != 0 || (mode != O_WRONLY && mode != O_RDWR))
        return -EBADF;
    if (!isReachable(bytes.data(), bytes.size()))
        return -EFAULT;
    return descriptor.device->write(bytes.first(std::min(bytes.size(), kLargestTransfer)));
}

} // namespace hxsim

using namespace hxsim;

namespace {

template <typename Forward>
ssize_t readOr(int fd, void* buffer, std::size_t size, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr)
        return forward();
    KeepErrno keep;
    return static_cast<ssize_t>(keep.answer(readUnit(*descriptor, fd, {static_cast<std::uint8_t*>(buffer), size})));
}

} // namespace

HXSIM_ENTRY ssize_t read(int fd, void* buffer, std::size_t size)
{
    return readOr(fd, buffer, size, [&] { return HXSIM_REAL(read)(fd, buffer, size); });
}

HXSIM_ENTRY ssize_t __read_chk(int fd, void* buffer, std::size_t size, std::size_t space)
{
    return readOr(fd, buffer, std::min(size, space), [&] {
        return HXSIM_REAL_AS(ssize_t(*)(int, void*, std::size_t, std::size_t), "__read_chk")(fd, buffer, size, space);
    });
}

HXSIM_ENTRY ssize_t write(int fd, const void* buffer, std::size_t size)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(write)(fd, buffer, size);
    KeepErrno keep;
    return static_cast<ssize_t>(
        keep.answer(writeUnit(*descriptor, fd, {static_cast<const std::uint8_t*>(buffer), size})));
}

#define HXSIM_IOCTL(name)                                                                                              \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, request);                                                                                  \
        void* const argument = va_arg(arguments, void*);                                                               \
        va_end(arguments);                                                                                             \
        return ioctlOr(fd, request, argument,                                                                          \
                       [&] { return HXSIM_REAL_AS(int (*)(int, unsigned long, ...), name)(fd, request, argument); });  \
    }

HXSIM_ENTRY int ioctl(int fd, unsigned long request, ...) noexcept HXSIM_IOCTL("ioctl")
#if defined(__i386__)
    HXSIM_ENTRY int __ioctl_time64(int fd, unsigned long request, ...) HXSIM_IOCTL("__ioctl_time64")
#endif
