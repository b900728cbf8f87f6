// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/preload/OwnTimeWait.h"

#include "simulator/interpose/Real.h"
#include "simulator/preload/PreloadedLink.h"
#include "simulator/protocol/Channel.h"

#include <cerrno>
#include <poll.h>

namespace hxsim {

namespace {

Connections::Connection& takeOne(Connections& connections, Connections::Connection& once)
{
    const Link::Inside inside;
    return connections.take(once);
}

} // namespace

OwnTimeWait::OwnTimeWait(Connections& connections, const wire::Sleep& sleep)
    : connections_{connections}, connection_{takeOne(connections, once_)}, isWatched_{sleep.isWatched}
{
    if (connection_.fd < 0)
        error_ = -connection_.fd;
    else if (!sendPacket(connection_.fd, wire::Packed{sleep, PreloadedLink::caller()}))
        error_ = ECONNRESET;
    if (error_ != 0)
        state_ = State::Failed;
}

OwnTimeWait::~OwnTimeWait()
{
    const Link::Inside inside;
    if (connection_.fd < 0)
        return;
    if (state_ == State::Waits) {
        cancel();
        (void)receive(nullptr);
    } else if (state_ == State::Answered && isWatched_) {
        cancel(); // it has been noticed
    }
    if (state_ == State::Answered)
        connections_.giveBack(connection_);
    else
        connections_.discard(connection_);
}

void OwnTimeWait::cancel()
{
    (void)sendPacket(connection_.fd, wire::Packed{wire::Cancel{}, PreloadedLink::caller()});
}

int OwnTimeWait::receive(std::int64_t* rest)
{
    wire::Head answer{};
    std::size_t size = 0;
    const bool good =
        comesInTime(connection_.fd) && receivePacket(connection_.fd, answer, {}, size, true) == Received::Packet;
    state_ = good ? State::Answered : State::Failed;
    if (!good)
        return -ECONNRESET;
    if (answer.value < 0 && rest != nullptr)
        *rest = answer.other;
    return static_cast<int>(answer.value);
}

int OwnTimeWait::finish(std::int64_t* rest)
{
    if (state_ == State::Failed)
        return -error_;
    pollfd watched{connection_.fd, POLLIN, 0};
    if (HXSIM_REAL(poll)(&watched, 1, -1) < 0)
        cancel(); // the unit answers at once
    return receive(rest);
}

bool OwnTimeWait::isOver()
{
    pollfd watched{connection_.fd, POLLIN, 0};
    if (state_ == State::Waits && HXSIM_REAL(poll)(&watched, 1, 0) > 0)
        (void)receive(nullptr);
    return state_ != State::Waits;
}

} // namespace hxsim
