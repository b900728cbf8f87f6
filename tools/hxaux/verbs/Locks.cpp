// SPDX-License-Identifier: LicenseRef-HXAux
// The library's named semaphores: a lock whose holder died stays held until it is released here.
#include "tools/hxaux/Call.h"
#include "tools/hxaux/NamedLock.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <algorithm>
#include <array>

namespace hxaux {

namespace {

constexpr std::string_view kPending = "Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ"; // a counter, not a lock

constexpr std::array<std::string_view, 5> kSemaphores = {
    "FILE_HXAUXINI_IS_IN_USE", kPending, "HXAUX_BUZZING_IN_PROGRESS", "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS",
    "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"};

struct Seen {
    LockState state;
    bool stale = false;
};

Seen seen(const NamedLock& lock)
{
    const bool stale = lock.isStale();
    return {lock.look(), stale};
}

std::string stateName(std::string_view name, const Seen& seen)
{
    switch (seen.state.kind) {
    case LockState::Kind::Missing:
        return "does not exist yet";
    case LockState::Kind::Refused:
        return "not accessible: " + seen.state.error;
    case LockState::Kind::OtherAbi:
        return "of programs of another word size";
    case LockState::Kind::Known:
        break;
    }
    if (name == kPending)
        return seen.state.value == 0 ? "nothing pending" : "pending";
    if (seen.stale)
        return "stale";
    if (seen.state.value == 0 && !seen.state.everyoneSeen)
        return "taken, perhaps by a process of another user";
    return seen.state.value == 0 ? "taken" : "free";
}

Value::List processes(const LockState& state)
{
    Value::List list;
    for (const LockUser& user : state.users)
        list.emplace_back(Value::Record{{"pid", user.pid}, {"program", user.program}, {"waits", user.waits}});
    return list;
}

std::string named(const LockUser& user)
{
    return std::to_string(user.pid) + " (" + user.program + (user.waits ? ", waiting)" : ")");
}

std::string named(const LockState& state)
{
    std::string text;
    for (const LockUser& user : state.users)
        text += (text.empty() ? "" : ", ") + named(user);
    return text.empty() ? "no process" : text;
}

// "stale, value 0, used by 812 (demo, waiting)": for people; JSON gets the parts.
Value shown(const Call& call, std::string_view name, const Seen& seen)
{
    const std::string state = stateName(name, seen);
    const bool known = seen.state.kind == LockState::Kind::Known;
    if (!call.asJson())
        return known ? state + ", value " + std::to_string(seen.state.value) + ", used by " + named(seen.state) : state;
    return Value::Record{{"state", state},
                         {"value", known ? Value(seen.state.value) : Value(Absent{})},
                         {"taken", known && name != kPending ? Value(seen.state.value == 0) : Value(Absent{})},
                         {"stale", seen.stale && name != kPending},
                         {"processes", processes(seen.state)}};
}

void listLocks(Call& call)
{
    for (const std::string_view name : kSemaphores) {
        const NamedLock lock{std::string(name)};
        const Seen now = name == kPending ? Seen{lock.look()} : seen(lock);
        call.print(std::string(name), shown(call, name, now));
    }
}

std::string_view lockOf(Call& call)
{
    const std::string& name = call.text("name");
    if (name == kPending)
        call.fail(Exit::Usage, "it counts settings that the automatic backlight has not read yet; it is never reset");
    const auto* found = std::ranges::find(kSemaphores, name);
    if (found == kSemaphores.end())
        call.fail(Exit::Usage, "'" + name + "' is not a lock of the library; 'hxaux locks' lists them");
    return *found;
}

// Why this lock must not be released without force; empty when it may.
std::string objection(const Seen& seen)
{
    if (seen.stale)
        return "";
    if (!seen.state.everyoneSeen)
        return "processes of other users may hold it; run the command as root, or use --force";
    return "it is in use by " + named(seen.state) + "; --force releases it anyway";
}

void reset(Call& call)
{
    const std::string_view name = lockOf(call);
    const HeldSignals held;
    const NamedLock lock{std::string(name)};
    const Seen now = seen(lock);
    const char* const is = now.state.kind == LockState::Kind::Missing ? " " : " is ";
    if (now.state.kind != LockState::Kind::Known)
        call.fail(Exit::Refused, std::string(name) + is + stateName(name, now) + ": there is nothing to release");
    if (now.state.value != 0)
        return call.note("it is free already");
    if (const std::string reason = objection(now); !reason.empty() && !call.has("force"))
        call.fail(Exit::Busy, reason);
    lock.giveBack();
}

Candidates lockNames(const Words&)
{
    Candidates all;
    for (const std::string_view name : kLockNames)
        all.push_back({std::string(name), "a lock of the library"});
    return all;
}

Argument lockName()
{
    Argument name = text("name", "name of the lock, as 'hxaux locks' shows it");
    name.live = lockNames;
    return name;
}

} // namespace

const Object objects::Locks{
    "locks",
    "the locks that programs on the unit share, and their users",
    {
        {.name = "",
         .help = "Shows every lock: its state, its value and the processes that use it.",
         .example = "hxaux locks",
         .run = listLocks,
         .repeat = Repeat::Watch,
         .details = "A lock is stale when its holder died: it is held, and every process that uses it waits for it. "
                    "The library never releases such a lock; 'hxaux locks reset' does."},
        {.name = "reset",
         .help = "Releases a stale lock.",
         .example = "hxaux locks reset FILE_HXAUXINI_IS_IN_USE",
         .run = reset,
         .values = {lockName()},
         .options = {flag("force", "releases a lock that is in use as well: two programs may then do at once what only "
                                   "one may")},
         .details = "One of the processes that wait for it then continues. A lock that is free stays as it is."},
    }};

} // namespace hxaux
