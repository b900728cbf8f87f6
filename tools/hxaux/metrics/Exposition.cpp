// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/metrics/Exposition.h"

#include "tools/cli/Printable.h"

#include <array>
#include <charconv>

namespace hxaux::metrics {

namespace {

// What the text of an EEPROM contains cannot end a label or a line: control characters and invalid UTF-8 become visible
// escapes, then the format's own characters are escaped.
std::string labelValue(std::string_view text)
{
    std::string escaped;
    for (const char character : cli::printable(text)) {
        if (character == '\\' || character == '"')
            escaped += '\\';
        escaped += character;
    }
    return escaped;
}

std::string numberText(double value)
{
    std::array<char, 40> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), result.ptr};
}

std::string labelsText(const Labels& labels)
{
    std::string text;
    for (const auto& [name, value] : labels)
        text += (text.empty() ? "" : ",") + name + "=\"" + labelValue(value) + '"';
    return text.empty() ? "" : '{' + text + '}';
}

std::string_view suffixOf(Kind kind)
{
    return kind == Kind::Counter ? "_total" : kind == Kind::Info ? "_info" : "";
}

std::string_view typeOf(Kind kind, Format format)
{
    if (kind == Kind::Counter)
        return "counter";
    if (format == Format::Prometheus || kind == Kind::Gauge)
        return "gauge";
    return kind == Kind::Info ? "info" : "stateset";
}

std::string textOf(const Family& family, Format format)
{
    const std::string sample = family.name + std::string(suffixOf(family.kind));
    const std::string& described = format == Format::Prometheus ? sample : family.name;
    std::string text = "# HELP " + described + ' ' + family.help + '\n';
    text += "# TYPE " + described + ' ' + std::string(typeOf(family.kind, format)) + '\n';
    if (format == Format::OpenMetrics && !family.unit.empty())
        text += "# UNIT " + described + ' ' + family.unit + '\n';
    for (const Sample& each : family.samples)
        text += sample + labelsText(each.labels) + ' ' + numberText(each.value) + '\n';
    return text;
}

} // namespace

std::string textOf(const Families& families, Format format)
{
    std::string text;
    for (const Family& family : families)
        if (!family.samples.empty())
            text += textOf(family, format);
    return text + (format == Format::OpenMetrics ? "# EOF\n" : "");
}

std::string_view contentType(Format format)
{
    return format == Format::OpenMetrics ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                         : "text/plain; version=0.0.4; charset=utf-8";
}

} // namespace hxaux::metrics
