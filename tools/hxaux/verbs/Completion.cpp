// SPDX-License-Identifier: LicenseRef-HXAux
// The shells query the tool for candidates, so their scripts contain no verbs.
#include "tools/hxaux/Completion.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

constexpr const char* kBash = R"(# bash completion for hxaux; to be sourced, or installed as completions/hxaux
_hxaux() {
    local word
    COMPREPLY=()
    while IFS=$'\t' read -r word _; do
        COMPREPLY+=("$word")
    done < <(hxaux completion words -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _hxaux hxaux
)";

constexpr const char* kZsh = R"(#compdef hxaux
_hxaux() {
    local -a found
    local word help
    while IFS=$'\t' read -r word help; do
        found+=("${word//:/\\:}:${help}")
    done < <(hxaux completion words -- "${(@)words[2,CURRENT]}" 2>/dev/null)
    if (( ${#found} )); then
        _describe hxaux found
    else
        _files
    fi
}
compdef _hxaux hxaux
)";

constexpr const char* kFish = R"(# fish completion for hxaux
function __hxaux_words
    set -l words (commandline -opc)[2..-1] (commandline -ct)
    hxaux completion words -- $words 2>/dev/null
end
complete -c hxaux -n 'count (__hxaux_words) >/dev/null' -f
complete -c hxaux -a '(__hxaux_words)'
)";

template <const char* const& Script>
void printScript(Call& call)
{
    call.document("script", Script);
}

void printWords(Call& call)
{
    std::string lines;
    Value::List list;
    for (const Candidate& candidate : candidates(call.texts("word"))) {
        lines += candidate.word + "\t" + candidate.help + "\n";
        list.emplace_back(Value::Record{{"word", candidate.word}, {"help", candidate.help}});
    }
    if (call.asJson())
        return call.print("words", list);
    call.document("words", lines);
}

} // namespace

const Object objects::Completion{
    "completion",
    "completion of command lines in bash, zsh and fish",
    {
        {
            .name = "bash",
            .help = "Prints the script for bash.",
            .example = "hxaux completion bash",
            .run = printScript<kBash>,
            .details = "In ~/.bashrc: source <(hxaux completion bash)",
        },
        {
            .name = "fish",
            .help = "Prints the script for fish.",
            .example = "hxaux completion fish",
            .run = printScript<kFish>,
            .details = "hxaux completion fish >~/.config/fish/completions/hxaux.fish",
        },
        {
            .name = "words",
            .help = "Prints what can stand at the end of an unfinished command line.",
            .example = "hxaux completion words voltage ''",
            .run = printWords,
            .values = {text("word", "the words behind 'hxaux'; the last one is unfinished, or empty").repeated()},
            .details = "The completion scripts call this. Each line is a word, a tab and its meaning.",
        },
        {
            .name = "zsh",
            .help = "Prints the script for zsh.",
            .example = "hxaux completion zsh",
            .run = printScript<kZsh>,
            .details = "In ~/.zshrc, after compinit: source <(hxaux completion zsh)",
        },
    }};

} // namespace hxaux
