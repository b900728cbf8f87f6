// SPDX-License-Identifier: LicenseRef-HXAux
// What one run of a verb has to say, and its two printed forms.
#ifndef HXAUX_REPORT_H
#define HXAUX_REPORT_H

#include "tools/hxaux/Value.h"
#include "tools/hxaux/Verb.h"

#include <string>
#include <vector>

namespace hxaux {

struct Problem {
    std::string item; // what could not be read or done; empty when it is the verb as a whole
    int code = -1;    // the unit's error code, or -1 when the tool itself found it
    std::string text;
};

struct Report {
    std::string object;
    std::string verb;
    Exit status = Exit::Done;
    std::vector<Field> result;
    std::vector<std::string> notes;
    std::vector<Problem> problems;
};

// The version of the JSON form; it grows when a reader of the older form could misread the newer one.
constexpr int kJsonFormat = 1;

// One line, ended by a line break. The form is described in docs/json.md.
std::string asJson(const Report& report);

// Lines "name: value unit"; a list that is the only result is one line per element.
std::string asText(const Report& report);
std::string noteLines(const Report& report);
// Lines "object verb: [item: ]text of the code (number)" for standard error.
std::string problemLines(const Report& report);

} // namespace hxaux

#endif
