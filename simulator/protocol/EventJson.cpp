// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/EventJson.h"

#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>
#include <utility>

namespace hxsim {

namespace {

using cli::written;
using Json = nlohmann::json;
using Kind = Event::Kind;
using Member = std::string Event::*;

struct TextField {
    const char* name;
    Member member;
};

/// A kind of event and its texts. Empty texts behind the first two are left out.
struct Form {
    Kind kind;
    const char* name;
    std::array<TextField, 7> texts;
};

const std::array kForms{
    Form{Kind::Property, "property", {{{"name", &Event::subject}, {"new", &Event::text}, {"old", &Event::old}}}},
    Form{Kind::Request,
         "request",
         {{{"device", &Event::subject},
           {"call", &Event::text},
           {"name", &Event::name},
           {"direction", &Event::direction},
           {"in", &Event::in},
           {"out", &Event::out},
           {"error", &Event::error}}}},
    Form{Kind::Fault, "fault", {{{"device", &Event::subject}, {"call", &Event::text}, {"error", &Event::error}}}},
    Form{Kind::Joined, "joined", {{{"program", &Event::subject}}}},
    Form{Kind::Left, "left", {{{"program", &Event::subject}}}},
    Form{Kind::Output, "output", {{{"program", &Event::subject}, {"line", &Event::text}}}},
    Form{Kind::Alarm, "alarm", {}},
    Form{Kind::Held, "held", {{{"program", &Event::subject}, {"state", &Event::text}, {"seconds", &Event::old}}}},
};

void readText(const Json& object, const TextField& field, Event& event)
{
    if (field.name == nullptr)
        return;
    const auto found = object.find(field.name);
    if (found != object.end() && found->is_string())
        event.*field.member = found->get<std::string>();
}

template <typename Number>
Number numberIn(const Json& object, const char* name)
{
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number())
        return {};
    if constexpr (std::is_integral_v<Number>) { // a number that does not fit must not become another one
        const bool fits = found->is_number_unsigned()
                              ? std::in_range<Number>(found->get<std::uint64_t>())
                              : found->is_number_integer() && std::in_range<Number>(found->get<std::int64_t>());
        if (!fits)
            return {};
    }
    return found->get<Number>();
}

} // namespace

std::string lineOf(const Event& event)
{
    const Form& form = *std::ranges::find(kForms, event.kind, &Form::kind);
    Json object{
        {"event", form.name}, {"number", event.number}, {"time", std::chrono::duration<double>(event.time).count()}};
    for (std::size_t i = 0; i < form.texts.size() && form.texts[i].name != nullptr; ++i)
        if (const std::string& text = event.*form.texts[i].member; i < 2 || !text.empty())
            object[form.texts[i].name] = text;
    if (event.process != 0)
        object["process"] = event.process;
    if (event.thread != 0)
        object["thread"] = event.thread;
    return written(object);
}

std::string textOfHeld(const Event& event)
{
    return "program '" + event.subject + "' (process " + std::to_string(event.process) + ") has not slept for " +
           event.old + " s of real time: its thread " + std::to_string(event.thread) + ' ' + event.text +
           "; virtual time passes only while all programs sleep or wait";
}

std::optional<Event> eventFrom(const Json& object)
{
    const auto name = object.is_object() ? object.find("event") : object.end();
    if (name == object.end() || !name->is_string())
        return std::nullopt;
    const auto* const form = std::ranges::find_if(kForms, [&](const Form& each) { return *name == each.name; });
    if (form == kForms.end())
        return std::nullopt;
    // A double has the nanoseconds of 100 days.
    const double seconds = std::clamp(numberIn<double>(object, "time"), 0.0, 9e9);
    Event event{.kind = form->kind, .time = Time{std::llround(seconds * 1e9)}};
    event.number = numberIn<std::uint64_t>(object, "number");
    event.process = numberIn<int>(object, "process");
    event.thread = numberIn<int>(object, "thread");
    for (const TextField& field : form->texts)
        readText(object, field, event);
    return event;
}

} // namespace hxsim
