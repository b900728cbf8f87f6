// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Sessions.h"

#include <algorithm>
#include <sys/socket.h>

namespace hxsim {

namespace {

/// More than a process records between two calls; one that floods does not delay the others.
constexpr int kMostNotes = 10000;

} // namespace

Sessions::Sessions(RunningUnit& unit, Commands commands)
    : unit_{unit}, commands_{std::move(commands)}, buffer_(2 * wire::kLargestPacket)
{
    unit_.unit().journal().listen(this, [this](const Entry& entry) {
        for (const auto& [fd, session] : sessions_)
            session->show(entry);
    });
}

void Sessions::add(int fd)
{
    sessions_.emplace(fd, std::make_unique<Session>(fd, unit_, *this));
}

void Sessions::receive(int fd)
{
    const auto found = sessions_.find(fd);
    if (found == sessions_.end())
        return;
    Packet packet;
    std::size_t size = 0;
    const Received received = receivePacket(fd, packet.head, buffer_, size, true);
    if (received == Received::Gone)
        return drop(fd);
    if (received != Received::Packet)
        return; // an announced message may have been consumed meanwhile
    if (size > wire::kLargestPacket)
        return drop(fd); // not a program of this unit
    packet.bytes.assign(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(size));
    found->second->handleGuarded(packet);
}

void Sessions::drop(int fd)
{
    const auto found = sessions_.find(fd);
    const std::unique_ptr<Session> session = std::move(found->second);
    sessions_.erase(found);
    mailboxes_.remove(*session);
    const auto control = controls_.find(session->process());
    if (control != controls_.end() && control->second == fd) {
        controls_.erase(control);
        if (programs_)
            programs_(session->process(), false);
    }
    if (session->opened() != nullptr) {
        const ServedFile& file = *session->opened();
        files_.erase(file.number);
        const Calls::Closing closing = file.closer ? Calls::Closing::ByProgram : Calls::Closing::WithProgram;
        unit_.calls().close(file.closer.value_or(file.opener), *file.open, closing);
    }
    (void)unit_.endRecord(fd);
}

void Sessions::control(int process, int fd)
{
    controls_[process] = fd;
    if (programs_)
        programs_(process, true);
}

void Sessions::takeNotesOf(int process, int asking)
{
    const auto control = controls_.find(process);
    // Rejects a client that mixes the two kinds of connections or claims another identity.
    if (control == controls_.end() || control->second == asking || takingNotes_)
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

void Sessions::keepOpen(std::shared_ptr<ServedFile> file)
{
    file->number = ++opened_;
    files_[file->number] = std::move(file);
}

std::shared_ptr<ServedFile> Sessions::file(std::uint64_t number) const
{
    const auto found = files_.find(number);
    return found == files_.end() ? nullptr : found->second;
}

std::shared_ptr<ServedFile> Sessions::fileOf(const std::string& name) const
{
    const auto named = std::ranges::find_if(
        sessions_, [&](const auto& one) { return one.second->opened() != nullptr && one.second->name() == name; });
    return named == sessions_.end() ? nullptr : named->second->opened();
}

/// The program has no descriptor left; the kernel has closed the file's connection if there is no other holder.
void Sessions::closeIfReleased(const std::shared_ptr<ServedFile>& file, Caller closer)
{
    char byte = 0;
    file->closer = closer;
    while (files_.contains(file->number) && recv(file->session, &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0)
        receive(file->session);
    file->closer.reset();
}

void Sessions::retryWaiting()
{
    if (!waiting_)
        return;
    waiting_ = false;
    for (const auto& [fd, session] : sessions_)
        if (session->retry())
            waiting_ = true;
}

std::optional<Time> Sessions::nextDeadline() const
{
    std::optional<Time> next;
    for (const auto& [fd, session] : sessions_) {
        const std::optional<Time> time = session->wakeAt();
        if (time && (!next || *time < *next))
            next = time;
    }
    return next;
}

bool Sessions::drains() const
{
    return std::ranges::any_of(sessions_, [](const auto& one) { return one.second->drains(); });
}

/// Few threads sleep at a time.
Session* Sessions::firstSleeper() const
{
    Session* first = nullptr;
    const auto key = [](const Session& session) {
        return std::pair{session.sleeper()->until, session.sleeper()->order};
    };
    for (const auto& [fd, session] : sessions_)
        if (session->sleeper() && (first == nullptr || key(*session) < key(*first)))
            first = session.get();
    return first;
}

std::optional<Time> Sessions::nextWake() const
{
    const Session* const first = firstSleeper();
    return first == nullptr ? std::nullopt : std::optional{first->sleeper()->until};
}

bool Sessions::wakeFirst()
{
    Session* const first = firstSleeper();
    if (first == nullptr || first->sleeper()->until > unit_.now())
        return false;
    first->wakeUp();
    return true;
}

bool Sessions::sleeps(int thread) const
{
    return std::ranges::any_of(sessions_, [thread](const auto& one) {
        const std::optional<Session::Sleeper>& sleeper = one.second->sleeper();
        return sleeper && !sleeper->isWatched && sleeper->caller.thread == thread;
    });
}

bool Sessions::anyWaits() const
{
    return std::ranges::any_of(sessions_, [](const auto& one) {
        return one.second->sleeper() || one.second->reads() || one.second->drains();
    });
}

std::optional<Caller> Sessions::unaware() const
{
    for (const auto& [fd, session] : sessions_)
        if (session->unaware())
            return session->unaware();
    return std::nullopt;
}

std::vector<int> Sessions::processes() const
{
    std::vector<int> all;
    for (const auto& [process, fd] : controls_)
        all.push_back(process);
    return all;
}

} // namespace hxsim
