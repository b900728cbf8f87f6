// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/IniSettings.h"

#include "platform/CreationMask.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace Halvix {

namespace {

struct Close {
    void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
/// A stream for its descriptor alone, which is read and written without a buffer: nothing is allocated while the file
/// is empty, and no text is left over from a failed write.
using Stream = std::unique_ptr<std::FILE, Close>;

/// False when not everything could be read.
bool readAll(int file, std::string& text)
{
    char block[4096];
    ssize_t count = 0;
    while ((count = TEMP_FAILURE_RETRY(::read(file, block, sizeof block))) > 0)
        text.append(block, static_cast<std::size_t>(count));
    return count == 0;
}

bool writeAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = TEMP_FAILURE_RETRY(::write(file, text.data(), text.size()));
        if (count < 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

enum class Filled { NotOpened, Partly, Completely };

Filled replaceFile(const std::string& fileName, const std::string& text)
{
    Stream file{std::fopen(fileName.c_str(), "w")};
    if (file == nullptr)
        return Filled::NotOpened;
    const bool written = writeAll(::fileno(file.get()), text);
    const bool closed = std::fclose(file.release()) == 0;
    return written && closed ? Filled::Completely : Filled::Partly;
}

} // namespace

IniSettings::~IniSettings() = default;

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

/// False when the file exists but could not be read to its end; the lines before that are in the map.
bool IniSettings::readFile()
{
    const Stream file{std::fopen(fileName_.c_str(), "r")};
    if (file == nullptr) {
        if (errno == ENOMEM)
            throw std::bad_alloc{};
        return errno == ENOENT;
    }
    stored_.clear();
    const bool complete = readAll(::fileno(file.get()), stored_);
    if (!complete) // a folder, or an I/O error
        stored_.erase(stored_.rfind('\n') + 1);
    for (std::size_t start = 0; start <= stored_.size();) {
        const std::size_t end = std::min(stored_.find('\n', start), stored_.size());
        parse(stored_.substr(start, end - start));
        start = end + 1;
    }
    return complete;
}

std::string& IniSettings::entry(const std::string& key)
{
    return entries_[key];
}

std::string IniSettings::get(std::string key)
{
    return entry(key);
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
        entry(key) = value;
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
    const Filled filled = replaceFile(fileName_, text);
    if (filled == Filled::Completely)
        stored_ = std::move(text);
    else if (filled == Filled::Partly)
        (void)replaceFile(fileName_, stored_);
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
    entry(key) = value; // a line without "=" is kept as the empty key; it is written back as "="
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

} // namespace Halvix
