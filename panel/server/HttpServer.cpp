// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/HttpServer.h"

#include "panel/server/Guard.h"
#include "tools/cli/Address.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <microhttpd.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace hxpanel {

namespace {

constexpr std::size_t kBlock = 16U << 10; ///< of a stream
constexpr int kSendBuffer = 128 << 10;    ///< what the kernel keeps for a slow reader
constexpr Milliseconds kBetweenLooks{1000};

SteadyTime now()
{
    return std::chrono::steady_clock::now();
}

MHD_Result keepValue(void* values, MHD_ValueKind, const char* name, std::size_t length, const char* value,
                     std::size_t size)
{
    std::string lower{name, length};
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    static_cast<std::multimap<std::string, std::string>*>(values)->emplace(
        lower, value == nullptr ? std::string{} : std::string{value, size});
    return MHD_YES;
}

/// For every answer: the page needs nothing from elsewhere, and nobody else needs the page.
void addHeaders(MHD_Response* response)
{
    constexpr std::array<std::pair<const char*, const char*>, 5> kAlways{{
        {"Content-Security-Policy",
         "default-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; object-src 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
        {"X-Frame-Options", "DENY"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
    }};
    for (const auto& [name, value] : kAlways)
        (void)MHD_add_response_header(response, name, value);
}

} // namespace

/// A connection of a client, from its beginning to its end.
struct HttpServer::Connection {
    int fd = -1;
    SteadyTime since{};   ///< begin of what it does now: waiting for a request, answering, the last part of a stream
    bool answers = false; ///< a whole request has arrived
    bool streams = false; ///< the answer is an event stream
    bool waits = false;   ///< the stream has nothing to send

    static Connection& of(MHD_Connection* connection)
    {
        const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        return *static_cast<Connection*>(info->socket_context);
    }
    /// What the client has sent and is not read yet: a number of bytes, 0 at its end, or -1.
    [[nodiscard]] ssize_t unread() const
    {
        char next = 0;
        return recv(fd, &next, 1, MSG_PEEK | MSG_DONTWAIT);
    }
    /// The client has closed, and what it had sent is not a whole request.
    [[nodiscard]] bool isAbandoned() const { return !answers && unread() == 0; }
    /// The client gives nothing to do while others may be waiting.
    [[nodiscard]] bool isIdle() const { return !answers && isTooSlow(kPatienceWhenFull) && unread() < 0; }
    [[nodiscard]] bool isTooSlow(Milliseconds patience) const
    {
        const auto age = now() - since;
        return !waits && age > (answers && !streams ? kLongestAnswer : answers ? kPatience : patience);
    }
};

/// An event stream of a client, while it is sent.
class HttpServer::StreamState {
public:
    StreamState(HttpServer& server, MHD_Connection* connection, std::shared_ptr<Feed> feed)
        : server_{server}, connection_{connection}, stream_{std::move(feed), [this] { wake(); }}
    {
        ++server_.streams_;
        Connection::of(connection).streams = true;
    }
    StreamState(const StreamState&) = delete;
    StreamState& operator=(const StreamState&) = delete;
    ~StreamState() { --server_.streams_; }

    ssize_t read(char* bytes, std::size_t most)
    {
        Connection& connection = Connection::of(connection_);
        connection.since = now();
        if (frame_ == nullptr) {
            frame_ = stream_.next();
            sent_ = 0;
        }
        connection.waits = frame_ == nullptr;
        if (connection.waits) {
            server_.suspend(connection_);
            return 0;
        }
        const std::size_t count = std::min(most, frame_->size() - sent_);
        std::memcpy(bytes, frame_->data() + sent_, count);
        sent_ += count;
        if (sent_ == frame_->size())
            frame_.reset();
        return static_cast<ssize_t>(count);
    }

private:
    void wake()
    {
        Connection& connection = Connection::of(connection_);
        if (!std::exchange(connection.waits, false))
            return;
        connection.since = now();
        server_.resume(connection_);
    }

    HttpServer& server_;
    MHD_Connection* connection_;
    Frame frame_{};
    std::size_t sent_ = 0;
    Stream stream_;
};

/// What the HTTP library calls.
struct Callbacks {
    using Held = std::shared_ptr<Exchange>;

    static MHD_Result request(void* server, MHD_Connection* connection, const char* url, const char* method,
                              const char*, const char* body, std::size_t* size, void** held)
    {
        auto& self = *static_cast<HttpServer*>(server);
        if (*held == nullptr) {
            const Held exchange = begun(self, connection, url, method);
            *held = new Held{exchange};
            exchange->response_ = self.service_.refuse(exchange->request);
            const bool isTooLong = exchange->response_ && exchange->response_->status == MHD_HTTP_CONTENT_TOO_LARGE;
            return static_cast<MHD_Result>(isTooLong ? self.queue(connection, *exchange->response_) : MHD_YES);
        }
        const Held exchange = *static_cast<Held*>(*held);
        if (*size == 0)
            return static_cast<MHD_Result>(self.take(connection, exchange));
        if (exchange->request.body.size() + *size > HttpServer::kLargestBody)
            return MHD_NO; // of a length that was not announced
        exchange->request.body.append(body, *size);
        *size = 0;
        return MHD_YES;
    }

    static Held begun(HttpServer& server, MHD_Connection* connection, const char* url, const char* method)
    {
        auto exchange = std::make_shared<Exchange>(server, connection);
        Request& request = exchange->request;
        request.method = method;
        request.path = url;
        request.localAddress = cli::localAddressOf(HttpServer::Connection::of(connection).fd);
        (void)MHD_get_connection_values_n(connection, MHD_HEADER_KIND, keepValue, &request.headers);
        (void)MHD_get_connection_values_n(connection, MHD_GET_ARGUMENT_KIND, keepValue, &request.parameters);
        return exchange;
    }

    static void completed(void* server, MHD_Connection* connection, void** held, MHD_RequestTerminationCode)
    {
        const std::unique_ptr<Held> exchange{static_cast<Held*>(std::exchange(*held, nullptr))};
        if (exchange == nullptr)
            return;
        (**exchange).server_ = nullptr;
        static_cast<HttpServer*>(server)->suspended_.erase(connection);
        HttpServer::Connection& state = HttpServer::Connection::of(connection);
        state = {.fd = state.fd, .since = now()};
    }

    static void connection(void* server, MHD_Connection* connection, void** context,
                           MHD_ConnectionNotificationCode code)
    {
        auto& self = *static_cast<HttpServer*>(server);
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
            auto* const state = new HttpServer::Connection{.fd = info->connect_fd, .since = now()};
            (void)setsockopt(state->fd, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
            self.connections_.insert(state);
            *context = state;
            return self.lookLater();
        }
        auto* const state = static_cast<HttpServer::Connection*>(*context);
        self.connections_.erase(state);
        delete state;
    }

    static ssize_t read(void* state, std::uint64_t, char* bytes, std::size_t most)
    {
        return static_cast<HttpServer::StreamState*>(state)->read(bytes, most);
    }

    static void free(void* state) { delete static_cast<HttpServer::StreamState*>(state); }
};

void Exchange::answer(Response response)
{
    response_ = std::move(response);
    proceed();
}

void Exchange::stream(std::shared_ptr<Feed> feed)
{
    feed_ = std::move(feed);
    proceed();
}

void Exchange::proceed()
{
    if (server_ != nullptr && std::exchange(suspended_, false))
        server_->resume(connection_);
}

HttpServer::HttpServer(Loop& loop, int listener, Service& service) : loop_{loop}, service_{service}
{
    daemon_ = MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, Callbacks::request, this,
                               MHD_OPTION_LISTEN_SOCKET, listener, MHD_OPTION_CONNECTION_LIMIT, kMostConnections,
                               MHD_OPTION_CONNECTION_MEMORY_LIMIT, kMemoryOfConnection, MHD_OPTION_NOTIFY_COMPLETED,
                               Callbacks::completed, this, MHD_OPTION_NOTIFY_CONNECTION, Callbacks::connection, this,
                               MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_END);
    if (daemon_ == nullptr)
        throw std::runtime_error{"the HTTP server cannot be started"};
    const int epoll = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
    loop_.watch(epoll, EPOLLIN, [] {}); // served in the round
    loop_.inEachRound([this] {
        (void)MHD_run(daemon_);
        MHD_UNSIGNED_LONG_LONG most = 0;
        const bool isLimited = MHD_get_timeout(daemon_, &most) == MHD_YES;
        return Milliseconds{isLimited ? std::min<MHD_UNSIGNED_LONG_LONG>(most, 60000) : 60000};
    });
}

HttpServer::~HttpServer()
{
    loop_.cancel(look_);
    loop_.inEachRound({});
    loop_.forget(MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd);
    while (!suspended_.empty())
        resume(*suspended_.begin());
    MHD_stop_daemon(daemon_);
}

/// Ends the connections that take too long for what they do: one that only holds its place, byte by byte or silent,
/// keeps others out.
void HttpServer::look()
{
    const bool isFull = connections_.size() >= kMostConnections;
    for (const Connection* const each : connections_)
        if (each->isAbandoned() || each->isTooSlow(kPatience) || (isFull && each->isIdle()))
            (void)shutdown(each->fd, SHUT_RDWR);
    if (!connections_.empty())
        lookLater();
}

void HttpServer::lookLater()
{
    if (look_ == 0)
        look_ = loop_.after(kBetweenLooks, [this] {
            look_ = 0;
            look();
        });
}

int HttpServer::take(MHD_Connection* connection, const std::shared_ptr<Exchange>& exchange)
{
    Connection& state = Connection::of(connection);
    if (!exchange->response_ && !std::exchange(exchange->served_, true)) {
        state.answers = true;
        state.since = now();
        service_.serve(exchange);
    }
    if (exchange->response_)
        return queue(connection, *exchange->response_);
    if (exchange->feed_ != nullptr)
        return queueStream(connection, *exchange);
    exchange->suspended_ = true;
    suspend(connection);
    return MHD_YES;
}

int HttpServer::queue(MHD_Connection* connection, const Response& response)
{
    Connection::of(connection).answers = true;
    Connection::of(connection).since = now();
    MHD_Response* const answer = MHD_create_response_from_buffer(
        response.body.size(), const_cast<char*>(response.body.data()), MHD_RESPMEM_MUST_COPY);
    if (answer == nullptr)
        return MHD_NO;
    addHeaders(answer);
    (void)MHD_add_response_header(answer, MHD_HTTP_HEADER_CONTENT_TYPE, response.type.c_str());
    (void)MHD_add_response_header(answer, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    for (const auto& [name, value] : response.headers)
        (void)MHD_add_response_header(answer, name.c_str(), value.c_str());
    const MHD_Result queued = MHD_queue_response(connection, response.status, answer);
    MHD_destroy_response(answer);
    return queued;
}

int HttpServer::queueStream(MHD_Connection* connection, Exchange& exchange)
{
    if (streams_ >= kMostStreams) {
        Response refused = errorResponse(503, "too many event streams");
        refused.headers.emplace_back("Retry-After", "5");
        return queue(connection, refused);
    }
    auto* const state = new StreamState{*this, connection, std::move(exchange.feed_)};
    MHD_Response* const answer =
        MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, Callbacks::read, state, Callbacks::free);
    if (answer == nullptr) {
        delete state;
        return MHD_NO;
    }
    addHeaders(answer);
    (void)MHD_add_response_header(answer, MHD_HTTP_HEADER_CONTENT_TYPE, "text/event-stream");
    (void)MHD_add_response_header(answer, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    const MHD_Result queued = MHD_queue_response(connection, MHD_HTTP_OK, answer);
    MHD_destroy_response(answer);
    return queued;
}

void HttpServer::suspend(MHD_Connection* connection)
{
    suspended_.insert(connection);
    MHD_suspend_connection(connection);
}

void HttpServer::resume(MHD_Connection* connection)
{
    if (suspended_.erase(connection) != 0)
        MHD_resume_connection(connection);
}

} // namespace hxpanel
