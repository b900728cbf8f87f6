// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Report.h"

#include "hx-aux/errors.h"
#include "tools/cli/Json.h"
#include "tools/cli/Printable.h"
#include "tools/hxaux/ErrorNames.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>

namespace hxaux {

namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const Value& value);

// What a field is in JSON: its key, and its number within a series.
struct Key {
    std::string name;
    std::optional<long long> number = std::nullopt;
};

Key keyOf(const Field& field)
{
    if (field.by == NameOf::User)
        return {field.name};
    std::string name = field.name;
    std::optional<long long> number;
    if (const std::size_t blank = name.rfind(' '); blank != std::string::npos)
        number = toInteger(name.substr(blank + 1));
    if (number)
        name.resize(name.rfind(' '));
    std::ranges::replace(name, ' ', '_');
    return {name, number};
}

// An element of a series: {"number":3,"value":11.9}, or with the members of a record.
Json elementOf(long long number, Json value)
{
    Json element = {{"number", number}};
    if (value.is_object())
        element.update(value);
    else
        element["value"] = std::move(value);
    return element;
}

Json jsonOf(const Value::Record& fields)
{
    Json object = Json::object();
    for (const Field& field : fields) {
        const Key key = keyOf(field);
        if (key.number)
            object[key.name].push_back(elementOf(*key.number, jsonOf(field.value)));
        else
            object[key.name] = jsonOf(field.value);
    }
    return object;
}

// The number that the text shows.
double rounded(const Real& real)
{
    return toReal(Value(real.value, real.decimals).text()).value_or(real.value);
}

Json jsonOf(const Value& value)
{
    struct Converter {
        Json operator()(Absent) const { return nullptr; }
        Json operator()(bool flag) const { return flag; }
        Json operator()(long long number) const { return number; }
        Json operator()(const Real& real) const { return rounded(real); }
        Json operator()(const Coded& coded) const { return {{"code", coded.code}, {"text", coded.name}}; }
        Json operator()(const std::string& text) const { return text; }
        Json operator()(const Value::List& list) const
        {
            Json array = Json::array();
            for (const Value& each : list)
                array.push_back(jsonOf(each));
            return array;
        }
        Json operator()(const Value::Record& record) const { return jsonOf(record); }
    };
    return std::visit(Converter{}, value.any());
}

// The units of the fields that have one, nested as the result is.
Json unitsOf(const std::vector<Field>& fields)
{
    Json units = Json::object();
    for (const Field& field : fields) {
        const std::string key = keyOf(field).name;
        if (!field.unit.empty())
            units[key] = field.unit;
        if (const auto* record = std::get_if<Value::Record>(&field.value.any())) {
            if (Json inner = unitsOf(*record); !inner.empty())
                units[key] = std::move(inner);
        }
    }
    return units;
}

Json jsonOf(const Problem& problem)
{
    Json object = {{"item", problem.item}, {"code", nullptr}, {"name", nullptr}, {"text", problem.text}};
    if (problem.code >= 0) {
        object["code"] = problem.code;
        object["name"] = errorName(problem.code);
    }
    return object;
}

// When everything failed for one reason, the reason is reported once.
std::vector<Problem> withoutRepetition(const Report& report)
{
    const auto& all = report.problems;
    const auto likeFirst = [&](const Problem& each) { return each.code == all[0].code && each.text == all[0].text; };
    if (all.size() < 2 || !report.result.empty() || !std::ranges::all_of(all, likeFirst))
        return all;
    return {{"", all[0].code, all[0].text}};
}

} // namespace

std::string asJson(const Report& report)
{
    Json problems = Json::array();
    for (const Problem& problem : report.problems)
        problems.push_back(jsonOf(problem));
    Json result = jsonOf(report.result);
    if (!report.time.empty())
        result["time"] = report.time;
    const Json whole = {{"format", kJsonFormat}, {"object", report.object},
                        {"verb", report.verb},   {"status", static_cast<int>(report.status)},
                        {"result", result},      {"units", unitsOf(report.result)},
                        {"notes", report.notes}, {"errors", problems}};
    return cli::written(whole) + "\n";
}

std::string asText(const Report& report)
{
    std::string text;
    if (!report.time.empty() && !report.result.empty())
        text = "time: " + report.time + "\n";
    for (const Field& field : report.result)
        text += cli::printable(field.name) + ": " + field.value.text() + (field.unit.empty() ? "" : " " + field.unit) +
                "\n";
    return text;
}

std::string noteLines(const Report& report)
{
    std::string text;
    for (const std::string& note : report.notes)
        text += cli::printable(note) + "\n";
    return text;
}

std::string problemLines(const Report& report)
{
    const std::string where = report.object + (report.verb.empty() ? "" : " " + report.verb) + ": ";
    std::string lines;
    for (const Problem& problem : withoutRepetition(report)) {
        lines += (report.object.empty() ? "hxaux: " : where) +
                 (problem.item.empty() ? "" : cli::printable(problem.item) + ": ");
        lines +=
            cli::printable(problem.text) + (problem.code < 0 ? "" : " (" + std::to_string(problem.code) + ")") + "\n";
    }
    return lines;
}

} // namespace hxaux
