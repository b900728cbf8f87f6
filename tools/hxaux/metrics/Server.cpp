// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/metrics/Server.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/metrics/Request.h"
#include "tools/hxaux/metrics/Scrape.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace hxaux::metrics {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostConnections = 16; ///< further ones wait in the kernel
constexpr std::size_t kLongestHead = 8192;
constexpr auto kPatience = 5s;       ///< for a whole request to arrive, and for an answer to leave
constexpr auto kLongestScrape = 10s; ///< for the unit to answer
constexpr auto kRetryIdentity = 60s;

/// A descriptor with its owner; a connection is shut down, as a child may still hold a copy of it.
class Handle {
public:
    explicit Handle(int number) : number_(number) {}
    Handle(Handle&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Handle()
    {
        if (number_ < 0)
            return;
        (void)shutdown(number_, SHUT_RDWR); // fails for a pipe
        close(number_);
    }
    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

Handle listenAt(Call& call, cli::Address& address)
{
    try {
        return Handle(cli::listenAt(address));
    } catch (const cli::AddressInUse& inUse) {
        call.fail(Exit::Busy, inUse.what());
    } catch (const std::runtime_error& error) {
        call.fail(Exit::Refused, error.what());
    }
}

/// A scrape in a process of its own: a device that does not answer cannot stop the server, and what the board library
/// leaves open at each use ends with it.
class Scrape {
public:
    explicit Scrape(const Identity& identity) : pipe_(-1), until_(Clock::now() + kLongestScrape)
    {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        pipe_ = Handle(ends[0]);
        const Handle input(ends[1]);
        child_ = fork();
        if (child_ == 0)
            runChild(identity, input.number());
    }
    ~Scrape()
    {
        if (child_ <= 0)
            return;
        kill(child_, SIGKILL); // it has ended, or has taken too long
        (void)waitpid(child_, nullptr, 0);
    }
    Scrape(const Scrape&) = delete;
    Scrape& operator=(const Scrape&) = delete;

    [[nodiscard]] int number() const { return pipe_.number(); }
    [[nodiscard]] Clock::time_point until() const { return until_; }
    /// Reads what the child wrote; true when nothing more comes.
    bool read()
    {
        std::array<char, 4096> part{};
        const ssize_t count = ::read(pipe_.number(), part.data(), part.size());
        if (count > 0)
            text_.append(part.data(), static_cast<std::size_t>(count));
        return count == 0 || (count < 0 && errno != EINTR);
    }
    /// The text of a format; empty when the child did not complete it.
    [[nodiscard]] std::string text(Format format) const
    {
        const std::size_t first = text_.find('\0');
        const bool complete = first != std::string::npos && text_.size() > first + 1 && text_.back() == '\0';
        if (!complete)
            return "";
        return format == Format::OpenMetrics ? text_.substr(0, first)
                                             : text_.substr(first + 1, text_.size() - first - 2);
    }

private:
    [[noreturn]] static void runChild(const Identity& identity, int output)
    {
        (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::string text;
        try {
            const Families families = scrape(identity);
            for (const Format format : {Format::OpenMetrics, Format::Prometheus})
                text += textOf(families, format) + '\0';
        } catch (const std::bad_alloc&) {
            text.clear();
        }
        for (std::size_t done = 0; done < text.size();) {
            const ssize_t count = write(output, text.data() + done, text.size() - done);
            if (count < 0 && errno != EINTR)
                break;
            done += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        _exit(0);
    }

    Handle pipe_;
    pid_t child_ = -1;
    Clock::time_point until_;
    std::string text_;
};

/// A connection, which serves one request.
struct Connection {
    enum class State { Reads, Waits, Writes, Done };

    explicit Connection(int number) : handle(number) {}

    void answer(std::string text)
    {
        output = std::move(text);
        state = State::Writes;
        until = Clock::now() + kPatience;
        write();
    }
    void read()
    {
        std::array<char, 2048> part{};
        const ssize_t count = recv(handle.number(), part.data(), part.size(), 0);
        if (count <= 0) {
            if (count == 0 || (errno != EAGAIN && errno != EINTR))
                state = State::Done;
            return;
        }
        input.append(part.data(), static_cast<std::size_t>(count));
        const bool complete = input.find("\r\n\r\n") != std::string::npos || input.find("\n\n") != std::string::npos;
        if (!complete && input.size() < kLongestHead)
            return;
        if (!complete || input.size() > kLongestHead)
            return answer(response(431, "text/plain; charset=utf-8", "the request is too long\n"));
        request = requestFrom(input);
        if (request.what == Request::For::Metrics)
            state = State::Waits;
        else
            answer(plainResponse(request));
    }
    void write()
    {
        const ssize_t count =
            send(handle.number(), output.data() + written, output.size() - written, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR)
            state = State::Done;
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
        if (written == output.size())
            state = State::Done;
    }

    Handle handle;
    State state = State::Reads;
    Clock::time_point until = Clock::now() + kPatience;
    std::string input{};
    Request request{};
    std::string output{};
    std::size_t written = 0;
};

class Server {
public:
    explicit Server(Handle listener) : listener_(std::move(listener)) { learnIdentity(); }

    [[noreturn]] void run()
    {
        for (;;) {
            std::vector<pollfd> watched = whatToWatch();
            (void)poll(watched.data(), watched.size(), untilNextDeadline());
            serveConnections(watched);
            if (watched[0].revents != 0)
                acceptOne();
            followScrape(watched);
            expire();
            std::erase_if(connections_, [](const Connection& each) { return each.state == Connection::State::Done; });
        }
    }

private:
    using State = Connection::State;

    static short eventsOf(State state)
    {
        switch (state) {
        case State::Reads:
            return POLLIN;
        case State::Writes:
            return POLLOUT;
        default:
            return 0;
        }
    }

    // First the listener, then the connections in their order, last the scrape.
    [[nodiscard]] std::vector<pollfd> whatToWatch() const
    {
        const bool hasPlace = connections_.size() < kMostConnections;
        std::vector<pollfd> watched{{hasPlace ? listener_.number() : -1, POLLIN, 0}};
        for (const Connection& each : connections_) {
            watched.push_back({each.handle.number(), eventsOf(each.state), 0});
        }
        watched.push_back({scrape_ ? scrape_->number() : -1, POLLIN, 0});
        return watched;
    }

    [[nodiscard]] int untilNextDeadline() const
    {
        auto next = Clock::time_point::max();
        for (const Connection& each : connections_)
            if (each.state != State::Waits)
                next = std::min(next, each.until);
        if (scrape_)
            next = std::min(next, scrape_->until());
        if (next == Clock::time_point::max())
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        return static_cast<int>(std::max(left.count(), std::chrono::milliseconds::rep{0}));
    }

    void serveConnections(const std::vector<pollfd>& watched)
    {
        for (std::size_t i = 0; i < connections_.size(); ++i) {
            Connection& each = connections_[i];
            const short events = watched[i + 1].revents;
            if (events == 0)
                continue;
            if (each.state == State::Reads)
                each.read();
            else if (each.state == State::Writes)
                each.write();
            else
                each.state = State::Done; // it has gone while the unit was read
        }
        if (!scrape_ && std::ranges::any_of(connections_, isWaiting))
            begin();
    }

    static bool isWaiting(const Connection& connection) { return connection.state == State::Waits; }

    void acceptOne()
    {
        const int number = accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (number >= 0)
            connections_.emplace_back(number);
    }

    void begin()
    {
        if (identity_.errors != 0 && Clock::now() > retryAt_)
            learnIdentity();
        scrape_ = std::make_unique<Scrape>(identity_);
        if (scrape_->number() < 0)
            finish();
    }

    void followScrape(const std::vector<pollfd>& watched)
    {
        if (scrape_ && watched.back().fd == scrape_->number() && watched.back().revents != 0 && scrape_->read())
            finish();
    }

    // Everyone who waits gets the same reading, so that many scrapers cost the unit no more than one.
    void finish()
    {
        for (Connection& each : connections_) {
            if (!isWaiting(each))
                continue;
            const Format format = each.request.format;
            const std::string text = scrape_->text(format);
            each.answer(text.empty() ? response(503, "text/plain; charset=utf-8", "the unit did not answer\n")
                                     : response(200, contentType(format), text, each.request.headOnly));
        }
        scrape_.reset();
    }

    void expire()
    {
        if (scrape_ && Clock::now() >= scrape_->until())
            finish();
        for (Connection& each : connections_) {
            if (each.state == State::Done || isWaiting(each) || Clock::now() < each.until)
                continue;
            if (each.state == State::Reads)
                each.answer(response(408, "text/plain; charset=utf-8", "the request did not arrive in time\n"));
            each.state = State::Done;
        }
    }

    void learnIdentity()
    {
        identity_ = readIdentity();
        retryAt_ = Clock::now() + kRetryIdentity;
    }

    Handle listener_;
    Identity identity_{};
    Clock::time_point retryAt_{};
    std::vector<Connection> connections_{};
    std::unique_ptr<Scrape> scrape_{};
};

} // namespace

void serve(Call& call, cli::Address address)
{
    Handle listener = listenAt(call, address);
    call.print("metrics", "http://" + address.text() + "/metrics");
    call.show();
    std::fflush(stdout); // the server never returns
    Server(std::move(listener)).run();
}

} // namespace hxaux::metrics
