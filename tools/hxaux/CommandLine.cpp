// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/CommandLine.h"

#include "tools/cli/NearNames.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Help.h"
#include "tools/hxaux/Manual.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>

namespace hxaux {

namespace {

using Words = std::vector<std::string>;

bool isHelp(const std::string& word)
{
    return word == "--help" || word == "-h";
}

int print(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
    return static_cast<int>(Screen::flushed() ? Exit::Done : Exit::File);
}

int report(const Words& words, Exit status, const std::string& object, const std::string& verb, const std::string& text)
{
    const bool json = std::ranges::find(words, "--json") != words.end();
    Screen(json ? Form::Json : Form::Text).show({object, verb, status, {}, {}, {{"", -1, text}}});
    return static_cast<int>(status);
}

std::string objectNames()
{
    std::string names;
    for (const Object* object : allObjects())
        names += (names.empty() ? "" : ", ") + std::string(object->name);
    return names;
}

std::string unknownObject(const std::string& word)
{
    Words names;
    for (const Object* object : allObjects())
        names.emplace_back(object->name);
    const std::string near = cli::suggestion(word, names);
    return "there is no object '" + word + "'" + (near.empty() ? "; the objects are " + objectNames() : near);
}

std::string verbMistake(const Object& object, const Words& words)
{
    Words names;
    std::string all;
    for (const Verb& verb : object.verbs) {
        names.emplace_back(verb.name);
        all += (all.empty() ? "" : ", ") + std::string(verb.name);
    }
    if (words.empty() || words[0].starts_with("--"))
        return "missing argument: a verb, one of " + all;
    std::string near = cli::suggestion(words[0], names);
    return "there is no verb '" + words[0] + "'" + (near.empty() ? "; the verbs are " + all : near);
}

// Repeats a verb until a signal arrives, the count is reached or the verb fails. Signals are held and checked between
// the rounds: no round is interrupted inside a library call.
Exit watch(const Object& object, const Verb& verb, const Arguments& arguments, Screen& screen)
{
    const HeldSignals held;
    std::shared_ptr<void> kept;
    const std::chrono::milliseconds pause(
        arguments.has("every") ? static_cast<long long>(arguments.real("every") * 1000) : 1000);
    long long rounds = arguments.has("count") ? arguments.integer("count") : std::numeric_limits<long long>::max();
    screen.redrawInPlace();
    for (;;) {
        Call call(object, verb, arguments, screen, kept);
        try {
            verb.run(call);
        } catch (const Stop&) {
        }
        call.show();
        if (call.status() != Exit::Done || --rounds == 0 || held.await(pause) || !Screen::flushed())
            return call.status();
    }
}

Exit once(const Object& object, const Verb& verb, const Arguments& arguments, Screen& screen)
{
    std::shared_ptr<void> kept;
    Call call(object, verb, arguments, screen, kept);
    try {
        verb.run(call);
    } catch (const Stop&) {
    }
    call.end();
    return call.status();
}

int runVerb(const Object& object, const Verb& verb, const Words& words)
{
    const Arguments arguments(object, verb, words);
    if (arguments.wantsHelp())
        return print(verbHelp(object, verb));
    Screen screen(arguments.wantsJson() ? Form::Json : Form::Text);
    const bool repeated = verb.repeat == Repeat::Watch && arguments.has("watch");
    Exit status = repeated ? watch(object, verb, arguments, screen) : once(object, verb, arguments, screen);
    if (!Screen::flushed() && status == Exit::Done) {
        std::fputs("hxaux: standard output cannot be written\n", stderr);
        status = Exit::File;
    }
    return static_cast<int>(status);
}

int runObject(const Object& object, Words words)
{
    const auto [verb, used] = findVerb(object, words);
    const bool onlyHelp = !words.empty() && isHelp(words[0]) && object.verbs.size() > 1;
    const std::string name(object.name);
    if (onlyHelp)
        return print(objectHelp(object));
    if (verb == nullptr)
        return report(words, Exit::Usage, name, "", verbMistake(object, words));
    const Words rest(words.begin() + static_cast<std::ptrdiff_t>(used), words.end());
    try {
        return runVerb(object, *verb, rest);
    } catch (const UsageError& mistake) {
        return report(words, Exit::Usage, name, std::string(verb->name), mistake.what());
    } catch (const std::bad_alloc&) {
        return report(words, Exit::Refused, name, std::string(verb->name), "out of memory");
    } catch (const std::system_error& mistake) { // no thread can be started
        return report(words, Exit::Refused, name, std::string(verb->name), mistake.what());
    }
}

} // namespace

int runCommandLine(const Words& words)
{
    const auto first = std::ranges::find_if(words, [](const auto& word) { return word != "--json"; });
    if (first == words.end())
        return report(words, Exit::Usage, "", "", "missing argument: an object; 'hxaux --help' lists them");
    if (isHelp(*first))
        return print(toolHelp());
    if (*first == "--version")
        return print("hxaux " HXAUX_VERSION "\n");
    if (*first == "--man")
        return print(manualPage());
    if (*first == "--reference")
        return print(markdownReference());
    if (first->starts_with("-"))
        return report(words, Exit::Usage, "", "",
                      "there is no option '" + *first + "'" +
                          cli::suggestion(*first, {"--help", "--json", "--version"}));
    const Object* object = findObject(*first);
    if (object == nullptr)
        return report(words, Exit::Usage, "", "", unknownObject(*first));
    Words rest(first + 1, words.end());
    rest.insert(rest.end(), words.begin(), first); // a --json in front counts as well
    return runObject(*object, std::move(rest));
}

} // namespace hxaux
