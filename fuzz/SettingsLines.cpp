// SPDX-License-Identifier: LicenseRef-HXAux
// Lines of a settings file against a plain reading of them, and the conversions of any text.
#include "fuzz/Require.h"
#include "settings/IniSettings.h"

#include <cmath>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>

using namespace Halvix;

namespace {

std::string withoutBlanks(std::string text)
{
    while (!text.empty() && text.front() == ' ')
        text.erase(text.begin());
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

/// A second implementation of parsing a line: nothing, or a key with its value.
void read(std::map<std::string, std::string>& entries, const std::string& line)
{
    if (line.empty() || line[0] == ';' || line == "[" || line == "/")
        return;
    std::string key;
    std::string value;
    bool behindSign = false;
    for (const char c : line) {
        if (behindSign)
            value += c;
        else if (c == '=')
            behindSign = true;
        else
            key += c;
    }
    if (!behindSign)
        key.clear(); // a line without "=" belongs to the empty key, which has no value
    entries[withoutBlanks(key)] = withoutBlanks(value);
}

void checkConversions(const std::string& text)
{
    unsigned long number = 77;
    double real = 77.0;
    std::string written;
    if (IniSettings::ConvertStrToLong(&number, text) == ERR_SUCCESS) {
        unsigned long again = 0;
        REQUIRE(IniSettings::ConvertLongToStr(number, &written) == ERR_SUCCESS);
        REQUIRE(IniSettings::ConvertStrToLong(&again, written) == ERR_SUCCESS && again == number);
    } else {
        REQUIRE(number == 77);
    }
    if (IniSettings::ConvertStrToDouble(&real, text) == ERR_SUCCESS) {
        REQUIRE(std::isfinite(real));
        REQUIRE(IniSettings::ConvertDoubleToStr(real, &written) == ERR_SUCCESS);
    } else {
        REQUIRE(real == 77.0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    IniSettings settings;
    std::map<std::string, std::string> expected;
    std::istringstream lines{std::string{reinterpret_cast<const char*>(data), size}};
    for (std::string line; std::getline(lines, line);) {
        settings.parse(line);
        read(expected, line);
    }
    for (const auto& [key, value] : expected)
        REQUIRE(settings.get(key) == value);
    checkConversions(expected.empty() ? "" : expected.begin()->second);
    return 0;
}
