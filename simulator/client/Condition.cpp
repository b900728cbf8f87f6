// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/Condition.h"

#include "simulator/client/Duration.h"
#include "simulator/model/CallNames.h"
#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"
#include "tools/cli/NearNames.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace hxsim {

namespace {

using Words = std::vector<Word>;
using Operator = Condition::Operator;

struct OperatorName {
    const char* text;
    Operator comparison;
};

constexpr std::array kOperators{
    OperatorName{"=", Operator::Equal},          OperatorName{"!=", Operator::NotEqual},
    OperatorName{"<", Operator::Less},           OperatorName{"<=", Operator::LessOrEqual},
    OperatorName{">", Operator::Greater},        OperatorName{">=", Operator::GreaterOrEqual},
    OperatorName{"contains", Operator::Contains}};
constexpr char kOperatorList[] = "=, !=, <, <=, >, >=, contains";

/// The first words of calls in the log; a request is a number.
std::vector<std::string> callNames()
{
    std::vector<std::string> names{calls::kOnLibraries};
    const auto append = [&](const auto& more) { names.insert(names.end(), more.begin(), more.end()); };
    append(calls::kOnFiles);
    append(calls::kOnSerialPorts);
    append(calls::kOnChosenNames);
    append(calls::kOnRegisters);
    return names;
}

/// "; did you mean 'b'?" with the first of the nearest words.
std::string nearest(const std::string& word, const std::vector<std::string>& candidates)
{
    const std::vector<std::string> near = cli::nearNames(word, candidates);
    return near.empty() ? "" : "; did you mean '" + near.front() + "'?";
}

std::string joined(const Words& words, std::size_t from)
{
    std::string text;
    for (std::size_t i = from; i < words.size(); ++i)
        text += (i == from ? "" : " ") + words[i].text;
    return text;
}

/// Decimal, or hexadecimal after 0x.
std::optional<double> numberOf(const std::string& text)
{
    double number = 0;
    std::uint64_t whole = 0;
    const char* const end = text.data() + text.size();
    if (text.starts_with("0x")) {
        const auto result = std::from_chars(text.data() + 2, end, whole, 16);
        return result.ec == std::errc{} && result.ptr == end ? std::optional{static_cast<double>(whole)} : std::nullopt;
    }
    const auto result = std::from_chars(text.data(), end, number);
    const bool isNumber = result.ec == std::errc{} && result.ptr == end && std::isfinite(number); // "nan" is a text
    return isNumber ? std::optional{number} : std::nullopt;
}

/// The other ways to write a switch.
std::string flagOf(const std::string& text)
{
    if (text == "yes" || text == "true" || text == "1")
        return "on";
    return text == "no" || text == "false" || text == "0" ? "off" : text;
}

bool areSame(const std::string& actual, const std::string& wanted)
{
    const std::optional<double> left = numberOf(actual);
    const std::optional<double> right = numberOf(wanted);
    if (left && right)
        return *left == *right;
    return actual == (actual == "on" || actual == "off" ? flagOf(wanted) : wanted);
}

/// The glued form "KEY=VALUE" becomes three words.
Words separated(Words words)
{
    const std::size_t at = words[0].quoted ? std::string::npos : words[0].text.find_first_of("=!<>");
    if (at == std::string::npos || at == 0)
        return words;
    const std::string text = words[0].text;
    const std::size_t end = std::min(text.find_first_not_of("=!<>", at), text.size());
    words[0].text = text.substr(0, at);
    words.insert(words.begin() + 1, Word{text.substr(at, end - at)});
    if (end < text.size())
        words.insert(words.begin() + 2, Word{text.substr(end)});
    return words;
}

Operator parseOperator(const Words& words)
{
    if (words.size() < 2)
        throw BadText{"expected a comparison (" + std::string{kOperatorList} + ") after " + inQuotes(words[0].text)};
    std::vector<std::string> names;
    for (const OperatorName& known : kOperators) {
        if (words[1].text == known.text)
            return known.comparison;
        names.emplace_back(known.text);
    }
    throw BadText{"expected a comparison (" + std::string{kOperatorList} + ") after " + inQuotes(words[0].text) +
                  ", not " + inQuotes(words[1].text) + nearest(words[1].text, names)};
}

void checkProperty(const std::string& name, const Vocabulary& vocabulary)
{
    const std::vector<std::string>& known = vocabulary.properties;
    if (known.empty() || std::ranges::find(known, name) != known.end())
        return;
    std::vector<std::string> candidates = known;
    candidates.insert(candidates.end(), {"request", "output", "log", "never"});
    throw BadText{"the unit has no property '" + name + "'" + suggestion(name, candidates)};
}

Condition parseProperty(const Words& glued, const Vocabulary& vocabulary)
{
    const Words words = separated(glued);
    Condition condition;
    condition.subject = words[0].text;
    checkProperty(condition.subject, vocabulary);
    condition.comparison = parseOperator(words);
    if (words.size() < 3)
        throw BadText{"expected a value after " + inQuotes(words[1].text)};
    condition.value = joined(words, 2);
    const bool isText = condition.comparison == Operator::Equal || condition.comparison == Operator::NotEqual ||
                        condition.comparison == Operator::Contains;
    if (!isText && !numberOf(condition.value))
        throw BadText{"expected a number after " + inQuotes(words[1].text) + ", not " + inQuotes(condition.value)};
    return condition;
}

void checkDevice(const std::string& name, const Vocabulary& vocabulary)
{
    const std::vector<std::string>& known = vocabulary.devices;
    const bool isKnown = known.empty() || std::ranges::find(known, name) != known.end();
    if (!isKnown && name.starts_with("/dev/"))
        throw BadText{"the unit has no device " + inQuotes(name) + suggestion(name, known)};
}

/// Requests may be written in any hexadecimal form, with or without the colon of the log.
std::string callName(std::string word)
{
    if (word.ends_with(':'))
        word.pop_back();
    if (word.starts_with("0x") || word.starts_with("0X"))
        return requestName(static_cast<std::uint32_t>(parseNumber(word, 0, UINT32_MAX)));
    const std::vector<std::string> known = callNames();
    if (word != "*" && std::ranges::find(known, word) == known.end())
        throw BadText{"expected a call as the log shows it (put 4, 0x40010003, open, *), not " + inQuotes(word) +
                      nearest(word, known)};
    return word;
}

Condition parseRequest(const Words& words, const Vocabulary& vocabulary)
{
    if (words.size() < 2)
        throw BadText{"expected a device after 'request', for example: request /dev/power-id put 4"};
    Condition condition{.kind = Condition::Kind::Request, .subject = words[1].text};
    checkDevice(condition.subject, vocabulary);
    if (words.size() < 3)
        throw BadText{"expected a call after " + inQuotes(words[1].text) + " (put 4, 0x40010003, open, *)"};
    condition.call.push_back(callName(words[2].text));
    for (std::size_t i = 3; i < words.size(); ++i)
        condition.call.push_back(words[i].text);
    if (condition.call.back().starts_with('!')) {
        condition.error = errnoName(parseErrno(condition.call.back().substr(1)));
        condition.call.pop_back();
    }
    if (condition.call[0] == "*" && condition.call.size() > 1)
        throw BadText{"unexpected " + inQuotes(condition.call[1]) + " after '*'"};
    return condition;
}

Condition parseText(const Words& words, Condition::Kind kind)
{
    if (words.size() < 2)
        throw BadText{"expected a text after " + inQuotes(words[0].text)};
    return {.kind = kind, .value = joined(words, 1)};
}

Condition parseCondition(const Words& words, const Vocabulary& vocabulary)
{
    if (words.empty())
        throw BadText{"expected a condition, for example: backlight.level = 40"};
    const std::string& first = words[0].text;
    if (!words[0].quoted && first == "request")
        return parseRequest(words, vocabulary);
    if (!words[0].quoted && (first == "output" || first == "log"))
        return parseText(words, first == "output" ? Condition::Kind::Output : Condition::Kind::Log);
    return parseProperty(words, vocabulary);
}

bool isTimeWord(const Word& word)
{
    return !word.quoted && (word.text == "for" || word.text == "within");
}

/// Takes "for T" and "within T" from the end of the words.
void takeTimes(Words& words, Expectation& expectation)
{
    while (words.size() >= 2 && isTimeWord(words[words.size() - 2])) {
        const std::string& name = words[words.size() - 2].text;
        std::optional<Time>& time = name == "for" ? expectation.stays : expectation.within;
        if (time)
            throw BadText{inQuotes(name) + " is written twice"};
        if (words.back().quoted || !isDuration(words.back().text))
            throw BadText{"expected a duration after " + inQuotes(name) + " (20ms, 2s, 1m), not " +
                          inQuotes(words.back().text)};
        time = parseDuration(words.back().text);
        words.resize(words.size() - 2);
    }
    if (!words.empty() && isTimeWord(words.back()))
        throw BadText{"expected a duration after " + inQuotes(words.back().text) + " (20ms, 2s, 1m)"};
}

/// With a mistyped "within" the property would be compared with a long text.
void refuseMistypedTime(const Words& words)
{
    if (words.size() < 3 || words.back().quoted || !isDuration(words.back().text))
        return;
    const Word& before = words[words.size() - 2];
    if (before.quoted || before.text.find_first_of("=!<>") != std::string::npos || before.text == "contains")
        return;
    const std::string near = nearest(before.text, {"within", "for"});
    if (!near.empty())
        throw BadText{"expected 'within' or 'for' before a duration, not " + inQuotes(before.text) + near};
}

void checkTimes(const Expectation& expectation)
{
    if (expectation.never && expectation.within)
        throw BadText{"'never' has 'for T', not 'within T'"};
    if (expectation.never && !expectation.stays)
        throw BadText{"expected 'for T' after a condition with 'never', for example: never led.lit = on for 2s"};
    if (!expectation.never && expectation.stays && !expectation.condition.lasts())
        throw BadText{"'for T' needs a property: a call or a line is over at once"};
}

} // namespace

std::vector<Word> quotedWords(std::string_view text)
{
    Words words;
    std::size_t at = 0;
    while ((at = text.find_first_not_of(" \t", at)) != std::string_view::npos) {
        Word word{"", text[at] == '"'};
        if (word.quoted) {
            for (++at; at < text.size() && text[at] != '"'; ++at)
                word.text += text[at] == '\\' && at + 1 < text.size() ? text[++at] : text[at];
            if (at++ >= text.size())
                throw BadText{"the text after " + inQuotes("\"") + " has no closing quote"};
        } else {
            const std::size_t end = std::min(text.find_first_of(" \t", at), text.size());
            word.text = text.substr(at, end - at);
            at = end;
        }
        words.push_back(std::move(word));
    }
    return words;
}

Expectation parseExpectation(std::string_view text, const Vocabulary& vocabulary)
{
    Words words = quotedWords(text);
    Expectation expectation;
    if (!words.empty() && !words[0].quoted && words[0].text == "never") {
        expectation.never = true;
        words.erase(words.begin());
    }
    takeTimes(words, expectation);
    refuseMistypedTime(words);
    expectation.condition = parseCondition(words, vocabulary);
    checkTimes(expectation);
    return expectation;
}

bool Condition::holdsFor(const std::string& actual) const
{
    if (comparison == Operator::Equal || comparison == Operator::NotEqual)
        return areSame(actual, value) == (comparison == Operator::Equal);
    if (comparison == Operator::Contains)
        return actual.find(value) != std::string::npos;
    const std::optional<double> left = numberOf(actual);
    const double right = numberOf(value).value_or(0);
    if (!left)
        return false;
    switch (comparison) {
    case Operator::Less:
        return *left < right;
    case Operator::LessOrEqual:
        return *left <= right;
    case Operator::Greater:
        return *left > right;
    default:
        return *left >= right;
    }
}

namespace {

/// The words of a call in the log without the colon behind its name.
std::vector<std::string> callWords(const std::string& call)
{
    std::vector<std::string> all = words(call);
    if (!all.empty() && all[0].ends_with(':'))
        all[0].pop_back();
    return all;
}

bool begins(const std::vector<std::string>& call, const std::vector<std::string>& wanted)
{
    return wanted[0] == "*" || (call.size() >= wanted.size() && std::equal(wanted.begin(), wanted.end(), call.begin()));
}

} // namespace

bool Condition::happensWith(const Event& event) const
{
    switch (kind) {
    case Kind::Request:
        return event.kind == Event::Kind::Request && (subject == "*" || subject == event.subject) &&
               (error.empty() || error == event.error) && begins(callWords(event.text), call);
    case Kind::Output:
        return event.kind == Event::Kind::Output && event.text.find(value) != std::string::npos;
    case Kind::Log:
        return event.kind == Event::Kind::Request &&
               (event.subject + ' ' + event.text).find(value) != std::string::npos;
    default:
        return false;
    }
}

} // namespace hxsim
