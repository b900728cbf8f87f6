// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Text.h"

#include "simulator/model/Suggestion.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fcntl.h>
#include <sstream>

namespace hxsim {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

struct ErrnoName {
    int number;
    const char* name;
};

constexpr ErrnoName kErrnoNames[] = {
    {EACCES, "EACCES"},       {EAGAIN, "EAGAIN"}, {EBADF, "EBADF"},
    {EBUSY, "EBUSY"},         {EEXIST, "EEXIST"}, {EFAULT, "EFAULT"},
    {EINTR, "EINTR"},         {EINVAL, "EINVAL"}, {EIO, "EIO"},
    {EISDIR, "EISDIR"},       {EMFILE, "EMFILE"}, {ENAMETOOLONG, "ENAMETOOLONG"},
    {ENFILE, "ENFILE"},       {ENODEV, "ENODEV"}, {ENOENT, "ENOENT"},
    {ENOMEM, "ENOMEM"},       {ENOSPC, "ENOSPC"}, {ENOSYS, "ENOSYS"},
    {ENOTTY, "ENOTTY"},       {ENXIO, "ENXIO"},   {EPERM, "EPERM"},
    {EPIPE, "EPIPE"},         {ERANGE, "ERANGE"}, {EROFS, "EROFS"},
    {ETIMEDOUT, "ETIMEDOUT"},
};

struct FlagName {
    int flag;
    const char* name;
};

constexpr FlagName kFlagNames[] = {
    {O_CREAT, "creat"},   {O_EXCL, "excl"},         {O_TRUNC, "trunc"},
    {O_APPEND, "append"}, {O_NONBLOCK, "nonblock"}, {O_NOCTTY, "noctty"},
};

/// What separates words too: text that trimming leaves has a word.
bool isSpace(char c)
{
    return std::string_view{" \t\r\n\v\f"}.find(c) != std::string_view::npos;
}

} // namespace

std::string trimmed(std::string_view text)
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return std::string{text};
}

std::vector<std::string> words(std::string_view text)
{
    std::istringstream stream{std::string{text}};
    std::vector<std::string> result;
    for (std::string word; stream >> word;)
        result.push_back(word);
    return result;
}

std::string requestName(std::uint32_t request)
{
    std::string name = "0x";
    for (int shift = 28; shift >= 0; shift -= 4)
        name += kDigits[(request >> shift) & 0xF];
    return name;
}

std::string hexBytes(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (!text.empty())
            text += ' ';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

std::string quoted(std::span<const std::uint8_t> bytes)
{
    std::string text = "\"";
    for (const std::uint8_t byte : bytes) {
        if (byte == '\n')
            text += "\\n";
        else if (byte == '"' || byte == '\\')
            (text += '\\') += static_cast<char>(byte);
        else if (byte >= 0x20 && byte < 0x7F)
            text += static_cast<char>(byte);
        else
            ((text += "\\x") += kDigits[byte >> 4]) += kDigits[byte & 0xF];
    }
    return text + '"';
}

std::string inQuotes(std::string_view text)
{
    return quoted({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::int64_t parseNumber(std::string_view text, std::int64_t low, std::int64_t high)
{
    const bool negative = text.starts_with('-');
    std::string_view digits = negative ? text.substr(1) : text;
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (hexadecimal)
        digits.remove_prefix(2);
    std::int64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 10);
    if (error != std::errc{} || stop != end || digits.starts_with('-'))
        throw BadText{"'" + std::string{text} + "' is not a number"};
    value = negative ? -value : value;
    if (value < low || value > high)
        throw BadText{std::string{text} + " is outside " + std::to_string(low) + " to " + std::to_string(high)};
    return value;
}

double parseReal(std::string_view text)
{
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || stop != text.data() + text.size() || !std::isfinite(value))
        throw BadText{"'" + std::string{text} + "' is not a number"};
    return value;
}

std::string decimal(double value)
{
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return {text.data(), end.ptr};
}

std::string onOrOff(bool value)
{
    return value ? "on" : "off";
}

bool parseFlag(std::string_view text)
{
    for (const std::string_view yes : {"on", "yes", "true", "1"})
        if (text == yes)
            return true;
    for (const std::string_view no : {"off", "no", "false", "0"})
        if (text == no)
            return false;
    throw BadText{"'" + std::string{text} + "' is neither on nor off"};
}

std::string errnoName(int number)
{
    for (const ErrnoName& row : kErrnoNames)
        if (row.number == number)
            return row.name;
    return "E" + std::to_string(number);
}

int parseErrno(std::string_view text)
{
    for (const ErrnoName& row : kErrnoNames)
        if (text == row.name)
            return row.number;
    std::vector<std::string> names;
    for (const ErrnoName& row : kErrnoNames)
        names.emplace_back(row.name);
    const std::string_view digits = text.starts_with('E') ? text.substr(1) : text;
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos)
        throw BadText{"there is no errno '" + std::string{text} + "'" + suggestion(std::string{text}, names)};
    return static_cast<int>(parseNumber(digits, 1, 4095));
}

std::string openAction(int flags)
{
    const int access = flags & O_ACCMODE;
    std::string text = access == O_RDONLY ? "open rdonly" : access == O_WRONLY ? "open wronly" : "open rdwr";
    for (const FlagName& row : kFlagNames)
        if ((flags & row.flag) != 0)
            (text += ' ') += row.name;
    return text;
}

} // namespace hxsim
