// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Host.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "simulator/server/HostCommands.h"

namespace hxsim {

namespace {

Caller callerOf(const Packet& packet)
{
    return {packet.head.process, packet.head.thread};
}

std::vector<std::string> split(const std::string& text, std::size_t most)
{
    std::vector<std::string> parts{""};
    for (const char c : text) {
        if (c == '\0' && parts.size() < most)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

/// An error of one client does not affect the others.
template <typename Work>
void guarded(Work work)
{
    try {
        work();
    } catch (const std::exception&) {
        return; // a waiting client gets the answer inside the guard of its own request
    }
}

/// More than a process records between two calls; one that floods does not delay the others.
constexpr int kMostNotes = 10000;

/// After this time a server without a free descriptor tries to accept again.
constexpr double kAcceptAgainNanoseconds = 50e6;

/// Maximum number of bytes of a read in one answer.
constexpr std::size_t kMostRead = wire::kLargestPacket - sizeof(wire::Head);

int listenAt(const std::string& path)
{
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error{"the path of the unit's socket is too long: " + path};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(fd, 128) != 0)
        throw std::runtime_error{"cannot listen at " + path};
    return fd;
}

} // namespace

Host::Host(const std::string& unit, double scale)
    : scale_{scale}, folder_{unit}, listener_{listenAt(folder_.path() + "/socket")}, buffer_(2 * wire::kLargestPacket)
{
    files_ = folder_.path() + "/files";
    semaphores_ = UnitFolder::markOf(folder_.path());
    (void)folder_.fileOf("/opt/etc/hxaux.ini"); // its directory must exist
}

Host::~Host()
{
    for (const auto& [fd, connection] : connections_)
        ::close(fd);
    ::close(listener_);
}

Time Host::modelNow() const
{
    const std::chrono::duration<double, std::nano> real = std::chrono::steady_clock::now() - start_;
    return Time{static_cast<std::int64_t>(real.count() * scale_)};
}

void Host::advance()
{
    unit_.clock().advanceTo(modelNow());
}

std::optional<timespec> Host::timeToNextDeadline()
{
    std::optional<Time> next = unit_.clock().nextDeadline();
    for (const auto& [fd, connection] : connections_)
        if (connection.drains)
            return timespec{0, 1'000'000};
    for (const auto& [fd, connection] : connections_)
        if (connection.read && connection.read->wakeAt && (!next || *connection.read->wakeAt < *next))
            next = connection.read->wakeAt;
    // Any process of the machine may have freed a descriptor.
    const auto nextLook = modelNow() + Time{static_cast<std::int64_t>(kAcceptAgainNanoseconds * scale_)};
    if (full_ && (!next || nextLook < *next))
        next = nextLook;
    if (!next)
        return std::nullopt;
    // To the nanosecond: a bus transfer ends when it ends, not at the next millisecond.
    const double real = std::clamp(static_cast<double>((*next - modelNow()).count()) / scale_, 0.0, 60e9);
    const auto nanoseconds = static_cast<std::int64_t>(std::ceil(real));
    return timespec{time_t(nanoseconds / 1'000'000'000), static_cast<long>(nanoseconds % 1'000'000'000)};
}

void Host::run(int alsoWatched, const std::function<bool()>& seen)
{
    std::vector<pollfd> watched;
    while (!stopping_) {
        watched.assign({{full_ ? -1 : listener_, POLLIN, 0}, {alsoWatched, POLLIN, 0}});
        for (const auto& [fd, connection] : connections_)
            watched.push_back({fd, POLLIN, 0});
        const std::optional<timespec> patience = timeToNextDeadline();
        if (::ppoll(watched.data(), watched.size(), patience ? &*patience : nullptr, nullptr) < 0 && errno != EINTR)
            throw std::runtime_error{"poll failed"};
        full_ = false;
        advance();
        for (std::size_t i = 2; i < watched.size(); ++i)
            if (watched[i].revents != 0)
                guarded([&] { receive(watched[i].fd); });
        if (watched[0].revents != 0)
            accept();
        if (waiting_)
            guarded([&] { retryWaiting(); });
        guarded([&] { keep(); });
        if (watched[1].revents != 0 && seen())
            break;
    }
}

void Host::accept()
{
    // Never waits for a program: one that does not read loses its messages.
    const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd >= 0)
        connections_.emplace(fd, Connection{fd});
    full_ = fd < 0 && (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS);
}

void Host::receive(int fd)
{
    const auto found = connections_.find(fd);
    if (found == connections_.end())
        return;
    Packet packet;
    std::size_t size = 0;
    const Received received = receivePacket(fd, packet.head, buffer_, size, true);
    if (received == Received::Gone)
        drop(fd);
    if (received != Received::Packet)
        return; // an announced message may have been consumed meanwhile
    if (size > wire::kLargestPacket)
        return drop(fd); // not a program of this unit
    packet.bytes.assign(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(size));
    handleGuarded(found->second, packet);
}

/// Whatever a client sends, only its own request can fail.
void Host::handleGuarded(Connection& connection, const Packet& packet)
{
    try {
        handle(connection, packet);
    } catch (const std::exception& error) {
        connection.read.reset();
        if (packet.head.kind == wire::Kind::Command)
            return answer(connection, 1, bytesOf(error.what()));
        answer(connection, -EIO);
    }
}

void Host::drop(int fd)
{
    const auto found = connections_.find(fd);
    if (found == connections_.end())
        return;
    const Connection connection = std::move(found->second);
    connections_.erase(found);
    ::close(fd);
    if (fd == recorderOwner_)
        (void)endRecord(fd);
    if (connection.process != 0 && controls_[connection.process] == fd)
        controls_.erase(connection.process);
    if (connection.opened == nullptr)
        return;
    const File& file = *connection.opened;
    openFiles_.erase(file.number);
    const Calls::Closing closing = file.closer ? Calls::Closing::ByProgram : Calls::Closing::WithProgram;
    calls_->close(file.closer.value_or(file.opener), *file.open, closing);
}

void Host::takeNotesOf(const Connection& asking, int process)
{
    const auto control = controls_.find(process);
    // Rejects a client that mixes the two kinds of connections or claims another identity.
    if (control == controls_.end() || control->second == asking.fd || takingNotes_)
        return;
    takingNotes_ = true;
    std::uint8_t probe = 0;
    for (int i = 0; i < kMostNotes && controls_.contains(process); ++i) {
        if (recv(control->second, &probe, 1, MSG_PEEK | MSG_DONTWAIT) <= 0)
            break;
        receive(control->second);
    }
    takingNotes_ = false;
}

void Host::handle(Connection& connection, const Packet& packet)
{
    if (packet.head.kind < wire::Kind::Open)
        return handleControl(connection, packet);
    takeNotesOf(connection, packet.head.process);
    handleFile(connection, packet);
}

void Host::handleControl(Connection& connection, const Packet& packet)
{
    if (connection.process == 0 && packet.head.kind != wire::Kind::Command) {
        connection.process = packet.head.process;
        controls_[connection.process] = connection.fd;
    }
    switch (packet.head.kind) {
    case wire::Kind::Hello:
        return answer(connection, 0, bytesOf(pathList()));
    case wire::Kind::Locate:
        return answer(connection, calls_->present(packet.text()));
    case wire::Kind::Absent: {
        std::string names;
        for (const std::string& name : unit_.absent())
            names += name + '\n';
        return answer(connection, 0, bytesOf(names));
    }
    case wire::Kind::Which:
        return which(connection, packet);
    case wire::Kind::Fault: {
        const std::vector<std::string> parts = split(packet.text(), 2);
        return answer(connection, parts.size() == 2 ? calls_->fault(callerOf(packet), parts[0], parts[1]) : 0);
    }
    case wire::Kind::Note: {
        const std::vector<std::string> parts = split(packet.text(), 3);
        if (parts.size() == 3)
            calls_->note(callerOf(packet), parts[0], parts[1], bytesOf(parts[2]), static_cast<int>(packet.head.value));
        return;
    }
    default: {
        std::vector<std::string> words = split(packet.text(), SIZE_MAX);
        words.pop_back(); // each is followed by NUL
        const CommandResult result = runHostCommand(*this, connection.fd, words);
        waiting_ = true; // a waiting read may succeed now
        return answer(connection, result.good ? 0 : 1, bytesOf(result.text));
    }
    }
}

void Host::handleFile(Connection& connection, const Packet& packet)
{
    if (packet.head.kind == wire::Kind::Open)
        return open(connection, packet);
    if (packet.head.kind == wire::Kind::Cancel)
        return cancel(connection);
    if (packet.head.kind == wire::Kind::Closing) {
        if (connection.opened != nullptr)
            connection.opened->closer = callerOf(packet);
        return;
    }
    const auto found = openFiles_.find(packet.head.file);
    if (found == openFiles_.end())
        return answer(connection, -EBADF);
    connection.file = found->second;
    OpenFile& file = *connection.file->open;
    switch (packet.head.kind) {
    case wire::Kind::Shape:
        return shape(connection, packet);
    case wire::Kind::Ioctl:
        return ioctl(connection, packet);
    case wire::Kind::Read:
        return read(connection, packet);
    case wire::Kind::Write:
        waiting_ = true;
        return answer(connection, calls_->write(callerOf(packet), file, packet.bytes).result);
    case wire::Kind::SetTerminal:
        return setTerminal(connection, packet);
    case wire::Kind::GetTerminal:
        return answer(connection, static_cast<std::int64_t>(file.node.terminal.size()), file.node.terminal);
    case wire::Kind::Flush:
        calls_->flush(file, (packet.head.value & 1) != 0, (packet.head.value & 2) != 0);
        return answer(connection, 0);
    case wire::Kind::Drain:
        connection.drains = true;
        waiting_ = true;
        return;
    case wire::Kind::Readable:
        return answer(connection, calls_->readable(file));
    default:
        return close(connection, packet);
    }
}

/// The program has no descriptor left; the kernel has closed the file's connection if there is no other holder.
void Host::close(Connection& connection, const Packet& packet)
{
    char byte = 0;
    const std::shared_ptr<File> file = connection.file;
    file->closer = callerOf(packet);
    while (openFiles_.contains(file->number) && recv(file->connection, &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0)
        receive(file->connection);
    file->closer.reset();
    answer(connection, 0);
}

void Host::cancel(Connection& connection)
{
    if (connection.read || connection.drains)
        answer(connection, -EINTR);
    connection.read.reset();
    connection.drains = false;
}

void Host::open(Connection& connection, const Packet& packet)
{
    const std::vector<std::string> parts = split(packet.text(), 2);
    if (parts.size() != 2 || connection.opened != nullptr)
        return answer(connection, -EINVAL);
    Calls::Opened opened = calls_->open(callerOf(packet), parts[1], static_cast<int>(packet.head.value));
    if (opened.file == nullptr)
        return answer(connection, -opened.error);
    connection.name = parts[0];
    connection.opened = std::make_shared<File>();
    File& file = *connection.opened;
    file.open = std::move(opened.file);
    file.opener = callerOf(packet);
    file.number = ++opened_;
    file.connection = connection.fd;
    openFiles_[file.number] = connection.opened;
    answer(connection, 0, {}, 0, file.number);
}

void Host::which(Connection& connection, const Packet& packet)
{
    const auto named = std::find_if(connections_.begin(), connections_.end(), [&](const auto& other) {
        return other.second.opened != nullptr && other.second.name == packet.text();
    });
    if (named == connections_.end())
        return answer(connection, -ENOENT);
    const File& file = *named->second.opened;
    answer(connection, 0, bytesOf(file.open->node.path()), file.open->flags, file.number);
}

void Host::setTerminal(Connection& connection, const Packet& packet)
{
    OpenFile& file = *connection.file->open;
    answer(connection, calls_->setTerminal(file, packet.bytes) ? 0 : -EINVAL);
}

void Host::shape(Connection& connection, const Packet& packet)
{
    const std::optional<Node::Shape> shape = calls_->shape(*connection.file->open, packet.head.request);
    if (!shape)
        return answer(connection, -1);
    answer(connection, static_cast<std::int64_t>(shape->takes), {}, static_cast<std::int64_t>(shape->gives));
}

void Host::ioctl(Connection& connection, const Packet& packet)
{
    OpenFile& file = *connection.file->open;
    const std::optional<Node::Shape> shape = calls_->shape(file, packet.head.request);
    std::vector<std::uint8_t> out(shape ? shape->gives : 0);
    const std::int64_t result = calls_->ioctl(callerOf(packet), file, packet.head.request, packet.bytes, out);
    answer(connection, result, result < 0 ? std::span<const std::uint8_t>{} : out);
}

void Host::read(Connection& connection, const Packet& packet)
{
    if (packet.head.value < 0)
        return answer(connection, -EINVAL);
    const std::size_t size = std::min(static_cast<std::size_t>(packet.head.value), kMostRead);
    connection.read = WaitingRead{callerOf(packet), size, unit_.clock().now(), {}};
    if (tryRead(connection, Calls::Attempt::First))
        return;
    if (packet.head.other != 0) {
        connection.read.reset();
        return answer(connection, -EAGAIN);
    }
    waiting_ = true;
}

bool Host::tryRead(Connection& connection, Calls::Attempt attempt)
{
    WaitingRead& read = *connection.read;
    std::vector<std::uint8_t> out(read.size);
    const Outcome outcome = calls_->read(read.caller, *connection.file->open, out, read.started, attempt);
    if (outcome.waits) {
        read.wakeAt = outcome.wakeAt;
        return false;
    }
    connection.read.reset();
    const std::int64_t count = std::clamp<std::int64_t>(outcome.result, 0, static_cast<std::int64_t>(out.size()));
    answer(connection, outcome.result, std::span{out}.first(static_cast<std::size_t>(count)));
    return true;
}

void Host::retryWaiting()
{
    waiting_ = false;
    for (auto& [fd, connection] : connections_) {
        if (connection.read && !tryRead(connection, Calls::Attempt::Again))
            waiting_ = true;
        if (connection.drains && calls_->drain(*connection.file->open).waits) {
            waiting_ = true;
        } else if (connection.drains) {
            connection.drains = false;
            answer(connection, 0);
        }
    }
}

void Host::keep()
{
    if (kept_ != nullptr)
        kept_->save();
}

void Host::answer(Connection& connection, std::int64_t value, std::span<const std::uint8_t> bytes, std::int64_t other,
                  std::uint64_t file)
{
    keep(); // data that was reported as written outlasts the host
    wire::Head head{};
    head.kind = wire::Kind::Answer;
    head.value = value;
    head.other = other;
    head.file = file;
    static constexpr std::string_view kTooLong = "the answer is too long";
    if (bytes.size() > wire::kLargestPacket - sizeof head) {
        head.value = 1;
        bytes = {reinterpret_cast<const std::uint8_t*>(kTooLong.data()), kTooLong.size()};
    }
    (void)sendPacket(connection.fd, head, bytes); // the next read from a program detects that it is gone
}

void Host::follow(int connection, bool json)
{
    connections_.at(connection).follows = true;
    connections_.at(connection).json = json;
    unit_.journal().listen([this](const Entry& entry) {
        for (auto& [fd, other] : connections_)
            if (other.follows)
                answer(other, 0, bytesOf(other.json ? jsonOf(entry) : lineOf(entry)));
    });
}

} // namespace hxsim
