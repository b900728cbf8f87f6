// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace hxsim {

/// The properties of the unit, by name: "backlight.level". Values are texts; the same names serve descriptions,
/// `hx-sim set`/`get` and tests. Setters throw BadText for invalid values.
class Properties {
public:
    using Getter = std::function<std::string()>;
    using Setter = std::function<void(const std::string&)>;
    struct Property {
        Getter get;
        Setter set; ///< empty: read-only
        std::string help;
    };

    void add(const std::string& name, Getter get, Setter set, const std::string& help);
    void readOnly(const std::string& name, Getter get, const std::string& help) { add(name, std::move(get), {}, help); }

    /// A number, true/false or text stored in the hardware object.
    template <typename Integer>
    void number(const std::string& name, Integer& value, std::int64_t low, std::int64_t high, const std::string& help)
    {
        add(
            name, [&value] { return std::to_string(value); },
            [&value, low, high](const std::string& text) { value = static_cast<Integer>(parse(text, low, high)); },
            help);
    }
    void real(const std::string& name, double& value, const std::string& help);
    void flag(const std::string& name, bool& value, const std::string& help);
    void text(const std::string& name, std::string& value, const std::string& help);

    [[nodiscard]] std::string get(const std::string& name) const;
    void set(const std::string& name, const std::string& value) const;
    [[nodiscard]] bool has(const std::string& name) const { return properties_.contains(name); }
    [[nodiscard]] const std::map<std::string, Property>& all() const { return properties_; }

private:
    static std::int64_t parse(const std::string& text, std::int64_t low, std::int64_t high);
    [[nodiscard]] const Property& find(const std::string& name) const;

    std::map<std::string, Property> properties_;
};

} // namespace hxsim
