// SPDX-License-Identifier: LicenseRef-HXAux
// read, write and ioctl on descriptors of the unit.
#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"

namespace hxsim {

namespace {

/// The largest block that any driver exchanges; requests beyond it would be a defect of the model.
constexpr std::size_t kLargestBlock = 4096;

bool isNonblocking(const Descriptor& descriptor)
{
    return (descriptor.flags & O_NONBLOCK) != 0;
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
    if (shape->takes > 0)
        std::memcpy(in.data(), argument, shape->takes);
    std::fill_n(out.begin(), shape->gives, std::uint8_t{0});
    const std::int64_t result = device.ioctl(request, Bytes{in}.first(shape->takes), Space{out}.first(shape->gives));
    if (result >= 0 && shape->gives > 0)
        std::memcpy(argument, out.data(), shape->gives);
    return result;
}

/// A real file of the unit: the call goes on to it, and into the journal.
std::int64_t fileWrite(const Descriptor& descriptor, int fd, Bytes bytes)
{
    Link* const link = Link::current();
    std::int64_t result = link == nullptr ? 0 : -link->fault(descriptor.path, "write");
    if (result == 0)
        result = HXSIM_REAL(write)(fd, bytes.data(), bytes.size());
    if (result == -1)
        result = -errno;
    if (link != nullptr && !descriptor.stream)
        link->note(descriptor.path, "write", result < 0 ? int(-result) : 0, bytes);
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
        link->note(descriptor.path, "read " + std::to_string(space.size()), result < 0 ? int(-result) : 0);
    return result;
}

template <typename Forward>
ssize_t readOr(int fd, void* buffer, std::size_t size, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr)
        return forward();
    KeepErrno keep;
    const Space space{static_cast<std::uint8_t*>(buffer), size};
    if (descriptor->device == nullptr)
        return ssize_t(keep.answer(fileRead(*descriptor, fd, space)));
    if ((descriptor->flags & O_ACCMODE) == O_WRONLY)
        return ssize_t(keep.answer(std::int64_t{-EBADF}));
    return ssize_t(keep.answer(descriptor->device->read(space, isNonblocking(*descriptor))));
}

template <typename Forward>
ssize_t writeOr(int fd, const void* buffer, std::size_t size, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr)
        return forward();
    KeepErrno keep;
    const Bytes bytes{static_cast<const std::uint8_t*>(buffer), size};
    if (descriptor->device == nullptr)
        return ssize_t(keep.answer(fileWrite(*descriptor, fd, bytes)));
    if ((descriptor->flags & O_ACCMODE) == O_RDONLY)
        return ssize_t(keep.answer(std::int64_t{-EBADF}));
    return ssize_t(keep.answer(descriptor->device->write(bytes)));
}

template <typename Forward>
int ioctlOr(int fd, unsigned long request, void* argument, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr || descriptor->device == nullptr)
        return forward();
    KeepErrno keep;
    return int(keep.answer(deviceIoctl(*descriptor->device, std::uint32_t(request), argument)));
}

} // namespace

} // namespace hxsim

using namespace hxsim;

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
    return writeOr(fd, buffer, size, [&] { return HXSIM_REAL(write)(fd, buffer, size); });
}

HXSIM_ENTRY ssize_t writev(int fd, const iovec* parts, int count)
{
    if (Descriptors::table().find(fd) == nullptr)
        return HXSIM_REAL(writev)(fd, parts, count);
    KeepErrno keep;
    std::vector<std::uint8_t> joined;
    for (int i = 0; i < count; ++i) {
        const auto* const from = static_cast<const std::uint8_t*>(parts[i].iov_base);
        joined.insert(joined.end(), from, from + parts[i].iov_len);
    }
    return keep.pass(write(fd, joined.data(), joined.size()));
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
