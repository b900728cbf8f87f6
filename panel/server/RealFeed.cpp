// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/RealFeed.h"

#include "panel/server/HxauxCalls.h"
#include "tools/cli/Json.h"

#include <array>
#include <utility>
#include <vector>

namespace hxpanel {

namespace {

using Json = nlohmann::json;

/// What is asked for in every round, and what changes by hand alone: in every tenth.
struct Reading {
    const char* name;
    std::vector<std::string> words;
    std::size_t every;
};

const std::array<Reading, 11>& readings()
{
    static const std::array<Reading, 11> rows{{
        {"monitor", {"monitor"}, 1},
        {"backlight", {"backlight", "get"}, 1},
        {"buzzer", {"buzzer"}, 1},
        {"led", {"led"}, 1},
        {"light", {"light"}, 1},
        {"power", {"power"}, 1},
        {"can", {"can", "get"}, 10},
        {"diag", {"diag"}, 10},
        {"settings", {"settings", "list"}, 10},
        {"telematics", {"telematics", "status"}, 10},
        {"version", {"version"}, 10},
    }};
    return rows;
}

} // namespace

RealFeed::RealFeed(Loop& loop, Programs& programs, bool readOnly)
    : Feed{loop, "real"}, programs_{programs}, readOnly_{readOnly}
{
}

RealFeed::~RealFeed()
{
    *alive_ = false;
    loop_.cancel(pause_);
}

double RealFeed::time() const
{
    const auto since = std::chrono::round<Milliseconds>(std::chrono::steady_clock::now() - started_);
    return static_cast<double>(since.count()) / 1000;
}

void RealFeed::begin()
{
    works_ = true;
    round_ = 0;
    if (!asks_)
        askNext();
}

void RealFeed::end()
{
    works_ = false;
    loop_.cancel(std::exchange(pause_, 0));
}

void RealFeed::askNext()
{
    while (next_ < readings().size() && round_ % readings()[next_].every != 0)
        ++next_;
    if (next_ == readings().size())
        return endRound();
    std::vector<std::string> command{programNamed("hxaux")};
    const HxauxCall call = checkedCall(readings()[next_].words);
    command.insert(command.end(), call.words.begin(), call.words.end());
    asks_ = true;
    const bool isStarted = programs_.run(std::move(command), [this, alive = alive_](const Programs::Result& result) {
        if (*alive)
            take(result);
    });
    if (!isStarted) // too much to do: in the next round
        endRound();
}

/// What failed has no reading.
void RealFeed::take(const Programs::Result& result)
{
    const char* const name = readings()[next_].name;
    const Json document = Json::parse(result.output, nullptr, false);
    const Json reading = document.is_object() ? document.value("result", Json::object()) : Json::object();
    const Json before = readings_.value(name, Json::object());
    if (reading.empty())
        readings_.erase(name);
    else
        readings_[name] = reading;
    changed_ = changed_ || reading != before;
    ++next_;
    askNext();
}

void RealFeed::endRound()
{
    asks_ = false;
    next_ = 0;
    ++round_;
    if (!std::exchange(complete_, true))
        restart();
    else if (changed_)
        push(frameOf("readings", cli::written(Json{{"time", time()}, {"readings", readings_}})));
    changed_ = false;
    if (works_)
        pause_ = loop_.after(kBetweenRounds, [this] {
            pause_ = 0;
            askNext();
        });
}

Frame RealFeed::snapshot()
{
    if (!complete_)
        return nullptr;
    const Json none = Json::array();
    return frameOf("snapshot", cli::written(Json{{"unit", name()},
                                                 {"kind", "real"},
                                                 {"time", time()},
                                                 {"running", true},
                                                 {"readOnly", readOnly_},
                                                 {"properties", Json::object()},
                                                 {"actions", Json::object()},
                                                 {"faults", none},
                                                 {"programs", none},
                                                 {"devices", none},
                                                 {"removed", none},
                                                 {"readings", readings_}}));
}

void RealFeed::showLife()
{
    push(frameOf("alive", Json{{"time", time()}}.dump()));
}

} // namespace hxpanel
