// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/TouchScreenCalib.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <chrono>

namespace hxaux {

namespace {

using namespace std::chrono_literals;
using Halvix::TouchScreenCalib;
using Mode = Halvix::CalibrationModeSettings;
using Parameter = Halvix::CalibrationConfigParam;
using Clock = std::chrono::steady_clock;

constexpr int kParameters = 6;
constexpr auto kPause = 50ms;
constexpr double kPatience = 60; // seconds for one point

const Names kModes = namesOf<Mode>({{Halvix::CalibrationMode5Points, "5-points"},
                                    {Halvix::CalibrationMode5PointsExtended, "5-points-extended"},
                                    {Halvix::CalibrationMode9PointsExtended, "9-points"},
                                    {Halvix::CalibrationMode13PointsExtended, "13-points"}});

int pointsOf(Mode mode)
{
    switch (mode) {
    case Halvix::CalibrationMode9PointsExtended:
        return 9;
    case Halvix::CalibrationMode13PointsExtended:
        return 13;
    default:
        return 5;
    }
}

// One pass through all points. After an early end the controller waits for no point.
class Walk {
public:
    Walk(Call& call, TouchScreenCalib& calib) : call_(call), calib_(calib) {}
    ~Walk()
    {
        if (!finished_)
            (void)calib_.SetCalibrationPoint(0); // best effort: the failure is reported already
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    void run(Mode mode)
    {
        call_.check(calib_.SetMode(mode));
        const int count = pointsOf(mode);
        for (int point = 1; point <= count; ++point)
            take(point, count);
        finished_ = true;
        conclude();
    }

private:
    void take(int point, int count)
    {
        const std::string name = "point " + std::to_string(point);
        call_.check(calib_.SetCalibrationPoint(static_cast<unsigned char>(point)), name);
        announce(point, count);
        const auto started = Clock::now();
        while (!isTaken(point)) {
            if (const auto number = held_.await(kPause))
                stop(exitOf(*number), "ended by a signal at " + name);
            if (Clock::now() - started > patience())
                stop(Exit::Refused, name + " was not touched in time");
        }
        call_.screen().endPassingLine();
        call_.print(name, "taken");
        call_.show();
    }

    void announce(int point, int count)
    {
        const std::string text = "touch point " + std::to_string(point) + " of " + std::to_string(count);
        if (call_.onTerminal())
            return call_.screen().passingLine(text);
        call_.print("point " + std::to_string(point), "waiting");
        call_.show();
    }

    bool isTaken(int point)
    {
        bool taken = false;
        call_.check(calib_.CheckCalibrationPointFinished(&taken, static_cast<unsigned char>(point)));
        return taken;
    }

    [[nodiscard]] std::chrono::duration<double> patience() const
    {
        return std::chrono::duration<double>(call_.has("timeout") ? call_.real("timeout") : kPatience);
    }

    [[noreturn]] void stop(Exit status, const std::string& why)
    {
        call_.problem(status, "", why + "; the calibration is not complete, 'hxaux calibrate run' starts it again");
        call_.show(); // a signal ends the program at once afterwards
        throw Stop{};
    }

    void conclude()
    {
        auto mode = Halvix::CalibrationModeNone;
        call_.check(calib_.GetMode(&mode));
        call_.print("calibration", mode == Halvix::CalibrationModeNone ? "finished" : "all points taken");
    }

    Call& call_;
    TouchScreenCalib& calib_;
    const HeldSignals held_;
    bool finished_ = false;
};

void run(Call& call)
{
    const Interface<TouchScreenCalib> calib(GetTouchScreenCalib());
    Walk walk(call, *calib);
    walk.run(call.has("mode") ? call.as<Mode>("mode") : Halvix::CalibrationMode5Points);
}

void calibrationMode(Call& call)
{
    const Interface<TouchScreenCalib> calib(GetTouchScreenCalib());
    if (call.has("mode"))
        return call.check(calib->SetMode(call.as<Mode>("mode")));
    auto now = Halvix::CalibrationModeNone;
    call.check(calib->GetMode(&now));
    call.print("mode", now == Halvix::CalibrationModeNone ? "none" : kModes.nameOf(now));
}

void point(Call& call)
{
    const Interface<TouchScreenCalib> calib(GetTouchScreenCalib());
    call.check(calib->SetCalibrationPoint(call.as<unsigned char>("point")));
}

void check(Call& call)
{
    const Interface<TouchScreenCalib> calib(GetTouchScreenCalib());
    bool taken = false;
    call.check(calib->CheckCalibrationPointFinished(&taken, call.as<unsigned char>("point")));
    call.print("taken", taken ? "yes" : "no");
}

void readParameter(Call& call, TouchScreenCalib& calib, int number)
{
    const std::string name = "parameter " + std::to_string(number);
    unsigned short value = 0;
    const bool one = call.has("parameter");
    if (call.attempt(one ? "" : name, calib.GetConfigParam(static_cast<Parameter>(number), &value)))
        call.print(name, value);
}

void parameter(Call& call)
{
    const Interface<TouchScreenCalib> calib(GetTouchScreenCalib());
    if (call.has("value"))
        return call.check(calib->SetConfigParam(call.as<Parameter>("parameter"), call.as<unsigned short>("value")));
    if (call.has("parameter"))
        return readParameter(call, *calib, call.as<int>("parameter"));
    for (int number = 0; number < kParameters; ++number)
        readParameter(call, *calib, number);
}

} // namespace

const Object objects::Calibrate{
    "calibrate",
    "calibration of the touch screen",
    {
        {.name = "run",
         .help = "Calibrates: names each point and waits until it was touched.",
         .example = "hxaux calibrate run 9-points",
         .run = run,
         .values = {choice("mode", kModes, "which calibration; 5-points when it is left out").optional()},
         .options = {real("timeout", 0.1, 86400, "s", "how long to wait for each point; 60 s if not given").optional()},
         .details =
             "Piped, or with --json, one line reports when a point is waited for and one when it was taken. After an "
             "early end the controller waits for no point any more, but the calibration is not complete."},
        {.name = "mode",
         .help = "Shows which calibration runs, or starts one.",
         .example = "hxaux calibrate mode 5-points",
         .run = calibrationMode,
         .values = {choice("mode", kModes, "the calibration to start").optional()}},
        {.name = "point",
         .help = "Announces the point that is touched next.",
         .example = "hxaux calibrate point 1",
         .run = point,
         .values = {integer("point", 0, 255, "", "number of the point, up to 5, 9 or 13")}},
        {.name = "check",
         .help = "Shows whether a point was taken.",
         .example = "hxaux calibrate check 1",
         .run = check,
         .values = {integer("point", 0, 255, "", "number of the point")},
         .repeat = Repeat::Watch},
        {.name = "parameter",
         .help = "Shows one or all calibration parameters, or sets one.",
         .example = "hxaux calibrate parameter 2 3900",
         .run = parameter,
         .values = {integer("parameter", 0, kParameters - 1, "", "which parameter; all when it is left out").optional(),
                    integer("value", 0, 65535, "", "the new value").optional()}},
    }};

} // namespace hxaux
