// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/BacklightController.h"
#include "backlight/ControlLaw.h"
#include "hx-aux/Backlight.h"
#include "tests/src/backlight/Given.h"
#include "tests/src/backlight/LogCapture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

/// The seven settings in a file.
struct Abl {
    bool on = true;
    const char* k = "50";
    bool soft = true;
    unsigned average = 1;
    unsigned reject = 0;
    unsigned delta = 50;
    int mode = 2;
};

inline std::string abl(const Abl& settings)
{
    return "ABL_averageWndSize=" + std::to_string(settings.average) +
           "\nABL_bSoftTransitions=" + (settings.soft ? "1" : "0") + "\nABL_k=" + settings.k +
           "\nABL_mode=" + std::to_string(settings.mode) + "\nABL_rejectDeltaInLux=" + std::to_string(settings.delta) +
           "\nABL_rejectWndSize=" + std::to_string(settings.reject) + "\nABL_status=" + (settings.on ? "1" : "0") +
           "\n";
}

/// The unit's service process and an application: a running controller with these settings, and a backlight object to
/// change them. The thread starts 800 ms after the unit.
struct Service {
    Service(SimulatedUnit& itsUnit, const std::string& settings) : unit{itsUnit}
    {
        unit.writeSettings(settings);
        EXPECT_EQ(controller.init(), Halvix::ERR_SUCCESS);
    }

    /// Changes the slope in the file as a service tool would, and notifies the controller.
    void learns(const std::string& k)
    {
        unit.writeSettings(abl({.k = k.c_str()}));
        backlight->startAutomaticBL();
    }

    SimulatedUnit& unit;
    Halvix::BacklightController controller;
    Released<Halvix::Backlight> backlight{GetBacklight()};
};

/// The value of a key in the settings file, without blanks; "" when it is missing.
inline std::string setting(SimulatedUnit& unit, const std::string& key)
{
    std::string text = unit.settings();
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    const std::size_t begin = ("\n" + text).find("\n" + key + "=");
    if (begin == std::string::npos)
        return {};
    const std::size_t value = begin + key.size() + 1;
    return text.substr(value, text.find('\n', value) - value);
}

/// Times at which a request reached its driver, in milliseconds.
inline std::vector<std::int64_t> timesOf(SimulatedUnit& unit, const std::string& request)
{
    std::vector<std::int64_t> times;
    for (const hxsim::Entry& entry : unit.entries())
        if (entry.call().starts_with(request))
            times.push_back(entry.time / std::chrono::milliseconds{1});
    return times;
}

inline std::vector<int> levelsWritten(SimulatedUnit& unit)
{
    std::vector<int> levels;
    for (const hxsim::Entry& entry : unit.entries())
        if (entry.request == 0x40010003)
            levels.push_back(entry.in.at(1));
    return levels;
}

/// Number of reads of the settings file.
inline std::size_t settingsReads(SimulatedUnit& unit)
{
    const std::vector<std::string> calls = unit.callsTo(kFileLock);
    return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), "sem_wait"));
}

/// Light for which the curve of slope `k` gives this level.
inline void shineForLevel(SimulatedUnit& unit, double k, int level)
{
    for (unsigned lux = 3; lux < 1500; ++lux)
        if (static_cast<int>(Halvix::law::curveLevel(k, lux, 255)) == level && canShine(lux)) {
            shine(unit, lux);
            return;
        }
    FAIL() << "no light gives level " << level;
}

MATCHER_P(AreApart, milliseconds, "")
{
    for (std::size_t i = 1; i < arg.size(); ++i)
        if (arg[i] - arg[i - 1] != milliseconds) {
            *result_listener << "which has " << arg[i] - arg[i - 1] << " ms before the one at " << arg[i];
            return false;
        }
    return arg.size() > 1;
}

MATCHER_P2(AreApart, milliseconds, count, "")
{
    if (arg.size() != count)
        *result_listener << "which are " << arg.size();
    return arg.size() == count && testing::ExplainMatchResult(AreApart(milliseconds), arg, result_listener);
}
