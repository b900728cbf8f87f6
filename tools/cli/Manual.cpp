// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Manual.h"

#include "tools/cli/Help.h"

namespace cli {

namespace {

// Escapes a text so that it is shown literally: no control character at a line start, no minus as a hyphen.
std::string literal(std::string_view text)
{
    std::string shown = text.starts_with(".") || text.starts_with("'") ? "\\&" : "";
    for (const char character : text) {
        if (character == '\\')
            shown += "\\e";
        else if (character == '-')
            shown += "\\-";
        else
            shown += character;
    }
    return shown;
}

// A term in bold with its explanation.
std::string item(std::string_view term, std::string_view text)
{
    return ".TP\n.B " + literal(term) + '\n' + literal(text) + '\n';
}

std::string upper(std::string text)
{
    for (char& character : text)
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    return text;
}

std::string manualOf(const Program& program, const Object& object, const Verb& verb)
{
    std::string text = ".TP\n.B " + literal(usageLine(program, object, verb)) + "\n" + literal(verb.help);
    if (!verb.details.empty())
        text += "\n" + literal(verb.details);
    text += "\n.RS\n";
    for (const Argument& value : verb.values)
        text += item(metavariable(value), explanation(value));
    for (const Argument& option : verb.options)
        text += item(optionTerm(option), explanation(option));
    return text + ".PP\nExample:\n.B " + literal(verb.example) + "\n.RE\n";
}

std::string markdownOf(const Program& program, const Object& object, const Verb& verb)
{
    std::string text = "### `" + usageLine(program, object, verb) + "`\n\n" + std::string(verb.help);
    if (!verb.details.empty())
        text += " " + std::string(verb.details);
    text += "\n\n";
    for (const Argument& value : verb.values)
        text += "- `" + metavariable(value) + "`: " + explanation(value) + "\n";
    for (const Argument& option : verb.options)
        text += "- `" + optionTerm(option) + "`: " + explanation(option) + "\n";
    std::string repeated;
    if (verb.repeat == Repeat::Watch)
        for (const Argument& option : program.whenRepeated)
            repeated += (repeated.empty() ? "- `" : ", `") + optionTerm(option) + "`";
    text += repeated + (repeated.empty() ? "" : "\n");
    if (text[text.size() - 2] != '\n')
        text += "\n";
    return text + "Example: `" + std::string(verb.example) + "`\n\n";
}

} // namespace

std::string manualPage(const Program& program)
{
    const std::string name = literal(program.name);
    std::string text = ".\\\" Made from the table of commands by " + std::string(program.name) + " --man.\n.TH " +
                       upper(name) + " 1 \"\" \"HXAux " + std::string(program.version) + "\" \"User commands\"\n" +
                       ".SH NAME\n" + name + " \\- " + literal(program.summary) + "\n.SH SYNOPSIS\n.B " + name + "\n" +
                       literal(program.synopsis) + "\n.SH DESCRIPTION\n" + literal(program.details) + "\n.SH " +
                       upper(std::string(program.kind)) + "S\n";
    for (const Object* object : program.objects) {
        text += ".SS " + literal(object->name) + "\n" + literal(object->help) + "\n";
        for (const Verb& verb : object->verbs)
            text += manualOf(program, *object, verb);
    }
    text += ".SH OPTIONS\n";
    for (const Argument& option : optionsOf(program, {.name = "", .help = "", .example = "", .repeat = Repeat::Watch}))
        text += item(optionTerm(option), explanation(option));
    text += ".SH EXIT STATUS\n";
    for (const auto& [status, meaning] : program.exits)
        text += item(std::to_string(status), meaning);
    return text + ".SH SEE ALSO\n.BR " + literal(program.seeAlso) + " (1)\n";
}

std::string markdownReference(const Program& program)
{
    const std::string name(program.name);
    std::string text = "# Reference of " + name + "\n\nMade from the table of commands by `" + name +
                       " --reference`. Every call also takes `--json` and `--help`; calls with `--watch`\nrepeat until "
                       "Ctrl-C, every second or `--every` so many, or `--count` times.\n\n";
    for (const Object* object : program.objects) {
        text += "## " + std::string(object->name) + ": " + std::string(object->help) + "\n\n";
        for (const Verb& verb : object->verbs)
            text += markdownOf(program, *object, verb);
    }
    text.pop_back(); // no empty line after the last section
    return text;
}

} // namespace cli
