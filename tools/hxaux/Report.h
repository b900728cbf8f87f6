// SPDX-License-Identifier: LicenseRef-HXAux
// The report of one run of a verb, and its two output formats.
#pragma once

#include "tools/hxaux/Value.h"
#include "tools/hxaux/Verb.h"

#include <string>
#include <vector>

namespace hxaux {

struct Problem {
    std::string item; ///< what failed; empty when the verb failed as a whole
    int code = -1;    // the unit's error code, or -1 when the tool itself detected it
    std::string text;
};

struct Report {
    std::string object;
    std::string verb;
    Exit status = Exit::Done;
    std::vector<Field> result;
    std::vector<std::string> notes;
    std::vector<Problem> problems;
    std::string time = ""; ///< of day, of a round of values; empty for a report that is alone
};

/// The version of the JSON format; it grows when a reader of the older format could misread the newer one.
constexpr int kJsonFormat = 3;

/// One line, ended by a line break. docs/json.md describes the format.
std::string asJson(const Report& report);

/// Lines "name: value unit"; a list that is the only result is one line per element.
std::string asText(const Report& report);
std::string noteLines(const Report& report);
/// Lines "object verb: [item: ]text of the code (number)" for standard error.
std::string problemLines(const Report& report);

} // namespace hxaux
