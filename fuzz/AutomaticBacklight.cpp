// SPDX-License-Identifier: LicenseRef-HXAux
// The automatic backlight under any light and any settings, with a user who changes the brightness and a sensor that
// fails: the control law alone, and the controller with its thread, its sampler and its settings file.
#include "backlight/BacklightController.h"
#include "backlight/ControlLaw.h"
#include "fuzz/Require.h"
#include "fuzz/system/System.h"
#include "hx-aux/Backlight.h"

#include <cmath>
#include <cstdint>
#include <string>

using namespace Halvix;

namespace {

constexpr int kBrightest = 254; // one below the largest level

constexpr unsigned long kGetLevel = 0x80010002;
constexpr unsigned long kSetLevel = 0x40010003;
constexpr unsigned long kChannels = 0x80020048;
constexpr unsigned long kGetRange = 0x80010049;
constexpr unsigned long kSetRange = 0x4001004a;

/// The two devices: the ambient light and the brightness of the display.
struct Hardware {
    unsigned char channels[2] = {0x90, 0x90};
    unsigned char range = 0;
    unsigned char level = 100;
    bool turned = false;   ///< by the user, since the controller's last step
    unsigned failures = 0; ///< requests that fail from now on
    bool soft = true;      ///< as the file says
    bool settingsChanged = true;

    int answer(unsigned long request, unsigned char* block)
    {
        if (failures > 0) {
            --failures;
            return -1;
        }
        switch (request) {
        case kGetLevel:
            block[0] = level;
            break;
        case kSetLevel:
            setLevel(block[1]);
            break;
        case kChannels:
            block[0] = channels[0];
            block[1] = channels[1];
            break;
        case kGetRange:
            block[0] = range;
            break;
        case kSetRange:
            REQUIRE(block[1] <= 1);
            range = block[1];
            break;
        default:
            REQUIRE(request == 0); // the automatic backlight sends no other
        }
        return 0;
    }

    void setLevel(unsigned char wanted)
    {
        REQUIRE(wanted <= kBrightest || turned);
        level = wanted;
    }
};

/// Numbers of every size, and texts that are not numbers.
double anyDouble(Input& input)
{
    return input.byte() % 2 != 0 ? input.number<double>() : input.number<std::int16_t>() / 16.0;
}

/// The law alone: any slope and light give a level in range, and each move brings it nearer.
void checkLaw(Input& input)
{
    const auto lux = input.number<std::uint16_t>();
    const double k = anyDouble(input);
    const double x = law::curveArgument(lux);
    REQUIRE(x >= 2.0 && x <= 65535.0);
    law::Run run;
    run.y = law::curveLevel(k, x, 255);
    REQUIRE(run.y >= 0 && run.y <= kBrightest);
    run.currentLevel = input.byte();
    law::aim(run);
    REQUIRE(run.targetLevel <= kBrightest && run.elapsedMs == 0 && run.sleepMs == law::kPeriodMs);
    run.elapsedMs = input.byte() * law::kSoftStepMs % (law::kPeriodMs + 1);
    const auto transition = input.byte() % 2 != 0 ? law::Transition::Soft : law::Transition::AtOnce;
    if (run.currentLevel == run.targetLevel)
        return;
    const int before = std::abs(run.currentLevel - run.targetLevel);
    law::move(run, transition);
    const int after = std::abs(run.currentLevel - run.targetLevel);
    REQUIRE(transition == law::Transition::AtOnce ? after == 0 : after == before - 1);
    REQUIRE(run.sleepMs <= law::kPeriodMs);

    // A slope learned from a level yields that level again, or one less.
    const int level = input.byte() % kBrightest;
    const int again = static_cast<int>(law::curveLevel(law::learntSlope(level, x), x, 255));
    REQUIRE(again == level || again == level - 1);
}

std::string line(const char* key, const std::string& value)
{
    return std::string{key} + "=" + value + "\n";
}

/// A settings file: mostly numbers, sometimes any text.
std::string anySettings(Input& input)
{
    std::string text;
    for (const char* key :
         {"ABL_averageWndSize", "ABL_rejectWndSize", "ABL_rejectDeltaInLux", "ABL_mode", "ABL_bSoftTransitions"})
        text += line(key, input.byte() % 8 != 0 ? std::to_string(input.byte() % 32) : input.text(4));
    text += line("ABL_k", input.byte() % 4 != 0 ? std::to_string(anyDouble(input)) : input.text(12));
    return text + line("ABL_status", input.byte() % 4 != 0 ? "1" : "0");
}

void step(Input& input, Hardware& hardware, Backlight& backlight)
{
    switch (input.byte() % 8) {
    case 0:
        hardware.channels[0] = input.byte();
        hardware.channels[1] = input.byte();
        break;
    case 1:
        hardware.turned = true;
        hardware.level = input.byte();
        break;
    case 2:
        fuzzed::writeSettings(anySettings(input));
        (void)backlight.startAutomaticBL();
        break;
    case 3:
        (void)(input.byte() % 2 != 0 ? backlight.startAutomaticBL() : backlight.stopAutomaticBL());
        break;
    case 4:
        (void)backlight.setAutomaticBLParams(input.byte() % 2 != 0);
        break;
    case 5:
        (void)backlight.setAutomaticBLFilter(input.byte(), input.byte(), input.byte(),
                                             static_cast<LightSensorSamplingMode>(input.byte() % 5));
        break;
    case 6:
        hardware.failures = input.byte() % 4;
        break;
    default:
        break;
    }
    fuzzed::pass(std::int64_t{input.byte()} * 20);
}

/// Leaves the controller without work, so that its sampler ends.
void wind(Hardware& hardware, Backlight& backlight)
{
    hardware.failures = 0;
    (void)backlight.stopAutomaticBL();
    fuzzed::pass(5000);
    fuzzed::endThreads();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input{data, size};
    checkLaw(input);
    fuzzed::begin(input);
    fuzzed::semaphoresMayFail(false);
    Hardware hardware;
    fuzzed::setDriver(
        [&](unsigned long request, unsigned char* block, unsigned) { return hardware.answer(request, block); });
    fuzzed::writeSettings(anySettings(input));
    {
        BacklightController controller;
        Backlight* const backlight = GetBacklight();
        if (controller.init() == ERR_SUCCESS)
            while (!input.isEmpty())
                step(input, hardware, *backlight);
        wind(hardware, *backlight);
        backlight->Release();
    }
    REQUIRE(fuzzed::countOf("FILE_HXAUXINI_IS_IN_USE") == 1);
    REQUIRE(fuzzed::openFiles("none") == 0);
    return 0;
}
