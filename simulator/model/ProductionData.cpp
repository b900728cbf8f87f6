// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/ProductionData.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <sstream>

namespace hxsim {

namespace {

// Both layouts of the data are served: HWVERSION and SERIAL belong to the first, PCB_REV and RS232 to the second.
constexpr std::string_view kMainText = "DATA:2\r\n"
                                       "PCB_SERIAL:M-2031-00417\r\n"
                                       "PCB_ART:500-1107\r\n"
                                       "PCB_REV:C2\r\n"
                                       "UNIT_SERIAL:U-77-004711\r\n"
                                       "DATE:2014-03-18\r\n"
                                       "HWVERSION:3\r\n"
                                       "PROD_REV:B\r\n"
                                       "PROD_ART:700-2240\r\n"
                                       "ETH:2\r\n"
                                       "MAC1:02-00-5E-10-00-01\r\n"
                                       "MAC2:02-00-5E-10-00-02\r\n"
                                       "CAN:4\r\n"
                                       "VIDEO:2\r\n"
                                       "USBHOST:3\r\n"
                                       "RS232:1\r\n"
                                       "SERIAL:1\r\n"
                                       "CF:1\r\n";

constexpr std::string_view kAddOnText = "DATA:2\r\n"
                                        "PCB_SERIAL:A-1104-00093\r\n"
                                        "PCB_ART:500-1210\r\n"
                                        "PCB_REV:2\r\n"
                                        "DATE:2014-02-27\r\n"
                                        "WLAN:1\r\n"
                                        "GPS:1\r\n"
                                        "GSM:1\r\n"
                                        "BLUETOOTH:1\r\n";

std::vector<std::uint8_t> blank()
{
    return std::vector<std::uint8_t>(Eeprom::kSize, 0xFF);
}

/// Offset and length of a key's value, or npos.
struct Found {
    std::size_t line;
    std::size_t value;
    std::size_t end;
};

Found find(std::string_view text, std::string_view key)
{
    for (std::size_t line = 0; line < text.size();) {
        const std::size_t end = std::min(text.find("\r\n", line), text.size());
        const std::string_view content = text.substr(line, end - line);
        if (content.starts_with(key) && content.substr(key.size()).starts_with(':'))
            return {line, line + key.size() + 1, end};
        line = std::min(end + 2, text.size());
    }
    return {std::string::npos, 0, 0};
}

/// "A:1\r\n" in escaped form: \r, \n, \\ and \xNN.
std::string unescaped(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        std::size_t used = 1;
        char c = text[0];
        if (c == '\\' && text.size() > 1) {
            used = 2;
            const char escape = text[1];
            if (escape == 'x' && text.size() > 3) {
                c = static_cast<char>(parseNumber("0x" + std::string{text.substr(2, 2)}, 0, 255));
                used = 4;
            } else if (escape == 'r' || escape == 'n' || escape == '\\') {
                c = escape == 'r' ? '\r' : escape == 'n' ? '\n' : '\\';
            } else {
                throw BadText{"'" + std::string{text.substr(0, 2)} + "' is not one of \\r, \\n, \\\\ and \\xNN"};
            }
        }
        plain += c;
        text.remove_prefix(used);
    }
    return plain;
}

std::string escapedText(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        const std::uint8_t byte[] = {static_cast<std::uint8_t>(c)};
        if (c == '\r' || c == '\n' || c == '\\')
            shown += c == '\r' ? "\\r" : c == '\n' ? "\\n" : "\\\\";
        else if (byte[0] < 0x20 || byte[0] > 0x7E || c == '#')
            shown += "\\x" + hexBytes(byte);
        else
            shown += c;
    }
    return shown;
}

/// The keys of a text, in order.
std::vector<std::string> keysOf(std::string_view text)
{
    std::vector<std::string> keys;
    std::istringstream lines{std::string{text}};
    for (std::string line; std::getline(lines, line);)
        keys.push_back(line.substr(0, line.find(':')));
    return keys;
}

} // namespace

ProductionData::ProductionData(Unit& unit)
    : main{unit.addMemory("eeprom-main", blank())}, addOn{unit.addMemory("eeprom-addon", blank())}
{
    main.setText(kMainText);
    addOn.setText(kAddOnText);
    unit.i2c().attach(0xAE, main);
    unit.i2c().attach(0xA4, addOn);
    describe(unit, "eeprom.main", main);
    describe(unit, "eeprom.addon", addOn);
    addActions(unit);
}

void ProductionData::describe(Unit& unit, const std::string& name, Eeprom& part)
{
    unit.properties().add(
        name + ".text", [&part] { return escapedText(part.text()); },
        [&part](const std::string& text) { part.setText(unescaped(text)); },
        "the whole production text, with \\r\\n after each line");
    const std::string prefix = name + '.';
    for (const std::string& key : keysOf(part.text()))
        unit.properties().add(
            prefix + key, [&part, key] { return value(part, key); },
            [&part, key](const std::string& text) { setValue(part, key, text); }, "production data");
}

void ProductionData::addActions(Unit& unit)
{
    unit.actions().add(
        "production", "main|addon KEY [VALUE]",
        [this](const Actions::Words& words) {
            if (words.size() != 2 && words.size() != 3)
                throw BadText{"production main|addon KEY [VALUE]"};
            setValue(named(words[0]), words[1], words.size() == 3 ? words[2] : "");
        },
        "changes or adds a line of the production text");
    unit.actions().add(
        "forget", "main|addon KEY",
        [this](const Actions::Words& words) {
            if (words.size() != 2)
                throw BadText{"forget main|addon KEY"};
            forget(named(words[0]), words[1]);
        },
        "removes a line of the production text");
    unit.actions().add(
        "erase", "main|addon [BYTE]",
        [this](const Actions::Words& words) {
            if (words.empty() || words.size() > 2)
                throw BadText{"erase main|addon [BYTE]"};
            named(words[0]).fill(static_cast<std::uint8_t>(words.size() == 2 ? parseNumber(words[1], 0, 255) : 0xFF));
        },
        "fills an EEPROM with one value, 0xFF unless another is given");
}

Eeprom& ProductionData::named(const std::string& word)
{
    if (word != "main" && word != "addon")
        throw BadText{"'" + word + "' is neither main nor addon"};
    return word == "main" ? main : addOn;
}

std::string ProductionData::value(const Eeprom& part, std::string_view key)
{
    const std::string text = part.text();
    const Found found = find(text, key);
    return found.line == std::string::npos ? "" : text.substr(found.value, found.end - found.value);
}

void ProductionData::setValue(Eeprom& part, const std::string& key, const std::string& value)
{
    std::string text = part.text();
    if (const Found found = find(text, key); found.line != std::string::npos) {
        text.replace(found.value, found.end - found.value, value);
    } else {
        if (!text.empty() && !text.ends_with("\r\n"))
            text += "\r\n"; // the last line had no end
        text.append(key).append(":").append(value).append("\r\n");
    }
    part.setText(text);
}

void ProductionData::forget(Eeprom& part, const std::string& key)
{
    std::string text = part.text();
    const Found found = find(text, key);
    if (found.line == std::string::npos)
        throw BadText{"there is no line " + key};
    text.erase(found.line, found.end + 2 - found.line);
    part.setText(text);
}

HXSIM_HARDWARE(ProductionData)

} // namespace hxsim
