// SPDX-License-Identifier: LicenseRef-HXAux
// A result of a verb: printed as text with its unit, or as JSON.
#ifndef HXAUX_VALUE_H
#define HXAUX_VALUE_H

#include <concepts>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace hxaux {

struct Field;

// A real number with the decimals that make sense for it; JSON gets the number rounded to them as well.
struct Real {
    double value;
    int decimals = 3;
};

struct Absent {}; // there is none: "absent" as text, null in JSON

class Value {
public:
    using List = std::vector<Value>;
    using Record = std::vector<Field>;
    using Any = std::variant<Absent, bool, long long, Real, std::string, List, Record>;

    // Defined where Field is complete.
    Value();
    Value(const Value& other);
    Value(Value&& other) noexcept;
    Value& operator=(const Value& other);
    Value& operator=(Value&& other) noexcept;
    ~Value();

    Value(Absent);
    Value(bool value);
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Value(Number value) : Value(Any(static_cast<long long>(value))) {}
    Value(double value, int decimals = 3);
    Value(std::string value);
    Value(std::string_view value);
    Value(const char* value);
    Value(List value);
    Value(Record value);

    [[nodiscard]] const Any& any() const { return any_; }
    [[nodiscard]] std::string text() const; // one line

private:
    explicit Value(Any any);

    Any any_;
};

struct Field {
    std::string name;
    Value value;
    std::string unit = "";
};

} // namespace hxaux

#endif
