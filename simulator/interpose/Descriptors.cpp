// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Descriptors.h"

#include <algorithm>
#include <pthread.h>

namespace hxsim {

Descriptors& Descriptors::table()
{
    // Never destroyed: programs close descriptors after the static objects are gone. Another thread must not hold the
    // lock at a fork, or the child would wait for it for ever.
    static auto* const descriptors = [] {
        pthread_atfork([] { table().lock_.lock(); }, [] { table().lock_.unlock(); }, [] { table().lock_.unlock(); });
        return new Descriptors;
    }();
    return *descriptors;
}

std::shared_ptr<Descriptor> Descriptors::find(int fd)
{
    if (!isOurs(fd))
        return nullptr;
    const std::lock_guard guard{lock_};
    const auto found = open_.find(fd);
    return found == open_.end() ? nullptr : found->second;
}

void Descriptors::add(int fd, std::shared_ptr<Descriptor> descriptor)
{
    if (!isValid(fd))
        return;
    const std::lock_guard guard{lock_};
    open_[fd] = std::move(descriptor);
    ours_[std::size_t(fd)].store(true, std::memory_order_release);
}

std::shared_ptr<Descriptor> Descriptors::remove(int fd, bool& last)
{
    last = false;
    if (!isOurs(fd))
        return nullptr;
    const std::lock_guard guard{lock_};
    const auto found = open_.find(fd);
    if (found == open_.end())
        return nullptr;
    const std::shared_ptr<Descriptor> descriptor = found->second;
    open_.erase(found);
    ours_[std::size_t(fd)].store(false, std::memory_order_release);
    last = std::none_of(open_.begin(), open_.end(), [&](const auto& other) { return other.second == descriptor; });
    return descriptor;
}

} // namespace hxsim
