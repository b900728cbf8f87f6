// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/inprocess/LinkedFile.h"

#include "simulator/file/Terminal.h"
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"

#include <cerrno>
#include <sys/socket.h>

namespace hxsim {

std::optional<Node::Shape> LinkedFile::shape(std::uint32_t request)
{
    return linked_.calls_.shape(*file_, request); // never changes once the unit is built
}

std::int64_t LinkedFile::ioctl(std::uint32_t request, Bytes in, Space out)
{
    if (linked_.over_)
        return -ENODEV;
    const LinkedUnit::Turn turn = linked_.enter();
    const std::int64_t result = linked_.calls_.ioctl(LinkedUnit::caller(), *file_, request, in, out);
    linked_.time_.wakeAll(&linked_.unit_);
    return result;
}

std::int64_t LinkedFile::read(Space out, bool nonblocking)
{
    if (linked_.over_)
        return -ENODEV;
    LinkedUnit::Turn turn = linked_.enter();
    const Time started = linked_.unit_.clock().now();
    for (Calls::Attempt attempt = Calls::Attempt::First;; attempt = Calls::Attempt::Again) {
        const Outcome outcome = linked_.calls_.read(LinkedUnit::caller(), *file_, out, started, attempt);
        if (!outcome.waits)
            return outcome.result;
        if (nonblocking)
            return -EAGAIN;
        linked_.time_.wait(turn.lock, outcome.wakeAt, &linked_.unit_, VirtualTime::Rank::Program,
                           "read from " + file_->node.path(), [this] { return linked_.calls_.readable(*file_); });
    }
}

std::int64_t LinkedFile::write(Bytes in)
{
    if (linked_.over_)
        return -ENODEV;
    LinkedUnit::Turn turn = linked_.enter();
    for (;;) {
        const Outcome outcome = linked_.calls_.write(LinkedUnit::caller(), *file_, in);
        if (!outcome.waits) {
            linked_.time_.wakeAll(&linked_.unit_);
            return outcome.result;
        }
        linked_.time_.wait(turn.lock, outcome.wakeAt, &linked_.unit_, VirtualTime::Rank::Program,
                           "write to " + file_->node.path());
    }
}

void LinkedFile::close()
{
    if (linked_.over_)
        return closeOurs();
    const LinkedUnit::Turn turn = linked_.enter();
    if (!closeIfReleased(linked_))
        linked_.lingering_.push_back(shared_from_this());
}

bool LinkedFile::closeIfReleased(LinkedUnit& linked)
{
    char byte = 0;
    if (ours_ < 0)
        return true;
    if (recv(ours_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) != 0)
        return false;
    linked.calls_.close(LinkedUnit::caller(), *file_);
    --linked.files_;
    closeOurs();
    return true;
}

void LinkedFile::closeOurs()
{
    if (ours_ >= 0)
        Descriptors::table().closeOwn(ours_);
    ours_ = -1;
}

void LinkedFile::setTerminal(const termios& settings)
{
    if (linked_.over_)
        return;
    const LinkedUnit::Turn turn = linked_.enter();
    (void)linked_.calls_.setTerminal(*file_, terminalBytes(settings));
}

std::optional<termios> LinkedFile::terminal()
{
    if (linked_.over_)
        return std::nullopt;
    const LinkedUnit::Turn turn = linked_.enter();
    return terminalFrom(file_->node.terminal);
}

void LinkedFile::flush(bool input, bool output)
{
    if (linked_.over_)
        return;
    const LinkedUnit::Turn turn = linked_.enter();
    linked_.calls_.flush(*file_, input, output);
}

int LinkedFile::drain()
{
    if (linked_.over_)
        return -ENODEV;
    LinkedUnit::Turn turn = linked_.enter();
    for (;;) {
        const Outcome outcome = linked_.calls_.drain(*file_);
        if (!outcome.waits)
            return static_cast<int>(outcome.result);
        linked_.time_.wait(turn.lock, outcome.wakeAt, &linked_.unit_, VirtualTime::Rank::Program,
                           "drain of " + file_->node.path());
    }
}

bool LinkedFile::readable()
{
    if (linked_.over_)
        return true;
    const LinkedUnit::Turn turn = linked_.enter();
    return linked_.calls_.readable(*file_);
}

} // namespace hxsim
