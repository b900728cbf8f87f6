// SPDX-License-Identifier: LicenseRef-HXAux
// Maps an enumeration's values to names and back. A value without a name is printed and parsed as its number.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

class Names {
public:
    explicit Names(std::vector<std::pair<long long, std::string_view>> rows) : rows_(std::move(rows)) {}

    template <typename Value>
    [[nodiscard]] std::string nameOf(Value value) const
    {
        return nameOfNumber(static_cast<long long>(value));
    }

    /// The value of a name, or of the number of a value that has a name.
    [[nodiscard]] std::optional<long long> valueOf(std::string_view name) const;
    [[nodiscard]] std::vector<std::string> all() const;

private:
    [[nodiscard]] std::string nameOfNumber(long long value) const;

    std::vector<std::pair<long long, std::string_view>> rows_;
};

/// namesOf<PowerAction>({{PowerActionNone, "none"}, ...}): the names of one enumeration.
template <typename Value>
Names namesOf(std::initializer_list<std::pair<Value, std::string_view>> rows)
{
    std::vector<std::pair<long long, std::string_view>> all;
    for (const auto& [value, name] : rows)
        all.emplace_back(static_cast<long long>(value), name);
    return Names(std::move(all));
}

/// For all two-state settings.
extern const Names kOnOff;

/// Parses a whole text as a number; nothing when it contains anything else.
std::optional<long long> toInteger(std::string_view text);
std::optional<double> toReal(std::string_view text);

} // namespace cli
