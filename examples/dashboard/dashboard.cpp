// SPDX-License-Identifier: LicenseRef-HXAux
// A small complete application to start from: shows light, backlight level, voltages and inputs whenever they change,
// lights the front LED by the supply's state, and ends properly when the front button requests power off.
//
//   dashboard [ROUNDS]      looks ROUNDS times, or forever

#include <hx-aux/hx-aux.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

using namespace Halvix;

namespace {

constexpr auto kPause = std::chrono::milliseconds(200);
constexpr double kLowVolts = 18.0;

// Releases an interface object at the end of its scope.
template <typename Kind>
class Handle {
public:
    explicit Handle(Kind* object) : object_(object) {}
    ~Handle() { object_->Release(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    Kind* operator->() const { return object_; }

private:
    Kind* object_;
};

std::string orError(eErr err, const std::string& value)
{
    return err == ERR_SUCCESS ? value : std::string("(") + GetErrorStringA(err) + ")";
}

// One line of the display: printed when it changes.
class Line {
public:
    explicit Line(const char* name) : name_(name) {}
    void show(const std::string& text)
    {
        if (text == shown_)
            return;
        shown_ = text;
        std::printf("%-8s %s\n", name_, text.c_str());
        std::fflush(stdout);
    }

private:
    const char* name_;
    std::string shown_;
};

class Dashboard {
public:
    void look()
    {
        showLight();
        showLevel();
        showSupply();
        showInputs();
    }

    // Whether the front button, or the external signal, requests a change of power.
    bool powerRequested()
    {
        ButtonPowerTransitionStatus request = ButtonPowerTransition0;
        return power_->getButtonPowerTransitionStatus(&request) == ERR_SUCCESS && request != ButtonPowerTransition0;
    }

    // The place to save the application's work. Without the acknowledgement the supervisor waits for it.
    void endInOrder()
    {
        request_.show("the front button requests a change of power");
        (void)led_->setColor(ColorOrange);
        const eErr err = power_->ackPowerRequest();
        request_.show(orError(err, "acknowledged"));
    }

private:
    void showLight()
    {
        unsigned short lux = 0;
        const eErr err = sensor_->getIlluminance(&lux);
        if (err != ERR_INVALID_DATA) // the sensor is measuring: retry next time
            light_.show(orError(err, std::to_string(lux) + " lux"));
    }

    void showLevel()
    {
        unsigned char level = 0;
        const eErr err = backlight_->getIntensity(&level);
        level_.show(orError(err, std::to_string(level) + " of 255"));
    }

    void showSupply()
    {
        double volts = 0;
        const eErr err = adc_->getVoltage(Voltage0, &volts);
        char text[32];
        std::snprintf(text, sizeof text, "%.1f V%s", volts, volts < kLowVolts ? ", low" : "");
        supply_.show(orError(err, text));
        if (err == ERR_SUCCESS)
            (void)led_->setColor(volts < kLowVolts ? ColorRed : ColorGreen); // an LED error is not fatal
    }

    void showInputs()
    {
        unsigned char state = 0;
        const eErr err = inputs_->getDigIO(&state);
        std::string text;
        for (int i = 0; i < 4; ++i)
            text += (state >> i & 1) != 0 ? '1' : '0';
        inputsLine_.show(orError(err, text));
    }

    Handle<Lightsensor> sensor_{GetLightsensor()};
    Handle<Backlight> backlight_{GetBacklight()};
    Handle<Adc> adc_{GetAdc()};
    Handle<DigIO> inputs_{GetDigIO()};
    Handle<Power> power_{GetPower()};
    Handle<FrontLED> led_{GetFrontLED()};
    Line light_{"light"};
    Line level_{"level"};
    Line supply_{"supply"};
    Line inputsLine_{"inputs"};
    Line request_{"power"};
};

} // namespace

int main(int count, char** words)
{
    long rounds = count > 1 ? std::strtol(words[1], nullptr, 10) : -1;
    Dashboard dashboard;
    for (; rounds != 0; rounds -= rounds > 0 ? 1 : 0) {
        dashboard.look();
        if (dashboard.powerRequested()) {
            dashboard.endInOrder();
            return 0;
        }
        std::this_thread::sleep_for(kPause);
    }
    return 0;
}
