// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/preloaded/PreloadedFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Real.h"

namespace hxsim {

namespace {

/// Connections that the program did not ask for stay out of the way of its descriptors' numbers.
constexpr int kFirstOwnDescriptor = 400;

} // namespace

int moveOutOfTheWay(int fd)
{
    const int moved = HXSIM_REAL(fcntl)(fd, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
    if (moved >= 0)
        HXSIM_REAL(close)(fd);
    const int kept = moved >= 0 ? moved : fd;
    Descriptors::table().protect(kept);
    return kept;
}

void closeOwn(int fd)
{
    Descriptors::table().unprotect(fd);
    HXSIM_REAL(close)(fd);
}

PreloadedFile::PreloadedFile(PreloadedLink& link, std::string name, int descriptor, bool ofThisProcess)
    : link_{link}, name_{std::move(name)}, opener_{ofThisProcess ? link.forks() : -1}, forks_{link.forks()}
{
    if (ofThisProcess)
        idle_.push_back(descriptor);
}

int PreloadedFile::take()
{
    {
        const std::lock_guard guard{lock_};
        if (forks_ != link_.forks()) { // the parent goes on using these
            forks_ = link_.forks();
            idle_.clear();
            further_.clear();
        }
        if (!idle_.empty()) {
            const int fd = idle_.back();
            idle_.pop_back();
            return fd;
        }
    }
    const int fresh = connectTo(link_.folder(), "");
    if (fresh < 0)
        return -1;
    const int fd = moveOutOfTheWay(fresh);
    Packet answer;
    const bool attached =
        ask(fd, PreloadedLink::head(wire::Kind::Attach), bytesOf(name_), answer) && answer.head.value == 0;
    const std::lock_guard guard{lock_};
    if (attached)
        further_.push_back(fd);
    else
        closeOwn(fd);
    return attached ? fd : -1;
}

void PreloadedFile::giveBack(int fd)
{
    const std::lock_guard guard{lock_};
    idle_.push_back(fd);
}

std::int64_t PreloadedFile::exchange(const wire::Head& head, Bytes in, Space out, wire::Head& answer)
{
    const Link::Inside inside;
    const int fd = take();
    std::size_t size = 0;
    if (fd < 0 || !sendPacket(fd, head, in)) {
        PreloadedLink::hostIsGone();
        return -EIO;
    }
    Received received = receivePacket(fd, answer, out, size, false);
    while (received == Received::Interrupted) {
        // Only a read waits; the host answers it now, with what there is or with EINTR.
        if (head.kind == wire::Kind::Read)
            sendPacket(fd, PreloadedLink::head(wire::Kind::Cancel), {});
        received = receivePacket(fd, answer, out, size, true);
    }
    if (received == Received::Gone) {
        PreloadedLink::hostIsGone();
        return -EIO;
    }
    giveBack(fd);
    return answer.value;
}

std::int64_t PreloadedFile::exchange(const wire::Head& head, Bytes in, Space out)
{
    wire::Head answer{};
    return exchange(head, in, out, answer);
}

std::optional<Node::Shape> PreloadedFile::shape(std::uint32_t request)
{
    {
        const std::lock_guard guard{lock_};
        const auto known = shapes_.find(request);
        if (known != shapes_.end())
            return known->second;
    }
    wire::Head question = PreloadedLink::head(wire::Kind::Shape);
    question.request = request;
    wire::Head answer{};
    const std::int64_t takes = exchange(question, {}, {}, answer);
    std::optional<Node::Shape> shape;
    if (takes >= 0)
        shape = Node::Shape{std::size_t(takes), std::size_t(answer.other)};
    const std::lock_guard guard{lock_};
    shapes_[request] = shape;
    return shape;
}

std::int64_t PreloadedFile::ioctl(std::uint32_t request, Bytes in, Space out)
{
    wire::Head question = PreloadedLink::head(wire::Kind::Ioctl);
    question.request = request;
    return exchange(question, in, out);
}

std::int64_t PreloadedFile::read(Space out, bool nonblocking)
{
    const Space space = out.first(std::min(out.size(), std::size_t{65536}));
    wire::Head question = PreloadedLink::head(wire::Kind::Read, std::int64_t(space.size()));
    question.other = nonblocking ? 1 : 0;
    return exchange(question, {}, space);
}

std::int64_t PreloadedFile::write(Bytes in)
{
    return exchange(PreloadedLink::head(wire::Kind::Write), in.first(std::min(in.size(), std::size_t{65536})));
}

void PreloadedFile::close()
{
    if (opener_ == link_.forks()) // else it stays open in the process that it came from
        exchange(PreloadedLink::head(wire::Kind::Close));
    const std::lock_guard guard{lock_};
    for (const int fd : further_)
        closeOwn(fd);
    further_.clear();
    idle_.clear();
}

void PreloadedFile::setLine(const LineSettings& settings)
{
    std::uint8_t bytes[sizeof settings];
    std::memcpy(bytes, &settings, sizeof settings);
    exchange(PreloadedLink::head(wire::Kind::Line), bytes);
}

void PreloadedFile::flush(bool input, bool output)
{
    exchange(PreloadedLink::head(wire::Kind::Flush, (input ? 1 : 0) | (output ? 2 : 0)));
}

int PreloadedFile::drain()
{
    return int(exchange(PreloadedLink::head(wire::Kind::Drain)));
}

bool PreloadedFile::readable()
{
    return exchange(PreloadedLink::head(wire::Kind::Readable)) != 0;
}

} // namespace hxsim
