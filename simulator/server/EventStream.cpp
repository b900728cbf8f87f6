// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/EventStream.h"

#include "simulator/model/Text.h"
#include "simulator/protocol/EventJson.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace hxsim {

namespace {

using cli::written;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

/// Bytes taken from one client before it is another one's turn.
constexpr std::size_t kAtOnce = 64U << 10;
constexpr std::size_t kMostAlarms = 1000;
/// The calls of the log that fit the queue of a client.
constexpr std::size_t kMostPast = 20000;
constexpr char kAll[] = "--all";
constexpr char kPast[] = "--past";
constexpr char kWithoutSleeps[] = "--without-sleeps";

int listenForClients(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error{"the path of the unit's socket is too long: " + path};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(fd, 128) != 0)
        throw std::runtime_error{"cannot listen at " + path};
    return fd;
}

void watchFor(int epoll, int operation, int fd, std::uint32_t events)
{
    epoll_event event{};
    event.events = events;
    event.data.fd = fd;
    (void)epoll_ctl(epoll, operation, fd, &event);
}

int processOf(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

double secondsOf(Time time)
{
    return std::chrono::duration<double>(time).count();
}

/// The command's words; throws BadText for anything but an object with a list of texts.
Words wordsOf(const Json& object)
{
    const auto command = object.is_object() ? object.find("command") : object.end();
    if (command == object.end() || !command->is_array() || command->empty())
        throw BadText{R"(expected {"id": NUMBER, "command": ["WORD", ...]})"};
    Words words;
    for (const Json& word : *command) {
        if (!word.is_string())
            throw BadText{"the words of a command are texts"};
        words.push_back(word.get<std::string>());
    }
    return words;
}

Json idOf(const Json& object)
{
    const auto id = object.is_object() ? object.find("id") : object.end();
    return id != object.end() && id->is_number_integer() ? *id : Json{};
}

} // namespace

EventStream::EventStream(Unit& unit, const std::string& path, Execute execute, std::function<void()> ownerLeft)
    : unit_{unit}, execute_{std::move(execute)}, ownerLeft_{std::move(ownerLeft)}, listener_{listenForClients(path)},
      epoll_{epoll_create1(EPOLL_CLOEXEC)}, source_{unit, [this](const Event& event) { publish(event); }}
{
    watchFor(epoll_, EPOLL_CTL_ADD, listener_, EPOLLIN);
}

EventStream::~EventStream()
{
    while (!clients_.empty())
        drop(clients_.begin()->first);
    ::close(listener_);
    ::close(epoll_);
}

void EventStream::serve()
{
    std::array<epoll_event, 64> ready{};
    const int count = epoll_wait(epoll_, ready.data(), static_cast<int>(ready.size()), 0);
    for (int i = 0; i < count; ++i) {
        const int fd = ready[static_cast<std::size_t>(i)].data.fd;
        const std::uint32_t events = ready[static_cast<std::size_t>(i)].events;
        if (fd == listener_) {
            accept();
            continue;
        }
        const auto found = clients_.find(fd);
        if (found == clients_.end())
            continue; // has gone in this round
        if ((events & EPOLLOUT) != 0)
            flush(fd, found->second);
        if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 && clients_.contains(fd))
            receive(fd, found->second);
    }
    source_.look();
    flushAll();
}

void EventStream::accept()
{
    const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    // Without a free descriptor the listener would be ready all the time: it rests until a client goes.
    full_ = fd < 0 && (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS);
    if (full_)
        watchFor(epoll_, EPOLL_CTL_MOD, listener_, 0);
    if (fd < 0)
        return;
    Client& client = clients_[fd];
    watchFor(epoll_, EPOLL_CTL_ADD, fd, EPOLLIN);
    const Json greeting{{"version", kEventVersion}, {"time", secondsOf(unit_.clock().now())}};
    send(client, std::make_shared<std::string>(written(greeting) + '\n'));
    if (clients_.size() > kMostClients)
        refuse(client, "the unit has too many clients");
}

void EventStream::drop(int fd)
{
    const auto found = clients_.find(fd);
    if (found == clients_.end())
        return;
    cancelAlarms(found->second);
    const bool owned = found->second.owns;
    clients_.erase(found);
    ::close(fd);
    if (full_)
        watchFor(epoll_, EPOLL_CTL_MOD, listener_, EPOLLIN);
    full_ = false;
    updateSource();
    if (owned)
        ownerLeft_();
}

void EventStream::receive(int fd, Client& client)
{
    const bool isOver = !takeBytes(fd, client);
    std::size_t at = 0;
    for (std::size_t end; !client.ends && (end = client.unread.find('\n', at)) != std::string::npos; at = end + 1)
        handleLine(client, fd, client.unread.substr(at, end - at));
    if (!client.ends)
        client.unread.erase(0, at);
    if (client.unread.size() > kLongestLine)
        refuse(client, "a line is longer than " + std::to_string(kLongestLine) + " bytes");
    if (isOver)
        flush(fd, client); // who sends commands and closes still gets the answers
    if (isOver)
        drop(fd);
}

/// False at the end of what the client sends.
bool EventStream::takeBytes(int fd, Client& client)
{
    std::array<char, 4096> bytes{};
    for (std::size_t taken = 0; taken < kAtOnce; taken += bytes.size()) {
        const ssize_t got = recv(fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (got < 0)
            return errno == EAGAIN || errno == EINTR;
        if (got == 0)
            return false;
        if (!client.ends) // what a client sends after its end is lost
            client.unread.append(bytes.data(), static_cast<std::size_t>(got));
    }
    return true;
}

/// Whatever a client sends, only its own command can fail.
void EventStream::handleLine(Client& client, int fd, const std::string& line)
{
    Json answer;
    Json id;
    try {
        const Json object = Json::parse(line, nullptr, false);
        id = idOf(object);
        answer = handle(client, fd, wordsOf(object));
    } catch (const std::exception& error) {
        answer = {{"ok", false}, {"error", error.what()}};
    }
    source_.look(); // its effects come before its answer
    answer["id"] = id;
    answer["time"] = secondsOf(unit_.clock().now());
    send(client, std::make_shared<std::string>(written(answer) + '\n'));
    if (answer.value("past", false))
        sendPast(client);
}

Json EventStream::handle(Client& client, int fd, const Words& words)
{
    if (words[0] == "events")
        return follow(client, words);
    if (words[0] == "alarm" && words.size() == 2) {
        setAlarm(client, fd, words[1]);
    } else if (words[0] == "alarm" && words.size() == 1) {
        cancelAlarms(client);
    } else if (words[0] == "own" && words.size() == 1) {
        client.owns = true;
    } else if (words[0] == "take-part" && words.size() == 1) {
        client.process = processOf(fd);
    } else if (words[0] == "output" && words.size() == 3) {
        source_.printed(0, words[1], words[2]);
    } else {
        const Answer answer = execute_(words);
        return {{"ok", answer.done}, {answer.done ? "text" : "error", answer.text}};
    }
    return {{"ok", true}, {"text", ""}};
}

/// "events [--past] [--without-sleeps] [--all | PROPERTY ...]": from now on the client gets events; answered with the
/// properties' values.
Json EventStream::follow(Client& client, const Words& words)
{
    std::set<std::string> wanted;
    bool all = false;
    bool past = false;
    bool withoutSleeps = false;
    for (std::size_t i = 1; i < words.size(); ++i) {
        all = all || words[i] == kAll;
        past = past || words[i] == kPast;
        withoutSleeps = withoutSleeps || words[i] == kWithoutSleeps;
        if (words[i] != kAll && words[i] != kPast && words[i] != kWithoutSleeps)
            wanted.insert(words[i]);
    }
    if (all)
        for (const auto& [name, property] : unit_.properties().all())
            if (!name.ends_with("flash-crc")) // takes milliseconds, each time
                wanted.insert(name);
    Json values = Json::object();
    for (const std::string& name : wanted)
        values[name] = unit_.properties().get(name); // throws for an unknown one
    client.all = all;
    client.withoutSleeps = withoutSleeps;
    client.properties = std::move(wanted);
    client.follows = true;
    updateSource();
    return {{"ok", true}, {"values", values}, {"past", past}};
}

/// The calls of the log, as events without a number.
void EventStream::sendPast(Client& client)
{
    const auto& entries = unit_.journal().entries();
    const std::size_t first = entries.size() - std::min(entries.size(), kMostPast);
    for (auto entry = entries.begin() + static_cast<std::ptrdiff_t>(first); entry != entries.end(); ++entry)
        send(client, std::make_shared<std::string>(lineOf(EventSource::eventOf(*entry)) + '\n'));
}

void EventStream::setAlarm(Client& client, int fd, const std::string& nanoseconds)
{
    const Time time{parseNumber(nanoseconds, 0, INT64_MAX)};
    if (client.alarms.size() >= kMostAlarms)
        throw BadText{"too many alarms"};
    const std::uint64_t number = ++alarms_;
    client.alarms[number] = unit_.clock().at(time, [this, fd, number] {
        if (keepsAlarms_)
            due_.emplace_back(fd, number);
        else
            ring(fd, number);
    });
}

void EventStream::cancelAlarms(Client& client)
{
    for (const auto& [number, key] : client.alarms)
        unit_.clock().cancel(key);
    client.alarms.clear();
}

void EventStream::ring(int fd, std::uint64_t number)
{
    const auto found = clients_.find(fd);
    if (found == clients_.end() || found->second.alarms.erase(number) == 0)
        return;
    source_.look();
    send(found->second, std::make_shared<std::string>(lineOf(Event{.time = unit_.clock().now()}) + '\n'));
}

bool EventStream::ringFirst()
{
    if (due_.empty())
        return false;
    const auto [fd, number] = due_.front();
    due_.pop_front();
    ring(fd, number);
    return true;
}

bool EventStream::hasParticipants() const
{
    return std::ranges::any_of(clients_, [](const auto& one) { return one.second.process != 0; });
}

std::vector<int> EventStream::participants() const
{
    std::vector<int> processes;
    for (const auto& [fd, client] : clients_)
        if (client.process != 0)
            processes.push_back(client.process);
    return processes;
}

bool EventStream::awaitsAlarm() const
{
    const bool any = !hasParticipants();
    return std::ranges::any_of(
        clients_, [any](const auto& one) { return !one.second.alarms.empty() && (any || one.second.process != 0); });
}

void EventStream::notify(const Event& event)
{
    const auto line = std::make_shared<std::string>(lineOf(event) + '\n');
    for (auto& [fd, client] : clients_)
        if (client.process != 0)
            send(client, line);
}

void EventStream::updateSource()
{
    std::set<std::string> watched;
    bool followed = false;
    for (const auto& [fd, client] : clients_) {
        followed = followed || client.follows;
        watched.insert(client.properties.begin(), client.properties.end());
    }
    source_.look(); // a property's value at the time of its first follower
    source_.setFollowed(followed);
    source_.watch(watched);
}

void EventStream::publish(const Event& event)
{
    Line line;
    for (auto& [fd, client] : clients_) {
        const bool isMeant = event.kind != Event::Kind::Property || client.properties.contains(event.subject);
        const bool isSleep = event.kind == Event::Kind::Request && event.subject == "sleep";
        if (!client.follows || client.ends || !isMeant || (isSleep && client.withoutSleeps))
            continue;
        if (line == nullptr)
            line = std::make_shared<std::string>(lineOf(event) + '\n');
        send(client, line);
    }
}

/// The line goes out at the end of the round.
void EventStream::send(Client& client, Line line)
{
    if (client.ends)
        return;
    if (client.queued + line->size() > kMostQueued)
        return refuse(client, "the client reads too slowly: " + std::to_string(client.queue.size()) +
                                  " lines were waiting for it");
    client.queued += line->size();
    client.queue.push_back(std::move(line));
    ++lines_;
}

/// Ends a client: it gets the reason in place of what waited for it. A line that is partly sent is completed.
void EventStream::refuse(Client& client, const std::string& reason)
{
    if (client.queue.size() > 1)
        client.queue.erase(client.queue.begin() + (client.sent > 0 ? 1 : 0), client.queue.end());
    client.unread.clear();
    client.queued = 0;
    client.follows = false;
    client.ends = true;
    const Json last{{"event", "cut-off"}, {"reason", reason}};
    client.queue.push_back(std::make_shared<std::string>(written(last) + '\n'));
}

void EventStream::flush(int fd, Client& client)
{
    bool isFull = false;
    while (!client.queue.empty() && !isFull) {
        const std::string& line = *client.queue.front();
        const ssize_t count =
            ::send(fd, line.data() + client.sent, line.size() - client.sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno != EAGAIN && errno != EINTR)
            return drop(fd);
        isFull = count < 0;
        client.sent += count > 0 ? static_cast<std::size_t>(count) : 0;
        if (client.sent < line.size())
            continue;
        client.queued -= std::min(client.queued, line.size());
        client.sent = 0;
        client.queue.pop_front();
        ++lines_;
    }
    if (client.queue.empty() && client.ends)
        return drop(fd);
    if (isFull != client.writes)
        watchFor(epoll_, EPOLL_CTL_MOD, fd, isFull ? EPOLLIN | EPOLLOUT : EPOLLIN);
    client.writes = isFull;
}

void EventStream::flushAll()
{
    for (auto next = clients_.begin(); next != clients_.end();) {
        const auto current = next++;
        if (!current->second.queue.empty() && !current->second.writes)
            flush(current->first, current->second);
    }
}

} // namespace hxsim
