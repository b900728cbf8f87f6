// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Properties.h"

#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"

#include <array>
#include <cassert>
#include <charconv>

namespace hxsim {

namespace {

std::string shortest(double value)
{
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

} // namespace

void Properties::add(const std::string& name, Getter get, Setter set, const std::string& help)
{
    [[maybe_unused]] const bool isNew =
        properties_.emplace(name, Property{std::move(get), std::move(set), help}).second;
    assert(isNew && "two pieces of hardware use one property name");
}

void Properties::real(const std::string& name, double& value, const std::string& help)
{
    add(
        name, [&value] { return shortest(value); }, [&value](const std::string& text) { value = parseReal(text); },
        help);
}

void Properties::flag(const std::string& name, bool& value, const std::string& help)
{
    add(
        name, [&value] { return onOrOff(value); }, [&value](const std::string& text) { value = parseFlag(text); },
        help);
}

void Properties::text(const std::string& name, std::string& value, const std::string& help)
{
    add(
        name, [&value] { return value; }, [&value](const std::string& text) { value = text; }, help);
}

std::string Properties::get(const std::string& name) const
{
    return find(name).get();
}

void Properties::set(const std::string& name, const std::string& value) const
{
    const Property& property = find(name);
    if (!property.set)
        throw BadText{name + " can only be read"};
    try {
        property.set(value);
    } catch (const BadText& bad) {
        throw BadText{name + ": " + bad.what()};
    }
}

std::int64_t Properties::parse(const std::string& text, std::int64_t low, std::int64_t high)
{
    return parseNumber(text, low, high);
}

const Properties::Property& Properties::find(const std::string& name) const
{
    const auto found = properties_.find(name);
    if (found == properties_.end())
        throw BadText{"the unit has no property '" + name + "'" + suggestionFrom(name, properties_)};
    return found->second;
}

} // namespace hxsim
