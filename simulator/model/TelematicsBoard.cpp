// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/TelematicsBoard.h"

#include "simulator/model/ProductionData.h"
#include "simulator/model/Text.h"

namespace hxsim {

namespace {

using namespace std::chrono_literals;

constexpr std::uint8_t kAddress = 0x40;

// Pins.
constexpr unsigned kGsmKey = 0;
constexpr unsigned kWlanPower = 1;
constexpr unsigned kGsmStatus = 2;
constexpr unsigned kAntennaShort = 3;
constexpr unsigned kWlanAuxiliary = 7;

// How long the module's key must be held.
constexpr Time kHoldToSwitchOn = 1000ms;
constexpr Time kHoldToSwitchOff = 2000ms;

std::uint8_t bit(unsigned pin, bool high)
{
    return static_cast<std::uint8_t>(high ? 1U << pin : 0U);
}

} // namespace

TelematicsBoard::TelematicsBoard(Unit& unit) : unit_{unit}
{
    unit.i2c().attach(kAddress, expander);
    expander.inputs = [this] { return inputs(); };
    expander.changed = [this](Time now) { follow(now); };
    unit.whenSupplyFails([this] {
        expander.registers = {0xFF};
        follow(unit_.clock().now());
        gsmOn = false;
    });
    describe();
}

void TelematicsBoard::describe()
{
    Properties& properties = unit_.properties();
    properties.flag("telematics.gsm", gsmOn, "whether the GSM/GPRS module is on");
    properties.flag("telematics.antenna-short", antennaShort, "whether the GPS antenna is short-circuited");
    properties.readOnly(
        "telematics.gsm-key", [this] { return keyHeld ? "held" : "free"; },
        "whether the power key of the GSM/GPRS module is held");
    properties.readOnly(
        "telematics.gsm-press",
        [this] { return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(lastPress).count()); },
        "how long the power key was held last, in milliseconds");
    properties.readOnly(
        "telematics.wlan", [this] { return onOrOff(wlanRuns()); }, "whether the WLAN module runs");
    properties.readOnly(
        "telematics.wlan-power", [this] { return onOrOff(wlanPowered()); }, "whether the WLAN module has power");
    for (const std::uint8_t number : {GpioExpander::kDirections, GpioExpander::kLatch})
        properties.number(number == GpioExpander::kLatch ? "expander.latch" : "expander.directions",
                          expander.registers[number], 0, 255, "register of the GPIO expander");
    properties.readOnly(
        "expander.pins", [this] { return std::to_string(expander.pins()); }, "levels of the GPIO expander's pins");
}

bool TelematicsBoard::isFitted(const char* key) const
{
    return ProductionData::value(unit_.get<ProductionData>().addOn, key) == "1";
}

bool TelematicsBoard::hasStatusLine() const
{
    const std::string version = ProductionData::value(unit_.get<ProductionData>().addOn, "PCB_REV");
    return !version.empty() && version[0] >= '1' && version[0] <= '9';
}

bool TelematicsBoard::wlanPowered() const
{
    return isFitted("WLAN") && expander.drives(kWlanPower, true);
}

bool TelematicsBoard::wlanRuns() const
{
    return wlanPowered() && expander.drives(kWlanAuxiliary, false);
}

std::uint8_t TelematicsBoard::inputs() const
{
    const unsigned auxiliary = bit(kWlanAuxiliary, true); // pulled up while not driven
    return static_cast<std::uint8_t>(bit(kGsmStatus, hasStatusLine() && gsmOn) | bit(kAntennaShort, antennaShort) |
                                     auxiliary);
}

void TelematicsBoard::follow(Time now)
{
    const bool held = expander.drives(kGsmKey, true);
    if (held && !keyHeld)
        press(now);
    else if (!held && keyHeld)
        release(now);
}

void TelematicsBoard::press(Time now)
{
    keyHeld = true;
    pressed_ = now;
    if (!isFitted("GSM"))
        return;
    key_ = unit_.clock().at(now + (gsmOn ? kHoldToSwitchOff : kHoldToSwitchOn), [this] {
        key_.reset();
        gsmOn = !gsmOn;
    });
}

void TelematicsBoard::release(Time now)
{
    keyHeld = false;
    lastPress = now - pressed_;
    if (key_)
        unit_.clock().cancel(*key_);
    key_.reset();
}

HXSIM_HARDWARE(TelematicsBoard)

} // namespace hxsim
