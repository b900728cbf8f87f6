// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Help.h"

#include "tools/cli/Arguments.h"
#include "tools/cli/Manual.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iomanip>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace cli {

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t kWidestLeft = 28;

std::size_t widthOfOutput()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return kUsualWidth;
    return std::max<std::size_t>(size.ws_col, 40);
}

// The words in lines, continued at an indentation; the first line has begun already.
std::string wrapped(std::string_view text, std::size_t begun, std::size_t indent, std::size_t width)
{
    std::istringstream words{std::string(text)};
    std::string lines;
    std::size_t column = begun;
    for (std::string word; words >> word; column += word.size()) {
        if (column > indent && column + 1 + word.size() > width) {
            lines += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            lines += ' ';
            ++column;
        }
        lines += word;
    }
    return lines + "\n";
}

std::string columns(const std::string& title, const Rows& rows, std::size_t width)
{
    if (rows.empty())
        return "";
    std::size_t left = 0;
    for (const auto& [term, text] : rows)
        left = std::max(left, std::min(term.size(), kWidestLeft));
    const std::size_t indent = left + 4;
    std::string text = "\n" + title + ":\n";
    for (const auto& [term, help] : rows) {
        text += "  " + term;
        text += term.size() > left ? "\n" + std::string(indent, ' ') : std::string(indent - 2 - term.size(), ' ');
        text += wrapped(help, indent, indent, width);
    }
    return text;
}

std::string upper(std::string_view text)
{
    std::string name;
    for (const char character : text)
        name += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    return name;
}

std::string numberText(double value)
{
    std::ostringstream text;
    text << std::setprecision(15) << value;
    return text.str();
}

bool hasRange(const Argument& argument)
{
    return argument.least != std::numeric_limits<double>::lowest() ||
           argument.most != std::numeric_limits<double>::max();
}

bool isAmong(std::string_view word, std::initializer_list<std::string_view> words)
{
    return std::ranges::find(words, word) != words.end();
}

bool isHelp(std::string_view word)
{
    return isAmong(word, {"--help", "-h", "-help", "-?", "--usage"});
}

// Whether the word "help" could be a value of the verb.
bool takesAnyText(const Verb& verb)
{
    if (verb.values.empty())
        return false;
    const Kind first = verb.values[0].kind;
    return first == Kind::Text || first == Kind::File || first == Kind::Program;
}

// The words of the tool itself: those of a program to be started are not its own.
Words ownWords(const Program& program, const Words& words)
{
    const auto mark = std::ranges::find(words, "--");
    Words own(words.begin(), mark);
    const Object* const object = own.empty() ? nullptr : program.find(own[0]);
    const Verb* const verb = object == nullptr ? nullptr : findVerb(*object, {own.begin() + 1, own.end()}).first;
    if (verb == nullptr || verb->values.empty() || verb->values[0].kind != Kind::Program)
        return own;
    const std::vector<Argument> options = optionsOf(program, *verb);
    for (std::size_t i = 1; i < own.size(); ++i)
        if (!own[i].starts_with("-") && optionNamed(options, own[i - 1]) == nullptr)
            return {own.begin(), own.begin() + static_cast<std::ptrdiff_t>(i)};
    return own;
}

// The words whose help is requested; nothing when none is.
std::optional<Words> helpTopic(const Program& program, Words words)
{
    const bool leads = !words.empty() && words[0] == "help" && program.find("help") == nullptr;
    if (leads)
        words.erase(words.begin());
    if (std::erase_if(words, isHelp) > 0 || leads)
        return words;
    const Object* const object = words.size() < 2 ? nullptr : program.find(words[0]);
    if (object == nullptr)
        return std::nullopt;
    const auto [verb, used] = findVerb(*object, {words.begin() + 1, words.end()});
    const auto help = words.begin() + 1 + static_cast<std::ptrdiff_t>(used);
    if (help == words.end() || *help != "help" || (verb != nullptr && takesAnyText(*verb)))
        return std::nullopt;
    words.erase(help);
    return words;
}

std::string helpOn(const Program& program, const Words& topic)
{
    const std::size_t width = widthOfOutput();
    const auto word = std::ranges::find_if(topic, [](const std::string& each) { return !each.starts_with("-"); });
    if (word == topic.end())
        return programHelp(program, width);
    const Object* const object = program.find(*word);
    if (object == nullptr)
        (void)Arguments(program, {*word}); // refuses it
    const Words rest(word + 1, topic.end());
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): an unknown object is refused above
    const auto [verb, used] = findVerb(*object, rest);
    const bool isWhole = verb != nullptr && (!verb->name.empty() || object->verbs.size() == 1);
    if (isWhole)
        return verbHelp(program, *object, *verb, width);
    const auto isBegun = [&](const Verb& each) { return each.name.starts_with(rest[0] + " "); };
    if (!rest.empty() && verb == nullptr && !rest[0].starts_with("-") && std::ranges::none_of(object->verbs, isBegun))
        (void)Arguments(program, {*word, rest[0]}); // refuses it
    return objectHelp(program, *object, width);
}

Rows rowsOf(const std::vector<Argument>& arguments, std::string (*term)(const Argument&))
{
    Rows rows;
    for (const Argument& argument : arguments)
        rows.emplace_back(term(argument), explanation(argument));
    return rows;
}

} // namespace

std::string valueName(const Argument& argument)
{
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kUnits{{
        {"s", "SECONDS"},
        {"ms", "MILLISECONDS"},
        {"V", "VOLTS"},
        {"Hz", "HERTZ"},
        {"%", "PERCENT"},
        {"degrees C", "DEGREES"},
    }};
    if (!argument.shown.empty())
        return std::string(argument.shown);
    const auto unit = std::ranges::find(kUnits, argument.unit, &std::pair<std::string_view, std::string_view>::first);
    if (unit != kUnits.end())
        return std::string(unit->second);
    return upper(argument.unit.empty() ? argument.name : argument.unit);
}

std::string metavariable(const Argument& value)
{
    std::string name = value.shown.empty() ? upper(value.name) : std::string(value.shown);
    if (value.presence == Presence::Repeated || value.kind == Kind::Program)
        name += "...";
    return value.presence == Presence::Optional ? "[" + name + "]" : name;
}

std::string optionTerm(const Argument& option)
{
    const std::string letter = option.letter != '\0' ? std::string("-") + option.letter + ", " : "";
    return letter + "--" + std::string(option.name) + (option.kind == Kind::Flag ? "" : " " + valueName(option));
}

std::string usageLine(const Program& program, const Object& object, const Verb& verb)
{
    std::string line = std::string(program.name) + ' ';
    line += object.name == program.usual ? "[OPTIONS]" : spoken(object, verb);
    for (const Argument& value : verb.values)
        line += " " + metavariable(value);
    return line;
}

std::string allowedValues(const Argument& argument)
{
    std::string allowed;
    if (argument.names != nullptr) {
        for (const std::string& name : argument.names->all())
            allowed += (allowed.empty() ? "" : ", ") + name;
    }
    const bool isNumber = argument.kind == Kind::Integer || argument.kind == Kind::Real;
    if (!isNumber || !hasRange(argument))
        return allowed;
    const std::string range = numberText(argument.least) + " to " + numberText(argument.most);
    return allowed.empty() ? range : allowed + ", or " + range;
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

std::string programHelp(const Program& program, std::size_t width)
{
    Rows objects;
    for (const Object* object : program.objects)
        objects.emplace_back(object->name, object->help);
    Rows statuses;
    for (const auto& [status, meaning] : program.exits)
        statuses.emplace_back(std::to_string(status), meaning);
    const std::string name(program.name);
    const std::string kind = upper(program.kind);
    const Object* const usual = program.find(program.usual);
    const Rows options = usual == nullptr ? Rows{} : rowsOf(optionsOf(program, usual->verbs[0]), optionTerm);
    return name + " " + std::string(program.synopsis) + "\n\n" + wrapped(program.details, 0, 0, width) +
           columns("Options", options, width) +
           columns(kind.substr(0, 1) + std::string(program.kind.substr(1)) + "s", objects, width) +
           columns("Exit statuses", statuses, width) + "\n" +
           wrapped("'" + name + " " + kind + " --help' explains one of them; '" + name +
                       " --version' prints the version.",
                   0, 0, width);
}

std::string objectHelp(const Program& program, const Object& object, std::size_t width)
{
    Rows verbs;
    for (const Verb& verb : object.verbs)
        verbs.emplace_back(usageLine(program, object, verb), verb.help);
    const std::string title = std::string(program.name) + " " + std::string(object.name) + ":";
    return title + wrapped(object.help, title.size(), 0, width) + columns("Calls", verbs, width) +
           "\nAdd --help to a call for its values and options.\n";
}

std::string verbHelp(const Program& program, const Object& object, const Verb& verb, std::size_t width)
{
    std::string text = usageLine(program, object, verb) + "\n\n" + wrapped(verb.help, 0, 0, width);
    if (!verb.details.empty())
        text += wrapped(verb.details, 0, 0, width);
    return text + columns("Values", rowsOf(verb.values, metavariable), width) +
           columns("Options", rowsOf(optionsOf(program, verb), optionTerm), width) + "\nExample:\n  " +
           std::string(verb.example) + "\n";
}

std::optional<std::string> information(const Program& program, const Words& words)
{
    const auto isFlag = [&](const std::string& word) {
        return std::ranges::any_of(program.always, [&](const Argument& each) {
            return each.kind == Kind::Flag && word == "--" + std::string(each.name);
        });
    };
    const auto first = std::ranges::find_if_not(words, isFlag); // flags of every verb may stand in front
    if (first == words.end())
        return std::nullopt;
    if (isAmong(*first, {"--version", "-V", "-version"}))
        return std::string(program.name) + " " + std::string(program.version) + "\n";
    if (*first == "--man")
        return manualPage(program);
    if (const auto topic = helpTopic(program, ownWords(program, words)))
        return helpOn(program, *topic);
    return std::nullopt;
}

} // namespace cli
