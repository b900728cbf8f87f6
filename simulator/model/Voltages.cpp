// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Voltages.h"

#include "simulator/model/Text.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace hxsim {

namespace {

/// The divider between each supply and the converter, and the voltage on a healthy unit.
struct Supply {
    double divider;
    double volts;
};

constexpr std::array<Supply, 8> kSupplies{
    {{12.0, 24.0}, {12.0, 12.0}, {5.0, 5.0}, {5.0, 5.0}, {2.0, 3.3}, {2.0, 3.3}, {2.0, 1.8}, {2.0, 1.2}}};

constexpr std::uint16_t kMostCounts = 4095;
constexpr double kVoltsPerCount = 3.3 / 4096.0;

std::string voltsOf(std::uint16_t counts, double divider)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", counts * kVoltsPerCount * divider);
    return text.data();
}

std::uint16_t countsOf(double volts, double divider)
{
    const double counts = std::round(volts / divider / kVoltsPerCount);
    if (counts < 0 || counts > kMostCounts)
        throw BadText{"the converter measures 0 to " + voltsOf(kMostCounts, divider) + " volts here"};
    return static_cast<std::uint16_t>(counts);
}

} // namespace

Voltages::Voltages(Unit& unit) : registers{unit, "/dev/adc-id"}
{
    static_assert(kSupplies.size() <= 0xFF);
    for (std::size_t number = 0; number < kSupplies.size(); ++number) {
        const auto i = static_cast<std::uint8_t>(number);
        const std::string name = "voltage." + std::to_string(i);
        const double divider = kSupplies[i].divider;
        registers.property(i, name + ".raw", countsOf(kSupplies[i].volts, divider), "converter counts",
                           {0, kMostCounts});
        unit.properties().add(
            name, [this, i, divider] { return voltsOf(registers[i], divider); },
            [this, i, divider](const std::string& text) { registers[i] = countsOf(parseReal(text), divider); },
            "supply voltage in volts");
    }
    unit.actions().add(
        "voltage", "NUMBER VOLTS",
        [&unit](const Actions::Words& arguments) {
            if (arguments.size() != 2)
                throw BadText{"voltage NUMBER VOLTS"};
            unit.properties().set("voltage." + arguments[0], arguments[1]);
        },
        "sets a supply voltage");
}

HXSIM_HARDWARE(Voltages)

} // namespace hxsim
