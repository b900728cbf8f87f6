// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace hxsim {

/// The commands of hx-sim: what --help, the manual page, the completion and the documents' test know of each.
struct Verb {
    const char* name;
    const char* help;    ///< a sentence
    const char* example; ///< a command line that works
};

constexpr Verb kVerbs[] = {
    {"actions", "Shows what can be done to a unit.", "hx-sim actions"},
    {"completion", "Prints the script that completes command lines in a shell.", "hx-sim completion bash"},
    {"do", "Does something to a unit; 'do' may be left out.", "hx-sim do press front"},
    {"fail", "Lets calls of programs fail.", "hx-sim fail /dev/backlight 0x40010003 EIO 3"},
    {"faults", "Lists injected failures: what is left and how often each was hit.", "hx-sim faults"},
    {"get", "Shows properties of a unit.", "hx-sim get voltage.0"},
    {"list", "Shows the units that run.", "hx-sim list"},
    {"log", "Shows what programs asked of a unit.", "hx-sim log --follow"},
    {"play", "Lets something happen on a unit over time.", "hx-sim play light tunnel.light"},
    {"properties", "Shows all that can be set and seen of a unit.", "hx-sim properties"},
    {"record", "Writes down what a program asks of a unit.", "hx-sim record -o app.recording -- hxaux voltage 0"},
    {"remove", "Takes devices away: opening one gives ENOENT.", "hx-sim remove /dev/lightsensor"},
    {"replay", "Runs a program on the answers of a recording.", "hx-sim replay app.recording -- hxaux voltage 0"},
    {"restore", "Gives devices back that were taken away.", "hx-sim restore /dev/lightsensor"},
    {"run", "Runs a program on a unit, its own unless --unit names one.", "hx-sim run -- hxaux voltage 0"},
    {"set", "Sets properties of a unit: KEY VALUE, or KEY=VALUE ...", "hx-sim set voltage.0 11.5"},
    {"shell", "Takes commands for a running unit line by line.", "hx-sim shell --unit bench"},
    {"start", "Starts a unit that programs can share.", "hx-sim start bench"},
    {"stop", "Ends a unit.", "hx-sim stop bench"},
    {"unfail", "Lets no call fail any more, or none on NODE.", "hx-sim unfail"},
};

/// What the exit statuses mean.
struct StatusMeaning {
    int status;
    const char* meaning;
};

constexpr StatusMeaning kStatusMeanings[] = {
    {0, "done"},
    {1, "the unit refused, or a unit or file could not be made; standard error tells why"},
    {2, "wrong usage"},
    {3, "a recording could not be read, or is none"},
    {4, "a program asked something else than was recorded"},
    {6, "no such unit runs, or it cannot be reached"},
    {126, "the program cannot be started"},
    {127, "there is no such program"},
};

} // namespace hxsim
