// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Manual.h"

#include "tools/cli/Troff.h"
#include "tools/hxaux/Arguments.h"
#include "tools/hxaux/Help.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

using troff::item;
using troff::literal;

namespace {

std::string optionTerm(const Argument& option)
{
    return "--" + std::string(option.name) + (option.kind == Kind::Flag ? "" : " VALUE");
}

std::string manualOf(const Object& object, const Verb& verb)
{
    std::string text = ".TP\n.B " + literal(usageLine(object, verb)) + "\n" + literal(verb.help);
    if (!verb.details.empty())
        text += "\n" + literal(verb.details);
    text += "\n.RS\n";
    for (const Argument& value : verb.values)
        text += item(metavariable(value), explanation(value));
    for (const Argument& option : verb.options)
        text += item(optionTerm(option), explanation(option));
    return text + ".PP\nExample:\n.B " + literal(verb.example) + "\n.RE\n";
}

std::string markdownOf(const Object& object, const Verb& verb)
{
    std::string text = "### `" + usageLine(object, verb) + "`\n\n" + std::string(verb.help);
    if (!verb.details.empty())
        text += " " + std::string(verb.details);
    text += "\n\n";
    for (const Argument& value : verb.values)
        text += "- `" + metavariable(value) + "`: " + explanation(value) + "\n";
    for (const Argument& option : verb.options)
        text += "- `" + optionTerm(option) + "`: " + explanation(option) + "\n";
    if (verb.repeat == Repeat::Watch)
        text += "- `--watch`, `--every SECONDS`, `--count TIMES`\n";
    if (text.back() == '\n' && text[text.size() - 2] != '\n')
        text += "\n";
    return text + "Example: `" + std::string(verb.example) + "`\n\n";
}

} // namespace

std::string manualPage()
{
    std::string text =
        ".\\\" Made from the verb table by hxaux --man.\n"
        ".TH HXAUX 1 \"\" \"HXAux " HXAUX_VERSION "\" \"User commands\"\n"
        ".SH NAME\nhxaux \\- read and control the unit's own hardware\n"
        ".SH SYNOPSIS\n.B hxaux\n.I OBJECT\n.RI [ VERB ]\n.RI [ VALUES ]\n.RB [ \\-\\-json ]\n"
        ".SH DESCRIPTION\nEvery operation of the unit's hardware library has a verb. Results are lines of a "
        "name, a colon, the value and its unit.\n.SH OBJECTS\n";
    for (const Object* object : allObjects()) {
        text += ".SS " + literal(object->name) + "\n" + literal(object->help) + ".\n";
        for (const Verb& verb : object->verbs)
            text += manualOf(*object, verb);
    }
    text += ".SH OPTIONS\n";
    for (const Argument& option : commonOptions({.name = "", .help = "", .example = "", .repeat = Repeat::Watch}))
        text += item(optionTerm(option), explanation(option));
    text += ".SH EXIT STATUS\n";
    for (const auto& [status, meaning] : exitMeanings())
        text += item(std::to_string(status), meaning);
    return text + ".SH SEE ALSO\n.BR hx\\-sim (1)\n";
}

std::string markdownReference()
{
    std::string text =
        "# Reference of hxaux\n\nMade from the verb table by `hxaux --reference`. Every call also takes "
        "`--json` and `--help`; calls with `--watch`\nrepeat until Ctrl-C, every second or `--every` so many, "
        "or `--count` times.\n\n";
    for (const Object* object : allObjects()) {
        text += "## " + std::string(object->name) + ": " + std::string(object->help) + "\n\n";
        for (const Verb& verb : object->verbs)
            text += markdownOf(*object, verb);
    }
    text.pop_back(); // no empty line after the last section
    return text;
}

} // namespace hxaux
