// SPDX-License-Identifier: LicenseRef-HXAux
// The functions of the command line tests: run, outputIs, outputMatches, errorIs, errorMatches, statusIs, jsonOf.
#pragma once

#include "testing/Process.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace hxtest {

struct Outcome {
    std::string command;
    std::string output = "";
    std::string error = "";
    int status = -1; ///< of the shell: 128 plus the signal's number for a killed program
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// Runs a shell command line in which hxaux and hx-sim are those of this build. For commands without a unit.
Outcome run(const std::string& command);
/// The same with the output on a terminal of 100 columns; standard error goes there as well.
Outcome runOnTerminal(const std::string& command);

/// Before a program in a command line: the permissions of files bind it, also when the tests run as root.
std::string boundByPermissions();

/// A private simulated unit that several programs can share, healthy except for the given settings, as long as the
/// object lives.
class Unit {
public:
    /// Lines of a description: "voltage.0=12", "absent=/dev/adc-id"; `scale` is the speed of its time relative to real
    /// time.
    explicit Unit(const std::vector<std::string>& settings = {}, int scale = 1);
    ~Unit();
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;

    /// A program with its arguments on the unit: run("hxaux voltage 0"). A prefix is put before hx-sim.
    [[nodiscard]] Outcome run(const std::string& command) const;
    [[nodiscard]] Outcome runOnTerminal(const std::string& command) const;
    /// Starts hxaux or hx-child on the unit.
    [[nodiscard]] Process start(const std::vector<std::string>& words) const;
    [[nodiscard]] Process child(const std::vector<std::string>& words) const;
    /// The shell command line of `run`, for pipes and programs in the background.
    [[nodiscard]] std::string line(const std::string& command) const;

    /// Commands of hx-sim on this unit: control("set voltage.0 12"), control("fail /dev/adc-id open EIO").
    void control(const std::string& command) const;
    [[nodiscard]] std::string property(const std::string& name) const;

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::string settings() const; ///< the text of its settings file
    void writeSettings(const std::string& text) const;

private:
    [[nodiscard]] Process program(const std::string& path, const std::vector<std::string>& words) const;
    [[nodiscard]] std::string settingsFile() const;

    std::string name_;
};

/// The only JSON document of the output; a test failure when it is not one.
nlohmann::json jsonOf(const Outcome& outcome);
/// One document per line.
std::vector<nlohmann::json> jsonLinesOf(const Outcome& outcome);

/// Of one type each, which every combination of them shares.
using OutcomeMatcher = testing::Matcher<const Outcome&>;

OutcomeMatcher outputIs(const std::string& text);
/// A POSIX extended regular expression that a part of the output matches.
OutcomeMatcher outputMatches(const std::string& pattern);
OutcomeMatcher errorIs(const std::string& text);
OutcomeMatcher errorMatches(const std::string& pattern);
OutcomeMatcher statusIs(int status);

} // namespace hxtest
