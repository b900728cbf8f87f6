// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Value.h"

#include "tools/cli/Printable.h"

#include <array>
#include <cstdio>

namespace hxaux {

namespace {

std::string decimals(const Real& real)
{
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%.*f", real.decimals, real.value);
    return text.data();
}

std::string joined(const Value::List& list)
{
    std::string text;
    for (const Value& value : list)
        text += (text.empty() ? "" : ", ") + value.text();
    return text;
}

std::string joined(const Value::Record& record)
{
    std::string text;
    for (const Field& field : record) {
        text += (text.empty() ? "" : ", ") + cli::printable(field.name) + " " + field.value.text();
        if (!field.unit.empty())
            text += " " + field.unit;
    }
    return text;
}

} // namespace

Value::Value() = default;
Value::Value(const Value& other) = default;
Value::Value(Value&& other) noexcept = default;
Value& Value::operator=(const Value& other) = default;
Value& Value::operator=(Value&& other) noexcept = default;
Value::~Value() = default;

Value::Value(Any any) : any_(std::move(any)) {}
Value::Value(Absent) {}
Value::Value(bool value) : any_(value) {}
Value::Value(double value, int decimals) : any_(Real{value, decimals}) {}
Value::Value(Coded value) : any_(std::move(value)) {}
Value::Value(std::string value) : any_(std::move(value)) {}
Value::Value(std::string_view value) : any_(std::string(value)) {}
Value::Value(const char* value) : any_(std::string(value)) {}
Value::Value(List value) : any_(std::move(value)) {}
Value::Value(Record value) : any_(std::move(value)) {}

std::string Value::text() const
{
    struct Printer {
        std::string operator()(Absent) const { return "absent"; }
        std::string operator()(bool value) const { return value ? "on" : "off"; }
        std::string operator()(long long value) const { return std::to_string(value); }
        std::string operator()(const Real& value) const { return decimals(value); }
        std::string operator()(const Coded& value) const
        {
            return cli::printable(value.name) + " (" + std::to_string(value.code) + ")";
        }
        std::string operator()(const std::string& value) const { return cli::printable(value); }
        std::string operator()(const List& value) const { return joined(value); }
        std::string operator()(const Record& value) const { return joined(value); }
    };
    return std::visit(Printer{}, any_);
}

} // namespace hxaux
