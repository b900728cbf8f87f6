// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace hxsim {

/// The commands of hx-sim, for --help, the manual page, the completion and the documents' test.
struct Verb {
    const char* name;
    const char* help;    ///< a sentence
    const char* example; ///< a command line that works
};

constexpr Verb kVerbs[] = {
    {"actions", "Lists the actions of a unit.", "hx-sim actions"},
    {"completion", "Prints the script that completes command lines in a shell.", "hx-sim completion bash"},
    {"do", "Runs an action on a unit; 'do' may be omitted.", "hx-sim do press front"},
    {"fail", "Injects failures into calls of programs.", "hx-sim fail /dev/backlight 0x40010003 EIO 3"},
    {"faults", "Lists injected failures: what is left and how often each was hit.", "hx-sim faults"},
    {"get", "Shows properties of a unit.", "hx-sim get voltage.0"},
    {"list", "Lists the running units.", "hx-sim list"},
    {"log", "Shows the calls of programs on a unit.", "hx-sim log --follow"},
    {"play", "Plays a course of events on a unit over time.", "hx-sim play light tunnel.light"},
    {"properties", "Lists the properties of a unit.", "hx-sim properties"},
    {"record", "Records the calls of a program on a unit.", "hx-sim record -o app.recording -- hxaux voltage 0"},
    {"remove", "Removes devices: opening one fails with ENOENT.", "hx-sim remove /dev/lightsensor"},
    {"replay", "Runs a program against a recording.", "hx-sim replay app.recording -- hxaux voltage 0"},
    {"restore", "Restores removed devices.", "hx-sim restore /dev/lightsensor"},
    {"run", "Runs a program on a unit, its own unless --unit names one.", "hx-sim run -- hxaux voltage 0"},
    {"set", "Sets properties of a unit: KEY VALUE, or KEY=VALUE ...", "hx-sim set voltage.0 11.5"},
    {"shell", "Reads commands for a running unit line by line.", "hx-sim shell --unit bench"},
    {"start", "Starts a unit that programs can share.", "hx-sim start bench"},
    {"stop", "Stops a unit.", "hx-sim stop bench"},
    {"unfail", "Clears injected failures, all or those on NODE.", "hx-sim unfail"},
};

/// What the exit statuses mean.
struct StatusMeaning {
    int status;
    const char* meaning;
};

constexpr StatusMeaning kStatusMeanings[] = {
    {0, "done"},
    {1, "the unit refused, or a unit or file could not be created; standard error says why"},
    {2, "usage error"},
    {3, "a recording could not be read, or is not a recording"},
    {4, "a program made other calls than the recorded ones"},
    {6, "no such unit is running, or it cannot be reached"},
    {126, "the program cannot be started"},
    {127, "the program does not exist"},
};

} // namespace hxsim
