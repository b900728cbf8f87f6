// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/preload/PreloadedFile.h"

#include <algorithm>
#include <cerrno>

#include "simulator/file/Terminal.h"

namespace hxsim {

namespace {

/// A connection for one request. It is reused only after its answer has arrived: not after a time-out, and not when the
/// thread is cancelled or leaves by a jump.
class Question {
public:
    explicit Question(Connections& connections) : connections_{connections}, fd_{connections.take()} {}
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question()
    {
        if (fd_ < 0)
            return;
        if (answered_)
            connections_.giveBack(fd_);
        else
            connections_.discard(fd_);
    }

    [[nodiscard]] int fd() const { return fd_; }
    void answered() { answered_ = true; }

private:
    Connections& connections_;
    const int fd_;
    bool answered_ = false;
};

template <typename Message>
wire::Packed packed(const Message& message)
{
    return wire::Packed{message, PreloadedLink::caller()};
}

/// Waits without a time limit; a signal interrupts the wait.
bool waitsForTheUnit(wire::Kind kind)
{
    return kind == wire::Kind::Read || kind == wire::Kind::Drain;
}

Received receiveAnswer(int fd, wire::Kind kind, wire::Head& answer, Space out)
{
    std::size_t size = 0;
    if (!waitsForTheUnit(kind))
        return comesInTime(fd) ? receivePacket(fd, answer, out, size, true) : Received::Nothing;
    const Received received = receivePacket(fd, answer, out, size, false);
    if (received != Received::Interrupted)
        return received;
    // The host answers now, with the available bytes or with EINTR.
    sendPacket(fd, packed(wire::Cancel{}));
    return comesInTime(fd) ? receivePacket(fd, answer, out, size, true) : Received::Nothing;
}

} // namespace

std::int64_t PreloadedFile::exchange(const wire::Packed& message, Space out, wire::Head& answer)
{
    const Link::Inside inside;
    Question question{link_.connections()};
    if (question.fd() < 0)
        return link_.unreachable(-question.fd());
    if (!sendPacket(question.fd(), message))
        return errno == EFAULT ? -EFAULT : link_.unreachable(errno);
    switch (receiveAnswer(question.fd(), message.head().kind, answer, out)) {
    case Received::Packet:
        question.answered();
        return answer.value;
    case Received::Unplaced:
        question.answered();
        return -EFAULT;
    case Received::Nothing:
        return link_.unreachable(EAGAIN);
    default:
        return link_.unreachable(ECONNRESET);
    }
}

std::int64_t PreloadedFile::exchange(const wire::Packed& message, Space out)
{
    wire::Head answer{};
    return exchange(message, out, answer);
}

std::optional<Node::Shape> PreloadedFile::shape(std::uint32_t request)
{
    {
        const Held guard{link_.connections()};
        const auto known = shapes_.find(request);
        if (known != shapes_.end())
            return known->second;
    }
    wire::Head answer{};
    (void)exchange(packed(wire::Shape{number_, request}), {}, answer);
    const auto known = wire::unpacked<wire::ShapeKnown>(answer, {}).value_or(wire::ShapeKnown{});
    std::optional<Node::Shape> shape;
    if (known.takes >= 0)
        shape = Node::Shape{static_cast<std::size_t>(known.takes), static_cast<std::size_t>(known.gives)};
    const Held guard{link_.connections()};
    shapes_[request] = shape;
    return shape;
}

std::int64_t PreloadedFile::ioctl(std::uint32_t request, Bytes in, Space out)
{
    return exchange(packed(wire::Ioctl{number_, request, in}), out);
}

std::int64_t PreloadedFile::read(Space out, bool nonblocking)
{
    const Space space = out.first(std::min(out.size(), std::size_t{65536}));
    return exchange(packed(wire::Read{number_, static_cast<std::int64_t>(space.size()), nonblocking}), space);
}

std::int64_t PreloadedFile::write(Bytes in)
{
    return exchange(packed(wire::Write{number_, in.first(std::min(in.size(), std::size_t{65536}))}));
}

/// The host is notified before it sees the end, and so knows that no program has died.
void PreloadedFile::closing(int fd)
{
    (void)sendPacket(fd, packed(wire::Closing{}));
}

void PreloadedFile::close()
{
    exchange(packed(wire::Close{number_}));
}

void PreloadedFile::setTerminal(const termios& settings)
{
    exchange(packed(wire::SetTerminal{number_, terminalBytes(settings)}));
}

std::optional<termios> PreloadedFile::terminal()
{
    std::uint8_t bytes[sizeof(termios)];
    const std::int64_t size = exchange(packed(wire::GetTerminal{number_}), bytes);
    return terminalFrom(
        {bytes, size > 0 && static_cast<std::size_t>(size) <= sizeof bytes ? static_cast<std::size_t>(size) : 0});
}

void PreloadedFile::flush(bool input, bool output)
{
    exchange(packed(wire::Flush{number_, (input ? wire::Flush::kInput : 0) | (output ? wire::Flush::kOutput : 0)}));
}

int PreloadedFile::drain()
{
    return static_cast<int>(exchange(packed(wire::Drain{number_})));
}

bool PreloadedFile::readable()
{
    return exchange(packed(wire::Readable{number_})) != 0;
}

} // namespace hxsim
