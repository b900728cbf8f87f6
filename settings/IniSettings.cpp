// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/IniSettings.h"

#include <locale>
#include <sstream>

namespace Halvix {

namespace {

/// The process's file-creation mask for a scope.
class CreationMask {
public:
    explicit CreationMask(unsigned int mask) : previous_{LinuxWrapper::umask(mask)} {}
    ~CreationMask() { (void)LinuxWrapper::umask(previous_); }
    CreationMask(const CreationMask&) = delete;
    CreationMask& operator=(const CreationMask&) = delete;

private:
    unsigned int previous_;
};

// An application's global locale must not change the file, hence the classic one everywhere.

template <class Number>
eErr format(Number value, std::string* text)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    if (!(stream << value))
        return ERR_DATATYPE_MISMATCH;
    *text = stream.str();
    return ERR_SUCCESS;
}

template <class Number>
eErr scan(Number* value, const std::string& text)
{
    std::istringstream stream{text};
    stream.imbue(std::locale::classic());
    Number read{};
    if (!(stream >> read))
        return ERR_DATATYPE_MISMATCH;
    *value = read;
    return ERR_SUCCESS;
}

} // namespace

// A lock that cannot be had does not stop the settings: they are then used unlocked, and nothing is given back.
IniSettings::IniSettings() HX_UNCHECKED_LOCKING : lock_{"FILE_HXAUXINI_IS_IN_USE"}, locked_{lock_.wait()}
{
    input_.imbue(std::locale::classic());
    output_.imbue(std::locale::classic());
}

IniSettings::~IniSettings() HX_UNCHECKED_LOCKING
{
    if (locked_)
        lock_.post();
}

void IniSettings::load(std::string fileName)
{
    fileName_ = std::move(fileName);
    input_.open(fileName_);
    if (!input_.is_open())
        return;
    std::string line;
    do {
        std::getline(input_, line);
        if (input_.bad()) // a folder, or a broken disk: it never reports its end
            break;
        parse(line);
    } while (input_.good());
    input_.close();
}

std::string IniSettings::get(std::string key)
{
    return entries_[key];
}

void IniSettings::set(std::string key, std::string value)
{
    trim(key);
    trim(value);
    // All memory is taken before the file is touched.
    const std::string text = image(key, value);
    entries_[key] = value;

    const CreationMask forEverybody{0};
    output_.open(fileName_, std::ios::out | std::ios::trunc);
    output_ << text;
    output_.flush();
    output_.close();
}

/// The file with the new value. Readers of the file rely on the form: a key that is new stands in its sorted place with
/// blanks around its "=", until the next write removes them.
std::string IniSettings::image(const std::string& key, const std::string& value) const
{
    std::string text;
    const auto place = entries_.lower_bound(key);
    const bool known = place != entries_.end() && place->first == key;
    const auto line = [&](const std::string& name, const char* sign, const std::string& content) {
        text.append(name).append(sign).append(content).append("\n");
    };

    for (auto entry = entries_.begin(); entry != place; ++entry)
        line(entry->first, "=", entry->second);
    line(key, known ? "=" : " = ", value);
    for (auto entry = known ? std::next(place) : place; entry != entries_.end(); ++entry)
        line(entry->first, "=", entry->second);
    return text;
}

void IniSettings::parse(std::string line)
{
    // Only these whole lines: "[ABL]" is no heading but a line without "=".
    if (line.empty() || line.front() == ';' || line == "[" || line == "/")
        return;
    std::string key;
    std::string value;
    if (const std::size_t sign = line.find('='); sign != std::string::npos) {
        key = line.substr(0, sign);
        value = line.substr(sign + 1);
        trim(key);
        trim(value);
    }
    entries_[key] = value; // a line without "=" is kept as the empty key; it is written back as "="
}

void IniSettings::trim(std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        text.clear();
        return;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    text.erase(0, first);
}

eErr IniSettings::ConvertLongToStr(unsigned long value, std::string* text)
{
    return format(value, text);
}

eErr IniSettings::ConvertStrToLong(unsigned long* value, std::string text)
{
    return scan(value, text);
}

eErr IniSettings::ConvertDoubleToStr(double value, std::string* text)
{
    return format(value, text);
}

eErr IniSettings::ConvertStrToDouble(double* value, std::string text)
{
    return scan(value, text);
}

} // namespace Halvix
