// SPDX-License-Identifier: LicenseRef-HXAux
// The table of commands and what each does.
#include "simulator/hx-sim/Commands.h"

#include "simulator/hx-sim/Candidates.h"
#include "simulator/hx-sim/Launch.h"
#include "simulator/hx-sim/Play.h"
#include "simulator/hx-sim/Record.h"
#include "simulator/hx-sim/ScenarioCommand.h"
#include "simulator/hx-sim/Shell.h"
#include "simulator/hx-sim/UnitClient.h"
#include "simulator/hx-sim/WaitCommand.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "tools/cli/Completion.h"
#include "tools/cli/Printable.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

namespace hxsim {

using cli::Argument;
using cli::Kind;
using cli::Object;
using cli::Words;

Call::Call(const cli::Program& program, const cli::Arguments& arguments, std::string unit)
    : cli::Call{program, arguments}, unit_{std::move(unit)}
{
}

const std::string& Call::named() const
{
    return has("unit") ? text("unit") : unit_;
}

void Call::sendTo(const std::string& unit, Words words) const
{
    if (has("json"))
        words.emplace_back("--json");
    cli::show(stdout, UnitClient{unit}.request(words));
}

void Call::send(const Words& words) const
{
    sendTo(UnitClient::choose(named()), words);
}

void Call::sendToAny(const Words& words) const
{
    const std::string unit = UnitClient::chooseAny(named());
    sendTo(unit, words);
    if (named().empty() && UnitFolder::running().size() > 1)
        cli::show(stderr,
                  "hx-sim: several units are running; this is the list of '" + unit + "', --unit NAME shows another\n");
}

namespace {

Words with(const std::string& first, const Words& rest)
{
    Words words{first};
    words.insert(words.end(), rest.begin(), rest.end());
    return words;
}

double scaleOf(const Call& call)
{
    return call.has("scale") ? call.real("scale") : 1.0;
}

UnitOptions unitOf(const Call& call)
{
    UnitOptions unit;
    unit.scale = scaleOf(call);
    unit.isVirtual = call.has("virtual");
    unit.descriptions = call.texts("description");
    unit.settings = call.texts("set");
    if (call.has("keep"))
        unit.keep = call.text("keep");
    return unit;
}

/// The command and its values, as they are, for the unit.
void forward(Call& call)
{
    call.send(call.words());
}

/// "light 250" and "light=250" are the same.
void set(Call& call)
{
    const Words& words = call.texts("property");
    if (words.size() == 2 && words[0].find('=') == std::string::npos)
        return call.send({"set", words[0] + " = " + words[1]});
    call.send(with("set", words));
}

void properties(Call& call)
{
    call.sendToAny({call.has("markdown") ? "properties-page" : "properties"});
}

void actions(Call& call)
{
    call.sendToAny({"actions"});
}

void list(Call& call)
{
    const Words running = UnitFolder::running();
    if (const std::string why = UnitFolder::whatHidesThem(); !why.empty())
        throw BadText{why};
    if (call.has("json")) {
        std::printf("%s\n", asJson(running).c_str());
        return;
    }
    for (const std::string& name : running)
        std::printf("%s\n", name.c_str());
}

void start(Call& call)
{
    UnitOptions unit = unitOf(call);
    unit.name = call.text("name");
    startUnit(unit);
}

void stop(Call& call)
{
    const std::string name = UnitClient::choose(call.has("name") ? call.text("name") : call.named());
    UnitClient{name}.request({"stop"});
    for (int i = 0; i < 500; ++i) { // until its folder is gone
        if (!std::filesystem::exists(UnitFolder::pathOf(name)))
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    throw BadText{"the unit '" + name + "' does not stop"};
}

void log(Call& call)
{
    if (call.has("clear"))
        return call.send({"clear"});
    if (!call.has("follow"))
        return call.send({"log"});
    UnitClient client{UnitClient::choose(call.named())};
    client.request(call.has("json") ? Words{"follow", "--json"} : Words{"follow"});
    client.listen([](const std::string& line) {
        cli::show(stdout, line + '\n');
        std::fflush(stdout);
    });
}

void run(Call& call)
{
    const std::string& unit = call.named();
    if (unit.empty()) {
        call.status = runOnOwnUnit(unitOf(call), call.texts("program"));
        return;
    }
    const double scale = parseReal(UnitClient{unit}.request({"scale"}));
    call.status = runOnUnit(unit, scale, call.texts("program"));
}

void playLight(Call& call)
{
    LightPlay play;
    play.file = profileNamed(call.text("profile"));
    if (!call.has("program"))
        return playLightOn(call.named(), play);
    play.unit = unitOf(call);
    play.plot = call.has("plot") ? call.text("plot") : "";
    play.seconds = call.has("seconds") ? call.real("seconds") : 0;
    call.status = playLightWith(play, call.texts("program"));
}

void playAScenario(Call& call)
{
    const ScenarioPlay play{.file = call.text("scenario"),
                            .junit = call.has("junit") ? call.text("junit") : "",
                            .plot = call.has("plot") ? call.text("plot") : "",
                            .json = call.has("json"),
                            .unit = unitOf(call)};
    call.status = playScenario(play, call.texts("program"));
}

void waitCommand(Call& call)
{
    const WaitOptions options{.stays = call.has("for") ? call.text("for") : "",
                              .timeout = call.has("timeout") ? call.text("timeout") : ""};
    waitOn(UnitClient::choose(call.named()), call.texts("condition"), options);
}

void expectCommand(Call& call)
{
    expectOn(UnitClient::choose(call.named()), call.texts("expectation"));
}

void recordCalls(Call& call)
{
    const RecordOptions options{.unit = unitOf(call),
                                .on = call.named(),
                                .machine = call.has("machine"),
                                .file = call.has("output") ? call.text("output") : ""};
    call.status = record(options, call.texts("program"));
}

void replayCalls(Call& call)
{
    call.status = replay(call.text("file"), scaleOf(call), call.texts("program"));
}

void convertRecording(Call& call)
{
    convert(call.text("recording"), call.has("output") ? call.text("output") : "", call.texts("program"));
}

void shell(Call& call)
{
    call.status = runShell(UnitClient::choose(call.named()));
}

std::string emptyText(const std::string& text)
{
    return text.empty() ? "it is empty" : "";
}

/// The rows' parts that several commands have.
Argument optionOf(std::string_view name, Kind kind, std::string_view shown, std::string_view help)
{
    return {.name = name,
            .kind = kind,
            .help = help,
            .presence = cli::Presence::Optional,
            .problem = kind == Kind::Flag ? nullptr : emptyText,
            .shown = shown};
}

Argument value(std::string_view name, std::string_view help, cli::Candidates (*live)(const Words&) = nullptr)
{
    return {.name = name, .help = help, .live = live};
}

Argument json(std::string_view help = "As JSON")
{
    return cli::flag("json", help);
}

Argument unit(std::string_view help = "The unit's name; may be omitted while only one is running")
{
    Argument row = optionOf("unit", Kind::Text, "NAME", help);
    row.problem = UnitFolder::whatIsWrongWith;
    row.live = runningUnits;
    row.letter = 'u';
    return row;
}

Argument unitName(std::string_view help)
{
    Argument row = value("name", help, runningUnits);
    row.problem = UnitFolder::whatIsWrongWith;
    return row;
}

Argument scale(std::string_view help)
{
    Argument row = cli::real("scale", 0.001, 100000, "", help).optional();
    row.shown = "FACTOR";
    return row;
}

Argument excluding(Argument option, std::initializer_list<std::string_view> others)
{
    option.excludes.insert(option.excludes.end(), others);
    return option;
}

/// Options of a unit that is created for the command.
std::vector<Argument> unitOptions(std::string_view needs = "")
{
    Argument description =
        optionOf("description", Kind::File, "FILE", "File that describes how the unit differs from a healthy one")
            .repeated();
    description.letter = 'd';
    Argument setting = optionOf("set", Kind::Text, "KEY=VALUE", "One line of a description, key=value").repeated();
    setting.letter = 's';
    setting.live = settings;
    std::vector<Argument> rows{
        description, setting,
        optionOf("keep", Kind::File, "FOLDER", "Folder in which the EEPROMs outlast the unit, for the next one"),
        excluding(scale("How many times faster than real its time runs"), {"virtual"}),
        cli::flag("virtual", "Its time passes while all programs sleep or wait, and then at once")};
    for (Argument& row : rows)
        row.needs = needs;
    return rows;
}

std::vector<Argument> operator+(std::vector<Argument> all, const std::vector<Argument>& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

/// The option means that no unit is created.
Argument withoutUnit(Argument option)
{
    option.excludes.insert(option.excludes.end(), {"description", "set", "keep", "scale", "virtual"});
    return option;
}

Argument needing(Argument option, std::string_view other)
{
    option.needs = other;
    return option;
}

Argument programToStart()
{
    return {.name = "program",
            .kind = Kind::Program,
            .help = "The program and its arguments, after --",
            .live = programWords};
}

Argument letter(Argument option, char letter)
{
    option.letter = letter;
    return option;
}

std::vector<Object> unitCommands()
{
    const Argument running = unit("A running unit instead of one of the program's own");
    return {
        cli::command({.name = "list",
                      .help = "Lists the running units.",
                      .example = "hx-sim list",
                      .run = list,
                      .options = {json()}}),
        cli::command({.name = "run",
                      .help = "Runs a program on a unit, its own unless --unit names one.",
                      .example = "hx-sim run -- hxaux voltage 0",
                      .run = run,
                      .values = {programToStart()},
                      .options = std::vector{withoutUnit(running)} + unitOptions()}),
        cli::command({.name = "start",
                      .help = "Starts a unit that programs can share.",
                      .example = "hx-sim start bench",
                      .run = start,
                      .values = {unitName("Its name")},
                      .options = unitOptions()}),
        cli::command({.name = "stop",
                      .help = "Stops a unit.",
                      .example = "hx-sim stop bench",
                      .run = stop,
                      .values = {unitName("Its name; may be omitted while only one is running").optional()}}),
    };
}

std::vector<Object> valueCommands()
{
    return {
        cli::command({.name = "actions",
                      .help = "Lists the actions of a unit.",
                      .example = "hx-sim actions",
                      .run = actions,
                      .options = {unit(), json()}}),
        cli::command({.name = "do",
                      .help = "Runs an action on a unit; 'do' may be omitted.",
                      .example = "hx-sim do press front",
                      .run = forward,
                      .values = {value("action", "See: hx-sim actions", actionWords).repeated()},
                      .options = {unit()}}),
        cli::command({.name = "get",
                      .help = "Shows properties of a unit.",
                      .example = "hx-sim get voltage.0",
                      .run = forward,
                      .values = {value("property", "See: hx-sim properties", propertyNames).repeated()},
                      .options = {unit()}}),
        cli::command(
            {.name = "properties",
             .help = "Lists the properties of a unit.",
             .example = "hx-sim properties",
             .run = properties,
             .options = {unit(), json(),
                         excluding(cli::flag("markdown", "All of them and all actions, as a page of a document"),
                                   {"json"})}}),
        cli::command(
            {.name = "set",
             .help = "Sets properties of a unit: KEY VALUE, or KEY=VALUE ...",
             .example = "hx-sim set voltage.0 11.5",
             .run = set,
             .values = {value("property", "A property and its value; see: hx-sim properties", setWords).repeated()},
             .options = {unit()}}),
    };
}

std::vector<Object> failureCommands()
{
    return {
        cli::command({.name = "fail",
                      .help = "Injects failures into calls of programs.",
                      .example = "hx-sim fail /dev/backlight 0x40010003 EIO 3",
                      .run = forward,
                      .values = {value("node", "A device, a file, a semaphore, or '*'", devices),
                                 value("call", "The call as the log shows it: open, a request's code, ...", calls),
                                 value("errno", "The error that it gets; EIO without one", errorNames).optional(),
                                 value("count", "How many times; always without one").optional()},
                      .options = {unit()}}),
        cli::command({.name = "faults",
                      .help = "Lists injected failures: what is left and how often each was hit.",
                      .example = "hx-sim faults",
                      .run = forward,
                      .options = {unit(), json()}}),
        cli::command({.name = "remove",
                      .help = "Removes devices: opening one fails with ENOENT.",
                      .example = "hx-sim remove /dev/lightsensor",
                      .run = forward,
                      .values = {value("path", "Devices, files, libjida.so or its functions", devices).repeated()},
                      .options = {unit()}}),
        cli::command({.name = "restore",
                      .help = "Restores removed devices.",
                      .example = "hx-sim restore /dev/lightsensor",
                      .run = forward,
                      .values = {value("path", "Devices, files, libjida.so or its functions", devices).repeated()},
                      .options = {unit()}}),
        cli::command(
            {.name = "unfail",
             .help = "Clears injected failures, all or those on NODE.",
             .example = "hx-sim unfail",
             .run = forward,
             .values = {value("node", "The node whose failures are cleared; all without one", devices).optional()},
             .options = {unit()}}),
    };
}

std::vector<Argument> scenarioOptions()
{
    std::vector<Argument> rows = unitOptions();
    std::erase_if(rows, [](const Argument& row) { return row.name == "keep"; });
    return rows + std::vector{optionOf("junit", Kind::File, "FILE", "Write the result into this file for a CI system"),
                              optionOf("plot", Kind::File, "FILE", "Draw the properties over time into this SVG file"),
                              json()};
}

std::vector<Object> conditionCommands()
{
    return {
        cli::command({.name = "expect",
                      .help = "Checks what is true of a unit, or happens on it.",
                      .example = "hx-sim expect never led.lit = on for 2s",
                      .run = expectCommand,
                      .values = {value("expectation", "[never] CONDITION [for T] [within T]").repeated()},
                      .options = {unit()}}),
        cli::command(
            {.name = "wait",
             .help = "Waits until something is true of a unit, or happens on it.",
             .example = "hx-sim wait backlight.level = 40",
             .run = waitCommand,
             .values = {value("condition", "KEY OP VALUE, request DEVICE CALL, output TEXT or log TEXT", propertyNames)
                            .repeated()},
             .options = {unit(), optionOf("for", Kind::Text, "T", "How long it must stay true: 20ms, 2s, 1m"),
                         optionOf("timeout", Kind::Text, "T",
                                  "How long to wait, in the unit's time; without it forever")}}),
    };
}

std::vector<Object> courseCommands()
{
    const Argument running = unit("A running unit instead of one of the program's own");
    return {
        cli::command(
            {.name = "log",
             .help = "Shows the calls of programs on a unit.",
             .example = "hx-sim log --follow",
             .run = log,
             .options = {unit(), letter(cli::flag("follow", "Continue with each new call"), 'f'),
                         json("One JSON object per line"),
                         excluding(cli::flag("clear", "Discard the calls logged until now"), {"follow", "json"})}}),
        {"play",
         "Plays a course of events on a unit over time.",
         {{.name = "light",
           .help = "Plays a light profile on a running unit, or on one of its own with a program.",
           .example = "hx-sim play light tunnel",
           .run = playLight,
           .values = {{.name = "profile",
                       .kind = Kind::File,
                       .help = "A file of lines SECONDS LUX, 'repeat' as the last one; or the name of a profile that "
                               "comes with hx-sim",
                       .live = profiles},
                      programToStart().optional()},
           .options =
               std::vector{excluding(unit(), {"program"})} + unitOptions("program") +
               std::vector{needing(optionOf("plot", Kind::File, "FILE",
                                            "Draw light and level into this SVG file when the program has ended"),
                                   "program"),
                           needing(cli::real("seconds", 0.001, 1e9, "s", "End the program after this time of the unit")
                                       .optional(),
                                   "program")}},
          {.name = "scenario",
           .help = "Plays a scenario on a unit of its own and checks what it expects.",
           .example = "hx-sim play scenario dimming.scenario -- ./console",
           .run = playAScenario,
           .values = {cli::file("scenario", "The file; see docs/scenarios.md"), programToStart().optional()},
           .options = scenarioOptions()}}},
        cli::command(
            {.name = "record",
             .help = "Records the calls of a program on a unit.",
             .example = "hx-sim record -o app.recording -- hxaux voltage 0",
             .run = recordCalls,
             .values = {programToStart()},
             .options = std::vector{withoutUnit(cli::flag("machine", "The devices of this machine instead of a "
                                                                     "simulated unit")),
                                    excluding(withoutUnit(running), {"machine"}),
                                    letter(optionOf("output", Kind::File, "FILE",
                                                    "The recording; without it PROGRAM.recording"),
                                           'o')} +
                        unitOptions()}),
        cli::command(
            {.name = "convert",
             .help = "Makes a scenario of a recording.",
             .example = "hx-sim convert app.recording -- hxaux voltage 0",
             .run = convertRecording,
             .values = {cli::file("recording", "The recording"), programToStart()},
             .options = {letter(optionOf("output", Kind::File, "FILE", "The scenario; without it RECORDING.scenario"),
                                'o')}}),
        cli::command({.name = "replay",
                      .help = "Runs a program against a recording.",
                      .example = "hx-sim replay app.recording -- hxaux voltage 0",
                      .run = replayCalls,
                      .values = {cli::file("file", "The recording"), programToStart()},
                      .options = {scale("How many times faster than real the program's sleeps are")}}),
    };
}

std::vector<Object> otherCommands()
{
    return {
        cli::completionObject("hx-sim"),
        cli::command({.name = "shell",
                      .help = "Reads commands for a running unit line by line.",
                      .example = "hx-sim shell --unit bench",
                      .run = shell,
                      .options = {unit()}}),
    };
}

/// The table of these commands.
cli::Program programWith(const std::vector<std::vector<Object>*>& groups)
{
    std::vector<const Object*> objects;
    for (const std::vector<Object>* const group : groups)
        for (const Object& object : *group)
            objects.push_back(&object);
    std::ranges::sort(objects, {}, &Object::name);
    return {
        .name = "hx-sim",
        .summary = "simulated units and the programs on them",
        .synopsis = "COMMAND [OPTIONS] [VALUES]",
        .details = "A simulated unit is a whole display computer: its devices, supervisor, sensors, EEPROMs and serial "
                   "port. Programs run on it unchanged and without root.",
        .version = HXSIM_VERSION,
        .kind = "command",
        .seeAlso = "hxaux",
        .objects = objects,
        .exits =
            {{0, "done"},
             {1, "the unit refused, a unit or file could not be created, or an expectation was not met; standard error "
                 "says why"},
             {2, "usage error"},
             {3, "a recording or scenario could not be read, or has a mistake"},
             {4, "a program made other calls than the recorded ones"},
             {6, "no such unit is running, or it cannot be reached"},
             {126, "the program cannot be started"},
             {127, "the program does not exist"}},
        .implied = "do",
        .more = actionsOfUnit,
    };
}

struct Table {
    std::vector<Object> units = unitCommands();
    std::vector<Object> values = valueCommands();
    std::vector<Object> failures = failureCommands();
    std::vector<Object> courses = courseCommands();
    std::vector<Object> conditions = conditionCommands();
    std::vector<Object> others = otherCommands();
    cli::Program inShell = programWith({&units, &values, &failures, &courses, &conditions});
    cli::Program whole = programWith({&units, &values, &failures, &courses, &conditions, &others});
};

const Table& table()
{
    static Table all;
    return all;
}

} // namespace

const cli::Program& program()
{
    return table().whole;
}

const cli::Program& programOfShell()
{
    return table().inShell;
}

} // namespace hxsim
