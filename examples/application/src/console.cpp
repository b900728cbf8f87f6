// SPDX-License-Identifier: LicenseRef-HXAux
// The console of a machine: dims the display in the dark, lights the front LED red while the supply is too low, and
// when the front button requests power off it saves its state and acknowledges.
//
//   console FILE      keeps its state in FILE: how often the supply was too low

#include <hx-aux/hx-aux.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

using namespace Halvix;

namespace {

constexpr auto kPause = std::chrono::milliseconds(100);
constexpr unsigned short kDarkBelow = 50;   // lux
constexpr unsigned short kBrightFrom = 100; // lux; well above, so that the display does not flicker at dusk
constexpr unsigned char kDarkLevel = 40;    // of 255
constexpr unsigned char kBrightLevel = 200;
constexpr double kLowVolts = 18.0;

// Releases an interface object at the end of its scope.
struct Release {
    template <typename Interface>
    void operator()(Interface* object) const
    {
        object->Release();
    }
};
template <typename Interface>
using Handle = std::unique_ptr<Interface, Release>;

class Console {
public:
    explicit Console(std::string file) : file_(std::move(file))
    {
        std::ifstream(file_) >> warnings_;
        HXAuxColor color = ColorOther;
        warns_ = led_->getColor(&color) == ERR_SUCCESS && color == ColorRed; // an earlier run may have left it red
    }

    // Until the front button requests power off. What fails is tried again in the next round.
    void run()
    {
        while (!powersOff()) {
            followLight();
            watchSupply();
            std::this_thread::sleep_for(kPause);
        }
    }

private:
    void followLight()
    {
        unsigned short lux = 0;
        if (!worked("light", sensor_->getIlluminance(&lux)))
            return;
        const bool dark = lux < (level_ == kDarkLevel ? kBrightFrom : kDarkBelow);
        const unsigned char level = dark ? kDarkLevel : kBrightLevel;
        if (level != level_ && worked("backlight", backlight_->setIntensity(level)))
            level_ = level;
    }

    void watchSupply()
    {
        double volts = 0;
        if (!worked("supply", adc_->getVoltage(Voltage0, &volts)))
            return;
        warn(volts < kLowVolts);
    }

    void warn(bool low)
    {
        if (low == warns_ || !worked("LED", led_->setColor(low ? ColorRed : ColorGreen)))
            return;
        warns_ = low;
        warnings_ += low ? 1 : 0;
    }

    // The supervisor waits a minute for the acknowledgement: nothing may be lost when it comes.
    bool powersOff()
    {
        ButtonPowerTransitionStatus request = ButtonPowerTransition0;
        if (!worked("power request", power_->getButtonPowerTransitionStatus(&request)) ||
            request == ButtonPowerTransition0 || !save())
            return false;
        warn(false); // nobody watches the supply from here on
        return worked("acknowledgement", power_->ackPowerRequest());
    }

    bool save()
    {
        const std::string beside = file_ + ".new";
        std::ofstream stream(beside);
        stream << warnings_ << '\n';
        stream.close();
        return worked("state", !stream.fail() && std::rename(beside.c_str(), file_.c_str()) == 0, "cannot be saved");
    }

    bool worked(const char* what, eErr err) { return worked(what, err == ERR_SUCCESS, GetErrorStringA(err)); }

    // Prints why something failed when that is new; the rounds are short.
    bool worked(const char* what, bool success, const std::string& why)
    {
        std::string& reported = reported_[what];
        if (!success && reported != why)
            std::fprintf(stderr, "console: %s: %s\n", what, why.c_str());
        reported = success ? "" : why;
        return success;
    }

    std::string file_;
    unsigned warnings_ = 0;
    bool warns_ = false;
    std::optional<unsigned char> level_; // what was set last
    std::map<std::string, std::string> reported_;
    Handle<Lightsensor> sensor_{GetLightsensor()};
    Handle<Backlight> backlight_{GetBacklight()};
    Handle<Adc> adc_{GetAdc()};
    Handle<FrontLED> led_{GetFrontLED()};
    Handle<Power> power_{GetPower()};
};

} // namespace

int main(int count, char** words)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: console FILE\n");
        return 2;
    }
    Console(words[1]).run();
    return 0;
}
