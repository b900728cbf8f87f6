// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Panel.h"

#include "panel/server/HxauxCalls.h"
#include "panel/server/PageFiles.h"
#include "panel/server/RealFeed.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "tools/cli/Json.h"
#include "tools/cli/NearNames.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace hxpanel {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

constexpr char kReal[] = "real";
constexpr char kUnits[] = "/api/units/";
constexpr Milliseconds kBetweenLists{1000};
constexpr int kDeepest = 8;

const PageFile* pageAt(const std::string& path)
{
    const auto files = pageFiles();
    const auto found = std::ranges::find(files, path == "/" ? "/index.html" : path, &PageFile::path);
    return found == files.end() ? nullptr : &*found;
}

/// "unit-1" and "command" of "/api/units/unit-1/command".
std::pair<std::string, std::string> unitAndVerbIn(const std::string& path)
{
    const std::string rest = path.substr(sizeof kUnits - 1);
    const std::size_t slash = rest.find('/');
    return {rest.substr(0, slash), slash == std::string::npos ? "" : rest.substr(slash + 1)};
}

/// The texts in the array of this name, the only thing that a request has.
Words wordsIn(const std::string& body, const std::string& name)
{
    const auto isShallow = [](int depth, Json::parse_event_t, const Json&) {
        if (depth > kDeepest)
            throw hxsim::BadText{"the request is nested too deeply"};
        return true;
    };
    const Json object = Json::parse(body, isShallow, false);
    const auto found = object.is_object() ? object.find(name) : object.end();
    const auto isText = [](const Json& word) { return word.is_string(); };
    if (found == object.end() || !found->is_array() || found->empty() || !std::ranges::all_of(*found, isText))
        throw hxsim::BadText{"expected {\"" + name + "\": [\"WORD\", ...]}"};
    return found->get<Words>();
}

Response okResponse(const std::string& body)
{
    return {.body = body};
}

/// The light profiles that come with hx-sim: beside this program in a build, under share/ when installed.
Json profiles()
{
    std::error_code none;
    const fs::path own = fs::read_symlink("/proc/self/exe", none).parent_path();
    Json all = Json::object();
    for (const fs::path& folder : {own / "units/light", own.parent_path() / "share/hx-sim/light"})
        for (const fs::directory_entry& entry : fs::directory_iterator{folder, none})
            if (entry.path().extension() == ".profile" && !all.contains(entry.path().stem())) {
                std::ostringstream text;
                text << std::ifstream{entry.path()}.rdbuf();
                all[entry.path().stem()] = text.str();
            }
    return all;
}

} // namespace

Panel::Panel(Loop& loop, const Options& options)
    : loop_{loop}, options_{options}, guard_{options.address, options.token}
{
    feeds_[""] = std::make_shared<ListFeed>(loop_, [this] { return list(); });
    if (options_.real)
        feeds_[kReal] = std::make_shared<RealFeed>(loop_, programs_, options_.readOnly);
    if (!options_.real || !options_.units.empty())
        healthy_.ask([this] { showHealthy(); });
    watchUnits();
}

Panel::~Panel()
{
    loop_.cancel(watch_);
}

std::optional<Panel::Route> Panel::routeOf(const Request& request)
{
    const std::string& path = request.path;
    if (path == "/api/panel")
        return Route{Access::Open, "GET", &Panel::servePanel};
    if (path == "/api/profiles")
        return Route{Access::Read, "GET", &Panel::serveProfiles};
    if (path == "/api/events")
        return Route{Access::Read, "GET", &Panel::serveEvents};
    if (path.starts_with(kUnits)) {
        const std::string verb = unitAndVerbIn(path).second;
        if (verb == "command")
            return Route{Access::Change, "POST", &Panel::serveCommand};
        if (verb == "hxaux")
            return Route{Access::Change, "POST", &Panel::serveHxaux};
    }
    if (pageAt(path) != nullptr)
        return Route{Access::Page, "GET, HEAD", &Panel::servePage};
    return std::nullopt;
}

std::optional<Response> Panel::refuse(const Request& request)
{
    const std::optional<Route> route = routeOf(request);
    const Access access = route ? route->access : Access::Read;
    if (std::optional<Response> refused = guard_.refusal(request, access); refused && (route || refused->status != 401))
        return refused;
    if (!route)
        return errorResponse(404, "there is nothing at this address");
    const std::string methods = std::string{", "} + route->methods + ',';
    if (methods.find(", " + request.method + ',') == std::string::npos) {
        Response refused = errorResponse(405, "this address is for " + std::string{route->methods});
        refused.headers.emplace_back("Allow", route->methods);
        return refused;
    }
    const std::string length = request.header("content-length");
    if (length.size() > 8 || std::atol(length.c_str()) > static_cast<long>(HttpServer::kLargestBody))
        return errorResponse(413, "the request is longer than " + std::to_string(HttpServer::kLargestBody) + " bytes");
    return std::nullopt;
}

void Panel::serve(const std::shared_ptr<Exchange>& exchange)
{
    try {
        (this->*routeOf(exchange->request)->handler)(exchange);
    } catch (const hxsim::BadText& bad) {
        exchange->answer(errorResponse(400, bad.what()));
    } catch (const std::exception& error) { // memory or descriptors have run out
        exchange->answer(errorResponse(500, error.what()));
    }
}

void Panel::servePage(const std::shared_ptr<Exchange>& exchange)
{
    const PageFile& file = *pageAt(exchange->request.path);
    exchange->answer({.type = std::string{file.type}, .body = std::string{file.text}});
}

void Panel::servePanel(const std::shared_ptr<Exchange>& exchange)
{
    Json answer = Json::parse(list());
    answer["version"] = HXPANEL_VERSION;
    answer["readOnly"] = options_.readOnly;
    answer["token"] = guard_.needsToken();
    exchange->answer(okResponse(cli::written(answer) + '\n'));
}

void Panel::serveProfiles(const std::shared_ptr<Exchange>& exchange)
{
    exchange->answer(okResponse(cli::written(profiles()) + '\n'));
}

void Panel::serveEvents(const std::shared_ptr<Exchange>& exchange)
{
    const auto unit = exchange->request.parameters.find("unit");
    const std::string name = unit == exchange->request.parameters.end() ? "" : unit->second;
    if (!name.empty() && !isKnown(name))
        return exchange->answer(unknown(name));
    listed_.clear(); // what the page knows may be older than its stream
    exchange->stream(feedOf(name));
}

void Panel::serveCommand(const std::shared_ptr<Exchange>& exchange)
{
    const std::string unit = unitAndVerbIn(exchange->request.path).first;
    const Words words = wordsIn(exchange->request.body, "command");
    const Permission permission = permissionOf(words[0]);
    if (permission == Permission::Refused)
        return exchange->answer(errorResponse(403, "the panel does not send the command '" + words[0] + "'" +
                                                       cli::suggestion(words[0], allowedCommands(options_.readOnly))));
    if (permission == Permission::Changes && options_.readOnly)
        return exchange->answer(errorResponse(403, "this panel is read-only"));
    if (UnitLink::lengthOf(words) > UnitLink::kLongestCommand)
        return exchange->answer(errorResponse(413, "the command is too long"));
    if (!isKnown(unit) || isReal(unit))
        return exchange->answer(unknown(unit));
    commands_.try_emplace(unit, loop_, unit)
        .first->second.send(words, [=, this](UnitCommands::Outcome outcome, const Json& answer) {
            if (outcome == UnitCommands::Outcome::NotRunning)
                return exchange->answer(unknown(unit));
            if (outcome == UnitCommands::Outcome::NoAnswer)
                return exchange->answer(errorResponse(504, "the unit does not answer"));
            Json kept = answer;
            kept.erase("id");
            exchange->answer(okResponse(cli::written(kept) + '\n'));
            if (const auto feed = feeds_.find(unit); permission == Permission::Changes && feed != feeds_.end())
                feed->second->refresh();
        });
}

void Panel::serveHxaux(const std::shared_ptr<Exchange>& exchange)
{
    const std::string unit = unitAndVerbIn(exchange->request.path).first;
    const HxauxCall call = checkedCall(wordsIn(exchange->request.body, "words"));
    if (call.kind == HxauxCall::Kind::Refused)
        return exchange->answer(errorResponse(403, call.why));
    if (call.kind == HxauxCall::Kind::Changes && options_.readOnly)
        return exchange->answer(errorResponse(403, "this panel is read-only"));
    if (!isKnown(unit))
        return exchange->answer(unknown(unit));
    Words command;
    if (!isReal(unit))
        command = {programNamed("hx-sim"), "run", "--unit", unit, "--"};
    command.push_back(programNamed("hxaux"));
    command.insert(command.end(), call.words.begin(), call.words.end());
    const bool isTaken = programs_.run(std::move(command), [exchange](const Programs::Result& result) {
        using enum Programs::Outcome;
        if (result.outcome == TooLong)
            return exchange->answer(errorResponse(504, "hxaux took longer than 10 s and was ended"));
        if (result.outcome == TooMuch || result.outcome == NotStarted || !result.output.starts_with('{'))
            return exchange->answer(errorResponse(502, result.outcome == NotStarted ? result.output
                                                       : result.outcome == TooMuch
                                                           ? "hxaux printed too much and was ended"
                                                           : "hxaux could not be run on the unit"));
        exchange->answer(okResponse(result.output));
    });
    if (isTaken)
        return;
    Response busy = errorResponse(503, "too many calls of hxaux are waiting");
    busy.headers.emplace_back("Retry-After", "1");
    exchange->answer(busy);
}

/// The units of the page, running or not.
std::vector<std::string> Panel::names() const
{
    std::vector<std::string> all = options_.units;
    if (all.empty() && !options_.real)
        all = hxsim::UnitFolder::running();
    for (const auto& [name, feed] : feeds_)
        if (!name.empty() && (feed->isFollowed() || isReal(name)))
            all.push_back(name);
    std::ranges::sort(all);
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

bool Panel::isKnown(const std::string& unit) const
{
    const Words all = names();
    return std::ranges::find(all, unit) != all.end();
}

Response Panel::unknown(const std::string& unit) const
{
    return errorResponse(404, "no unit named '" + unit + "' is running" + cli::suggestion(unit, names()));
}

std::string Panel::list() const
{
    const Words running = hxsim::UnitFolder::running();
    Json units = Json::array();
    for (const std::string& name : names()) {
        units.push_back({{"name", name},
                         {"kind", isReal(name) ? "real" : "simulated"},
                         {"running", isReal(name) || std::ranges::find(running, name) != running.end()}});
    }
    return cli::written(Json{{"units", units}});
}

std::shared_ptr<Feed> Panel::feedOf(const std::string& unit)
{
    std::shared_ptr<Feed>& feed = feeds_[unit];
    if (feed == nullptr)
        feed = std::make_shared<UnitFeed>(loop_, unit, healthy_, options_.readOnly);
    return feed;
}

void Panel::showHealthy()
{
    for (const auto& [name, feed] : feeds_)
        if (auto* const unit = dynamic_cast<UnitFeed*>(feed.get()))
            unit->showHealthy();
}

/// Units come and go without a message to anybody; who looks at the page sees it within a second.
void Panel::watchUnits()
{
    watch_ = loop_.after(kBetweenLists, [this] { watchUnits(); });
    const bool isSeen = std::ranges::any_of(feeds_, [](const auto& each) { return each.second->isFollowed(); });
    if (isSeen || !commands_.empty())
        forgetGone();
    if (!isSeen)
        return listed_.clear();
    const std::string now = list();
    if (listed_ != now)
        for (const auto& [name, feed] : feeds_)
            if (feed->isFollowed())
                feed->push(frameOf("units", now));
    listed_ = now;
}

/// Names of units that have stopped are not kept.
void Panel::forgetGone()
{
    const Words all = names();
    const auto isGone = [&](const auto& each) {
        return !each.first.empty() && std::ranges::find(all, each.first) == all.end();
    };
    std::erase_if(feeds_, isGone);
    std::erase_if(commands_, isGone);
}

} // namespace hxpanel
