// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/server/EventSource.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace hxsim {

/// The event socket of a unit: clients send commands and follow events, as lines of JSON. docs/events.md describes it.
///
/// It never waits for a client. What a client does not read is queued up to a limit; then the client is cut off with a
/// message, and the others are not affected.
class EventStream {
public:
    struct Answer {
        bool done = true;
        std::string text{};
    };
    /// Executes a command on the unit.
    using Execute = std::function<Answer(const std::vector<std::string>&)>;

    /// Listens at this path. Throws std::runtime_error when it cannot. `ownerLeft` is called when a client that owns
    /// the unit has gone.
    EventStream(Unit& unit, const std::string& path, Execute execute, std::function<void()> ownerLeft);
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;
    ~EventStream();

    /// Readable when `serve` has something to do.
    [[nodiscard]] int fd() const { return epoll_; }
    /// Handles what has arrived, without waiting.
    void serve();
    EventSource& source() { return source_; }
    [[nodiscard]] std::size_t clients() const { return clients_.size(); }

    // Virtual time.

    /// From now on alarms wait for `ringFirst`.
    void keepAlarms() { keepsAlarms_ = true; }
    /// Sends the first alarm that is due. False: there is none.
    bool ringFirst();
    /// Clients whose processes must wait as well before time passes.
    [[nodiscard]] bool hasParticipants() const;
    [[nodiscard]] std::vector<int> participants() const;
    /// Whether one of these, or without one any client, waits for an alarm.
    [[nodiscard]] bool awaitsAlarm() const;
    /// Changes with every line that a client will get, and when it gets it.
    [[nodiscard]] std::uint64_t lines() const { return lines_; }
    /// An event for the participants.
    void notify(const Event& event);

    /// The bytes that wait for one client at most.
    static constexpr std::size_t kMostQueued = 8U << 20;
    /// The longest line from a client.
    static constexpr std::size_t kLongestLine = 64U << 10;
    static constexpr std::size_t kMostClients = 256;

private:
    using Line = std::shared_ptr<const std::string>;
    struct Client {
        std::string unread{};
        std::deque<Line> queue{};
        std::size_t queued = 0; ///< bytes in the queue
        std::size_t sent = 0;   ///< bytes of the first line that have been sent
        bool follows = false;
        bool all = false; ///< follows every property
        bool withoutSleeps = false;
        std::set<std::string> properties{};
        bool owns = false;
        bool ends = false;   ///< after the queue has been sent
        bool writes = false; ///< waits until it can send
        std::map<std::uint64_t, Clock::Key> alarms{};
        int process = 0; ///< of a participant
    };

    void accept();
    void drop(int fd);
    void receive(int fd, Client& client);
    bool takeBytes(int fd, Client& client);
    void handleLine(Client& client, int fd, const std::string& line);
    nlohmann::json handle(Client& client, int fd, const std::vector<std::string>& words);
    nlohmann::json follow(Client& client, const std::vector<std::string>& words);
    void setAlarm(Client& client, int fd, const std::string& nanoseconds);
    void cancelAlarms(Client& client);
    void ring(int fd, std::uint64_t number);
    void sendPast(Client& client);
    void updateSource();
    void publish(const Event& event);
    void send(Client& client, Line line);
    void refuse(Client& client, const std::string& reason);
    void flush(int fd, Client& client);
    void flushAll();

    Unit& unit_;
    Execute execute_;
    std::function<void()> ownerLeft_;
    int listener_ = -1;
    int epoll_ = -1;
    bool full_ = false; ///< no descriptor is left for another client
    std::map<int, Client> clients_;
    std::uint64_t alarms_ = 0;
    std::uint64_t lines_ = 0;
    bool keepsAlarms_ = false;
    std::deque<std::pair<int, std::uint64_t>> due_{}; ///< alarms that are kept: clients and numbers
    EventSource source_;
};

} // namespace hxsim
