// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim: simulated units and the programs on them.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "simulator/Launch.h"
#include "simulator/Play.h"
#include "simulator/Record.h"
#include "simulator/UnitClient.h"
#include "simulator/interpose/UnitFolder.h"
#include "simulator/model/Text.h"

namespace {

using namespace hxsim;
using Words = std::vector<std::string>;

enum Status { kDone = 0, kRefused = 1, kUsage = 2, kBadFile = 3, kNoUnit = 6 };

/// What the command line says; each command uses its part.
struct Choice {
    UnitOptions unit;
    LightPlay light;
    RecordOptions record;
    std::string recording; ///< to be replayed
    std::string on;        ///< the unit a command is for
    Words words;
    bool json = false;
    bool follow = false;
    bool clear = false;
};

/// A command on a running unit whose answer is shown.
void tell(const Choice& choice, Words words)
{
    if (choice.json)
        words.emplace_back("--json");
    const std::string text = UnitClient{UnitClient::choose(choice.on)}.ask(words);
    std::fputs(text.c_str(), stdout);
}

Words with(const std::string& first, const Words& rest)
{
    Words words{first};
    words.insert(words.end(), rest.begin(), rest.end());
    return words;
}

/// "light 250" and "light=250" are the same.
void set(const Choice& choice)
{
    Words lines{"set"};
    if (choice.words.size() == 2 && choice.words[0].find('=') == std::string::npos)
        lines.push_back(choice.words[0] + " = " + choice.words[1]);
    else
        lines.insert(lines.end(), choice.words.begin(), choice.words.end());
    tell(choice, lines);
}

void list(const Choice& choice)
{
    const Words running = UnitFolder::running();
    if (choice.json)
        std::printf("%s\n", nlohmann::json(running).dump().c_str());
    else
        for (const std::string& name : running)
            std::printf("%s\n", name.c_str());
}

void stop(const Choice& choice)
{
    const std::string name = UnitClient::choose(choice.on);
    UnitClient{name}.ask({"stop"});
    for (int i = 0; i < 500; ++i) { // until its folder is gone
        const Words running = UnitFolder::running();
        if (std::find(running.begin(), running.end(), name) == running.end())
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    throw BadText{"the unit '" + name + "' does not end"};
}

void log(const Choice& choice)
{
    if (choice.clear)
        return tell(choice, {"clear"});
    if (!choice.follow)
        return tell(choice, {"log"});
    UnitClient client{UnitClient::choose(choice.on)};
    client.ask(choice.json ? Words{"follow", "--json"} : Words{"follow"});
    client.listen([](const std::string& line) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    });
}

int run(const Choice& choice)
{
    if (choice.on.empty())
        return runOnOwnUnit(choice.unit, choice.words);
    const double scale = parseReal(UnitClient{choice.on}.ask({"scale"}));
    return runOnUnit(choice.on, scale, choice.words);
}

CLI::App* onUnit(CLI::App& app, Choice& choice, const char* name, const char* help)
{
    CLI::App* const command = app.add_subcommand(name, help);
    command->add_option("--unit,-u", choice.on, "The unit's name; may be left out when only one runs");
    return command;
}

void addUnitOptions(CLI::App& command, UnitOptions& unit)
{
    command.add_option("--description,-d", unit.descriptions, "File that says how the unit differs from a healthy one");
    command.add_option("--set,-s", unit.settings, "One line of a description, key=value");
    command.add_option("--keep", unit.keep, "Folder in which the EEPROMs outlast the unit, for the next one");
    command.add_option("--scale", unit.scale, "How many times faster than real its time runs")
        ->check(CLI::Range(0.001, 100000.0));
}

void defineUnits(CLI::App& app, Choice& choice, int& status)
{
    CLI::App* const runs = onUnit(app, choice, "run", "Run a program on a unit, its own unless --unit names one");
    addUnitOptions(*runs, choice.unit);
    runs->add_option("program", choice.words, "The program and its arguments, after --")->required();
    runs->positionals_at_end();
    runs->callback([&] { status = run(choice); });

    CLI::App* const starts = app.add_subcommand("start", "Start a unit that programs can share");
    addUnitOptions(*starts, choice.unit);
    starts->add_option("name", choice.unit.name, "Its name")->required();
    starts->callback([&] { startUnit(choice.unit); });

    CLI::App* const stops = app.add_subcommand("stop", "End a unit");
    stops->add_option("name", choice.on, "Its name; may be left out when only one runs");
    stops->callback([&] { stop(choice); });

    CLI::App* const lists = app.add_subcommand("list", "Show the units that run");
    lists->add_flag("--json", choice.json, "As JSON");
    lists->callback([&] { list(choice); });
}

void defineValues(CLI::App& app, Choice& choice)
{
    CLI::App* const sets = onUnit(app, choice, "set", "Set properties of a unit: KEY VALUE, or KEY=VALUE ...");
    sets->add_option("what", choice.words)->required();
    sets->callback([&] { set(choice); });

    CLI::App* const gets = onUnit(app, choice, "get", "Show properties of a unit");
    gets->add_option("key", choice.words)->required();
    gets->callback([&] { tell(choice, with("get", choice.words)); });

    for (const char* const name : {"properties", "actions"}) {
        CLI::App* const shows =
            onUnit(app, choice, name, *name == 'p' ? "Show all that can be set and seen" : "Show what can be done");
        shows->add_flag("--json", choice.json, "As JSON");
        shows->callback([&choice, name] { tell(choice, {name}); });
    }

    CLI::App* const does =
        onUnit(app, choice, "do", "Do something to a unit; 'do' may be left out: hx-sim press front");
    does->add_option("action", choice.words, "See: hx-sim actions")->required();
    does->callback([&] { tell(choice, with("do", choice.words)); });
}

void defineTrouble(CLI::App& app, Choice& choice)
{
    CLI::App* const fails = onUnit(app, choice, "fail", "Let calls fail: NODE CALL [ERRNO] [COUNT]");
    fails->add_option("what", choice.words, "For example: /dev/backlight 0x40010003 EIO 3")->required();
    fails->callback([&] { tell(choice, with("fail", choice.words)); });

    CLI::App* const unfails = onUnit(app, choice, "unfail", "Let no call fail any more, or none on NODE");
    unfails->add_option("node", choice.words);
    unfails->callback([&] { tell(choice, with("unfail", choice.words)); });

    for (const char* const name : {"remove", "restore"}) {
        CLI::App* const moves =
            onUnit(app, choice, name, name[2] == 'm' ? "Take devices away" : "Give devices back that were taken away");
        moves->add_option("path", choice.words)->required();
        moves->callback([&choice, name] { tell(choice, with(name, choice.words)); });
    }

    CLI::App* const logs = onUnit(app, choice, "log", "Show what programs asked of a unit");
    logs->add_flag("--follow,-f", choice.follow, "Go on with each new call");
    logs->add_flag("--clear", choice.clear, "Forget what was asked until now");
    logs->add_flag("--json", choice.json, "One JSON object a line");
    logs->callback([&] { log(choice); });
}

int playLight(const Choice& choice)
{
    if (!choice.words.empty())
        return playLightWith(choice.light, choice.words);
    if (!choice.light.plot.empty())
        throw BadText{"a picture needs a program: --plot FILE -- PROGRAM"};
    playLightOn(choice.on, choice.light);
    return kDone;
}

void definePlays(CLI::App& app, Choice& choice, int& status)
{
    CLI::App* const plays = app.add_subcommand("play", "Play something over time on a unit");
    plays->require_subcommand(1);
    CLI::App* const lights =
        onUnit(*plays, choice, "light", "Play a light profile on a running unit, or on one of its own with a program");
    addUnitOptions(*lights, choice.light.unit);
    lights->add_option("--plot", choice.light.plot,
                       "Draw light and level into this SVG file when the program has ended");
    lights->add_option("--seconds", choice.light.seconds, "End the program after this time of the unit");
    lights->add_option("profile", choice.light.file, "Lines SECONDS LUX; 'repeat' as the last one")->required();
    lights->add_option("program", choice.words, "The program and its arguments, after --");
    lights->callback([&] { status = playLight(choice); });
}

void defineRecords(CLI::App& app, Choice& choice, int& status)
{
    CLI::App* const records = app.add_subcommand("record", "Write down what a program asks of a unit");
    records->add_option("--unit,-u", choice.record.on, "The running unit; without it one of the program's own")
        ->excludes(records->add_flag("--machine", choice.record.machine, "The devices of this machine"));
    addUnitOptions(*records, choice.record.unit);
    records->add_option("--output,-o", choice.record.file, "File; without it PROGRAM.recording");
    records->add_option("program", choice.words, "The program and its arguments, after --")->required();
    records->callback([&] { status = record(choice.record, choice.words); });

    CLI::App* const replays = app.add_subcommand("replay", "Run a program on the answers of a recording");
    replays->add_option("--scale", choice.unit.scale, "How many times faster than real the program's sleeps are")
        ->check(CLI::Range(0.001, 100000.0));
    replays->add_option("file", choice.recording, "The recording")->required();
    replays->add_option("program", choice.words, "The program and its arguments, after --")->required();
    replays->callback([&] { status = replay(choice.recording, choice.unit.scale, choice.words); });
}

/// `hx-sim press front` means `hx-sim do press front`.
Words withVerb(const CLI::App& app, int argc, char** argv)
{
    Words words{argv + 1, argv + argc};
    const auto isMeant = [&](const CLI::App* command) { return command->get_name() == words[0]; };
    const std::vector<const CLI::App*> commands = app.get_subcommands([](const CLI::App*) { return true; });
    if (!words.empty() && !words[0].starts_with('-') && std::none_of(commands.begin(), commands.end(), isMeant))
        words.insert(words.begin(), "do");
    std::reverse(words.begin(), words.end()); // as the parser takes them
    return words;
}

int execute(CLI::App& app, Words words, const int& status)
{
    try {
        app.parse(std::move(words));
        return status;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kUsage;
    } catch (const UnitClient::NoUnit& none) {
        std::fprintf(stderr, "hx-sim: %s\n", none.what());
        return kNoUnit;
    } catch (const BadRecording& error) {
        std::fprintf(stderr, "hx-sim: %s\n", error.what());
        return kBadFile;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "hx-sim: %s\n", error.what());
        return kRefused;
    }
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"hx-sim: simulated units and the programs on them", "hx-sim"};
    app.require_subcommand(1);
    Choice choice;
    int status = kDone;
    defineUnits(app, choice, status);
    defineValues(app, choice);
    defineTrouble(app, choice);
    definePlays(app, choice, status);
    defineRecords(app, choice, status);
    UnitFolder::sweep();
    return execute(app, withVerb(app, argc, argv), status);
}
