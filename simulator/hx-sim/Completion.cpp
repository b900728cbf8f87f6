// SPDX-License-Identifier: LicenseRef-HXAux
// The shells query hx-sim for candidates, so their scripts contain no commands.
#include "simulator/hx-sim/Completion.h"

#include <algorithm>
#include <map>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "simulator/hx-sim/UnitClient.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"

namespace hxsim {

namespace {

using Words = std::vector<std::string>;
using Candidates = std::map<std::string, std::string>; ///< word and help

constexpr const char* kBash = R"(# bash completion for hx-sim; to be sourced, or installed as completions/hx-sim
_hx_sim() {
    local word
    COMPREPLY=()
    while IFS=$'\t' read -r word _; do
        COMPREPLY+=("$word")
    done < <(hx-sim completion words -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _hx_sim hx-sim
)";

constexpr const char* kZsh = R"(#compdef hx-sim
_hx_sim() {
    local -a found
    local word help
    while IFS=$'\t' read -r word help; do
        found+=("${word//:/\\:}:${help}")
    done < <(hx-sim completion words -- "${(@)words[2,CURRENT]}" 2>/dev/null)
    if (( ${#found} )); then
        _describe hx-sim found
    else
        _files
    fi
}
compdef _hx_sim hx-sim
)";

constexpr const char* kFish = R"(# fish completion for hx-sim
function __hx_sim_words
    set -l words (commandline -opc)[2..-1] (commandline -ct)
    hx-sim completion words -- $words 2>/dev/null
end
complete -c hx-sim -n 'count (__hx_sim_words) >/dev/null' -f
complete -c hx-sim -a '(__hx_sim_words)'
)";

/// What the unit itself lists under this command; nothing when no unit, or more than one, runs.
Candidates fromUnit(const char* command, const Words& finished)
{
    Candidates all;
    try {
        const auto named =
            std::ranges::find_if(finished, [](const std::string& word) { return word == "--unit" || word == "-u"; });
        const bool isNamed = named != finished.end() && named + 1 != finished.end();
        UnitClient client{UnitClient::choose(isNamed ? named[1] : "")};
        const auto rows = nlohmann::json::parse(client.request({command, "--json"}));
        for (const auto& [name, row] : rows.items())
            all[name] = row.is_object() ? row.value("help", "") : row.get<std::string>();
    } catch (const std::exception&) { // completion reports no errors
    }
    return all;
}

Candidates units()
{
    Candidates all;
    for (const std::string& name : UnitFolder::running())
        all[name] = "a running unit";
    return all;
}

Candidates commandsOf(const CLI::App& app)
{
    Candidates all;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        all[command->get_name()] = command->get_description();
    return all;
}

Candidates optionsOf(const CLI::App& command)
{
    Candidates all;
    for (const CLI::Option* const option : command.get_options())
        for (const std::string& name : option->get_lnames())
            all["--" + name] = option->get_description();
    return all;
}

Candidates valuesOf(const CLI::App& command, const Words& finished)
{
    const std::string name = command.get_name();
    if (name == "stop")
        return units();
    if (name == "get" || name == "set")
        return fromUnit("properties", finished);
    if (name == "do")
        return fromUnit("actions", finished);
    if (name == "fail" || name == "unfail" || name == "remove" || name == "restore")
        return fromUnit("devices", finished);
    return name == "play" ? commandsOf(command) : Candidates{};
}

Candidates candidates(const CLI::App& app, const Words& finished, const std::string& last)
{
    const bool optionBegun = last.starts_with('-');
    if (finished.empty() && optionBegun)
        return optionsOf(app);
    if (finished.empty()) {
        Candidates all = fromUnit("actions", finished);
        all.merge(commandsOf(app));
        return all;
    }
    const auto isMeant = [&](const CLI::App* each) { return each->get_name() == finished[0]; };
    const std::vector<const CLI::App*> meant = app.get_subcommands(isMeant);
    if (meant.empty() || std::ranges::find(finished, "--") != finished.end())
        return {};
    if (optionBegun)
        return optionsOf(*meant.front());
    if (finished.back() == "--unit" || finished.back() == "-u")
        return units();
    return valuesOf(*meant.front(), finished);
}

std::string wordsFor(const CLI::App& app, Words words)
{
    const std::string last = words.empty() ? "" : words.back();
    if (!words.empty())
        words.pop_back();
    std::string text;
    for (const auto& [word, help] : candidates(app, words, last))
        if (word.starts_with(last))
            text += word + '\t' + help + '\n';
    return text;
}

} // namespace

std::string completionFor(const CLI::App& app, const Words& words)
{
    if (words[0] == "words") {
        const bool isMarked = words.size() > 1 && words[1] == "--";
        return wordsFor(app, {words.begin() + (isMarked ? 2 : 1), words.end()});
    }
    if (words.size() > 1)
        throw BadUsage{"too many arguments: " + inQuotes(words[1])};
    if (words[0] == "bash")
        return kBash;
    if (words[0] == "zsh")
        return kZsh;
    if (words[0] == "fish")
        return kFish;
    throw BadUsage{"there is no shell '" + words[0] + "': bash, fish or zsh"};
}

} // namespace hxsim
