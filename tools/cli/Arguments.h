// SPDX-License-Identifier: LicenseRef-HXAux
// A command line, parsed according to the table of a program.
#pragma once

#include "tools/cli/Command.h"

#include <map>
#include <stdexcept>
#include <string>

namespace cli {

/// A usage error, worded for the user.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    std::string object = ""; ///< of the call, as far as it was understood
    std::string verb = "";
};

class Arguments {
public:
    /// Throws UsageError. Afterwards every value is of its type and within its range.
    Arguments(const Program& program, const Words& words);

    [[nodiscard]] const Object& object() const { return *object_; }
    [[nodiscard]] const Verb& verb() const { return *verb_; }

    [[nodiscard]] bool has(std::string_view name) const;
    [[nodiscard]] const std::string& text(std::string_view name) const;
    [[nodiscard]] const Words& texts(std::string_view name) const;
    [[nodiscard]] long long integer(std::string_view name) const; ///< of a choice: the value behind the name
    [[nodiscard]] double real(std::string_view name) const;

private:
    friend class Parser;

    const Object* object_ = nullptr;
    const Verb* verb_ = nullptr;
    std::map<std::string, Words, std::less<>> values_;
    std::map<std::string, Argument, std::less<>> rows_;
};

/// The number that a text is for this argument, by name or in digits.
std::optional<double> numberOf(const Argument& argument, const std::string& text);

/// One run of a verb. Programs derive their own kind from it.
class Call {
public:
    Call(const Program& program, const Arguments& arguments) : program_(program), arguments_(arguments) {}
    virtual ~Call() = default;
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    [[nodiscard]] const Program& program() const { return program_; }
    /// The values; their ranges and names are already checked.
    [[nodiscard]] bool has(std::string_view name) const { return arguments_.has(name); }
    [[nodiscard]] const std::string& text(std::string_view name) const { return arguments_.text(name); }
    [[nodiscard]] const Words& texts(std::string_view name) const { return arguments_.texts(name); }
    [[nodiscard]] long long integer(std::string_view name) const { return arguments_.integer(name); }
    [[nodiscard]] double real(std::string_view name) const { return arguments_.real(name); }
    /// integer() or choice() as the type that an operation takes: call.as<unsigned char>("level").
    template <typename Type>
    [[nodiscard]] Type as(std::string_view name) const
    {
        return static_cast<Type>(arguments_.integer(name));
    }

    /// The verb as it is called, and all of its positional values.
    [[nodiscard]] Words words() const;

    virtual void document(const std::string& name, const std::string& text); ///< many lines, printed as they are

private:
    const Program& program_;
    const Arguments& arguments_;
};

} // namespace cli
