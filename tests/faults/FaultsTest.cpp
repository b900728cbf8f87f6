// SPDX-License-Identifier: LicenseRef-HXAux
// Every operation of every interface, with each of its system calls and allocations failing in turn, and with each
// answer of the system replaced by one that no healthy unit returns.
#include "simulator/inprocess/LinkedUnit.h"
#include "simulator/model/CallWatch.h"
#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "testing/Arguments.h"
#include "testing/Documented.h"
#include "testing/ErasedOperations.h"
#include "testing/EveryOperation.h"
#include "testing/OperationCalls.h"
#include "tests/faults/Forked.h"
#include "tests/faults/Hash.h"
#include "tests/faults/Injector.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <sstream>

using namespace Halvix;
using namespace faults;
using testing::IsEmpty;

namespace {

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator all{"/proc/self/fd"};
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// "NAME COUNT" of those left open, from the journal; private ones share one name.
std::set<std::string> semaphoresOpen(SimulatedUnit& unit)
{
    std::map<std::string, int> open;
    for (const hxsim::Entry& entry : unit.entries()) {
        const int change = entry.action.starts_with("sem_open") ? 1 : entry.action == "sem_close" ? -1 : 0;
        if (change != 0 && entry.error == 0)
            open[entry.subject.starts_with("/hxSema") ? "a private one" : entry.subject] += change;
    }
    std::set<std::string> names;
    for (const auto& [name, count] : open)
        if (count != 0)
            names.insert(name + ' ' + std::to_string(count));
    return names;
}

/// The persistent state of the unit: the settings file, both EEPROMs and the firmware of all targets.
using Stored = std::map<std::string, std::string>;

constexpr const char* kSettingsFile = "settings file";

Stored storedIn(SimulatedUnit& unit)
{
    const auto sumOf = [](const std::vector<std::uint8_t>& bytes) { return std::to_string(hashOf(bytes)); };
    Stored stored{{kSettingsFile, unit.settings()}};
    for (const auto& [name, memory] : dynamic_cast<hxsim::LinkedUnit&>(*hxsim::Link::current()).unit()->memories())
        stored[name] = sumOf(memory.bytes);
    stored["supervisor"] = sumOf(unit.model<hxsim::Microcontrollers>()->supervisor.flash);
    stored["front controller"] = sumOf(unit.model<hxsim::Microcontrollers>()->front.flash);
    stored["FPGA"] = sumOf(unit.model<hxsim::FpgaFlash>()->content);
    return stored;
}

/// The result of a run, passed from the child to the test as a text.
struct Outcome {
    int code = 0;
    bool threw = false;
    bool made = true; ///< the factory returned an object
    bool fired = false;
    std::size_t blocks = 0;
    std::size_t descriptors = 0;
    std::set<std::string> semaphores{}; ///< "NAME COUNT" of those left open
    std::set<std::string> locks{};      ///< "NAME VALUE"
    Stored before{};
    Stored after{};
    Recording recording{};
    int signal = 0; ///< that terminated the run
    std::string errors{};
};

/// Fields are ended by tabs, because names have blanks.
class Text {
public:
    Text() = default;
    explicit Text(std::string text) : text_{std::move(text)} {}

    void put(const std::string& field) { text_ += field + '\t'; }
    void put(std::size_t number) { put(std::to_string(number)); }
    std::string get()
    {
        const std::size_t end = std::min(text_.find('\t', at_), text_.size());
        std::string field = text_.substr(at_, end - at_);
        at_ = std::min(end + 1, text_.size());
        return field;
    }
    std::size_t number() { return static_cast<std::size_t>(std::strtoull(get().c_str(), nullptr, 10)); }
    [[nodiscard]] const std::string& whole() const { return text_; }

private:
    std::string text_;
    std::size_t at_ = 0;
};

std::string textOf(const Outcome& outcome)
{
    Text text;
    for (const std::size_t number :
         {static_cast<std::size_t>(outcome.code), std::size_t{outcome.threw}, std::size_t{outcome.made},
          std::size_t{outcome.fired}, outcome.blocks, outcome.descriptors})
        text.put(number);
    for (const std::set<std::string>* names : {&outcome.semaphores, &outcome.locks}) {
        text.put(names->size());
        for (const std::string& name : *names)
            text.put(name);
    }
    for (const Stored* stored : {&outcome.before, &outcome.after}) {
        text.put(stored->size());
        for (const auto& [name, content] : *stored) {
            text.put(name);
            text.put(content);
        }
    }
    text.put(outcome.recording.calls.size());
    for (const Call& call : outcome.recording.calls) {
        text.put(call.subject);
        text.put(call.name);
        text.put(call.place);
        text.put(std::size_t{call.answered});
    }
    text.put(outcome.recording.allocations.size());
    for (const std::size_t place : outcome.recording.allocations)
        text.put(place);
    return text.whole();
}

Outcome outcomeOf(const Ended& ended)
{
    Text text{ended.output};
    Outcome outcome;
    outcome.signal = ended.signal;
    outcome.errors = ended.errors;
    outcome.code = static_cast<int>(text.number());
    outcome.threw = text.number() != 0;
    outcome.made = text.number() != 0;
    outcome.fired = text.number() != 0;
    outcome.blocks = text.number();
    outcome.descriptors = text.number();
    for (std::set<std::string>* names : {&outcome.semaphores, &outcome.locks})
        for (std::size_t left = text.number(); left > 0; --left)
            names->insert(text.get());
    for (Stored* stored : {&outcome.before, &outcome.after})
        for (std::size_t left = text.number(); left > 0; --left) {
            const std::string name = text.get();
            (*stored)[name] = text.get();
        }
    for (std::size_t left = text.number(); left > 0; --left) {
        Call call;
        call.subject = text.get();
        call.name = text.get();
        call.place = text.number();
        call.answered = text.number() != 0;
        outcome.recording.calls.push_back(call);
    }
    for (std::size_t left = text.number(); left > 0; --left)
        outcome.recording.allocations.push_back(text.number());
    return outcome;
}

enum class Part { Factory, Operation, Release };

/// The action during which calls fail, with its set-up and clean-up.
template <class Interface>
class Run {
public:
    using Operation = std::function<eErr(Interface&)>;

    Run(const OperationCall& tried, Part part, Operation operation)
        : try_{tried}, part_{part}, name_{tried.operation.substr(tried.operation.find('.') + 1)}, operation_{std::move(
                                                                                                      operation)}
    {
    }

    Outcome operator()(const std::function<void()>& start)
    {
        return outcomeOf(inAChild([&] { return textOf(carryOut(start)); }));
    }

private:
    Outcome carryOut(const std::function<void()>& start)
    {
        thisIsTheCaller();
        SimulatedUnit unit;
        prepareUnit(unit, try_);
        Outcome outcome;
        outcome.before = storedIn(unit);
        hxsim::watchCalls(onCall);
        hxsim::watchAnswers(onAnswer);
        const std::size_t descriptors = openDescriptors();
        trackMemory();
        live(unit, start, outcome);
        outcome.blocks = blocksLeft();
        stopTracking();
        outcome.fired = hasFired();
        outcome.descriptors = openDescriptors() - descriptors;
        outcome.semaphores = semaphoresOpen(unit);
        outcome.locks = locksTaken();
        outcome.after = storedIn(unit);
        return outcome;
    }

    /// The life of an object, from its factory to its release.
    void live(SimulatedUnit& unit, const std::function<void()>& start, Outcome& outcome)
    try {
        if (part_ == Part::Factory)
            start();
        Interface* const object = every::Operations<Interface>::make();
        if (part_ == Part::Factory)
            outcome.recording = stop();
        outcome.made = object != nullptr;
        if (object == nullptr)
            return;
        if (part_ == Part::Operation)
            operate(*object, unit, start, outcome);
        if (part_ == Part::Release)
            start();
        object->Release();
        if (part_ == Part::Release)
            outcome.recording = stop();
    } catch (const std::exception&) {
        (void)stop();
        outcome.threw = true;
    }

    void operate(Interface& object, SimulatedUnit& unit, const std::function<void()>& start, Outcome& outcome)
    {
        prepare(object, name_, unit);
        start();
        try {
            outcome.code = operation_(object);
        } catch (...) {
            outcome.threw = true;
        }
        if (try_.milliseconds != 0)
            unit.sleepFor(try_.milliseconds);
        outcome.recording = stop();
        finish(object, name_, unit);
    }

    OperationCall try_;
    Part part_;
    std::string name_;
    Operation operation_;
};

/// Counts cases and collects errors.
class Findings {
public:
    explicit Findings(std::string interface) : interface_{std::move(interface)} {}
    void count(Kind kind) { ++(kind == Kind::Allocation ? allocations_ : isFalsified(kind) ? answers_ : calls_); }
    void add(const std::string& text) { complaints_.push_back(text); }
    [[nodiscard]] const std::vector<std::string>& complaints() const { return complaints_; }
    void operationDone() { ++operations_; }
    void print() const
    {
        std::printf("[  FAULTS  ] %s: %d ways of use, %d calls failed, %d allocations failed, %d answers falsified\n",
                    interface_.c_str(), operations_, calls_, allocations_, answers_);
        testing::Test::RecordProperty("cases", calls_ + allocations_ + answers_);
    }

private:
    std::string interface_;
    std::vector<std::string> complaints_;
    int operations_ = 0;
    int calls_ = 0;
    int allocations_ = 0;
    int answers_ = 0;
};

/// Compares a run with a fault with the same run without it.
class Judge {
public:
    Judge(const documented::Interface& interface, const OperationCall& tried, Part part, const Outcome& healthy,
          Findings& findings)
        : interface_{interface}, try_{tried}, part_{part}, healthy_{healthy}, findings_{findings}
    {
    }

    void operator()(Kind kind, std::size_t number, const Outcome& outcome)
    {
        call_ = kind == Kind::Allocation ? "allocation" : nameOf(healthy_.recording.calls.at(number));
        case_ = try_.operation + (kind == Kind::Allocation ? " allocation " : " call ") + std::to_string(number) +
                " (" + call_ + wordsOf(kind);
        findings_.count(kind);
        if (mayWaitForever(call_) && outcome.errors.find("every thread of the program waits") != std::string::npos)
            return;
        if (outcome.signal != 0)
            return complain("ends by signal " + std::to_string(outcome.signal) + ' ' + outcome.errors);
        if (!outcome.fired)
            return complain("it was not made in the second run");
        judgeAnswer(kind, outcome);
        judgeStored(kind, outcome);
        if (mayWaitForever(call_))
            return;
        if (outcome.descriptors > healthy_.descriptors)
            complain("a descriptor stays open");
        if (runsForever(try_.operation))
            return judgeLocks(outcome);
        if (outcome.blocks > healthy_.blocks)
            complain(std::to_string(outcome.blocks - healthy_.blocks) + " blocks of memory are lost");
        if (call_.find("sem_close") == std::string::npos)
            for (const std::string& semaphore : outcome.semaphores)
                if (!healthy_.semaphores.contains(semaphore))
                    complain("semaphore stays open: " + semaphore);
        judgeLocks(outcome);
    }

private:
    static const char* wordsOf(Kind kind)
    {
        switch (kind) {
        case Kind::Interrupted:
            return ", interrupted): ";
        case Kind::Zeros:
            return ", answered by zeros): ";
        case Kind::Ones:
            return ", answered by ones): ";
        case Kind::AnyBytes:
            return ", answered by anything): ";
        default:
            return "): ";
        }
    }
    static std::string nameOf(const Call& call) { return call.subject + ' ' + call.name; }
    void complain(const std::string& what) { findings_.add(case_ + what); }

    void judgeAnswer(Kind kind, const Outcome& outcome)
    {
        const std::string operation = try_.operation.substr(try_.operation.find('.') + 1);
        const bool mayThrow = part_ == Part::Factory && kind == Kind::Allocation && interface_.factoryThrows;
        if (outcome.threw && !mayThrow)
            complain("an exception left");
        if (!outcome.made && (part_ != Part::Factory || kind != Kind::Allocation || interface_.factoryThrows))
            complain("no object");
        if (part_ != Part::Operation || outcome.threw)
            return;
        const std::string name = documented::nameOf(outcome.code);
        if (!interface_.codes.at(operation).contains(name))
            complain("answers " + std::to_string(outcome.code) + " " + name + ", which its header does not name");
        // Only out of memory, a thread without memory, or a version that could not be read.
        static const std::set<int> kLacks{ERR_CREATE_THREAD, ERR_INIT_FAILED, ERR_NEWER_SS_VERSION_REQUIRED,
                                          ERR_NEWER_FRONT_VERSION_REQUIRED, ERR_MEM_ALLOC_FAIL};
        // The serial port answers with a null handle both when it cannot be opened and when out of memory.
        const bool noPort = outcome.code == ERR_OPEN_FAILED && operation.starts_with("start");
        if (kind == Kind::Allocation && outcome.code != healthy_.code && !kLacks.contains(outcome.code) && !noPort)
            complain("answers " + std::to_string(outcome.code) + " " + name + " when memory runs out");
    }

    /// Each memory is unchanged or completely new, or the header says that it may be torn.
    void judgeStored(Kind kind, const Outcome& outcome)
    {
        for (const auto& [memory, content] : outcome.after) {
            const std::string& before = healthy_.before.at(memory);
            if (content == before)
                continue;
            if (outcome.code == ERR_MEM_ALLOC_FAIL && kind == Kind::Allocation)
                complain("reports out of memory and changes the " + memory);
            else if (memory == kSettingsFile ? !losesNothing(kind, before, content)
                                             : content != healthy_.after.at(memory) && !mayBeTorn(kind, try_, memory))
                complain("leaves the " + memory + " torn");
        }
    }

    /// Several settings are written one after the other: each intermediate file has every line of the original, changed
    /// or not. Answers of the system that falsify reads of the file are excluded.
    [[nodiscard]] bool losesNothing(Kind kind, const std::string& before, const std::string& content) const
    {
        if (isFalsified(kind) && call_.starts_with("/opt/etc/hxaux.ini"))
            return true;
        const auto keysOf = [](const std::string& text) {
            std::set<std::string> keys;
            std::istringstream lines{text};
            for (std::string line; std::getline(lines, line);)
                keys.insert(line.substr(0, line.find_first_of(" =")));
            return keys;
        };
        const std::set<std::string> left = keysOf(content);
        return std::ranges::includes(left, keysOf(before));
    }

    void judgeLocks(const Outcome& outcome)
    {
        for (const std::string& lock : outcome.locks)
            if (reasonForLock(try_, call_, lock) == nullptr)
                complain("leaves " + lock);
    }

    const documented::Interface& interface_;
    const OperationCall& try_;
    Part part_;
    const Outcome& healthy_;
    Findings& findings_;
    std::string call_; ///< the one that failed
    std::string case_;
};

template <class Interface>
void tryAll(const documented::Interface& interface, const OperationCall& tried, Part part,
            typename Run<Interface>::Operation operation, Findings& findings)
{
    Run<Interface> run{tried, part, std::move(operation)};
    const Outcome healthy = run([&] { startRecording(tried.scope); });
    if (healthy.signal != 0)
        findings.add(tried.operation + ": ends by signal " + std::to_string(healthy.signal) + " without any fault");
    if (healthy.code != tried.usual && healthy.code != ERR_NOT_SUPPORTED)
        findings.add(tried.operation + ": answers " + std::to_string(healthy.code) + " without any fault");
    if (!runsForever(tried.operation) && (healthy.threw || !healthy.locks.empty() || healthy.descriptors != 0))
        findings.add(tried.operation + ": leaves something without any fault");
    Judge judge{interface, tried, part, healthy, findings};
    for (const Kind kind : {Kind::Call, Kind::Interrupted, Kind::Allocation, Kind::Zeros, Kind::Ones, Kind::AnyBytes})
        for (const std::size_t number : choose(healthy.recording, kind))
            judge(kind, number, run([&] { startFailing(kind, tried.scope, number); }));
    findings.operationDone();
}

/// Upgrades take long: each kind is a separate part.
std::string partOf(const std::string& operation)
{
    for (const char* part : {"Fpga", "SS", "Front"})
        if (operation.starts_with("start" + std::string{part}))
            return part;
    return {};
}

/// One part of an interface's operations; the factory and the release belong to the unnamed part.
template <class Interface>
void failEverywhere(const std::string& part = "")
{
    using Operations = every::Operations<Interface>;
    const std::string name = Operations::kName;
    const documented::Interface interface = documented::interface(name);
    Findings findings{name};
    if (part.empty())
        tryAll<Interface>(interface, {name + ".Get" + name}, Part::Factory, {}, findings);
    for (const every::ErasedOperation& operation : every::operationsOf(name)) {
        if (partOf(operation.name) != part)
            continue;
        for (const OperationCall& tried : waysToCall(name + '.' + operation.name)) {
            const auto call = [&](Interface& object) {
                Arguments arguments{tried.numbers, tried.texts};
                return operation.call(&object, arguments);
            };
            tryAll<Interface>(interface, tried, Part::Operation, call, findings);
        }
    }
    if (part.empty())
        tryAll<Interface>(interface, {name + ".Release"}, Part::Release, {}, findings);
    findings.print();
    EXPECT_THAT(findings.complaints(), IsEmpty());
}

// One test for each interface: they run in parallel.

template <class Interface>
class FaultsOf : public testing::Test {
};

TYPED_TEST_SUITE(FaultsOf, every::Interfaces<testing::Types>, every::Names);

TYPED_TEST(FaultsOf, LeaveItSound)
{
    failEverywhere<TypeParam>();
}

TEST(Faults, LeaveFpgaUpgradesSound)
{
    failEverywhere<FirmwareUpgrade>("Fpga");
}
TEST(Faults, LeaveSupervisorUpgradesSound)
{
    failEverywhere<FirmwareUpgrade>("SS");
}
TEST(Faults, LeaveFrontUpgradesSound)
{
    failEverywhere<FirmwareUpgrade>("Front");
}

/// Operations of the table by name.
std::map<std::string, int> inTheTable(const std::string& interface)
{
    std::map<std::string, int> names;
    for (const every::ErasedOperation& operation : every::operationsOf(interface))
        ++names[operation.name];
    return names;
}

TEST(Faults, AreTriedWithEveryOperationOfTheHeaders)
{
    std::set<std::string> interfaces;
    every::forEachInterface([&]<class Interface>() {
        const char* const name = every::Operations<Interface>::kName;
        interfaces.insert(name);
        EXPECT_EQ(inTheTable(name), documented::interface(name).overloads)
            << "the operations of " << name << " in testing/EveryOperation.h and in its header differ";
    });
    for (const std::string& name : documented::interfaces())
        EXPECT_TRUE(interfaces.contains(name))
            << "testing/EveryOperation.h: add " << name << " to Interfaces, and its Operations";
}

} // namespace
