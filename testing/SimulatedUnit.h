// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/inprocess/LinkedUnit.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

/// The fixture of most tests: a private unit that handles every open, ioctl, sleep, semaphore and thread of this
/// program as long as the object lives. Time is virtual: it jumps to the next deadline when every thread waits.
///
///     SimulatedUnit unit{"absent = /dev/backlight"};
///
/// The format of the journal's lines is described at hxsim::Entry::call().
class SimulatedUnit {
public:
    SimulatedUnit() : SimulatedUnit{std::initializer_list<const char*>{}} {}
    /// Description lines: what differs from a healthy unit.
    SimulatedUnit(std::initializer_list<const char*> description);
    explicit SimulatedUnit(const char* line) : SimulatedUnit{std::initializer_list<const char*>{line}} {}

    /// State of the unit.

    void set(const std::string& property, const std::string& value);
    void set(const std::string& property, std::int64_t value) { set(property, std::to_string(value)); }
    [[nodiscard]] std::string get(const std::string& property);
    void describe(const std::string& lines);
    /// "press front": an action with its arguments.
    void act(const std::string& action);
    /// A hardware object, locked against the unit's other threads during the expression:
    /// `unit.model<hxsim::Voltages>()->registers[3] = 7;`
    template <typename Type>
    [[nodiscard]] hxsim::Locked<Type> model()
    {
        return linkedUnit_->hardware<Type>();
    }

    /// Failures. Calls have the names of the journal: "open", "read", "0x40010003", "get 5", "sem_wait" ... `skip`
    /// calls succeed before the failing ones; `count` calls fail, by default all.

    void fail(const std::string& subject, const std::string& call, int error = EIO, int count = hxsim::Fault::kAlways,
              int skip = 0);
    void fail(const std::string& subject, std::uint32_t request, int error = EIO, int count = hxsim::Fault::kAlways,
              int skip = 0);
    void stopFailing();

    /// Recorded calls.

    /// The ioctls on a node, as "0x40010003: 00 80", "0x80010002 -> 80", "get 3 -> 1241", "put 0 = 1".
    [[nodiscard]] std::vector<std::string> requestsTo(const std::string& node);
    /// Every call on a node, file, semaphore or pseudo-subject ("sleep", "thread", "umask"), including open and close.
    [[nodiscard]] std::vector<std::string> callsTo(const std::string& subject);
    /// All calls, in order: "SUBJECT CALL".
    [[nodiscard]] std::vector<std::string> journal();
    [[nodiscard]] std::vector<hxsim::Entry> entries();
    void clearJournal();

    /// Time.

    /// Runs the other threads for this long; everything due until then has happened when it returns.
    void sleepFor(std::int64_t milliseconds);
    /// Runs the other threads until each of them waits.
    void settle() { sleepFor(0); }
    /// Milliseconds since the unit was created.
    [[nodiscard]] std::int64_t now();
    /// For tests with other processes: an endless wait is then not an error.
    void expectOtherProcesses();

    /// Files.

    /// The unit's private directory, removed with the unit.
    [[nodiscard]] std::string folder() const;
    /// The path on this machine of a path of the unit, for example of "/opt/etc/hxaux.ini".
    [[nodiscard]] std::string fileOf(const std::string& path) const;
    [[nodiscard]] std::string settingsFile() const { return fileOf("/opt/etc/hxaux.ini"); }
    /// The text of the settings file, empty without a file; writing creates it.
    [[nodiscard]] std::string settings() const;
    void writeSettings(const std::string& text) const;

private:
    hxsim::LinkedUnitPointer linkedUnit_;
};

using LinesMatcher = testing::Matcher<const std::vector<std::string>&>;

LinesMatcher LinesAre(const std::vector<std::string>& lines);

/// `EXPECT_THAT(unit.requestsTo("/dev/x"), Requests("0x80010002 -> 80", "0x40010003: 00 81"))`: these, in this order,
/// and no others.
template <typename... Lines>
LinesMatcher Requests(Lines... lines)
{
    return LinesAre({std::string{lines}...});
}

/// These lines occur in this order, possibly with others between them.
LinesMatcher InOrder(std::initializer_list<std::string> lines);
