// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/CommandLine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <thread>

#include <CLI/CLI.hpp>

#include "simulator/hx-sim/Completion.h"
#include "simulator/hx-sim/Launch.h"
#include "simulator/hx-sim/Manual.h"
#include "simulator/hx-sim/Play.h"
#include "simulator/hx-sim/Record.h"
#include "simulator/hx-sim/Shell.h"
#include "simulator/hx-sim/Show.h"
#include "simulator/hx-sim/UnitClient.h"
#include "simulator/hx-sim/Verbs.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "tools/cli/Json.h"

namespace hxsim {

using Words = std::vector<std::string>;

/// The parsed command line; each command uses its part.
struct Choice {
    UnitOptions unit{};
    LightPlay light{};
    RecordOptions record{};
    std::string recording{}; ///< to be replayed
    std::string on{};        ///< the unit a command is for
    Words words{};
    bool json = false;
    bool markdown = false;
    bool follow = false;
    bool clear = false;
    int status = kDone;
};

namespace {

/// A command on a running unit whose answer is shown.
void sendCommand(const Choice& choice, Words words)
{
    if (choice.json)
        words.emplace_back("--json");
    const std::string text = UnitClient{UnitClient::choose(choice.on)}.request(words);
    show(stdout, text);
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
    sendCommand(choice, lines);
}

void list(const Choice& choice)
{
    const Words running = UnitFolder::running();
    if (const std::string why = UnitFolder::whatHidesThem(); !why.empty())
        throw BadText{why};
    if (choice.json)
        std::printf("%s\n", written(running).c_str());
    else
        for (const std::string& name : running)
            std::printf("%s\n", name.c_str());
}

void stop(const Choice& choice)
{
    const std::string name = UnitClient::choose(choice.on);
    UnitClient{name}.request({"stop"});
    for (int i = 0; i < 500; ++i) { // until its folder is gone
        if (!std::filesystem::exists(UnitFolder::pathOf(name)))
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    throw BadText{"the unit '" + name + "' does not stop"};
}

void log(const Choice& choice)
{
    if (choice.clear)
        return sendCommand(choice, {"clear"});
    if (!choice.follow)
        return sendCommand(choice, {"log"});
    UnitClient client{UnitClient::choose(choice.on)};
    client.request(choice.json ? Words{"follow", "--json"} : Words{"follow"});
    client.listen([](const std::string& line) {
        show(stdout, line + '\n');
        std::fflush(stdout);
    });
}

int run(const Choice& choice)
{
    if (choice.on.empty())
        return runOnOwnUnit(choice.unit, choice.words);
    const double scale = parseReal(UnitClient{choice.on}.request({"scale"}));
    return runOnUnit(choice.on, scale, choice.words);
}

int playLight(const Choice& choice)
{
    if (!choice.words.empty())
        return playLightWith(choice.light, choice.words);
    playLightOn(choice.on, choice.light);
    return kDone;
}

constexpr char kScale[] = "--scale";
constexpr char kUnitHelp[] = "The unit's name; may be omitted while only one is running";

/// Options that describe a unit created for the command.
constexpr const char* kUnitOptions[] = {"--description", "--set", "--keep", kScale};

const CLI::Validator kUnitName{UnitFolder::whatIsWrongWith, "", "name of a unit"};
const CLI::Validator kNotEmpty{[](std::string& text) { return text.empty() ? std::string{"it is empty"} : ""; }, ""};

/// The parser's range check accepts "nan" in every range.
CLI::Validator between(double low, double high)
{
    return {[low, high](std::string& text) {
                char* end = nullptr;
                const double value = std::strtod(text.c_str(), &end);
                const bool good = !text.empty() && *end == '\0' && value >= low && value <= high;
                return good ? std::string{}
                            : inQuotes(text) + " is not a number from " + CLI::detail::to_string(low) + " to " +
                                  CLI::detail::to_string(high);
            },
            ""};
}

void addScale(CLI::App& command, double& scale, const char* help)
{
    command.add_option(kScale, scale, help)->check(between(0.001, 100000));
}

void addUnitOptions(CLI::App& command, UnitOptions& unit)
{
    command
        .add_option("--description,-d", unit.descriptions,
                    "File that describes how the unit differs from a healthy one")
        ->check(kNotEmpty);
    command.add_option("--set,-s", unit.settings, "One line of a description, key=value")->check(kNotEmpty);
    command.add_option("--keep", unit.keep, "Folder in which the EEPROMs outlast the unit, for the next one")
        ->check(kNotEmpty);
    addScale(command, unit.scale, "How many times faster than real its time runs");
}

CLI::Option* addUnit(CLI::App& command, std::string& name, const char* help)
{
    return command.add_option("--unit,-u", name, help)->check(kUnitName);
}

/// The options that describe a unit exclude this one: no unit is created.
void excludeUnitOptions(CLI::App& command, CLI::Option* option)
{
    for (const char* const name : kUnitOptions)
        option->excludes(command.get_option(name));
}

CLI::Option* addProgram(CLI::App& command, Words& words)
{
    return command.add_option("program", words, "The program and its arguments, after --");
}

} // namespace

CommandLine::CommandLine() : choice_{std::make_unique<Choice>()}
{
    defineAll();
    defineShell();
}

CommandLine::CommandLine(const std::string& unit, const std::string& place)
    : place_{place}, inShell_{true}, choice_{std::make_unique<Choice>()}
{
    choice_->on = unit;
    choice_->record.on = unit;
    defineAll();
}

CommandLine::~CommandLine() = default;

void CommandLine::defineAll()
{
    app_ = std::make_unique<CLI::App>("hx-sim: simulated units and the programs on them", inShell_ ? "" : "hx-sim");
    app_->require_subcommand(1);
    app_->parse_complete_callback(&UnitFolder::sweep); // a refused command has not touched the disk
    defineUnits();
    defineValues();
    defineActions();
    defineTrouble();
    defineLog();
    definePlay();
    defineRecord();
    defineReplay();
}

CLI::App& CommandLine::add(const char* name)
{
    const auto* const verb =
        std::ranges::find_if(kVerbs, [&](const Verb& each) { return std::string_view{each.name} == name; });
    CLI::App* const command = app_->add_subcommand(name, verb->help);
    command->footer(std::string{"Example:\n  "} + verb->example);
    return *command;
}

CLI::App& CommandLine::addOnUnit(const char* name)
{
    CLI::App& command = add(name);
    addUnit(command, choice_->on, kUnitHelp);
    return command;
}

void CommandLine::defineUnits()
{
    CLI::App& runs = add("run");
    CLI::Option* const on = addUnit(runs, choice_->on, "A running unit instead of one of the program's own");
    addUnitOptions(runs, choice_->unit);
    excludeUnitOptions(runs, on);
    addProgram(runs, choice_->words)->required();
    runs.positionals_at_end();
    runs.callback([this] { choice_->status = run(*choice_); });

    CLI::App& starts = add("start");
    addUnitOptions(starts, choice_->unit);
    starts.add_option("name", choice_->unit.name, "Its name")->required()->check(kUnitName);
    starts.callback([this] { startUnit(choice_->unit); });

    CLI::App& stops = add("stop");
    stops.add_option("name", choice_->on, "Its name; may be omitted while only one is running")->check(kUnitName);
    stops.callback([this] { stop(*choice_); });

    CLI::App& lists = add("list");
    lists.add_flag("--json", choice_->json, "As JSON");
    lists.callback([this] { list(*choice_); });
}

void CommandLine::defineValues()
{
    CLI::App& sets = addOnUnit("set");
    sets.add_option("what", choice_->words, "A property and its value; see: hx-sim properties")->required();
    sets.callback([this] { set(*choice_); });

    CLI::App& gets = addOnUnit("get");
    gets.add_option("key", choice_->words, "Properties; see: hx-sim properties")->required();
    gets.callback([this] { sendCommand(*choice_, with("get", choice_->words)); });

    for (const char* const name : {"properties", "actions"}) {
        CLI::App& shows = addOnUnit(name);
        CLI::Option* const json = shows.add_flag("--json", choice_->json, "As JSON");
        if (*name == 'p')
            shows.add_flag("--markdown", choice_->markdown, "All of them and all actions, as a page of a document")
                ->excludes(json);
        shows.callback([this, name] { sendCommand(*choice_, {choice_->markdown ? "properties-page" : name}); });
    }
}

void CommandLine::defineActions()
{
    CLI::App& does = addOnUnit("do");
    does.add_option("action", choice_->words, "See: hx-sim actions")->required();
    does.callback([this] { sendCommand(*choice_, with("do", choice_->words)); });

    for (const char* const name : {"remove", "restore"}) {
        CLI::App& moves = addOnUnit(name);
        moves.add_option("path", choice_->words, "Devices, files, libjida.so or its functions")->required();
        moves.callback([this, name] { sendCommand(*choice_, with(name, choice_->words)); });
    }
}

void CommandLine::defineTrouble()
{
    CLI::App& fails = addOnUnit("fail");
    fails.add_option("what", choice_->words, "NODE CALL [ERRNO] [COUNT], for example: /dev/backlight open EIO 3")
        ->required();
    fails.callback([this] { sendCommand(*choice_, with("fail", choice_->words)); });

    CLI::App& faults = addOnUnit("faults");
    faults.add_flag("--json", choice_->json, "As JSON");
    faults.callback([this] { sendCommand(*choice_, {"faults"}); });

    CLI::App& unfails = addOnUnit("unfail");
    unfails.add_option("node", choice_->words, "The node whose failures are cleared; all without one")->expected(0, 1);
    unfails.callback([this] { sendCommand(*choice_, with("unfail", choice_->words)); });
}

void CommandLine::defineLog()
{
    CLI::App& logs = addOnUnit("log");
    CLI::Option* const follow = logs.add_flag("--follow,-f", choice_->follow, "Continue with each new call");
    CLI::Option* const json = logs.add_flag("--json", choice_->json, "One JSON object per line");
    logs.add_flag("--clear", choice_->clear, "Discard the calls logged until now")->excludes(follow)->excludes(json);
    logs.callback([this] { log(*choice_); });
}

void CommandLine::definePlay()
{
    CLI::App& plays = add("play");
    plays.require_subcommand(1);
    CLI::App* const lights =
        plays.add_subcommand("light", "Plays a light profile on a running unit, or on one of its own with a program.");
    CLI::Option* const on = addUnit(*lights, choice_->on, kUnitHelp);
    addUnitOptions(*lights, choice_->light.unit);
    lights
        ->add_option("--plot", choice_->light.plot,
                     "Draw light and level into this SVG file when the program has ended")
        ->check(kNotEmpty);
    lights->add_option("--seconds", choice_->light.seconds, "End the program after this time of the unit")
        ->check(between(0.001, 1e9));
    lights->add_option("profile", choice_->light.file, "Lines SECONDS LUX; 'repeat' as the last one")->required();
    on->excludes(addProgram(*lights, choice_->words));
    for (const char* const name : {"--description", "--set", "--keep", kScale, "--plot", "--seconds"})
        lights->get_option(name)->needs("program");
    lights->callback([this] { choice_->status = playLight(*choice_); });
}

void CommandLine::defineRecord()
{
    CLI::App& records = add("record");
    CLI::Option* const machine = records.add_flag("--machine", choice_->record.machine,
                                                  "The devices of this machine instead of a simulated unit");
    CLI::Option* const on =
        addUnit(records, choice_->record.on, "A running unit instead of one of the program's own")->excludes(machine);
    addUnitOptions(records, choice_->record.unit);
    excludeUnitOptions(records, on);
    excludeUnitOptions(records, machine);
    records.add_option("--output,-o", choice_->record.file, "The recording; without it PROGRAM.recording")
        ->check(kNotEmpty);
    addProgram(records, choice_->words)->required();
    records.callback([this] { choice_->status = record(choice_->record, choice_->words); });
}

void CommandLine::defineReplay()
{
    CLI::App& replays = add("replay");
    addScale(replays, choice_->unit.scale, "How many times faster than real the program's sleeps are");
    replays.add_option("file", choice_->recording, "The recording")->required();
    addProgram(replays, choice_->words)->required();
    replays.callback([this] { choice_->status = replay(choice_->recording, choice_->unit.scale, choice_->words); });
}

/// Options that are useless inside a shell.
void CommandLine::defineShell()
{
    app_->set_version_flag("--version", "hx-sim " HXSIM_VERSION);
    app_->add_flag_callback(
        "--man",
        [this] {
            std::fputs(manualPage(*app_).c_str(), stdout);
            throw CLI::Success{};
        },
        "Print the manual page");

    CLI::App& shells = addOnUnit("shell");
    shells.callback([this] { choice_->status = runShell(UnitClient::choose(choice_->on)); });

    CLI::App& completes = add("completion");
    completes
        .add_option("shell", choice_->words, "bash, fish or zsh; their scripts call: hx-sim completion words -- WORDS")
        ->required();
    completes.callback([this] { std::fputs(completionFor(*app_, choice_->words).c_str(), stdout); });
}

int CommandLine::execute(std::vector<std::string> words)
{
    // Only the completion parses an unfinished command line.
    if (!inShell_ && words.size() >= 2 && words[0] == "completion" && words[1] == "words") {
        words.erase(words.begin());
        std::fputs(completionFor(*app_, words).c_str(), stdout);
        return kDone;
    }
    const auto isMeant = [&](const CLI::App* command) { return command->get_name() == words[0]; };
    const std::vector<const CLI::App*> commands = app().get_subcommands([](const CLI::App*) { return true; });
    if (!words.empty() && !words[0].starts_with('-') && std::none_of(commands.begin(), commands.end(), isMeant))
        words.insert(words.begin(), "do");    // "press front" means "do press front"
    std::reverse(words.begin(), words.end()); // as the parser takes them
    const auto fail = [this](int status, const char* text) {
        show(stderr, place_ + text + '\n');
        return status;
    };
    try {
        app_->parse(std::move(words));
        return choice_->status;
    } catch (const CLI::Success& success) { // help, version
        (void)app_->exit(success);
        return kDone;
    } catch (const CLI::ParseError& error) {
        std::string text = error.what();
        std::ranges::replace(text, '\n', ' ');
        return fail(kUsage, (text + (inShell_ ? "; see 'help'" : "; see 'hx-sim --help'")).c_str());
    } catch (const BadUsage& bad) {
        return fail(kUsage, bad.what());
    } catch (const UnitClient::NoUnit& none) {
        return fail(kNoUnit, none.what());
    } catch (const BadRecording& bad) {
        return fail(kBadFile, bad.what());
    } catch (const std::exception& error) {
        return fail(kRefused, error.what());
    }
}

} // namespace hxsim
