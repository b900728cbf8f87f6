// SPDX-License-Identifier: LicenseRef-HXAux
/// @file
/// A simulated unit in a C++ test: start it, run the application on it, change it, and wait for what must happen.
///
/// Needs C++17 and POSIX alone; link with hx-sim-client. The program hx-sim is found by the variable HX_SIM, or like a
/// command of the shell.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace hxsim {
inline namespace client {

/// The unit refused, is not running, or an expectation was not met; what() says which and why.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What an expectation came to.
struct Result {
    bool met = false;
    std::chrono::nanoseconds time{0}; ///< of the unit, when it was decided
    std::string seen;                 ///< "backlight.level was 128, then 90"

    explicit operator bool() const { return met; }
};

/// How a new unit differs from a healthy one in real time.
struct Options {
    std::vector<std::string> settings; ///< lines of a description: "voltage.0 = 11.5", "absent = /dev/lightsensor"
    double scale = 1;                  ///< how many times faster than real its time runs
    /// Its time passes only while its programs and this process wait, and then at once; without a scale.
    bool isVirtual = false;
};

/// A program on a unit. Several threads may use it at once.
class Program {
public:
    Program(Program&& other) noexcept;
    Program& operator=(Program&& other) noexcept;
    /// Ends a running program.
    ~Program();

    /// Waits for its end. Returns its exit status, or 128 plus the number of the signal that ended it. Throws Error
    /// when the unit's time is virtual and the program has not slept for 30 s of real time.
    int wait();
    /// The same for at most this real time; nothing: it is still running.
    std::optional<int> wait(std::chrono::nanoseconds patience);
    /// Ends it: TERM, and KILL after some seconds.
    void stop();
    [[nodiscard]] bool isRunning();
    /// What it has printed until now, output and error output: all of it when it has ended.
    [[nodiscard]] std::string output() const;

private:
    friend class Unit;
    struct Inside;
    explicit Program(std::unique_ptr<Inside> inside);
    std::unique_ptr<Inside> inside_;
};

/// For languages whose handlers of signals run outside of the signal: called in a thread that waits for a unit, each
/// time that a signal interrupts the wait and at least twice a second. It may throw to end the wait.
void onSignal(std::function<void()> handler);

/// A simulated unit. Calls throw Error when the unit refuses, with its message.
/// Used by one thread at a time.
class Unit {
public:
    /// Starts a unit. It stops with this object, and also when the process ends in any other way.
    explicit Unit(const Options& options = {});
    /// Uses a running unit, which continues afterwards.
    static Unit attach(const std::string& name);
    Unit(Unit&& other) noexcept;
    Unit& operator=(Unit&& other) noexcept;
    ~Unit();

    [[nodiscard]] const std::string& name() const;

    /// A property as a text: get("voltage.0") == "24".
    std::string get(const std::string& property);
    /// A property from a text, a number, or true and false.
    void set(const std::string& property, const std::string& value);
    void set(const std::string& property, const char* value) { set(property, std::string{value}); }
    void set(const std::string& property, bool value) { set(property, std::string{value ? "on" : "off"}); }
    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    void set(const std::string& property, Number value)
    {
        set(property, text(value));
    }

    /// An action of the unit and its words: act("touch 3").
    void act(const std::string& action);
    /// Presses a button.
    void press(const std::string& button) { act("press " + button); }
    /// Injects failures: the next `count` such calls fail, all of them without a count.
    /// fail("/dev/adc-id", "get 3", "EIO", 2)
    void fail(const std::string& node, const std::string& call, const std::string& error = "EIO", int count = 0);
    /// Clears the failures of a node, or all.
    void unfail(const std::string& node = "");
    /// Removes a device, restores it.
    void remove(const std::string& path);
    void restore(const std::string& path);

    /// Notices the changes of a property from now on. An expectation does so by itself, from its first check on; this
    /// is for a value that is over before.
    void follow(const std::string& property);

    /// Starts a program on the unit: run({"./console", "--verbose"}).
    Program run(const std::vector<std::string>& command);

    /// Checks an expectation, as hx-sim expect does: "backlight.level = 40 within 1s",
    /// "request /dev/power-id put 4 within 2s", "never led.lit = on for 500ms". Its time begins with the last action
    /// (set, act, fail, run, wait, ...). Waits until it is decided; throws for a mistake in the text.
    Result check(const std::string& expectation);
    /// The same, but throws Error with what was seen when it is not met.
    void expect(const std::string& expectation);
    /// Checks as well; if it is met, the time of what is checked next begins with the moment for which it waited, as
    /// after an action: wait("output ready within 10s").
    [[nodiscard]] Result wait(const std::string& expectation);
    /// Waits so until a property has a value; throws Error when it does not get it in this time of the unit.
    template <typename Value>
    void waitFor(const std::string& property, const Value& value, std::chrono::nanoseconds time)
    {
        const double seconds = std::chrono::duration<double>(time).count();
        const std::string expectation = property + " = " + literal(text(value)) + " within " + text(seconds) + 's';
        require(expectation, wait(expectation));
    }
    /// Lets the unit's time advance by this.
    void sleep(std::chrono::nanoseconds time);
    /// The unit's time.
    [[nodiscard]] std::chrono::nanoseconds time();
    /// The calls on the unit until now, one per line.
    [[nodiscard]] std::string log();

private:
    struct Inside;
    explicit Unit(std::unique_ptr<Inside> inside);

    static void require(const std::string& expectation, const Result& result);
    static std::string text(const std::string& value) { return value; }
    static std::string text(const char* value) { return value; }
    static std::string text(bool value) { return value ? "on" : "off"; }
    static std::string text(double value);
    static std::string literal(const std::string& value);
    template <typename Number>
    static std::enable_if_t<std::is_integral_v<Number>, std::string> text(Number value)
    {
        return std::to_string(value);
    }

    std::unique_ptr<Inside> inside_;
};

} // namespace client
} // namespace hxsim
