// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/Connection.h"

#include "simulator/protocol/EventJson.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cerrno>
#include <cmath>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace hxsim {

namespace {

using cli::written;
using Json = nlohmann::json;
using Names = std::vector<std::string>;

constexpr int kForever = -1;
/// A unit answers a command at once; one that is stuck must not block its user.
constexpr int kPatienceMs = 60000;

std::function<void()> signalHandler{};

void sendAll(int fd, const std::string& text)
{
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR)
            throw UnitGone{"the unit has stopped"};
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

Connection::Answer answerFrom(const Json& object)
{
    if (!object.value("ok", false))
        throw BadText{object.value("error", "the unit has refused the command")};
    Connection::Answer answer{.text = object.value("text", ""),
                              .time = Time{std::llround(object.value("time", 0.0) * 1e9)}};
    const Json values = object.value("values", Json::object());
    for (const auto& [name, value] : values.items())
        answer.values[name] = value.get<std::string>();
    return answer;
}

} // namespace

bool canBeRead(int fd, int patienceMs)
{
    constexpr int kBetweenHandlersMs = 500;
    pollfd watched{fd, POLLIN, 0};
    for (int left = patienceMs; left != 0;) {
        const int now = signalHandler && (left < 0 || left > kBetweenHandlersMs) ? kBetweenHandlersMs : left;
        const int ready = poll(&watched, 1, now);
        if (ready > 0)
            return true;
        if (signalHandler)
            signalHandler();
        if (ready == 0 && left > 0)
            left -= now;
    }
    return false;
}

Connection::Connection(const std::string& unit) : fd_{connectToEvents(unit)}
{
    try {
        const Json greeting = Json::parse(line(kPatienceMs), nullptr, false);
        if (!greeting.is_object() || greeting.value("version", 0) != kEventVersion)
            throw UnitGone{"the unit '" + unit + "' is of another version of hx-sim"};
    } catch (...) {
        close(fd_);
        throw;
    }
}

Connection::~Connection()
{
    close(fd_);
}

void Connection::onSignal(std::function<void()> handler)
{
    signalHandler = std::move(handler);
}

std::string Connection::line(int patienceMs)
{
    std::array<char, 16384> bytes{};
    std::size_t end = 0;
    while ((end = unread_.find('\n')) == std::string::npos) {
        if (!canBeRead(fd_, patienceMs))
            throw UnitGone{"the unit does not answer"};
        const ssize_t got = recv(fd_, bytes.data(), bytes.size(), 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            throw UnitGone{"the unit has stopped"};
        unread_.append(bytes.data(), static_cast<std::size_t>(got));
    }
    std::string first = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    return first;
}

Connection::Answer Connection::command(const std::vector<std::string>& words)
{
    const Json request{{"id", ++id_}, {"command", words}};
    sendAll(fd_, written(request) + '\n');
    for (;;) {
        const Json object = Json::parse(line(kPatienceMs), nullptr, false);
        if (const std::optional<Event> event = eventFrom(object))
            events_.push_back(*event);
        else if (object.is_object() && object.contains("reason"))
            throw UnitGone{"the unit has ended the connection: " + object.value("reason", "")};
        else if (object.is_object() && object.contains("id") && object["id"] == id_)
            return answerFrom(object);
    }
}

Event Connection::next()
{
    while (events_.empty()) {
        const Json object = Json::parse(line(kForever), nullptr, false);
        if (const std::optional<Event> event = eventFrom(object))
            return *event;
        if (object.is_object() && object.contains("reason"))
            throw UnitGone{"the unit has ended the connection: " + object.value("reason", "")};
    }
    return *received();
}

Vocabulary vocabularyOf(const std::string& unit)
{
    const Json names = Json::parse(Connection{unit}.command({"names"}).text, nullptr, false);
    if (!names.is_object())
        throw UnitGone{"the unit '" + unit + "' is of another version of hx-sim"};
    return {names.value("properties", Names{}), names.value("devices", Names{})};
}

std::optional<Event> Connection::received()
{
    if (events_.empty())
        return std::nullopt;
    Event first = std::move(events_.front());
    events_.pop_front();
    return first;
}

} // namespace hxsim
