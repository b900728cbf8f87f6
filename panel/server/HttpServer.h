// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Feed.h"
#include "panel/server/Loop.h"
#include "panel/server/Request.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

struct MHD_Connection;
struct MHD_Daemon;

namespace hxpanel {

class HttpServer;

/// A request and its answer, which may come later.
class Exchange {
public:
    Exchange(HttpServer& server, MHD_Connection* connection) : server_{&server}, connection_{connection} {}

    Request request{};

    /// Answers, once. Nothing happens when the other end has gone.
    void answer(Response response);
    /// Answers with an event stream.
    void stream(std::shared_ptr<Feed> feed);

private:
    friend class HttpServer;
    friend struct Callbacks;

    void proceed();

    HttpServer* server_; ///< null when the other end has gone
    MHD_Connection* connection_;
    bool served_ = false;
    bool suspended_ = false;
    std::optional<Response> response_{};
    std::shared_ptr<Feed> feed_{};
};

/// What the server is for.
class Service {
public:
    virtual ~Service() = default;
    /// Called when the head of a request is known. The body of what is refused here is not looked at.
    virtual std::optional<Response> refuse(const Request& request) = 0;
    virtual void serve(const std::shared_ptr<Exchange>& exchange) = 0;
};

/// HTTP with limits: connections, event streams, sizes, and times. The only code that knows the HTTP library.
class HttpServer {
public:
    /// Serves the connections of this listening socket, and closes it at the end.
    HttpServer(Loop& loop, int listener, Service& service);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    static constexpr unsigned kMostConnections = 64;
    static constexpr std::size_t kMostStreams = 32;
    static constexpr std::size_t kLargestBody = 64U << 10;
    static constexpr std::size_t kMemoryOfConnection = 32U << 10; ///< limits the head of a request
    /// For a whole request to arrive, and for a stream to take something.
    static constexpr Milliseconds kPatience{30000};
    /// The same while others may be waiting for a connection.
    static constexpr Milliseconds kPatienceWhenFull{1000};
    /// For an answer that is not a stream.
    static constexpr Milliseconds kLongestAnswer{60000};

private:
    friend class Exchange;
    friend struct Callbacks;
    class StreamState;
    struct Connection;

    void look();
    void lookLater();
    int take(MHD_Connection* connection, const std::shared_ptr<Exchange>& exchange);
    int queue(MHD_Connection* connection, const Response& response);
    int queueStream(MHD_Connection* connection, Exchange& exchange);
    void suspend(MHD_Connection* connection);
    void resume(MHD_Connection* connection);

    Loop& loop_;
    Service& service_;
    MHD_Daemon* daemon_ = nullptr;
    std::set<Connection*> connections_{};
    std::set<MHD_Connection*> suspended_{};
    std::size_t streams_ = 0;
    Loop::Timer look_ = 0;
};

} // namespace hxpanel
