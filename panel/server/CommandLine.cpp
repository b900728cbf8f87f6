// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/CommandLine.h"

#include "panel/server/Panel.h"
#include "panel/server/Signals.h"
#include "panel/server/Token.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "tools/cli/Arguments.h"
#include "tools/cli/Completion.h"
#include "tools/cli/Help.h"
#include "tools/cli/NearNames.h"
#include "tools/cli/Printable.h"

#include <algorithm>
#include <cstdio>

namespace hxpanel {

namespace {

using hxsim::UnitFolder;

enum Status { kDone = 0, kRefused = 1, kUsage = 2, kFile = 3, kBusy = 5, kNoUnit = 6 };

class NoUnit : public hxsim::BadText {
public:
    using BadText::BadText;
};

class BadFile : public hxsim::BadText {
public:
    using BadText::BadText;
};

class PanelCall : public cli::Call {
public:
    using Call::Call;
};

cli::Candidates runningUnits(const cli::Words&)
{
    cli::Candidates all;
    for (const std::string& name : UnitFolder::running())
        all.push_back({name, "a running unit"});
    return all;
}

/// A name that no unit has is a mistake, although a unit of this name might start later.
void requireRunning(const std::string& unit)
{
    const cli::Words running = UnitFolder::running();
    if (std::ranges::find(running, unit) == running.end())
        throw NoUnit{"no unit named '" + unit + "' is running" + cli::suggestion(unit, running)};
}

Options optionsFrom(const PanelCall& call)
{
    Options options{.units = call.texts("unit"), .real = call.has("real"), .readOnly = call.has("read-only")};
    if (call.has("listen"))
        options.address = cli::Address::from(call.text("listen")).value();
    if (!options.address.isLoopback() && !call.has("token-file"))
        throw hxsim::BadUsage{"other machines reach " + options.address.host +
                              ": the panel needs a token, in a file that --token-file names"};
    if (call.has("token-file")) {
        try {
            options.token = tokenFrom(call.text("token-file"));
        } catch (const hxsim::BadText& bad) {
            throw BadFile{bad.what()};
        }
    }
    std::ranges::for_each(options.units, requireRunning);
    return options;
}

void serve(PanelCall& call)
{
    Options options = optionsFrom(call);
    Signals signals; // before anything else that could outlive them
    {
        Loop loop;
        const int listener = cli::listenAt(options.address);
        Panel panel{loop, options};
        const HttpServer server{loop, listener, panel};
        signals.watch(loop);
        std::printf("http://%s/\n", options.address.text().c_str());
        std::fflush(stdout);
        loop.run();
    }
    signals.takeEffect();
}

std::vector<cli::Argument> serveOptions()
{
    cli::Argument unit = cli::text("unit", "a running unit; may be repeated; every one that is running if not given");
    unit.presence = cli::Presence::Repeated;
    unit.letter = 'u';
    unit.shown = "NAME";
    unit.live = runningUnits;
    unit.problem = UnitFolder::whatIsWrongWith;
    const cli::Argument listen =
        cli::address("listen", "where to listen; 127.0.0.1:8460 if not given, port 0 is any free one");
    cli::Argument token = cli::file("token-file", "a file with the token that the page asks for, at least 16 "
                                                  "characters; needed where other machines reach the address");
    token.shown = "FILE";
    return {unit, cli::flag("real", "this machine itself, through hxaux"), listen,
            cli::flag("read-only", "the page shows, and changes nothing"), token};
}

const cli::Program& program()
{
    static const cli::Object serving =
        cli::command({.name = "serve",
                      .help = "Serves the page until Ctrl-C; also meant without a command.",
                      .example = "hx-panel --unit bench",
                      .run = serve,
                      .options = serveOptions()});
    static const cli::Object completion = cli::completionObject("hx-panel");
    static const cli::Program table{
        .name = "hx-panel",
        .summary = "web page of a simulated unit",
        .synopsis = "[OPTIONS]",
        .details = "The front of a unit in a browser: display, LED, buzzer and buttons, and everything around it that "
                   "can be changed. Prints the address of the page when it is ready.",
        .version = HXPANEL_VERSION,
        .kind = "command",
        .seeAlso = "hx-sim",
        .objects = {&completion, &serving},
        .exits = {{0, "done"},
                  {1, "the address cannot be used; standard error says why"},
                  {2, "usage error"},
                  {3, "the token file cannot be read, or others can read it"},
                  {5, "another program listens at the address"},
                  {6, "no such unit is running"},
                  {130, "ended by Ctrl-C"},
                  {143, "ended by TERM"}},
        .usual = "serve",
    };
    return table;
}

int run(const cli::Words& words)
{
    if (const auto text = cli::information(program(), words)) {
        std::fputs(text->c_str(), stdout);
        return kDone;
    }
    const cli::Arguments arguments{program(), words};
    PanelCall call{program(), arguments};
    arguments.verb().run(call);
    return kDone;
}

} // namespace

int execute(const cli::Words& words)
{
    const auto fail = [](int status, const std::string& text) {
        cli::show(stderr, "hx-panel: " + cli::printable(text) + '\n');
        return status;
    };
    try {
        return run(words);
    } catch (const cli::UsageError& mistake) {
        return fail(kUsage, mistake.what());
    } catch (const hxsim::BadUsage& bad) {
        return fail(kUsage, bad.what());
    } catch (const BadFile& bad) {
        return fail(kFile, bad.what());
    } catch (const cli::AddressInUse& inUse) {
        return fail(kBusy, inUse.what());
    } catch (const NoUnit& none) {
        return fail(kNoUnit, none.what());
    } catch (const std::exception& error) {
        return fail(kRefused, error.what());
    }
}

} // namespace hxpanel
