// SPDX-License-Identifier: LicenseRef-HXAux
// Reads and writes of several blocks, and at an offset: a character device ignores the offset.
#include "simulator/interpose/CallerMemory.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Transfers.h"

#include <climits>

#include <algorithm>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace hxsim {

namespace {

/// The program's blocks as one.
class Parts {
public:
    Parts(const iovec* parts, int count)
    {
        if (count < 0 || count > IOV_MAX) {
            error_ = EINVAL;
            return;
        }
        parts_.resize(static_cast<std::size_t>(count));
        if (!copyFromCaller(parts_.data(), parts, parts_.size() * sizeof(iovec)))
            error_ = EFAULT;
        for (const iovec& part : parts_) {
            if (error_ == 0 && part.iov_len > static_cast<std::size_t>(SSIZE_MAX) - size_)
                error_ = EINVAL;
            size_ += part.iov_len;
        }
    }

    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] std::vector<std::uint8_t> space() const
    {
        constexpr std::size_t kLargest = 65536;
        return std::vector<std::uint8_t>(std::min(size_, kLargest));
    }
    [[nodiscard]] bool gather(std::vector<std::uint8_t>& into) const
    {
        std::size_t at = 0;
        return std::all_of(parts_.begin(), parts_.end(), [&](const iovec& part) {
            const std::size_t size = std::min(part.iov_len, into.size() - at);
            at += size;
            return copyFromCaller(into.data() + (at - size), part.iov_base, size);
        });
    }
    [[nodiscard]] bool scatter(Bytes from) const
    {
        std::size_t at = 0;
        return std::all_of(parts_.begin(), parts_.end(), [&](const iovec& part) {
            const std::size_t size = std::min(part.iov_len, from.size() - at);
            at += size;
            return copyToCaller(part.iov_base, from.data() + (at - size), size);
        });
    }

private:
    std::vector<iovec> parts_;
    std::size_t size_ = 0;
    int error_ = 0;
};

std::int64_t readParts(const Descriptor& descriptor, int fd, const Parts& parts)
{
    if (parts.error() != 0)
        return -parts.error();
    std::vector<std::uint8_t> bytes = parts.space();
    const std::int64_t result = readUnit(descriptor, fd, bytes);
    const bool good = result <= 0 || parts.scatter(Bytes{bytes}.first(static_cast<std::size_t>(result)));
    return good ? result : -EFAULT;
}

std::int64_t writeParts(const Descriptor& descriptor, int fd, const Parts& parts)
{
    if (parts.error() != 0)
        return -parts.error();
    std::vector<std::uint8_t> bytes = parts.space();
    return parts.gather(bytes) ? writeUnit(descriptor, fd, bytes) : -EFAULT;
}

/// The errno of a call with an offset on this device, or 0.
int refusedAt(const Descriptor& descriptor, std::int64_t offset, int flags)
{
    if ((descriptor.flags & O_PATH) != 0)
        return EBADF;
    if (flags != 0)
        return EOPNOTSUPP;
    if (offset < 0)
        return EINVAL;
    return descriptor.serial || descriptor.text ? ESPIPE : 0;
}

/// For devices; a real file of the unit has an offset of its own.
template <typename Transfer, typename Forward>
ssize_t atOffset(int fd, std::int64_t offset, int flags, Transfer transfer, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return forward();
    KeepErrno keep;
    const int error = refusedAt(*descriptor, offset, flags);
    return static_cast<ssize_t>(keep.answer(error != 0 ? -error : transfer(*descriptor)));
}

/// In preadv2 and pwritev2 an offset of -1 means the file's own.
constexpr std::int64_t shownOffset(std::int64_t offset)
{
    return offset == -1 ? 0 : offset;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY ssize_t readv(int fd, const iovec* parts, int count)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(readv)(fd, parts, count);
    KeepErrno keep;
    return static_cast<ssize_t>(keep.answer(readParts(*descriptor, fd, {parts, count})));
}

HXSIM_ENTRY ssize_t writev(int fd, const iovec* parts, int count)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr)
        return HXSIM_REAL(writev)(fd, parts, count);
    KeepErrno keep;
    return static_cast<ssize_t>(keep.answer(writeParts(*descriptor, fd, {parts, count})));
}

#define HXSIM_PREAD(name, Offset)                                                                                      \
    HXSIM_ENTRY ssize_t name(int fd, void* buffer, std::size_t size, Offset offset)                                    \
    {                                                                                                                  \
        return atOffset(                                                                                               \
            fd, offset, 0,                                                                                             \
            [&](const Descriptor& device) {                                                                            \
                return readUnit(device, fd, {static_cast<std::uint8_t*>(buffer), size});                               \
            },                                                                                                         \
            [&] {                                                                                                      \
                using Call = ssize_t (*)(int, void*, std::size_t, Offset);                                             \
                return HXSIM_REAL_AS(Call, #name)(fd, buffer, size, offset);                                           \
            });                                                                                                        \
    }

#define HXSIM_PREAD_CHK(name, Offset)                                                                                  \
    HXSIM_ENTRY ssize_t name(int fd, void* buffer, std::size_t size, Offset offset, std::size_t space)                 \
    {                                                                                                                  \
        return atOffset(                                                                                               \
            fd, offset, 0,                                                                                             \
            [&](const Descriptor& device) {                                                                            \
                return readUnit(device, fd, {static_cast<std::uint8_t*>(buffer), std::min(size, space)});              \
            },                                                                                                         \
            [&] {                                                                                                      \
                using Call = ssize_t (*)(int, void*, std::size_t, Offset, std::size_t);                                \
                return HXSIM_REAL_AS(Call, #name)(fd, buffer, size, offset, space);                                    \
            });                                                                                                        \
    }

#define HXSIM_PWRITE(name, Offset)                                                                                     \
    HXSIM_ENTRY ssize_t name(int fd, const void* buffer, std::size_t size, Offset offset)                              \
    {                                                                                                                  \
        return atOffset(                                                                                               \
            fd, offset, 0,                                                                                             \
            [&](const Descriptor& device) {                                                                            \
                return writeUnit(device, fd, {static_cast<const std::uint8_t*>(buffer), size});                        \
            },                                                                                                         \
            [&] {                                                                                                      \
                using Call = ssize_t (*)(int, const void*, std::size_t, Offset);                                       \
                return HXSIM_REAL_AS(Call, #name)(fd, buffer, size, offset);                                           \
            });                                                                                                        \
    }

#define HXSIM_VECTOR(name, transferParts, Offset)                                                                      \
    HXSIM_ENTRY ssize_t name(int fd, const iovec* parts, int count, Offset offset)                                     \
    {                                                                                                                  \
        return atOffset(                                                                                               \
            fd, offset, 0,                                                                                             \
            [&](const Descriptor& device) {                                                                            \
                return transferParts(device, fd, {parts, count});                                                      \
            },                                                                                                         \
            [&] {                                                                                                      \
                using Call = ssize_t (*)(int, const iovec*, int, Offset);                                              \
                return HXSIM_REAL_AS(Call, #name)(fd, parts, count, offset);                                           \
            });                                                                                                        \
    }

#define HXSIM_VECTOR2(name, transferParts, Offset)                                                                     \
    HXSIM_ENTRY ssize_t name(int fd, const iovec* parts, int count, Offset offset, int flags)                          \
    {                                                                                                                  \
        return atOffset(                                                                                               \
            fd, shownOffset(offset), flags,                                                                            \
            [&](const Descriptor& device) {                                                                            \
                return transferParts(device, fd, {parts, count});                                                      \
            },                                                                                                         \
            [&] {                                                                                                      \
                using Call = ssize_t (*)(int, const iovec*, int, Offset, int);                                         \
                return HXSIM_REAL_AS(Call, #name)(fd, parts, count, offset, flags);                                    \
            });                                                                                                        \
    }

HXSIM_PREAD(pread, off_t)
HXSIM_PREAD(pread64, off64_t)
HXSIM_PREAD(__pread64, off64_t)
HXSIM_PREAD_CHK(__pread_chk, off_t)
HXSIM_PREAD_CHK(__pread64_chk, off64_t)
HXSIM_PWRITE(pwrite, off_t)
HXSIM_PWRITE(pwrite64, off64_t)
HXSIM_PWRITE(__pwrite64, off64_t)
HXSIM_VECTOR(preadv, readParts, off_t)
HXSIM_VECTOR(preadv64, readParts, off64_t)
HXSIM_VECTOR(pwritev, writeParts, off_t)
HXSIM_VECTOR(pwritev64, writeParts, off64_t)
HXSIM_VECTOR2(preadv2, readParts, off_t)
HXSIM_VECTOR2(preadv64v2, readParts, off64_t)
HXSIM_VECTOR2(pwritev2, writeParts, off_t)
HXSIM_VECTOR2(pwritev64v2, writeParts, off64_t)
