// SPDX-License-Identifier: LicenseRef-HXAux
// A row of the verb table. Parsing, help, completion and the manual page are generated from these rows alone.
#pragma once

#include "tools/hxaux/Names.h"

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace hxaux {

class Call;

/// Exit statuses of the tool. A signal ends it as signals do, which a shell reports as 128 and the signal's number.
enum class Exit {
    Done = 0,
    Refused = 1,
    Usage = 2,
    File = 3,
    Difference = 4,
    Busy = 5,
    NoConnection = 6,
    HungUp = 129,
    Interrupted = 130,
    Terminated = 143
};

enum class Kind { Flag, Integer, Real, Choice, Text, File };
enum class Presence { Required, Optional, Repeated };

/// A value on the command line: positional, or an option when it is one of a verb's options.
struct Argument {
    std::string_view name;
    Kind kind = Kind::Text;
    std::string_view help = "";
    std::string_view unit = "";
    double least = std::numeric_limits<double>::lowest();
    double most = std::numeric_limits<double>::max();
    const Names* names = nullptr; ///< of a Choice, and of an Integer that also has names
    Presence presence = Presence::Required;
    std::vector<std::string> (*live)() = nullptr; ///< the possible values at this moment, for completion

    [[nodiscard]] Argument from(std::vector<std::string> (*current)()) const;
    [[nodiscard]] Argument optional() const;
    [[nodiscard]] Argument repeated() const; ///< one or more values; always the last one
};

/// Builders for the rows.
Argument flag(std::string_view name, std::string_view help);
Argument integer(std::string_view name, double least, double most, std::string_view unit, std::string_view help);
Argument real(std::string_view name, double least, double most, std::string_view unit, std::string_view help);
Argument choice(std::string_view name, const Names& names, std::string_view help);
Argument text(std::string_view name, std::string_view help);
Argument file(std::string_view name, std::string_view help);

/// Whether a verb only reads and may be repeated by the frame: it then has --watch and --count.
enum class Repeat { No, Watch };

struct Verb {
    std::string_view name; ///< one or two words; empty for what the object does when no verb is given
    std::string_view help; ///< one sentence, third person
    std::string_view example;
    void (*run)(Call& call) = nullptr;
    std::vector<Argument> values = {};
    std::vector<Argument> options = {};
    Repeat repeat = Repeat::No;
    std::string_view details = ""; // further sentences of --help and the manual page
};

struct Object {
    std::string_view name;
    std::string_view help; ///< what it is, without a full stop
    std::vector<Verb> verbs;
};

} // namespace hxaux
