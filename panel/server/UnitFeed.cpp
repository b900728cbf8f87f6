// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/UnitFeed.h"

#include "simulator/client/EventSocket.h"
#include "tools/cli/Json.h"

#include <algorithm>
#include <utility>

namespace hxpanel {

namespace {

using Json = nlohmann::json;

constexpr Milliseconds kBetweenTries{200};

/// The document that a command has answered with.
Json documentIn(const Json& answer, const Json& without)
{
    const Json document = Json::parse(answer.value("text", ""), nullptr, false);
    return document.type() == without.type() ? document : without;
}

} // namespace

UnitFeed::~UnitFeed()
{
    loop_.cancel(retry_);
    loop_.cancel(flush_);
}

void UnitFeed::connect()
{
    try {
        link_ = std::make_unique<UnitLink>(
            loop_, name(), [this](const Json& event, std::string_view line) { take(event, line); }, [this] { lose(); });
    } catch (const hxsim::BadText&) { // it is not running
        retry_ = loop_.after(kBetweenTries, [this] { connect(); });
        return;
    }
    state_ = State::Asking;
    ask();
}

/// The answers come in the order of the commands; the last one completes the state.
void UnitFeed::ask()
{
    link_->send({"events", "--all"}, [](const Json&) {});
    link_->send({"actions", "--json"}, [this](const Json& answer) { actions_ = documentIn(answer, Json::object()); });
    link_->send({"faults", "--json"}, [this](const Json& answer) { faults_ = documentIn(answer, Json::array()); });
    link_->send({"devices"}, [this](const Json& answer) { noteDevices(answer); });
    link_->send({"properties", "--json"}, [this](const Json& answer) {
        properties_ = documentIn(answer, Json::object());
        window_ = {};
    });
    link_->send({"programs"}, [this](const Json& answer) { follow(answer); });
}

void UnitFeed::follow(const Json& programs)
{
    noteTime(programs);
    programs_.clear();
    for (const Json& row : documentIn(programs, Json::array()))
        programs_[row.value("process", 0)] = row.value("program", "");
    apply();
    window_ = {};
    snapshot_.reset();
    state_ = State::Following;
    silent_ = false;
    restart();
}

void UnitFeed::lose()
{
    const bool wasFollowing = state_ == State::Following;
    end();
    if (wasFollowing)
        push(frameOf("gone", "{}"));
    else
        restart(); // streams that wait for a snapshot
    retry_ = loop_.after(kBetweenTries, [this] { connect(); });
}

void UnitFeed::end()
{
    link_.reset();
    state_ = State::Gone;
    refreshing_ = false;
    window_ = {};
    loop_.cancel(std::exchange(retry_, 0));
    loop_.cancel(std::exchange(flush_, 0));
}

void UnitFeed::take(const Json& event, std::string_view line)
{
    time_ = event.value("time", time_);
    const std::string kind = event.value("event", "");
    if (kind == "joined")
        programs_[event.value("process", 0)] = event.value("program", "");
    if (kind == "left")
        programs_.erase(event.value("process", 0));
    window_.add(event, line, std::chrono::steady_clock::now());
    if (state_ != State::Following)
        return;
    if (window_.isFull())
        flush();
    else
        flushSoon();
}

/// What happens after a pause is sent at once, together with what has already arrived; then every 20 ms.
void UnitFeed::flushSoon()
{
    if (flush_ != 0)
        return;
    const auto since = std::chrono::steady_clock::now() - flushed_;
    const auto left = std::chrono::ceil<Milliseconds>(kBetweenMessages - since);
    flush_ = loop_.after(std::max(left, Milliseconds{0}), [this] {
        flush_ = 0;
        flush();
    });
}

void UnitFeed::flush()
{
    flushed_ = std::chrono::steady_clock::now();
    if (window_.isEmpty() || state_ != State::Following)
        return;
    const bool hasFaults = window_.hasFaults();
    apply();
    push(frameOf("events", window_.take()));
    if (hasFaults)
        refresh();
}

void UnitFeed::apply()
{
    snapshot_.reset();
    for (const auto& [name, value] : window_.changes())
        if (const auto found = properties_.find(name); found != properties_.end())
            (*found)["value"] = value;
}

void UnitFeed::showHealthy()
{
    flush();
    snapshot_.reset();
    if (state_ == State::Following)
        push(snapshot());
}

void UnitFeed::refresh()
{
    if (state_ != State::Following || std::exchange(refreshing_, true))
        return;
    link_->send({"faults", "--json"}, [this](const Json& answer) { noteFaults(answer); });
    link_->send({"devices"}, [this](const Json& answer) {
        const Json before = devices_;
        noteDevices(answer);
        refreshing_ = false;
        if (devices_ != before)
            push(frameOf("devices", cli::written(devices_)));
    });
}

void UnitFeed::noteFaults(const Json& answer)
{
    Json faults = documentIn(answer, Json::array());
    if (faults == faults_)
        return;
    faults_ = std::move(faults);
    snapshot_.reset();
    push(frameOf("faults", cli::written(Json{{"faults", faults_}})));
}

void UnitFeed::noteDevices(const Json& answer)
{
    Json devices = Json::array();
    Json removed = Json::array();
    const Json rows = documentIn(answer, Json::object());
    for (const auto& [path, state] : rows.items()) {
        devices.push_back(path);
        if (state == "removed")
            removed.push_back(path);
    }
    devices_ = {{"devices", devices}, {"removed", removed}};
    snapshot_.reset();
}

Frame UnitFeed::snapshot()
{
    if (state_ == State::Asking && !silent_)
        return nullptr;
    if (state_ != State::Following)
        return frameOf("gone", "{}");
    if (snapshot_ != nullptr)
        return snapshot_;
    Json programs = Json::array();
    for (const auto& [process, program] : programs_)
        programs.push_back({{"process", process}, {"program", program}});
    const Json document{{"unit", name()},
                        {"kind", "simulated"},
                        {"time", time_},
                        {"running", true},
                        {"readOnly", readOnly_},
                        {"properties", healthy_.addedTo(properties_)},
                        {"actions", actions_},
                        {"faults", faults_},
                        {"programs", programs},
                        {"devices", devices_["devices"]},
                        {"removed", devices_["removed"]}};
    snapshot_ = frameOf("snapshot", cli::written(document));
    return snapshot_;
}

/// A unit that does not answer shows no life of its own; the stream does.
void UnitFeed::showLife()
{
    silent_ = state_ == State::Asking;
    push(frameOf("alive", Json{{"time", time_}}.dump()));
    if (state_ != State::Following)
        return;
    link_->send({"scale"}, [this](const Json& answer) {
        noteTime(answer);
        snapshot_.reset();
    });
    refresh();
}

} // namespace hxpanel
