// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Arguments.h"

#include <cstdio>

namespace cli {

std::optional<double> numberOf(const Argument& argument, const std::string& text)
{
    if (argument.names != nullptr) {
        if (const auto named = argument.names->valueOf(text))
            return static_cast<double>(*named);
    }
    if (argument.kind == Kind::Real)
        return toReal(text);
    const auto whole = toInteger(text);
    return whole ? std::optional(static_cast<double>(*whole)) : std::nullopt;
}

bool Arguments::has(std::string_view name) const
{
    const auto found = values_.find(name);
    return found != values_.end() && !found->second.empty();
}

const Words& Arguments::texts(std::string_view name) const
{
    static const Words none;
    if (const auto found = values_.find(name); found != values_.end())
        return found->second;
    if (!rows_.contains(name))
        throw std::logic_error("the verb's row has no value '" + std::string(name) + "'");
    return none;
}

const std::string& Arguments::text(std::string_view name) const
{
    return texts(name).at(0);
}

long long Arguments::integer(std::string_view name) const
{
    return static_cast<long long>(real(name));
}

double Arguments::real(std::string_view name) const
{
    return numberOf(rows_.find(name)->second, text(name)).value();
}

Words Call::words() const
{
    Words words{spoken(arguments_.object(), arguments_.verb())};
    for (const Argument& value : arguments_.verb().values)
        words.insert(words.end(), texts(value.name).begin(), texts(value.name).end());
    return words;
}

void Call::document(const std::string&, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

} // namespace cli
