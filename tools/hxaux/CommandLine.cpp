// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/CommandLine.h"

#include "tools/cli/Help.h"
#include "tools/cli/Manual.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Requests.h"
#include "tools/hxaux/Signals.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>
#include <unistd.h>

namespace hxaux {

namespace {

int print(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
    return static_cast<int>(Screen::flushed() ? Exit::Done : Exit::File);
}

// Repeats a verb until a signal arrives, the count is reached or the verb fails. Signals are held and checked between
// the rounds: no round is interrupted inside a library call.
Exit watch(const cli::Arguments& arguments, Screen& screen)
{
    const HeldSignals held;
    std::shared_ptr<void> kept;
    const std::chrono::milliseconds pause(
        arguments.has("every") ? static_cast<long long>(arguments.real("every") * 1000) : 1000);
    long long rounds = arguments.has("count") ? arguments.integer("count") : std::numeric_limits<long long>::max();
    screen.redrawInPlace();
    for (;;) {
        Call call(arguments, screen, kept);
        call.noteTime();
        try {
            arguments.verb().run(call);
        } catch (const Stop&) {
        }
        call.show();
        if (call.status() != Exit::Done || --rounds == 0 || held.await(pause) || !Screen::flushed())
            return call.status();
    }
}

Exit once(const cli::Arguments& arguments, Screen& screen)
{
    std::shared_ptr<void> kept;
    Call call(arguments, screen, kept);
    try {
        arguments.verb().run(call);
    } catch (const Stop&) {
    }
    call.end();
    return call.status();
}

// Ends the program, in the midst of a call of the library that holds no lock yet.
[[noreturn]] void giveUp(const cli::Arguments& arguments)
{
    Screen(arguments.has("json") ? Form::Json : Form::Text)
        .show({std::string(arguments.object().name),
               std::string(arguments.verb().name),
               Exit::Busy,
               {},
               {"'hxaux locks' shows the holder"},
               {{"", -1, "the lock is still taken after " + arguments.text("timeout") + " s"}}});
    std::fflush(stdout);
    _exit(static_cast<int>(Exit::Busy));
}

int runVerb(const cli::Arguments& arguments)
{
    Screen screen(arguments.has("json") ? Form::Json : Form::Text);
    printRequests(arguments.has("verbose"));
    if (arguments.has("timeout"))
        HeldSignals::limitWaits(std::chrono::duration<double>(arguments.real("timeout")),
                                [&arguments] { giveUp(arguments); });
    const bool repeated = arguments.verb().repeat == Repeat::Watch &&
                          (arguments.has("watch") || arguments.has("every") || arguments.has("count"));
    Exit status = repeated ? watch(arguments, screen) : once(arguments, screen);
    if (!Screen::flushed() && status == Exit::Done) {
        std::fputs("hxaux: standard output cannot be written\n", stderr);
        status = Exit::File;
    }
    return static_cast<int>(status);
}

} // namespace

int runCommandLine(const Words& words)
{
    std::string object;
    std::string verb;
    const auto failed = [&](Exit status, const std::string& text) {
        const auto mark = std::ranges::find(words, "--");
        const bool json = std::find(words.begin(), mark, "--json") != mark;
        Screen(json ? Form::Json : Form::Text).show({object, verb, status, {}, {}, {{"", -1, text}}});
        return static_cast<int>(status);
    };
    try {
        if (const auto text = cli::information(program(), words))
            return print(*text);
        if (!words.empty() && words[0] == "--reference")
            return print(cli::markdownReference(program()));
        const cli::Arguments arguments(program(), words);
        object = arguments.object().name;
        verb = arguments.verb().name;
        return runVerb(arguments);
    } catch (const cli::UsageError& mistake) {
        object = mistake.object;
        verb = mistake.verb;
        return failed(Exit::Usage, mistake.what());
    } catch (const std::bad_alloc&) {
        return failed(Exit::Refused, "out of memory");
    } catch (const std::system_error& mistake) { // no thread can be started
        return failed(Exit::Refused, mistake.what());
    }
}

} // namespace hxaux
