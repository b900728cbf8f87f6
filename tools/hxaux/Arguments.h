// SPDX-License-Identifier: LicenseRef-HXAux
// The arguments of a verb, parsed according to its row.
#pragma once

#include "tools/hxaux/Verb.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace hxaux {

/// A usage error, worded for the user.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Arguments {
public:
    /// Throws UsageError. Afterwards every value is of its type and within its range.
    Arguments(const Object& object, const Verb& verb, const std::vector<std::string>& words);

    [[nodiscard]] bool wantsHelp() const { return help_; }
    [[nodiscard]] bool wantsJson() const { return json_; }

    [[nodiscard]] bool has(std::string_view name) const;
    [[nodiscard]] const std::string& text(std::string_view name) const;
    [[nodiscard]] const std::vector<std::string>& texts(std::string_view name) const;
    [[nodiscard]] long long integer(std::string_view name) const; ///< of a choice: the value behind the name
    [[nodiscard]] double real(std::string_view name) const;

private:
    void split(const Verb& verb, std::vector<std::string> words);
    void distribute(const Verb& verb, const std::vector<std::string>& words);
    void check(const Argument& argument) const;

    std::string how_; ///< the verb's usage line
    bool help_ = false;
    bool json_ = false;
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
    std::map<std::string, Argument, std::less<>> rows_;
};

/// The options that every verb has, or every verb of its kind.
std::vector<Argument> commonOptions(const Verb& verb);
/// A verb's own options and the common ones.
std::vector<Argument> optionsOf(const Verb& verb);
/// "hxaux backlight set LEVEL": the call with its values.
std::string usageLine(const Object& object, const Verb& verb);
/// "LEVEL", "[NUMBER]", "FILE...".
std::string metavariable(const Argument& argument);
/// "0 to 255", "off, on", or nothing.
std::string allowedValues(const Argument& argument);

} // namespace hxaux
