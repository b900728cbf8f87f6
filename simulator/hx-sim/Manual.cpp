// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Manual.h"

#include <CLI/CLI.hpp>

#include "simulator/hx-sim/Verbs.h"
#include "tools/cli/Troff.h"

namespace hxsim {

using troff::item;
using troff::literal;

namespace {

std::string optionItem(const CLI::Option& option)
{
    const std::string name = option.get_name(option.get_positional(), true);
    const bool takesValue = !option.get_positional() && option.get_items_expected_max() > 0;
    return item(name + (takesValue ? " VALUE" : ""), option.get_description());
}

std::string optionsOf(const CLI::App& command)
{
    std::string text;
    for (const CLI::Option* const option : command.get_options())
        text += optionItem(*option);
    for (const CLI::App* const part : command.get_subcommands([](const CLI::App*) { return true; }))
        text += item(part->get_name(), part->get_description()) + ".RS\n" + optionsOf(*part) + ".RE\n";
    return text;
}

} // namespace

std::string manualPage(const CLI::App& app)
{
    std::string text = ".\\\" Made from the commands by hx-sim --man.\n"
                       ".TH HX\\-SIM 1 \"\" \"HXAux " HXSIM_VERSION "\" \"User commands\"\n"
                       ".SH NAME\nhx\\-sim \\- simulated units and the programs on them\n"
                       ".SH SYNOPSIS\n.B hx\\-sim\n.I COMMAND\n.RI [ OPTIONS ]\n.RI [ VALUES ]\n"
                       ".SH DESCRIPTION\nA simulated unit is a whole display computer: its devices, supervisor, "
                       "sensors, EEPROMs and serial port. Programs run on it unchanged and without root.\n"
                       ".SH COMMANDS\n";
    for (const Verb& verb : kVerbs)
        text += ".SS " + literal(verb.name) + '\n' + literal(verb.help) + '\n' +
                optionsOf(*app.get_subcommand(verb.name)) + ".PP\nExample:\n.B " + literal(verb.example) + '\n';
    text += ".SH EXIT STATUS\n";
    for (const StatusMeaning& each : kStatusMeanings)
        text += item(std::to_string(each.status), each.meaning);
    return text + ".SH SEE ALSO\n.BR hxaux (1)\n";
}

} // namespace hxsim
