// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Help.h"

#include "tools/hxaux/Arguments.h"
#include "tools/hxaux/Objects.h"

#include <algorithm>

namespace hxaux {

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string columns(const std::string& title, const Rows& rows)
{
    if (rows.empty())
        return "";
    std::size_t width = 0;
    for (const auto& [left, right] : rows)
        width = std::max(width, left.size());
    std::string text = "\n" + title + ":\n";
    for (const auto& [left, right] : rows)
        text.append("  ").append(left).append(width - left.size() + 2, ' ').append(right).append("\n");
    return text;
}

Rows rowsOf(const std::vector<Argument>& arguments, const std::string& prefix)
{
    Rows rows;
    for (const Argument& argument : arguments) {
        std::string left = prefix.empty() ? metavariable(argument) : prefix + std::string(argument.name);
        if (!prefix.empty() && argument.kind != Kind::Flag)
            left += " VALUE";
        rows.emplace_back(left, explanation(argument));
    }
    return rows;
}

} // namespace

const std::vector<std::pair<int, const char*>>& exitMeanings()
{
    static const std::vector<std::pair<int, const char*>> meanings{
        {0, "done"},
        {1, "the unit refused; standard error has the text and the code"},
        {2, "usage error"},
        {3, "a file could not be read, or was refused"},
        {4, "verification found a difference"},
        {5, "busy: the same function is already running"},
        {6, "no connection"},
        {129, "ended by HUP"},
        {130, "ended by INT (Ctrl-C)"},
        {143, "ended by TERM"},
    };
    return meanings;
}

std::string explanation(const Argument& argument)
{
    std::string range = allowedValues(argument);
    if (!argument.unit.empty())
        range += (range.empty() ? "in " : " ") + std::string(argument.unit);
    std::string text(argument.help);
    if (!range.empty())
        text += text.empty() ? range : " (" + range + ")";
    return text;
}

std::string toolHelp()
{
    Rows objects;
    for (const Object* object : allObjects())
        objects.emplace_back(object->name, object->help);
    Rows statuses;
    for (const auto& [status, meaning] : exitMeanings())
        statuses.emplace_back(std::to_string(status), meaning);
    return "hxaux OBJECT [VERB] [VALUES] [--json]\n\nReads and controls the unit's own hardware.\n" +
           columns("Objects", objects) + columns("Exit statuses", statuses) +
           "\n'hxaux OBJECT --help' lists the verbs of an object; 'hxaux --version' prints the version.\n";
}

std::string objectHelp(const Object& object)
{
    Rows verbs;
    for (const Verb& verb : object.verbs)
        verbs.emplace_back(usageLine(object, verb), verb.help);
    return "hxaux " + std::string(object.name) + ": " + std::string(object.help) + "\n" + columns("Calls", verbs) +
           "\nAdd --help to a call for its values and options.\n";
}

std::string verbHelp(const Object& object, const Verb& verb)
{
    std::string text = usageLine(object, verb) + "\n\n" + std::string(verb.help) + "\n";
    if (!verb.details.empty())
        text += std::string(verb.details) + "\n";
    return text + columns("Values", rowsOf(verb.values, "")) + columns("Options", rowsOf(optionsOf(verb), "--")) +
           "\nExample:\n  " + std::string(verb.example) + "\n";
}

} // namespace hxaux
