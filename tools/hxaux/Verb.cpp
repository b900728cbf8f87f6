// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Verb.h"

namespace hxaux {

Argument Argument::optional() const
{
    Argument copy = *this;
    copy.presence = Presence::Optional;
    return copy;
}

Argument Argument::repeated() const
{
    Argument copy = *this;
    copy.presence = Presence::Repeated;
    return copy;
}

Argument Argument::from(std::vector<std::string> (*current)()) const
{
    Argument copy = *this;
    copy.live = current;
    return copy;
}

Argument flag(std::string_view name, std::string_view help)
{
    return {.name = name, .kind = Kind::Flag, .help = help, .presence = Presence::Optional};
}

Argument integer(std::string_view name, double least, double most, std::string_view unit, std::string_view help)
{
    return {.name = name, .kind = Kind::Integer, .help = help, .unit = unit, .least = least, .most = most};
}

Argument real(std::string_view name, double least, double most, std::string_view unit, std::string_view help)
{
    return {.name = name, .kind = Kind::Real, .help = help, .unit = unit, .least = least, .most = most};
}

Argument choice(std::string_view name, const Names& names, std::string_view help)
{
    return {.name = name, .kind = Kind::Choice, .help = help, .names = &names};
}

Argument text(std::string_view name, std::string_view help)
{
    return {.name = name, .kind = Kind::Text, .help = help};
}

Argument file(std::string_view name, std::string_view help)
{
    return {.name = name, .kind = Kind::File, .help = help};
}

} // namespace hxaux
