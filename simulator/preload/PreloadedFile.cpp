// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/preload/PreloadedFile.h"

#include "simulator/file/Terminal.h"
#include "simulator/interpose/CallerMemory.h"
#include "simulator/interpose/Real.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace hxsim {

using namespace std::chrono_literals;

namespace {

template <typename Message>
wire::Packed packed(const Message& message)
{
    return wire::Packed{message, PreloadedLink::caller()};
}

/// Of one read or write.
constexpr std::size_t kMostAtOnce = 65536;

/// Waits without a time limit; a signal interrupts the wait.
bool waitsForTheUnit(wire::Kind kind)
{
    return kind == wire::Kind::Read || kind == wire::Kind::Drain;
}

/// A request on a connection, or in its mailbox. The connection is reused only after its answer has arrived: not after
/// a time-out, and not when the thread is cancelled or leaves by a jump.
class Question {
public:
    explicit Question(Connections& connections)
        : connections_{connections}, connection_{connections.take(once_)}, fd_{connection_.fd}
    {
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question()
    {
        if (fd_ < 0)
            return;
        if (answered_)
            connections_.giveBack(connection_);
        else
            connections_.discard(connection_);
    }

    /// The connection, or -errno.
    [[nodiscard]] int fd() const { return fd_; }
    bool send(const wire::Packed& message)
    {
        if (connection_.wantsMailbox() && !share())
            return false;
        const std::chrono::nanoseconds time =
            connection_.mailbox && ClientMailbox::fits(message.bytes().size()) ? connections_.patience().now() : 0ns;
        if (time == 0ns)
            return sendPacket(fd_, message);
        const bool isWatched = connection_.mailbox.post(message.head(), message.bytes());
        if (!isWatched && !sendPacket(fd_, wire::Packed{wire::Bell{}}))
            return false;
        look(time, message.head().kind);
        return true;
    }
    Received receive(wire::Kind kind, wire::Head& answer, Space out)
    {
        const Received received = isPosted_ ? takePosted(answer, out) : receiveSent(kind, answer, out);
        answered_ = received == Received::Packet || received == Received::Unplaced;
        return received;
    }

private:
    /// Without a mailbox the connection goes on as before.
    bool share()
    {
        int descriptor = -1;
        connection_.hasAsked = true;
        if (!sendPacket(fd_, packed(wire::Share{})) || !receiveDescriptor(fd_, descriptor))
            return false;
        if (descriptor < 0)
            return true;
        connection_.mailbox = ClientMailbox{descriptor};
        HXSIM_REAL(close)(descriptor);
        return true;
    }
    void look(std::chrono::nanoseconds time, wire::Kind kind)
    {
        const ClientMailbox::Found found = connection_.mailbox.await(time);
        isPosted_ = found != ClientMailbox::Found::Elsewhere;
        if (found == ClientMailbox::Found::Here)
            connections_.patience().paid();
        else if (!waitsForTheUnit(kind))
            connections_.patience().failed();
    }
    Received takePosted(wire::Head& answer, Space out) const
    {
        answer = connection_.mailbox.head();
        const wire::Bytes bytes = connection_.mailbox.bytes();
        std::copy_n(bytes.begin(), std::min(bytes.size(), out.size()), out.begin());
        return Received::Packet;
    }
    Received receiveSent(wire::Kind kind, wire::Head& answer, Space out) const
    {
        std::size_t size = 0;
        if (!waitsForTheUnit(kind))
            return comesInTime(fd_) ? receivePacket(fd_, answer, out, size, true) : Received::Nothing;
        const Received received = receivePacket(fd_, answer, out, size, false);
        if (received != Received::Interrupted)
            return received;
        // The host answers now, with the available bytes or with EINTR.
        sendPacket(fd_, packed(wire::Cancel{}));
        return comesInTime(fd_) ? receivePacket(fd_, answer, out, size, true) : Received::Nothing;
    }

    Connections& connections_;
    Connections::Connection once_{};
    Connections::Connection& connection_;
    const int fd_;
    bool isPosted_ = false; ///< the answer is in the mailbox
    bool answered_ = false;
};

} // namespace

std::int64_t PreloadedFile::exchange(const wire::Packed& message, Space out, wire::Head& answer)
{
    const Link::Inside inside;
    Question question{link_.connections()};
    if (question.fd() < 0)
        return link_.unreachable(-question.fd());
    if (!question.send(message))
        return errno == EFAULT ? -EFAULT : link_.unreachable(errno);
    switch (question.receive(message.head().kind, answer, out)) {
    case Received::Packet:
        return answer.value;
    case Received::Unplaced:
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
    std::array<std::uint8_t, 1024> own;
    const Space space =
        out.size() <= own.size() ? Space{own}.first(out.size()) : out.first(std::min(out.size(), kMostAtOnce));
    const std::int64_t count =
        exchange(packed(wire::Read{number_, static_cast<std::int64_t>(space.size()), nonblocking}), space);
    if (count <= 0 || space.data() == out.data())
        return count;
    return copyToCaller(out.data(), space.data(), std::min(static_cast<std::size_t>(count), space.size())) ? count
                                                                                                           : -EFAULT;
}

std::int64_t PreloadedFile::write(Bytes in)
{
    std::array<std::uint8_t, 1024> own;
    if (in.size() > own.size()) // the kernel copies it
        return exchange(packed(wire::Write{number_, in.first(std::min(in.size(), kMostAtOnce))}));
    if (!copyFromCaller(own.data(), in.data(), in.size()))
        return -EFAULT;
    return exchange(packed(wire::Write{number_, wire::Bytes{own}.first(in.size())}));
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
