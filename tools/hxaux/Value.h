// SPDX-License-Identifier: LicenseRef-HXAux
// A result of a verb: printed as text with its unit, or as JSON.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace hxaux {

struct Field;

/// A real number with its significant decimals; JSON contains the number rounded to them as well.
struct Real {
    double value;
    int decimals = 3;
};

/// A code of the unit with its name: "name (code)" as text, an object of code and text in JSON.
struct Coded {
    long long code;
    std::string name;
};

struct Absent {}; ///< no value: "absent" as text, null in JSON

class Value {
public:
    using List = std::vector<Value>;
    using Record = std::vector<Field>;
    using Any = std::variant<Absent, bool, long long, Real, Coded, std::string, List, Record>;

    /// Defined where Field is complete.
    Value();
    Value(const Value& other);
    Value(Value&& other) noexcept;
    Value& operator=(const Value& other);
    Value& operator=(Value&& other) noexcept;
    ~Value();

    Value(Absent);
    Value(bool value);
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Value(Number value) : Value(Any(std::in_place_type<long long>, value)) {}
    Value(double value, int decimals = 3);
    Value(Coded value);
    Value(std::string value);
    Value(std::string_view value);
    Value(const char* value);
    Value(List value);
    Value(Record value);

    [[nodiscard]] const Any& any() const { return any_; }
    [[nodiscard]] std::string text() const; ///< one line

private:
    explicit Value(Any any);

    Any any_;
};

/// Who chose a field's name. Ours become keys of JSON: "voltage 3" is an element of the series "voltage".
enum class NameOf { Tool, User };

struct Field {
    std::string name;
    Value value;
    std::string unit = "";
    NameOf by = NameOf::Tool;
};

} // namespace hxaux
