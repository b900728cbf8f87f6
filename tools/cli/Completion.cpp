// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Completion.h"

#include "tools/cli/Arguments.h"
#include "tools/cli/Help.h"

#include <algorithm>
#include <deque>

namespace cli {

namespace {

// NAME is the program's name, FUNCTION the same as a shell function may be called.
constexpr std::string_view kBash = R"(# bash completion for NAME; to be sourced, or installed as completions/NAME
FUNCTION() {
    local word
    COMPREPLY=()
    while IFS=$'\t' read -r word _; do
        COMPREPLY+=("$word")
    done < <(NAME completion words -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F FUNCTION NAME
)";

constexpr std::string_view kZsh = R"(#compdef NAME
FUNCTION() {
    local -a found
    local word help
    while IFS=$'\t' read -r word help; do
        found+=("${word//:/\\:}:${help}")
    done < <(NAME completion words -- "${(@)words[2,CURRENT]}" 2>/dev/null)
    if (( ${#found} )); then
        _describe NAME found
    else
        _files
    fi
}
compdef FUNCTION NAME
)";

constexpr std::string_view kFish = R"(# fish completion for NAME
function _FUNCTION_words
    set -l words (commandline -opc)[2..-1] (commandline -ct)
    NAME completion words -- $words 2>/dev/null
end
complete -c NAME -n 'count (_FUNCTION_words) >/dev/null' -f
complete -c NAME -a '(_FUNCTION_words)'
)";

std::string replaced(std::string text, std::string_view from, std::string_view to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

template <const std::string_view& Script>
void printScript(Call& call)
{
    const std::string name(call.program().name);
    call.document("script",
                  replaced(replaced(std::string{Script}, "FUNCTION", "_" + replaced(name, "-", "_")), "NAME", name));
}

void printWords(Call& call)
{
    std::string lines;
    for (const Candidate& candidate : candidates(call.program(), call.texts("word")))
        lines += candidate.word + "\t" + candidate.help + "\n";
    call.document("words", lines);
}

void addOptions(Candidates& all, const std::vector<Argument>& options)
{
    for (const Argument& option : options)
        all.push_back({"--" + std::string(option.name), explanation(option)});
}

void addValues(Candidates& all, const Argument& argument, const Words& before)
{
    if (argument.names != nullptr) {
        for (const std::string& name : argument.names->all())
            all.push_back({name, std::string(argument.help)});
    }
    if (argument.live != nullptr) {
        const Candidates live = argument.live(before);
        all.insert(all.end(), live.begin(), live.end());
    }
}

// The next word of every verb whose name begins with the complete words.
void addVerbs(Candidates& all, const Object& object, const Words& finished)
{
    std::string begun;
    for (const std::string& word : finished)
        begun += word + " ";
    for (const Verb& verb : object.verbs) {
        if (!verb.name.starts_with(begun) || verb.name.size() <= begun.size())
            continue;
        const std::string_view rest = verb.name.substr(begun.size());
        all.push_back({std::string(rest.substr(0, rest.find(' '))), std::string(verb.help)});
    }
}

// What the complete words of a verb are, as the parser takes them.
struct Place {
    const Argument* option = nullptr; // whose value comes next
    const Argument* value = nullptr;  // the positional value that comes next
    bool isMarked = false;            // nothing is an option any more
    Words program = {};               // the words of the program to be started
};

Place placeBehind(const Verb& verb, const std::vector<Argument>& options, const Words& finished)
{
    Place place;
    std::size_t values = 0;
    const auto next = [&]() -> const Argument* {
        if (values < verb.values.size())
            return &verb.values[values];
        return !verb.values.empty() && verb.values.back().presence == Presence::Repeated ? &verb.values.back()
                                                                                         : nullptr;
    };
    place.value = next();
    for (const std::string& word : finished) {
        const bool isOption = !place.isMarked && place.option == nullptr && word.starts_with("-");
        if (isOption && word == "--")
            place.isMarked = true;
        const bool isValue = !isOption && place.option == nullptr;
        place.option = isOption ? optionNamed(options, word) : nullptr;
        if (!isValue)
            continue;
        if (place.value != nullptr && place.value->kind == Kind::Program) {
            place.program.push_back(word);
            place.isMarked = true;
            continue;
        }
        ++values;
        place.value = next();
    }
    return place;
}

void addForVerb(Candidates& all, const Program& program, const Verb& verb, const Words& finished, bool optionBegun)
{
    const std::vector<Argument> options = optionsOf(program, verb);
    const Place place = placeBehind(verb, options, finished);
    const bool isProgram = place.value != nullptr && place.value->kind == Kind::Program;
    if (place.option != nullptr)
        return addValues(all, *place.option, finished);
    if (optionBegun && !place.isMarked)
        return addOptions(all, options);
    if (place.value != nullptr)
        addValues(all, *place.value, isProgram ? place.program : finished);
}

Candidates firstWords(const Program& program, bool optionBegun)
{
    Candidates all;
    if (const Object* const usual = program.find(program.usual); usual != nullptr && optionBegun)
        addOptions(all, optionsOf(program, usual->verbs[0]));
    for (const Object* object : program.objects)
        all.push_back({std::string(object->name), std::string(object->help)});
    if (program.more != nullptr)
        for (Candidate& each : program.more())
            all.push_back(std::move(each));
    if (!optionBegun)
        return all;
    addOptions(all, program.always);
    all.push_back({"--help", ""});
    all.push_back({"--version", ""});
    return all;
}

Candidates allCandidates(const Program& program, Words finished, bool optionBegun)
{
    if (!finished.empty() && finished[0] == "help")
        finished.erase(finished.begin());
    if (finished.empty())
        return firstWords(program, optionBegun);
    if (finished[0].starts_with("-") && !program.usual.empty())
        finished.insert(finished.begin(), std::string(program.usual));
    const Object* object = program.find(finished[0]);
    if (object == nullptr && !program.implied.empty()) {
        finished.insert(finished.begin(), std::string(program.implied));
        object = program.find(program.implied);
    }
    Candidates all;
    if (object == nullptr)
        return all;
    const Words behind(finished.begin() + 1, finished.end());
    addVerbs(all, *object, behind);
    if (const auto [verb, used] = findVerb(*object, behind); verb != nullptr)
        addForVerb(all, program, *verb, {behind.begin() + static_cast<std::ptrdiff_t>(used), behind.end()},
                   optionBegun);
    return all;
}

} // namespace

Candidates candidates(const Program& program, const Words& words)
{
    const std::string last = words.empty() ? "" : words.back();
    const Words finished(words.begin(), words.empty() ? words.end() : words.end() - 1);
    Candidates all = allCandidates(program, finished, last.starts_with("-"));
    std::erase_if(all, [&](const Candidate& each) { return !each.word.starts_with(last); });
    std::ranges::stable_sort(all, {}, &Candidate::word);
    const auto sameWord = [](const Candidate& one, const Candidate& other) { return one.word == other.word; };
    all.erase(std::unique(all.begin(), all.end(), sameWord), all.end());
    return all;
}

Object completionObject(std::string_view program)
{
    static std::deque<std::string> kept; // the rows hold views of them
    const auto with = [&](const std::string& text) -> std::string_view {
        return kept.emplace_back(replaced(text, "NAME", program));
    };
    return {
        "completion",
        "completion of command lines in bash, zsh and fish",
        {{.name = "bash",
          .help = "Prints the script for bash.",
          .example = with("NAME completion bash"),
          .run = printScript<kBash>,
          .details = with("In ~/.bashrc: source <(NAME completion bash)")},
         {.name = "fish",
          .help = "Prints the script for fish.",
          .example = with("NAME completion fish"),
          .run = printScript<kFish>,
          .details = with("NAME completion fish >~/.config/fish/completions/NAME.fish")},
         {.name = "words",
          .help = "Prints what can stand at the end of an unfinished command line.",
          .example = with("NAME completion words help ''"),
          .run = printWords,
          .values = {text("word", with("the words behind 'NAME'; the last one is unfinished, or empty")).repeated()},
          .details = "The completion scripts call this. Each line is a word, a tab and its meaning."},
         {.name = "zsh",
          .help = "Prints the script for zsh.",
          .example = with("NAME completion zsh"),
          .run = printScript<kZsh>,
          .details = with("In ~/.zshrc, after compinit: source <(NAME completion zsh)")}}};
}

} // namespace cli
