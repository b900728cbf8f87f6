// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/cli/Kettle.h"

namespace kettle {

namespace {

using cli::Argument;
using cli::Candidates;
using cli::Kind;
using cli::Object;
using cli::Words;

const cli::Names kLids = cli::namesOf<int>({{0, "closed"}, {1, "open"}, {4, "ajar"}});

void nothing(cli::Call&) {}

std::string refusedName(const std::string& text)
{
    return text.find('!') == std::string::npos ? "" : "'" + text + "' shouts";
}

Candidates guests(const Words&)
{
    return {{"alice", "a guest"}, {"bob", "a guest"}};
}

// What may be poured depends on the words in front.
Candidates drinks(const Words& before)
{
    return before.empty() ? Candidates{{"tea", "a drink"}} : Candidates{{before.back() + "-milk", "goes with it"}};
}

Argument with(Argument row, char letter)
{
    row.letter = letter;
    return row;
}

Argument keep()
{
    Argument row = cli::flag("keep", "keeps it hot until noon");
    row.excludes = {"for"};
    return row;
}

Argument cup()
{
    Argument row = cli::text("cup", "where to pour it");
    row.needs = "lid";
    return row;
}

Argument user()
{
    Argument row = with(cli::text("user", "who asks"), 'u');
    row.live = guests;
    row.problem = refusedName;
    row.shown = "NAME";
    return row;
}

Argument live(Argument row, Candidates (*candidates)(const Words&))
{
    row.live = candidates;
    return row;
}

const Object kBoil = cli::command({.name = "boil",
                                   .help = "Boils water.",
                                   .example = "kettle boil 90",
                                   .run = cli::Function{nothing},
                                   .values = {cli::integer("heat", 20, 100, "degrees C", "how hot").optional()},
                                   .options = {cli::real("for", 0.5, 60, "s", "keeps it hot"), keep(),
                                               cli::choice("lid", kLids, "position of the lid").optional(), cup()},
                                   .repeat = cli::Repeat::Watch,
                                   .details = "It whistles when it is done."});

const Object kLid{
    "lid",
    "the lid",
    {{.name = "get", .help = "Shows the lid.", .example = "kettle lid get", .run = nothing},
     {.name = "set",
      .help = "Moves the lid.",
      .example = "kettle lid set open",
      .run = nothing,
      .values = {cli::choice("position", kLids, "where to")}},
     {.name = "set later",
      .help = "Moves the lid after a while.",
      .example = "kettle lid set later ajar 5",
      .run = nothing,
      .values = {cli::choice("position", kLids, "where to"), cli::real("delay", -1, 60, "s", "when, from now")}}}};

const Object kNote{"note",
                   "notes on the fridge",
                   {{.name = "add",
                     .help = "Adds lines.",
                     .example = "kettle note add tea",
                     .run = nothing,
                     .values = {cli::text("line", "what to write").repeated()},
                     .options = {with(cli::text("tag", "a mark").repeated(), 't')}},
                    {.name = "show",
                     .help = "Shows the notes.",
                     .example = "kettle note show",
                     .run = nothing,
                     .values = {cli::text("about", "of which notes").optional()}}}};

const Object kPour = cli::command(
    {.name = "pour",
     .help = "Pours drinks.",
     .example = "kettle pour recipe.txt tea",
     .run = cli::Function{nothing},
     .values = {cli::file("recipe", "how to make them"), live(cli::text("drink", "what"), drinks).repeated()}});

const Object kStart =
    cli::command({.name = "start",
                  .help = "Starts a program beside the kettle.",
                  .example = "kettle start radio",
                  .run = cli::Function{nothing},
                  .values = {live({.name = "program", .kind = Kind::Program, .help = "what to start"}, drinks)},
                  .options = {with(cli::real("volume", 0, 11, "", "how loud"), 'v')}});

} // namespace

const cli::Program& program()
{
    static const cli::Program table{
        .name = "kettle",
        .summary = "make - and serve - tea",
        .synopsis = "COMMAND [VALUES]",
        .details = "Makes tea.",
        .version = "2.5",
        .kind = "command",
        .seeAlso = "toaster",
        .objects = {&kBoil, &kLid, &kNote, &kPour, &kStart},
        .exits = {{0, "done"}, {2, "usage error"}},
        .always = {cli::flag("json", "prints JSON"), cli::real("timeout", 0.1, 60, "s", "how long to wait"), user()},
        .whenRepeated = {cli::flag("watch", "repeats"), cli::integer("count", 1, 9, "times", "how often")},
    };
    return table;
}

cli::Program impliedProgram()
{
    cli::Program copy = program();
    static const Object say = cli::command({.name = "say",
                                            .help = "Says it.",
                                            .example = "kettle say hello",
                                            .run = cli::Function{nothing},
                                            .values = {live(cli::text("words", "what"), drinks).repeated()}});
    copy.objects.insert(copy.objects.end() - 1, &say);
    copy.implied = "say";
    copy.more = [] { return Candidates{{"hello", "a greeting"}}; };
    return copy;
}

} // namespace kettle
