// SPDX-License-Identifier: LicenseRef-HXAux
// The texts of --help and of usage errors, made from the table.
#pragma once

#include "tools/cli/Command.h"

#include <optional>

namespace cli {

constexpr std::size_t kUsualWidth = 80;

/// Each line is at most as wide as this, unless a word is wider.
std::string programHelp(const Program& program, std::size_t width = kUsualWidth);
std::string objectHelp(const Program& program, const Object& object, std::size_t width = kUsualWidth);
std::string verbHelp(const Program& program, const Object& object, const Verb& verb, std::size_t width = kUsualWidth);

/// The text that the words request instead of a verb: help in any spelling, the version, the manual page. Help is as
/// wide as the terminal. Throws UsageError when there is no help of that name.
std::optional<std::string> information(const Program& program, const Words& words);

/// "hxaux backlight set LEVEL": the call with its values.
std::string usageLine(const Program& program, const Object& object, const Verb& verb);
/// "LEVEL", "SECONDS".
std::string valueName(const Argument& argument);
/// The same of a positional value: "LEVEL", "[NUMBER]", "FILE...".
std::string metavariable(const Argument& value);
/// "-u, --unit NAME".
std::string optionTerm(const Argument& option);
/// "0 to 255", "off, on", or nothing.
std::string allowedValues(const Argument& argument);
/// An argument's explanation in one line, without its name: "how bright (0 to 255)".
std::string explanation(const Argument& argument);

} // namespace cli
