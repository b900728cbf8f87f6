// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/preload/Connections.h"

#include <algorithm>

#include "simulator/interpose/Descriptors.h"
#include "simulator/protocol/Channel.h"

namespace hxsim {

int Connections::reserve()
{
    const int fd = take();
    if (fd >= 0)
        giveBack(fd);
    return fd;
}

int Connections::take()
{
    if (!Descriptors::table().isBorrowed()) {
        const Held guard{lock_};
        for (Slot& slot : slots_)
            if (slot.fd >= 0 && !slot.used) {
                slot.used = true;
                return slot.fd;
            }
    }
    const int fresh = connectTo(folder_, "");
    if (fresh < 0)
        return fresh;
    const int fd = Descriptors::table().moveOutOfTheWay(fresh);
    if (!Descriptors::table().isBorrowed()) {
        const Held guard{lock_};
        const auto free = std::find_if(slots_.begin(), slots_.end(), [](const Slot& slot) { return slot.fd < 0; });
        if (free != slots_.end())
            *free = {fd, true};
    }
    return fd;
}

void Connections::giveBack(int fd)
{
    if (!Descriptors::table().isBorrowed()) {
        const Held guard{lock_};
        for (Slot& slot : slots_)
            if (slot.fd == fd) {
                slot.used = false;
                return;
            }
    }
    Descriptors::table().closeOwn(fd);
}

void Connections::discard(int fd)
{
    if (!Descriptors::table().isBorrowed()) {
        const Held guard{lock_};
        for (Slot& slot : slots_)
            if (slot.fd == fd)
                slot = {};
    }
    Descriptors::table().closeOwn(fd);
}

void Connections::closeAll()
{
    for (Slot& slot : slots_) {
        if (slot.fd >= 0)
            Descriptors::table().closeOwn(slot.fd);
        slot = {};
    }
}

} // namespace hxsim
