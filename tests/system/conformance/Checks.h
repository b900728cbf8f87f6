// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/hx-aux.h"

#include <array>
#include <cstdio>
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

/// The same checks of the library on any backend: a linked unit, a preloaded unit, or real devices. They use only the
/// public headers. Each defines the answer of a healthy unit, so a failure common to all backends is detected as well
/// as a difference between them.
namespace conformance {

struct Check {
    std::string operation; ///< "Adc.getVoltage"
    std::string expected;  ///< the error code, and the values as text
    std::function<std::string()> run;
};

using Checks = std::vector<Check>;

/// An interface object for the duration of a check.
template <class Interface>
class Held {
public:
    explicit Held(Interface* object) : object_{object} {}
    ~Held() { object_->Release(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    Interface* operator->() const { return object_; }
    Interface& operator*() const { return *object_; }

private:
    Interface* object_;
};

/// A value in readable form: numbers plain, fractions with two digits.
template <class Value>
std::string shown(Value value)
{
    if constexpr (std::is_floating_point_v<Value>) {
        std::array<char, 48> text{};
        std::snprintf(text.data(), text.size(), "%.2f", static_cast<double>(value));
        return text.data();
    } else {
        return std::to_string(static_cast<long>(value));
    }
}

/// "0 24.00": the code and the values. Values appear only with success.
template <class... Values>
std::string answer(Halvix::eErr code, const Values&... values)
{
    std::string text = std::to_string(static_cast<int>(code));
    if (code == Halvix::ERR_SUCCESS)
        ((text += " " + shown(values)), ...);
    return text;
}

/// Calls a getter.
template <class Interface, class... Values>
Check gets(const char* operation, Interface* (*factory)(), Halvix::eErr (Interface::*getter)(Values*...),
           const char* expected)
{
    return {operation, expected, [=] {
                Held<Interface> object{factory()};
                std::tuple<Values...> values{};
                const auto call = [&](Values&... each) { return ((*object).*getter)(&each...); };
                const Halvix::eErr err = std::apply(call, values);
                return std::apply([&](const Values&... each) { return answer(err, each...); }, values);
            }};
}

/// Calls a setter and reports only its code.
template <class Interface, class... Values>
Check sets(const char* operation, const char* expected, Interface* (*factory)(),
           Halvix::eErr (Interface::*setter)(Values...), std::type_identity_t<Values>... values)
{
    return {operation, expected, [=] {
                Held<Interface> object{factory()};
                return answer(((*object).*setter)(values...));
            }};
}

/// Sets values and reads them back through another object. The setter's code comes first when it is not 0.
template <class Interface, class... Values>
Check keeps(const char* operation, Interface* (*factory)(), Halvix::eErr (Interface::*setter)(Values...),
            Halvix::eErr (Interface::*getter)(Values*...), std::type_identity_t<Values>... values)
{
    const std::string expected = answer(Halvix::ERR_SUCCESS, values...);
    return {operation, expected, [=] {
                {
                    Held<Interface> object{factory()};
                    if (const Halvix::eErr err = ((*object).*setter)(values...); err != Halvix::ERR_SUCCESS)
                        return "set: " + answer(err);
                }
                return gets(operation, factory, getter, "").run();
            }};
}

// One function per group of interfaces, one file each.
Checks inputsAndVersions();
Checks unitInformation();
Checks light();
Checks supervisor();
Checks signals();
Checks peripherals();
Checks video();
Checks texts();
/// With its own firmware for all three targets: last of those that use an unchanged unit.
Checks upgrades();
/// Starts a thread that follows the light until the program ends: last of all.
Checks automaticBacklight();

/// Runs them all and prints "operation<TAB>pass|FAIL<TAB>answer" a line; returns the number of failures.
int runAll();

} // namespace conformance
