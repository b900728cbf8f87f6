// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/EventSource.h"

#include "simulator/model/Requests.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <array>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

/// These follow from the time alone. While one is watched, the unit looks at it as often as a LED can change.
constexpr std::array kMoving{"led.lit", "light"};
constexpr Time kBetweenLooks = 10ms;

/// "put 4" of "put 4 = 1".
std::string nameOf(const Entry& entry, const std::string& call)
{
    if (entry.kind != Entry::Kind::Ioctl)
        return entry.action.substr(0, entry.action.find(' '));
    if (entry.request != kGetRegister && entry.request != kPutRegister)
        return requestName(entry.request);
    return call.substr(0, call.find(' ', call.find(' ') + 1));
}

const char* directionOf(const Entry& entry)
{
    if (entry.in.empty())
        return entry.out.empty() ? "none" : "out";
    return entry.out.empty() ? "in" : "both";
}

} // namespace

EventSource::EventSource(Unit& unit, Publish publish) : unit_{unit}, publish_{std::move(publish)}
{
    unit_.journal().listen(this, [this](const Entry& entry) {
        if (!followed_)
            return;
        this->publish(eventOf(entry));
        look();
    });
    unit_.faults().listen([this](const Fault& fault, std::string_view subject, std::string_view call) {
        this->publish({.kind = Event::Kind::Fault,
                       .subject = std::string{subject},
                       .text = std::string{call},
                       .error = errnoName(fault.error)});
    });
    unit_.clock().listen([this] { look(); });
}

EventSource::~EventSource()
{
    unit_.journal().listen(this, {});
    unit_.faults().listen({});
    unit_.clock().listen({});
    if (nextLook_)
        unit_.clock().cancel(*nextLook_);
}

Event EventSource::eventOf(const Entry& entry)
{
    const std::string call = entry.call();
    return {.kind = Event::Kind::Request,
            .time = entry.time,
            .subject = entry.subject,
            .text = call,
            .process = entry.caller.process,
            .thread = entry.caller.thread,
            .name = nameOf(entry, call),
            .direction = directionOf(entry),
            .in = hexBytes(entry.in),
            .out = hexBytes(entry.out),
            .error = entry.error == 0 ? "" : errnoName(entry.error)};
}

void EventSource::watch(const std::set<std::string>& properties)
{
    std::erase_if(watched_, [&](const auto& each) { return !properties.contains(each.first); });
    for (const std::string& name : properties)
        if (!watched_.contains(name)) {
            const Properties::Property& property = unit_.properties().all().at(name);
            watched_.emplace(name, Watched{&property, property.get()});
        }
    lookAgainLater();
}

void EventSource::lookAgainLater()
{
    const bool anyMoves = std::ranges::any_of(kMoving, [this](const char* name) { return watched_.contains(name); });
    if (!anyMoves || nextLook_)
        return;
    nextLook_ = unit_.clock().after(kBetweenLooks, [this] {
        nextLook_.reset();
        lookAgainLater();
    });
}

void EventSource::look()
{
    if (looking_ || watched_.empty())
        return;
    looking_ = true;
    for (auto& [name, watched] : watched_) {
        std::string now = watched.property->get();
        if (now == watched.value)
            continue;
        std::swap(now, watched.value);
        publish({.kind = Event::Kind::Property, .subject = name, .text = watched.value, .old = now});
    }
    looking_ = false;
}

void EventSource::publish(Event event)
{
    if (!followed_)
        return;
    event.time = unit_.clock().now();
    event.number = ++number_;
    publish_(event);
}

void EventSource::joined(int process, const std::string& program)
{
    programs_[process] = program;
    publish({.kind = Event::Kind::Joined, .subject = program, .process = process});
}

void EventSource::left(int process)
{
    const auto found = programs_.find(process);
    if (found == programs_.end())
        return;
    publish({.kind = Event::Kind::Left, .subject = found->second, .process = process});
    programs_.erase(found);
}

void EventSource::printed(int process, const std::string& program, const std::string& line)
{
    publish({.kind = Event::Kind::Output, .subject = program, .text = line, .process = process});
}

} // namespace hxsim
