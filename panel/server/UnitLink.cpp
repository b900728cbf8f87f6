// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/UnitLink.h"

#include "simulator/client/EventSocket.h"
#include "simulator/protocol/EventJson.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace hxpanel {

namespace {

/// Bytes taken in one round of the loop, before it is the turn of another connection.
constexpr std::size_t kAtOnce = 256U << 10;
/// No unit sends such a line.
constexpr std::size_t kLongestLine = 8U << 20;

std::string lineOf(std::uint64_t id, const std::vector<std::string>& words)
{
    return cli::written(nlohmann::json{{"id", id}, {"command", words}}) + '\n';
}

} // namespace

UnitLink::UnitLink(Loop& loop, const std::string& unit, OnEvent onEvent, OnEnd onEnd)
    : loop_{loop}, fd_{hxsim::connectToEvents(unit, hxsim::Waiting::NeverWaits)}, onEvent_{std::move(onEvent)},
      onEnd_{std::move(onEnd)}
{
    loop_.watch(fd_, EPOLLIN, [this] { serve(); });
}

UnitLink::~UnitLink()
{
    *alive_ = false;
    loop_.forget(fd_);
    close(fd_);
}

std::size_t UnitLink::lengthOf(const std::vector<std::string>& words)
{
    return lineOf(UINT64_MAX, words).size();
}

void UnitLink::send(const std::vector<std::string>& words, OnAnswer onAnswer)
{
    waiting_[++id_] = std::move(onAnswer);
    unsent_ += lineOf(id_, words);
    flush();
}

void UnitLink::flush()
{
    const ssize_t sent = ::send(fd_, unsent_.data(), unsent_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0)
        unsent_.erase(0, static_cast<std::size_t>(sent));
    const std::uint32_t events = unsent_.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT; // a dead link is noticed by reading
    loop_.watch(fd_, events, [this] { serve(); });
}

/// What the functions of the owner destroy is not touched after them.
void UnitLink::serve()
{
    const std::shared_ptr<bool> alive = alive_;
    if (!unsent_.empty())
        flush();
    const bool isOver = !receive();
    std::string lines = std::move(unread_);
    unread_.clear();
    std::size_t at = 0;
    for (std::size_t end; (end = lines.find('\n', at)) != std::string::npos; at = end + 1) {
        take(std::string_view{lines}.substr(at, end - at));
        if (!*alive)
            return;
    }
    unread_ = lines.substr(at);
    if (isOver || unread_.size() > kLongestLine)
        end();
}

/// False when the unit has closed the connection.
bool UnitLink::receive()
{
    std::array<char, 32768> bytes{};
    for (std::size_t taken = 0; taken < kAtOnce;) {
        const ssize_t got = recv(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (got < 0)
            return errno == EAGAIN || errno == EINTR;
        if (got == 0)
            return false;
        unread_.append(bytes.data(), static_cast<std::size_t>(got));
        taken += static_cast<std::size_t>(got);
    }
    return true;
}

void UnitLink::take(std::string_view line)
{
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object() || (!greeted_ && object.value("version", 0) != hxsim::kEventVersion))
        return end(); // of another version
    if (!std::exchange(greeted_, true))
        return;
    if (object.contains("event")) {
        if (object["event"] == "cut-off")
            return end();
        return onEvent_(object, line);
    }
    const auto id = object.find("id");
    const auto found =
        id != object.end() && id->is_number_unsigned() ? waiting_.find(id->get<std::uint64_t>()) : waiting_.end();
    if (found == waiting_.end())
        return;
    const OnAnswer onAnswer = std::move(found->second);
    waiting_.erase(found);
    onAnswer(object);
}

void UnitLink::end()
{
    loop_.forget(fd_);
    if (const OnEnd onEnd = std::exchange(onEnd_, {}))
        onEnd();
}

} // namespace hxpanel
