// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Feed.h"
#include "panel/server/Guard.h"
#include "panel/server/HttpServer.h"
#include "panel/server/Programs.h"
#include "panel/server/UnitCommands.h"
#include "panel/server/UnitFeed.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace hxpanel {

struct Options {
    std::vector<std::string> units{}; ///< none: all that are running
    bool real = false;                ///< this machine itself
    bool readOnly = false;
    cli::Address address{.port = 8460};
    std::string token{};
};

/// What the page asks for: its files, the list of units, their event streams, commands and calls of hxaux.
class Panel : public Service {
public:
    Panel(Loop& loop, const Options& options);
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;
    ~Panel() override;

    std::optional<Response> refuse(const Request& request) override;
    void serve(const std::shared_ptr<Exchange>& exchange) override;

private:
    using Handler = void (Panel::*)(const std::shared_ptr<Exchange>&);
    struct Route {
        Access access = Access::Page;
        const char* methods = "GET";
        Handler handler = nullptr;
    };

    [[nodiscard]] static std::optional<Route> routeOf(const Request& request);
    void servePage(const std::shared_ptr<Exchange>& exchange);
    void servePanel(const std::shared_ptr<Exchange>& exchange);
    void serveProfiles(const std::shared_ptr<Exchange>& exchange);
    void serveEvents(const std::shared_ptr<Exchange>& exchange);
    void serveCommand(const std::shared_ptr<Exchange>& exchange);
    void serveHxaux(const std::shared_ptr<Exchange>& exchange);

    [[nodiscard]] std::vector<std::string> names() const;
    [[nodiscard]] bool isReal(const std::string& unit) const { return options_.real && unit == "real"; }
    [[nodiscard]] bool isKnown(const std::string& unit) const;
    [[nodiscard]] Response unknown(const std::string& unit) const;
    [[nodiscard]] std::string list() const;
    std::shared_ptr<Feed> feedOf(const std::string& unit);
    void showHealthy();
    void watchUnits();
    void forgetGone();

    Loop& loop_;
    Options options_;
    Guard guard_;
    HealthyUnit healthy_{programs_}; ///< goes last: its folder is a program's
    Programs programs_{loop_};
    std::map<std::string, std::shared_ptr<Feed>> feeds_{};
    std::map<std::string, UnitCommands> commands_{};
    std::string listed_{}; ///< the list that the streams know
    Loop::Timer watch_ = 0;
};

} // namespace hxpanel
