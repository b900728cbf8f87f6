// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Diagnostic.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

#include <algorithm>

namespace hxaux {

namespace {

using Halvix::Diagnostic;
using Halvix::eErr;

// Sensors of the processor module: the board library does not report their number, so the first failure ends the list.
constexpr int kMostSensors = 256;

template <typename Number, eErr (Diagnostic::*Get)(Number*)>
eErr showNumber(Call& call, Diagnostic& diagnostic, const char* name)
{
    Number value{};
    const eErr err = (diagnostic.*Get)(&value);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, value);
    return err;
}

// A code with its name.
template <eErr (Diagnostic::*Get)(unsigned short*), const char* (*Text)(unsigned short)>
eErr showCode(Call& call, Diagnostic& diagnostic, const char* name)
{
    unsigned short code = 0;
    const eErr err = (diagnostic.*Get)(&code);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, Coded{code, Text(code)});
    return err;
}

eErr showExtremes(Call& call, Diagnostic& diagnostic, const char* name)
{
    short first = 0;
    short second = 0;
    const eErr err = diagnostic.getMinMaxTemp(&first, &second);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, Value::Record{{"lowest", std::min(first, second)}, {"highest", std::max(first, second)}});
    return err;
}

eErr showTimers(Call& call, Diagnostic& diagnostic, const char* name)
{
    Halvix::TimerType timers{};
    const eErr err = diagnostic.getTimer(&timers);
    if (err != Halvix::ERR_SUCCESS)
        return err;
    for (int i = 0; i < 7; ++i)
        call.print(std::string(name) + " " + std::to_string(i), timers.seconds[i], "s");
    return err;
}

eErr showSensor(Call& call, Diagnostic& diagnostic, int index)
{
    short celsius = 0;
    auto type = Halvix::JidaSensorType0;
    const eErr err = diagnostic.getPMTemp(static_cast<unsigned char>(index), &celsius, &type);
    if (err == Halvix::ERR_SUCCESS)
        call.print("module " + std::to_string(index),
                   Value::Record{{"temperature", celsius, "degrees C"}, {"type", static_cast<int>(type)}});
    return err;
}

void module(Call& call)
{
    const Interface<Diagnostic> diagnostic(GetDiagnostic());
    if (call.has("sensor"))
        return call.check(showSensor(call, *diagnostic, call.as<int>("sensor")));
    const eErr first = showSensor(call, *diagnostic, 0);
    call.check(first);
    for (int i = 1; i < kMostSensors; ++i)
        if (showSensor(call, *diagnostic, i) != Halvix::ERR_SUCCESS)
            return;
}

using Show = eErr (*)(Call&, Diagnostic&, const char*);

struct Reading {
    const char* name;
    Show show;
};

constexpr Reading kSupervisor{"supervisor", showNumber<short, &Diagnostic::getSSTemp>};
constexpr Reading kBoard{"board", showNumber<short, &Diagnostic::getPCBTemp>};
constexpr Reading kExtremes{"extremes", showExtremes};
constexpr Reading kStartup{"startup", showCode<&Diagnostic::getStartupReason, GetStartupReasonStringA>};
constexpr Reading kShutDown{"shutdown", showNumber<unsigned short, &Diagnostic::getShutDownReason>};
constexpr Reading kError{"error", showCode<&Diagnostic::getHwErrorStatus, GetHwErrorStatusStringA>};
constexpr Reading kCycles{"cycles", showNumber<unsigned short, &Diagnostic::getPowerCycles>};
constexpr Reading kTimers{"timer", showTimers};

template <const Reading& Which>
void showOne(Call& call)
{
    const Interface<Diagnostic> diagnostic(GetDiagnostic());
    call.check(Which.show(call, *diagnostic, Which.name));
}

void showDiag(Call& call)
{
    const Interface<Diagnostic> diagnostic(GetDiagnostic());
    for (const Reading* each : {&kSupervisor, &kBoard, &kExtremes, &kStartup, &kShutDown, &kError, &kCycles, &kTimers})
        (void)call.attempt(each->name, each->show(call, *diagnostic, each->name));
}

void clearError(Call& call)
{
    const Interface<Diagnostic> diagnostic(GetDiagnostic());
    call.check(diagnostic->clearHwErrorStatus());
}

constexpr std::string_view kOwnUnit = "The number is the supervisor's own, passed on unconverted.";

} // namespace

const Object objects::Diag{
    "diag",
    "temperatures, counters, reasons and the hardware error status",
    {
        {.name = "",
         .help = "Shows all values that the supervisor reports.",
         .example = "hxaux diag",
         .run = showDiag,
         .repeat = Repeat::Watch,
         .details = "What cannot be read is named on standard error."},
        {.name = "supervisor",
         .help = "Shows the temperature inside the supervisor.",
         .example = "hxaux diag supervisor",
         .run = showOne<kSupervisor>,
         .repeat = Repeat::Watch,
         .details = kOwnUnit},
        {.name = "board",
         .help = "Shows the temperature of the main board.",
         .example = "hxaux diag board",
         .run = showOne<kBoard>,
         .repeat = Repeat::Watch,
         .details = kOwnUnit},
        {.name = "module",
         .help = "Shows the temperatures of the processor module.",
         .example = "hxaux diag module 0",
         .run = module,
         .values = {integer("sensor", 0, 255, "", "number of the sensor; all when it is left out").optional()},
         .repeat = Repeat::Watch,
         .details = "Whole degrees, the fraction cut off."},
        {.name = "extremes",
         .help = "Shows the lowest and the highest temperature that was seen.",
         .example = "hxaux diag extremes",
         .run = showOne<kExtremes>,
         .details = kOwnUnit},
        {.name = "startup",
         .help = "Shows why the unit started.",
         .example = "hxaux diag startup",
         .run = showOne<kStartup>},
        {.name = "shutdown",
         .help = "Shows the supervisor's code for the last shut-down.",
         .example = "hxaux diag shutdown",
         .run = showOne<kShutDown>},
        {.name = "error",
         .help = "Shows the hardware error status.",
         .example = "hxaux diag error",
         .run = showOne<kError>,
         .repeat = Repeat::Watch},
        {.name = "clear-error",
         .help = "Clears the hardware error status.",
         .example = "hxaux diag clear-error",
         .run = clearError},
        {.name = "cycles",
         .help = "Shows how often the unit was switched on.",
         .example = "hxaux diag cycles",
         .run = showOne<kCycles>},
        {.name = "timers",
         .help = "Shows the seven operating times.",
         .example = "hxaux diag timers",
         .run = showOne<kTimers>,
         .repeat = Repeat::Watch,
         .details = "What each counts is defined by the supervisor's firmware; number 0 runs on past 65535 minutes."},
    }};

} // namespace hxaux
