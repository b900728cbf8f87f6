// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/PlainText.h"

#include <algorithm>

namespace cli {

namespace {

constexpr std::size_t kLongest = 254; // the library reads no more

bool has(const std::string& text, const char* characters)
{
    return text.find_first_of(characters) != std::string::npos;
}

bool hasControl(const std::string& text)
{
    return std::ranges::any_of(text, [](char one) { return (one >= 0 && one < ' ') || one == 0x7F; });
}

std::string refusedAnywhere(const std::string& text)
{
    if (has(text, "\r\n"))
        return "it contains a line end";
    if (hasControl(text))
        return "it contains a control character";
    if (text.size() > kLongest)
        return "it is longer than 254 characters";
    return {};
}

bool isPlain(const std::string& text)
{
    return std::ranges::all_of(text, [](char one) { return one > ' ' && one < 0x7F; });
}

std::string refusedInProduction(const std::string& text)
{
    if (text.empty())
        return "it is empty";
    if (has(text, " "))
        return "it contains a blank";
    if (std::string reason = refusedAnywhere(text); !reason.empty())
        return reason;
    return isPlain(text) ? "" : "it contains a character outside ASCII";
}

bool hasOuterBlanks(const std::string& text)
{
    return !text.empty() && (text.front() == ' ' || text.back() == ' ');
}

} // namespace

std::string refusedProperty(const std::string& value)
{
    return refusedInProduction(value);
}

std::string refusedPropertyKey(const std::string& key)
{
    return has(key, ":") ? "it contains a colon" : refusedInProduction(key);
}

std::string refusedSetting(const std::string& value)
{
    if (hasOuterBlanks(value))
        return "it begins or ends with a blank";
    return refusedAnywhere(value);
}

std::string refusedSettingKey(const std::string& key)
{
    if (key.empty())
        return "it is empty";
    if (has(key, "="))
        return "it contains an equals sign";
    if (key.front() == ';')
        return "it begins with a semicolon, which makes the line a comment";
    if (hasOuterBlanks(key))
        return "it begins or ends with a blank";
    return refusedAnywhere(key);
}

} // namespace cli
