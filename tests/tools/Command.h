// SPDX-License-Identifier: LicenseRef-HXAux
// The vocabulary of the command line tests: run, outputIs, outputMatches, errorIs, errorMatches, statusIs, jsonOf.
#ifndef HX_TESTS_COMMAND_H
#define HX_TESTS_COMMAND_H

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
    int status = -1; // of the shell: 128 and the signal's number for a killed program
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// Runs a line of shell in which hxaux and hx-sim are this build's. For what needs no unit.
Outcome run(const std::string& command);
// The same with the output on a terminal of 100 columns; standard error goes there as well.
Outcome runOnTerminal(const std::string& command);

// The only JSON document of the output; a test failure when it is none.
nlohmann::json jsonOf(const Outcome& outcome);
// One document per line.
std::vector<nlohmann::json> jsonLinesOf(const Outcome& outcome);

inline auto outputIs(const std::string& text)
{
    return testing::Field("output", &Outcome::output, testing::StrEq(text));
}

// A POSIX extended regular expression that some part of the output matches.
inline auto outputMatches(const std::string& pattern)
{
    return testing::Field("output", &Outcome::output, testing::ContainsRegex(pattern));
}

inline auto errorIs(const std::string& text)
{
    return testing::Field("error", &Outcome::error, testing::StrEq(text));
}

inline auto errorMatches(const std::string& pattern)
{
    return testing::Field("error", &Outcome::error, testing::ContainsRegex(pattern));
}

inline auto statusIs(int status)
{
    return testing::Field("status", &Outcome::status, testing::Eq(status));
}

} // namespace hxtest

#endif
