// SPDX-License-Identifier: LicenseRef-HXAux
// A program's commands as data. The parser, help, manual page, reference and completion are made from these rows alone.
#pragma once

#include "tools/cli/Names.h"

#include <concepts>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

class Call;

using Words = std::vector<std::string>;

/// A word that completes a command line, and its meaning.
struct Candidate {
    std::string word;
    std::string help;
    auto operator<=>(const Candidate&) const = default;
};
using Candidates = std::vector<Candidate>;

enum class Kind { Flag, Integer, Real, Choice, Text, File, Program };
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
    /// The possible values at this moment, for completion; the words in front of the value may matter.
    Candidates (*live)(const Words& before) = nullptr;
    std::string (*problem)(const std::string& text) = nullptr; ///< why a text is refused; empty when it is not
    char letter = '\0';                                        ///< of an option that has a short form
    std::string_view shown = "";                               ///< the value's name in help; made from unit or name
    std::vector<std::string_view> excludes = {};               ///< options and values that cannot stand beside it
    std::string_view needs = "";                               ///< the option or value that it makes no sense without

    [[nodiscard]] Argument optional() const;
    [[nodiscard]] Argument repeated() const; ///< one or more values; the last positional one, or an option
};

/// Builders for the rows.
Argument flag(std::string_view name, std::string_view help);
Argument integer(std::string_view name, double least, double most, std::string_view unit, std::string_view help);
Argument real(std::string_view name, double least, double most, std::string_view unit, std::string_view help);
Argument choice(std::string_view name, const Names& names, std::string_view help);
Argument text(std::string_view name, std::string_view help);
Argument file(std::string_view name, std::string_view help);

/// What a verb does. Each program has a kind of call of its own.
class Function {
public:
    Function() = default;
    template <typename Kind>
    Function(void (*run)(Kind&)) : run_([run](Call& call) { run(static_cast<Kind&>(call)); })
    {
    }
    void operator()(Call& call) const { run_(call); }
    explicit operator bool() const { return static_cast<bool>(run_); }

private:
    std::function<void(Call&)> run_;
};

/// Whether a verb only reads and may be repeated by the program: it then has the options for that.
enum class Repeat { No, Watch };

struct Verb {
    std::string_view name; ///< one or two words; empty for what the object does when no verb is given
    std::string_view help; ///< one sentence, third person
    std::string_view example;
    Function run = {};
    std::vector<Argument> values = {};
    std::vector<Argument> options = {};
    Repeat repeat = Repeat::No;
    std::string_view details = ""; // further sentences of --help and the manual page
};

/// The first word of a call: an object with its verbs, or a command on its own.
struct Object {
    std::string_view name;
    std::string_view help; ///< what it is, without a full stop
    std::vector<Verb> verbs;
};

/// A command without verbs: its name and help are the object's.
Object command(Verb verb);

struct Program {
    std::string_view name;
    std::string_view summary;  ///< one line, without a full stop
    std::string_view synopsis; ///< "OBJECT [VERB] [VALUES]"
    std::string_view details;
    std::string_view version;
    std::string_view kind; ///< what its first words are called: "object"
    std::string_view seeAlso;
    std::vector<const Object*> objects;                  ///< sorted by name
    std::vector<std::pair<int, std::string_view>> exits; ///< every exit status and its meaning
    std::vector<Argument> always = {};                   ///< options of every verb; flags may stand in front of it
    std::vector<Argument> whenRepeated = {};             ///< options of the verbs that may be repeated
    std::string_view implied = "";                       ///< the command that other first words are the values of
    std::string_view usual = "";    ///< the command that is meant without one, also by options alone
    Candidates (*more)() = nullptr; ///< the most likely ones of them, for completion

    [[nodiscard]] const Object* find(std::string_view name) const;
};

/// The verb with the longest name that the words begin with, and the number of its words; null when none matches.
std::pair<const Verb*, std::size_t> findVerb(const Object& object, const Words& words);
/// "backlight set", "version": how a verb is called, without its values.
std::string spoken(const Object& object, const Verb& verb);
/// A verb's own options and those of the program.
std::vector<Argument> optionsOf(const Program& program, const Verb& verb);

/// The option that this word is and that the next word is the value of; null when there is none.
const Argument* optionNamed(const std::vector<Argument>& options, std::string_view word);

} // namespace cli
