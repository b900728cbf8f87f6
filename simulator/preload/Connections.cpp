// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/preload/Connections.h"

#include "simulator/interpose/Descriptors.h"
#include "simulator/protocol/Channel.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace hxsim {

namespace {

bool isOff(const char* setting)
{
    return setting != nullptr && std::string_view{setting} == "off";
}

} // namespace

Connections::Connections(std::string folder)
    : folder_{std::move(folder)}, wantsMailboxes_{!isOff(std::getenv(wire::kMailboxVariable))}
{
}

int Connections::reserve()
{
    Connection once;
    Connection& connection = take(once);
    if (connection.fd < 0)
        return connection.fd;
    const int fd = connection.fd;
    giveBack(connection);
    return fd;
}

/// One that is free and has this descriptor, or any with -1 for a place; null: none.
Connections::Connection* Connections::takeKept(int fd)
{
    if (Descriptors::table().isBorrowed())
        return nullptr;
    const Held guard{lock_};
    const auto free = std::ranges::find_if(
        kept_, [&](const Connection& one) { return !one.used && (fd < 0 ? one.fd >= 0 : one.fd < 0); });
    if (free == kept_.end())
        return nullptr;
    free->used = true;
    free->user = pthread_self();
    if (fd >= 0)
        free->fd = fd;
    return free;
}

Connections::Connection& Connections::take(Connection& once)
{
    Connection* connection = takeKept(-1);
    if (connection == nullptr) {
        const int fresh = connectTo(folder_, "");
        once.fd = fresh < 0 ? fresh : Descriptors::table().moveOutOfTheWay(fresh);
        connection = fresh < 0 ? nullptr : takeKept(once.fd);
    }
    if (connection == nullptr)
        return once;
    if (wantsMailboxes_ && connection->uses < kUsesBeforeMailbox)
        ++connection->uses;
    return *connection;
}

void Connections::giveBack(Connection& connection)
{
    if (!isKept(connection))
        return Descriptors::table().closeOwn(connection.fd);
    const Held guard{lock_};
    connection.used = false;
}

void Connections::discard(Connection& connection)
{
    Descriptors::table().closeOwn(connection.fd);
    if (!isKept(connection))
        return;
    ClientMailbox mailbox; // its memory is released without the lock
    const Held guard{lock_};
    std::swap(mailbox, connection.mailbox);
    connection = {};
}

void Connections::closeAll()
{
    for (Connection& connection : kept_) {
        if (connection.fd >= 0)
            Descriptors::table().closeOwn(connection.fd);
        connection.fd = -1;
        if (!connection.used || pthread_equal(connection.user, pthread_self()) == 0)
            connection = {};
    }
}

} // namespace hxsim
