// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Session.h"

#include "simulator/server/Sessions.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <unistd.h>

namespace hxsim {

namespace {

/// Maximum number of bytes of a read in one answer.
constexpr std::size_t kMostRead = wire::kLargestPacket - sizeof(wire::Head);

/// The subject of sleeps in the log.
constexpr char kSleep[] = "sleep";
/// As long as a sleep of 0 takes on a machine: a program that does nothing else does not stop the time.
constexpr Time kLeastSleep = std::chrono::microseconds{50};

} // namespace

Session::~Session()
{
    ::close(fd_);
}

template <typename Message>
bool Session::handleIf(const Packet& packet)
{
    if (packet.head.kind != Message::kKind)
        return false;
    const std::optional<Message> message = wire::unpacked<Message>(packet.head, packet.bytes);
    if (!message) {
        refuse(packet.head.kind);
        return true;
    }
    if constexpr (requires { message->file; }) {
        std::shared_ptr<ServedFile> subject = others_.file(message->file);
        if (subject == nullptr) {
            answer(-EBADF);
            return true;
        }
        file_ = std::move(subject);
    }
    handle(*message);
    return true;
}

/// A message without its parts, or no message at all. Nobody waits for an answer to a note; an errno is not negative.
void Session::refuse(wire::Kind kind)
{
    if (kind != wire::Kind::Note)
        answer(kind == wire::Kind::Fault ? 0 : -EINVAL);
}

void Session::handle(const Packet& packet)
{
    caller_ = {packet.head.process, packet.head.thread};
    others_.asked(caller_);
    const wire::Kind kind = packet.head.kind;
    if (kind >= wire::Kind::Open) {
        others_.takeNotesOf(caller_.process, fd_);
    } else if (process_ == 0 && kind != wire::Kind::Command) {
        process_ = caller_.process;
        others_.control(process_, fd_);
    }
    const auto handleOneOf = [&]<typename... Messages>(const std::tuple<Messages...>*) {
        return (handleIf<Messages>(packet) || ...);
    };
    if (!handleOneOf(static_cast<const wire::Requests*>(nullptr)))
        refuse(kind);
}

void Session::handleGuarded(const Packet& packet)
{
    try {
        handle(packet);
    } catch (const std::exception& error) {
        read_.reset();
        if (packet.head.kind == wire::Kind::Command)
            return answer(1, bytesOf(std::string{error.what()}));
        answer(-EIO);
    }
}

template <typename Message>
void Session::send(const Message& message)
{
    unit_.keep(); // data that was reported as written outlasts the server
    others_.countAnswer();
    const wire::Packed packed{message};
    if (mailbox_ == nullptr || !mailbox_->answer(packed.head(), packed.bytes()))
        (void)sendPacket(fd_, packed); // the next read from a program detects that it is gone
}

void Session::answer(std::int64_t result, wire::Bytes bytes)
{
    static constexpr std::string_view kTooLong = "the answer is too long";
    if (bytes.size() > wire::kLargestPacket - sizeof(wire::Head)) {
        result = 1;
        bytes = {reinterpret_cast<const std::uint8_t*>(kTooLong.data()), kTooLong.size()};
    }
    send(wire::Answer{result, bytes});
}

void Session::handle(const wire::Hello& /*request*/)
{
    answer(0, bytesOf(unit_.pathList()));
}

void Session::handle(const wire::Locate& request)
{
    answer(unit_.calls().present(request.path) ? 1 : 0);
}

void Session::handle(const wire::Absent& /*request*/)
{
    std::string names;
    for (const std::string& name : unit_.unit().absent())
        names += name + '\n';
    answer(0, bytesOf(names));
}

void Session::handle(const wire::Fault& request)
{
    answer(unit_.calls().fault(caller_, request.subject, request.call));
}

void Session::handle(const wire::Note& request)
{
    unit_.calls().note(caller_, request.subject, request.action, bytesOf(request.data), request.error);
}

void Session::handle(const wire::Command& request)
{
    const CommandResult result = others_.command(fd_, request.words);
    others_.changed();
    answer(result.good ? 0 : 1, bytesOf(result.text));
}

void Session::handle(const wire::Which& request)
{
    const std::shared_ptr<ServedFile> found = others_.fileOf(request.name);
    if (found == nullptr)
        return answer(-ENOENT);
    send(wire::FileFound{0, found->number, found->open->flags, found->open->node.path()});
}

void Session::handle(const wire::Open& request)
{
    if (opened_ != nullptr)
        return answer(-EINVAL);
    Calls::Opened opened = unit_.calls().open(caller_, request.path, request.flags);
    if (opened.file == nullptr)
        return answer(-opened.error);
    name_ = request.name;
    opened_ = std::make_shared<ServedFile>(ServedFile{std::move(opened.file), caller_, 0, fd_, {}});
    others_.keepOpen(opened_);
    send(wire::FileOpened{0, opened_->number});
}

void Session::handle(const wire::Shape& request)
{
    const std::optional<Node::Shape> shape = unit_.calls().shape(file(), request.request);
    if (!shape)
        return send(wire::ShapeKnown{});
    send(wire::ShapeKnown{static_cast<std::int64_t>(shape->takes), static_cast<std::int64_t>(shape->gives)});
}

void Session::handle(const wire::Ioctl& request)
{
    const std::optional<Node::Shape> shape = unit_.calls().shape(file(), request.request);
    std::vector<std::uint8_t> out(shape ? shape->gives : 0);
    const std::int64_t result = unit_.calls().ioctl(caller_, file(), request.request, request.in, out);
    answer(result, result < 0 ? wire::Bytes{} : out);
}

void Session::handle(const wire::Read& request)
{
    if (request.size < 0)
        return answer(-EINVAL);
    const std::size_t size = std::min(static_cast<std::size_t>(request.size), kMostRead);
    read_ = WaitingRead{caller_, size, unit_.unit().clock().now(), {}};
    if (tryRead(Calls::Attempt::First))
        return;
    if (request.nonblocking) {
        read_.reset();
        return answer(-EAGAIN);
    }
    others_.changed();
}

bool Session::tryRead(Calls::Attempt attempt)
{
    WaitingRead& read = *read_;
    std::vector<std::uint8_t> out(read.size);
    const Outcome outcome = unit_.calls().read(read.caller, file(), out, read.started, attempt);
    if (outcome.waits) {
        read.wakeAt = outcome.wakeAt;
        return false;
    }
    read_.reset();
    const std::int64_t count = std::clamp<std::int64_t>(outcome.result, 0, static_cast<std::int64_t>(out.size()));
    answer(outcome.result, std::span{out}.first(static_cast<std::size_t>(count)));
    return true;
}

bool Session::retry()
{
    const bool reads = read_ && !tryRead(Calls::Attempt::Again);
    if (drains_ && !unit_.calls().drain(file()).waits) {
        drains_ = false;
        answer(0);
    }
    return reads || drains_;
}

void Session::handle(const wire::Cancel& /*request*/)
{
    if (read_ || drains_)
        answer(-EINTR);
    if (sleeper_)
        send(wire::Slept{-EINTR, (sleeper_->until - unit_.now()).count()});
    read_.reset();
    drains_ = false;
    sleeper_.reset();
    unaware_.reset();
}

void Session::handle(const wire::Write& request)
{
    others_.changed();
    answer(unit_.calls().write(caller_, file(), request.in).result);
}

void Session::handle(const wire::SetTerminal& request)
{
    answer(unit_.calls().setTerminal(file(), request.settings) ? 0 : -EINVAL);
}

void Session::handle(const wire::GetTerminal& /*request*/)
{
    const std::vector<std::uint8_t>& settings = file().node.terminal;
    answer(static_cast<std::int64_t>(settings.size()), settings);
}

void Session::handle(const wire::Flush& request)
{
    unit_.calls().flush(file(), (request.what & wire::Flush::kInput) != 0, (request.what & wire::Flush::kOutput) != 0);
    answer(0);
}

void Session::handle(const wire::Drain& /*request*/)
{
    drains_ = true;
    others_.changed();
}

void Session::handle(const wire::Readable& /*request*/)
{
    answer(unit_.calls().readable(file()) ? 1 : 0);
}

void Session::handle(const wire::Closing& /*request*/)
{
    if (opened_ != nullptr)
        opened_->closer = caller_;
}

void Session::handle(const wire::Close& /*request*/)
{
    if (file_->session == fd_) // the file is held by who says this
        return answer(-EINVAL);
    others_.closeIfReleased(file_, caller_);
    answer(0);
}

void Session::handle(const wire::Share& /*request*/)
{
    if (mailbox_ != nullptr)
        return answer(-EEXIST);
    if (unit_.isVirtual())
        return answer(-ENOTSUP); // all that has arrived must be visible at once
    auto mailbox = std::make_unique<ServerMailbox>();
    if (!*mailbox)
        return answer(-ENOMEM);
    const wire::Packed shared{wire::Answer{}};
    (void)sendDescriptor(fd_, shared.head(), mailbox->descriptor());
    mailbox->closeDescriptor();
    mailbox_ = std::move(mailbox);
}

void Session::handle(const wire::Bell& /*request*/)
{
    if (mailbox_ != nullptr)
        others_.mailboxes().rung(*this);
}

void Session::handle(const wire::Sleep& request)
{
    static constexpr std::int64_t kLongest = INT64_MAX / 4;
    if (!unit_.isVirtual() || sleeper_)
        return answer(-EINVAL);
    const int error = request.action.empty() ? 0 : unit_.calls().fault(caller_, kSleep, request.action);
    if (!request.action.empty())
        unit_.calls().note(caller_, kSleep, request.action, {}, error);
    if (error != 0)
        return send(wire::Slept{-error, request.nanoseconds});
    const Time time{std::clamp<std::int64_t>(request.nanoseconds, 0, kLongest - unit_.now().count())};
    const Time until = unit_.now() + (time > Time{0} ? time : kLeastSleep);
    sleeper_ = Sleeper{caller_, until, others_.nextOrder(), request.isWatched};
}

void Session::wakeUp()
{
    if (sleeper_->isWatched)
        unaware_ = sleeper_->caller;
    sleeper_.reset();
    send(wire::Slept{});
}

bool Session::servePosted()
{
    Packet packet;
    if (!mailbox_->take(packet.head, packet.bytes))
        return false;
    handleGuarded(packet);
    return true;
}

void Session::show(const Entry& entry)
{
    if (follows_ != Follows::Nothing)
        answer(0, bytesOf(follows_ == Follows::AsJson ? jsonOf(entry) : lineOf(entry)));
}

} // namespace hxsim
