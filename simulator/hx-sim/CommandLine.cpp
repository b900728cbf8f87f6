// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/CommandLine.h"

#include "simulator/client/Connection.h"
#include "simulator/hx-sim/Record.h"
#include "simulator/hx-sim/UnitClient.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "simulator/scenario/ScenarioText.h"
#include "tools/cli/Help.h"
#include "tools/cli/NearNames.h"
#include "tools/cli/Printable.h"

#include <cstdio>

namespace hxsim {

namespace {

int carryOut(const cli::Program& program, const cli::Words& words, const std::string& unit)
{
    if (const auto text = cli::information(program, words)) {
        std::fputs(text->c_str(), stdout);
        return kDone;
    }
    const cli::Arguments arguments{program, words};
    UnitFolder::sweep(); // a refused command has not touched the disk
    Call call{program, arguments, unit};
    arguments.verb().run(call);
    return call.status;
}

/// "there is no command 'starrt'; did you mean 'start'?", or nothing.
std::string nearCommand(const cli::Program& program, const cli::Words& words)
{
    if (words.empty() || program.find(words[0]) != nullptr)
        return {};
    cli::Words names;
    for (const cli::Object* const each : program.objects)
        names.emplace_back(each->name);
    const std::string near = cli::suggestion(words[0], names);
    return near.empty() ? near : "there is no command '" + words[0] + '\'' + near;
}

int execute(const cli::Program& program, const cli::Words& words, const std::string& unit, const std::string& place)
{
    const auto fail = [&](int status, const std::string& text) {
        cli::show(stderr, place + text + '\n');
        return status;
    };
    try {
        return carryOut(program, words, unit);
    } catch (const cli::UsageError& mistake) {
        return fail(kUsage, cli::printable(mistake.what()));
    } catch (const BadUsage& bad) {
        return fail(kUsage, bad.what());
    } catch (const UnitClient::NoUnit& none) {
        if (const std::string text = nearCommand(program, words); !text.empty())
            return fail(kUsage, cli::printable(text));
        return fail(kNoUnit, none.what());
    } catch (const UnitGone& gone) {
        return fail(kNoUnit, gone.what());
    } catch (const BadScenario& bad) {
        return fail(kBadFile, bad.what());
    } catch (const BadRecording& bad) {
        return fail(kBadFile, bad.what());
    } catch (const std::exception& error) {
        return fail(kRefused, error.what());
    }
}

} // namespace

int execute(const cli::Words& words)
{
    return execute(program(), words, "", "hx-sim: ");
}

int executeInShell(const cli::Words& words, const std::string& unit, const std::string& place)
{
    return execute(programOfShell(), words, unit, place);
}

} // namespace hxsim
