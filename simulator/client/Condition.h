// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"
#include "simulator/protocol/Event.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hxsim {

/// The names that a condition may use; an empty list allows any.
struct Vocabulary {
    std::vector<std::string> properties{};
    std::vector<std::string> devices{};
};

/// Something that is true or false of a unit (a property's value), or that happens at a moment (a call, a line).
struct Condition {
    enum class Kind { Property, Request, Output, Log };
    enum class Operator { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual, Contains };

    Kind kind = Kind::Property;
    std::string subject{}; ///< the property, or the device; "*" for any device
    Operator comparison = Operator::Equal;
    std::string value{};             ///< what the property is compared with, or the text that the line contains
    std::vector<std::string> call{}; ///< the words with which the call begins in the log
    std::string error{};             ///< the error that the call must fail with; empty: any result

    [[nodiscard]] bool lasts() const { return kind == Kind::Property; }
    /// Whether a property with this value meets it.
    [[nodiscard]] bool holdsFor(const std::string& actual) const;
    /// Whether this event is what it waits for.
    [[nodiscard]] bool happensWith(const Event& event) const;
};

/// A condition and its time: "backlight.level = 40 within 1s".
struct Expectation {
    Condition condition{};
    bool never = false;
    std::optional<Time> stays{};  ///< "for T"
    std::optional<Time> within{}; ///< "within T"
};

/// The grammar:
///     EXPECTATION  [never] CONDITION [for T] [within T]
///     CONDITION    KEY OP VALUE | request DEVICE CALL | output TEXT | log TEXT
///     OP           = != < <= > >= contains
/// Throws BadText with what was expected, what is there, and the nearest right word.
Expectation parseExpectation(std::string_view text, const Vocabulary& vocabulary);

/// The words of a line; a word in double quotes may hold spaces, and \" and \\.
struct Word {
    std::string text;
    bool quoted = false;
};
std::vector<Word> quotedWords(std::string_view text);

} // namespace hxsim
