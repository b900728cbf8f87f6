// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/IniSettings.h"

#include "platform/CreationMask.h"

#include <cerrno>
#include <locale>
#include <new>
#include <sstream>

namespace Halvix {

namespace {

/// The application's global locale must not change the file, and out of memory must not look like a text that is not a
/// number, or like the end of the file.
template <class Stream>
void makeStrict(Stream& stream)
{
    stream.imbue(std::locale::classic());
    stream.exceptions(std::ios::badbit);
}

template <class Number>
eErr format(Number value, std::string* text)
{
    std::ostringstream stream;
    makeStrict(stream);
    if (!(stream << value))
        return ERR_DATATYPE_MISMATCH;
    *text = stream.str();
    return ERR_SUCCESS;
}

template <class Number>
eErr scan(Number* value, const std::string& text)
{
    std::istringstream stream{text};
    makeStrict(stream);
    Number read{};
    if (!(stream >> read))
        return ERR_DATATYPE_MISMATCH;
    *value = read;
    return ERR_SUCCESS;
}

} // namespace

// Without the lock the settings are used unlocked, and nothing is released.
IniSettings::IniSettings() HX_UNCHECKED_LOCKING : lock_{"FILE_HXAUXINI_IS_IN_USE"}, locked_{lock_.wait()}
{
    makeStrict(input_);
    output_.imbue(std::locale::classic());
    output_.rdbuf()->pubsetbuf(outputBuffer_, sizeof outputBuffer_); // otherwise allocated while the file is empty
}

IniSettings::~IniSettings() HX_UNCHECKED_LOCKING
{
    if (locked_)
        lock_.post();
}

void IniSettings::load(std::string fileName)
{
    fileName_ = std::move(fileName);
    mayWrite_ = !LinuxWrapper::isSpecialFile(fileName_.c_str()) && readFile();
}

void IniSettings::reload()
{
    entries_.clear();
    load(fileName_);
}

/// False when the file exists but could not be read to its end.
bool IniSettings::readFile()
try {
    input_.open(fileName_);
    if (!input_.is_open()) {
        if (errno == ENOMEM)
            throw std::bad_alloc{};
        return errno == ENOENT;
    }
    stored_.clear();
    std::string line;
    do {
        std::getline(input_, line);
        parse(line);
        stored_.append(line).append(input_.eof() ? "" : "\n");
    } while (input_.good());
    input_.close();
    return true;
} catch (const std::ios::failure&) { // a directory, or an I/O error
    input_.close();
    return false;
}

std::string IniSettings::get(std::string key)
{
    return entries_[key];
}

void IniSettings::set(std::string key, std::string value)
{
    set({{std::move(key), std::move(value)}});
}

void IniSettings::set(std::vector<Setting> settings)
{
    std::vector<std::string> texts;
    for (auto& [key, value] : settings) {
        trim(key);
        trim(value);
        texts.push_back(image(key, value));
        entries_[key] = value;
    }
    if (!mayWrite_)
        return;
    for (std::string& text : texts)
        writeFile(std::move(text));
}

/// A file that cannot be opened stays unchanged. If there is no space for the new text, the old one is restored.
void IniSettings::writeFile(std::string text)
{
    const CreationMask forEverybody{0};
    output_.open(fileName_, std::ios::out | std::ios::trunc);
    if (!output_.is_open())
        return;
    if (fillFile(text)) {
        stored_ = std::move(text);
        return;
    }
    output_.open(fileName_, std::ios::out | std::ios::trunc);
    (void)fillFile(stored_);
}

bool IniSettings::fillFile(const std::string& text)
{
    output_ << text;
    output_.flush();
    output_.close();
    return output_.good();
}

/// The file with the new value. Readers of the file rely on the form: a new key is inserted in sorted order with blanks
/// around its "=", until the next write removes them.
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
    // Only these whole lines: "[ABL]" is not a heading but a line without "=".
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
