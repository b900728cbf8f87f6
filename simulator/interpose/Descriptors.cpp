// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Descriptors.h"

#include "simulator/file/Terminal.h"
#include "simulator/interpose/Entry.h"

#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace hxsim {

namespace {

constexpr int kFirstOwnDescriptor = 400;

} // namespace

std::uint64_t socketNumber(int fd)
{
    std::uint64_t number = 0;
    socklen_t size = sizeof number;
    return getsockopt(fd, SOL_SOCKET, SO_COOKIE, &number, &size) == 0 ? number : 0;
}

int keptFlags(int flags)
{
    constexpr int kLargeFile = sizeof(long) == 8 ? 0100000 : 0; // the kernel adds it for 64-bit programs
    if ((flags & O_PATH) != 0)
        return flags & (O_PATH | O_DIRECTORY | O_NOFOLLOW);
    return kLargeFile | (flags & ~(O_CREAT | O_EXCL | O_NOCTTY | O_TRUNC | O_CLOEXEC));
}

Descriptors& Descriptors::table()
{
    // Never destroyed: programs close descriptors after the static objects are gone.
    static auto* const descriptors = [] {
        pthread_atfork([]() HXSIM_UNCHECKED_LOCKING { table().lock_.lock(); },
                       []() HXSIM_UNCHECKED_LOCKING { table().lock_.unlock(); },
                       []() HXSIM_UNCHECKED_LOCKING {
                           table().process_ = getpid();
                           table().lock_.unlock();
                       });
        return new Descriptors;
    }();
    return *descriptors;
}

/// Zeroed pages cost nothing until they are used.
Descriptors::Descriptors()
    : slots_{static_cast<std::atomic<Entry*>*>(std::calloc(kMost, sizeof(std::atomic<Entry*>)))}, process_{getpid()}
{
    if (slots_ == nullptr)
        std::abort();
}

bool Descriptors::isBorrowed() const
{
    return process_ != getpid();
}

void Descriptors::set(int fd, Entry* entry)
{
    if (fd < 0 || fd >= kMost)
        return;
    slots_[fd].store(entry, std::memory_order_release);
    if (highest_ < fd)
        highest_ = fd;
}

std::shared_ptr<Descriptor> Descriptors::find(int fd)
{
    if (!isOurs(fd))
        return nullptr;
    const KeepErrno keep;
    const std::uint64_t socket = socketNumber(fd);
    Removed stale;
    {
        const Held guard{lock_};
        if (!isOurs(fd))
            return nullptr;
        const std::shared_ptr<Descriptor>& found = slot(fd)->descriptor;
        if (found->socket == socket)
            return found;
        if (isBorrowed())
            return nullptr;
        stale = removeLocked(fd); // closed, or replaced, by a call that was not interposed
    }
    stale.release();
    return nullptr;
}

std::shared_ptr<Descriptor> Descriptors::findDevice(int fd)
{
    std::shared_ptr<Descriptor> descriptor = find(fd);
    return descriptor != nullptr && descriptor->device != nullptr ? descriptor : nullptr;
}

void Descriptors::buryDead()
{
    while (dead_ != nullptr)
        delete std::exchange(dead_, dead_->nextDead);
}

void Descriptors::add(int fd, std::shared_ptr<Descriptor> descriptor)
{
    if (isBorrowed() || fd < 0 || fd >= kMost)
        return;
    descriptor->socket = descriptor->device == nullptr ? 0 : socketNumber(fd);
    Removed stale;
    {
        const Held guard{lock_};
        buryDead();
        stale = removeLocked(fd);
        set(fd, new Entry{std::move(descriptor), 1});
    }
    stale.release();
}

void Descriptors::copy(int from, int to)
{
    if (!isOurs(from) || isBorrowed() || from == to)
        return;
    Removed stale;
    {
        const Held guard{lock_};
        if (!isOurs(from))
            return;
        stale = removeLocked(to);
        ++slot(from)->numbers;
        set(to, slot(from));
    }
    stale.release();
}

/// A descriptor that this process already has for the same file; -1: none.
int Descriptors::numberOf(std::uint64_t socket)
{
    const Held guard{lock_};
    for (int fd = 0; fd <= highest_; ++fd)
        if (isOurs(fd) && slot(fd)->descriptor->socket == socket)
            return fd;
    return -1;
}

void Descriptors::adopt(Link& link, int fd)
{
    const KeepErrno keep;
    const std::uint64_t socket = socketNumber(fd);
    if (socket == 0)
        return;
    if (const int known = numberOf(socket); known >= 0)
        return copy(known, fd);
    std::optional<Link::Adopted> adopted = link.adopt(fd);
    if (!adopted)
        return;
    auto descriptor = std::make_shared<Descriptor>(adopted->path, keptFlags(adopted->flags));
    const Link::Where where = link.locate(adopted->path);
    descriptor->text = where.text;
    descriptor->serial = where.serial;
    descriptor->device = std::move(adopted->file);
    add(fd, std::move(descriptor));
}

Descriptors::Removed Descriptors::removeLocked(int fd)
{
    if (!isOurs(fd))
        return {};
    Entry* const entry = slot(fd);
    set(fd, nullptr);
    Removed removed{entry->descriptor, --entry->numbers == 0};
    if (removed.last) {
        entry->nextDead = dead_;
        dead_ = entry;
    }
    return removed;
}

void Descriptors::announce(int fd)
{
    const std::shared_ptr<Descriptor> descriptor = isOurs(fd) && !isBorrowed() ? findDevice(fd) : nullptr;
    if (descriptor == nullptr)
        return;
    bool last = false;
    {
        const Held guard{lock_};
        last = isOurs(fd) && slot(fd)->numbers == 1;
    }
    const KeepErrno keep;
    if (last)
        descriptor->device->closing(fd);
}

Descriptors::Removed Descriptors::remove(int fd)
{
    if (!isOurs(fd) || isBorrowed())
        return {};
    const Held guard{lock_};
    return removeLocked(fd);
}

std::vector<Descriptors::Removed> Descriptors::removeAll(unsigned first, unsigned last)
{
    std::vector<Removed> all;
    if (isBorrowed())
        return all;
    const Held guard{lock_};
    for (int fd = 0; fd <= highest_; ++fd)
        if (static_cast<unsigned>(fd) >= first && static_cast<unsigned>(fd) <= last && isOurs(fd))
            all.push_back(removeLocked(fd));
    return all;
}

std::vector<unsigned> Descriptors::protectedIn(unsigned first, unsigned last) const
{
    std::vector<unsigned> all;
    for (int fd = 0; fd <= highest_; ++fd)
        if (static_cast<unsigned>(fd) >= first && static_cast<unsigned>(fd) <= last && isProtected(fd))
            all.push_back(static_cast<unsigned>(fd));
    return all;
}

int Descriptors::moveOutOfTheWay(int fd)
{
    const int moved = HXSIM_REAL(fcntl)(fd, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
    if (moved >= 0)
        HXSIM_REAL(close)(fd);
    const int kept = moved >= 0 ? moved : fd;
    set(kept, &own_);
    return kept;
}

void Descriptors::closeOwn(int fd)
{
    set(fd, nullptr);
    HXSIM_REAL(close)(fd);
}

} // namespace hxsim
