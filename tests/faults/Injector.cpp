// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/faults/Injector.h"

#include "tests/faults/Allocations.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <execinfo.h>
#include <map>
#include <random>
#include <tuple>
#include <unistd.h>

namespace faults {

namespace {

enum class Mode { Off, Recording, Failing };

thread_local bool isCaller = false;
thread_local std::size_t callInProgress = 0; ///< of this thread: the answer belongs to it

struct State {
    Mode mode = Mode::Off;
    Kind kind = Kind::Call;
    Scope scope = Scope::Caller;
    std::size_t failAt = 0;
    std::size_t calls = 0;
    std::size_t allocations = 0;
    bool fired = false;
    Recording recording;
    void (*beforeDeath)() = nullptr;
};

State state; // one thread of a unit runs at a time, or its calls do not count

/// The call stack.
std::size_t place()
{
    void* frames[48];
    const int count = backtrace(frames, 48);
    std::size_t hash = 17;
    for (int i = 0; i < count; ++i)
        hash = hash * 31 + reinterpret_cast<std::size_t>(frames[i]);
    return hash;
}

bool counts()
{
    return state.mode != Mode::Off && isCaller == (state.scope == Scope::Caller);
}

int errorOf(std::string_view subject, std::string_view name)
{
    static const std::map<std::string_view, int> errors{
        {"open", EACCES},     {"fopen", EMFILE},     {"sem_open", EACCES}, {"sem_wait", EINVAL},
        {"sem_post", ENOMEM}, {"sem_close", EINVAL}, {"start", EAGAIN},    {"mkstemp", EACCES},
        {"mkfifo", EACCES},   {"dlopen", ENOENT},    {"unlink", EACCES},   {"sem_trywait", EINVAL},
    };
    if (subject == "sleep")
        return EINTR;
    const auto found = errors.find(name);
    return found != errors.end() ? found->second : EIO;
}

std::vector<std::size_t> firstSecondAndLast(const std::vector<std::size_t>& places)
{
    std::map<std::size_t, std::vector<std::size_t>> byPlace;
    for (std::size_t i = 0; i < places.size(); ++i)
        byPlace[places[i]].push_back(i);
    std::vector<std::size_t> chosen;
    for (const auto& [where, numbers] : byPlace) {
        chosen.push_back(numbers.front());
        if (numbers.size() > 1)
            chosen.push_back(numbers[1]);
        if (numbers.size() > 2)
            chosen.push_back(numbers.back());
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

} // namespace

void thisIsTheCaller()
{
    isCaller = true;
    (void)place(); // loads its dependencies
}

void startRecording(Scope scope)
{
    state = State{};
    state.scope = scope;
    state.mode = Mode::Recording;
}

void startFailing(Kind kind, Scope scope, std::size_t n)
{
    const auto action = state.beforeDeath;
    state = State{};
    state.beforeDeath = action;
    state.kind = kind;
    state.scope = scope;
    state.failAt = n;
    state.mode = Mode::Failing;
}

Recording stop()
{
    state.mode = Mode::Off;
    return std::move(state.recording);
}

bool hasFired()
{
    return state.fired;
}

void beforeDeath(void (*action)())
{
    state.beforeDeath = action;
}

bool isFalsified(Kind kind)
{
    return kind == Kind::Zeros || kind == Kind::Ones || kind == Kind::AnyBytes;
}

bool canBeInterrupted(std::string_view name)
{
    static constexpr std::string_view kNames[] = {"open", "read", "write", "close", "sem_wait", "sem_trywait"};
    return std::ranges::find(kNames, name) != std::end(kNames) || name.starts_with("0x") || name.starts_with("get ") ||
           name.starts_with("put ");
}

std::vector<std::size_t> choose(const Recording& recording, Kind kind)
{
    if (kind == Kind::Allocation)
        return firstSecondAndLast(recording.allocations);
    std::map<std::tuple<std::string, std::string, std::size_t>, std::size_t> numbers;
    std::vector<std::size_t> places;
    for (const Call& call : recording.calls)
        places.push_back(
            numbers.emplace(std::tuple{call.subject, call.name, call.place}, numbers.size()).first->second);
    std::vector<std::size_t> chosen = firstSecondAndLast(places);
    int pages = 0;
    for (std::size_t i = 0; kind == Kind::Kill && i < places.size(); ++i) // a memory may be partly written
        if (recording.calls[i].name == "JidaI2CWrite" && ++pages % 4 == 0 &&
            std::ranges::find(chosen, i) == chosen.end())
            chosen.push_back(i);
    std::sort(chosen.begin(), chosen.end());
    if (isFalsified(kind))
        std::erase_if(chosen, [&](std::size_t n) { return !recording.calls[n].answered; });
    if (kind == Kind::Interrupted)
        std::erase_if(chosen, [&](std::size_t n) { return !canBeInterrupted(recording.calls[n].name); });
    return chosen;
}

int onCall(std::string_view subject, std::string_view name)
{
    if (!counts())
        return 0;
    const std::size_t number = state.calls++;
    callInProgress = number;
    if (state.mode == Mode::Recording) {
        state.recording.calls.push_back({std::string{subject}, std::string{name}, place()});
        return 0;
    }
    if (state.kind == Kind::Allocation || isFalsified(state.kind) || number != state.failAt)
        return 0;
    state.fired = true;
    if (state.kind == Kind::Kill) {
        if (state.beforeDeath != nullptr)
            state.beforeDeath();
        kill(getpid(), SIGKILL);
    }
    return state.kind == Kind::Interrupted ? EINTR : errorOf(subject, name);
}

void onAnswer(std::span<std::uint8_t> answer)
{
    if (!counts() || answer.empty())
        return;
    if (state.mode == Mode::Recording) {
        state.recording.calls.at(callInProgress).answered = true;
        return;
    }
    if (!isFalsified(state.kind) || callInProgress != state.failAt)
        return;
    state.fired = true;
    std::minstd_rand anything{static_cast<unsigned>(state.failAt)};
    for (std::uint8_t& byte : answer)
        byte = state.kind == Kind::Zeros ? 0 : state.kind == Kind::Ones ? 0xFF : static_cast<std::uint8_t>(anything());
}

bool onAllocation()
{
    if (!counts())
        return false;
    const std::size_t number = state.allocations++;
    if (state.mode == Mode::Recording) {
        state.recording.allocations.push_back(place());
        return false;
    }
    if (state.kind != Kind::Allocation || number != state.failAt)
        return false;
    state.fired = true;
    return true;
}

} // namespace faults
