// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/Semaphore.h"

#include <map>
#include <string>
#include <vector>

namespace Halvix {

/// Exclusive access to the settings file: the constructor waits until no other object of this class exists in any
/// process.
///
/// Create one, `load`, read and write, and destroy it at once. A second one in the same thread deadlocks. Operations
/// may run out of memory (`std::bad_alloc`); the file is then unchanged and the destructor releases the lock.
class IniSettings {
public:
    struct Setting {
        std::string key;
        std::string value;
    };

    IniSettings() = default;
    ~IniSettings();
    IniSettings(const IniSettings&) = delete;
    IniSettings& operator=(const IniSettings&) = delete;

    /// Reads the file into the map, in addition to the entries already there, and stores its name for `set`.
    ///
    /// A file that cannot be opened changes nothing. If it exists nevertheless, or fails while it is read, or is a
    /// FIFO, a socket or a device, later calls of `set` do not write it: writing the few settings known here would lose
    /// the others.
    void load(std::string fileName);
    /// Clears the map and reads the file again.
    void reload();
    /// A missing key yields an empty text and is added to the map, so a later `set` writes it as well.
    std::string get(std::string key);
    /// Rewrites the whole file with the new value: sorted, without comments. A failure to write it is not reported.
    void set(std::string key, std::string value);
    /// Sets one value after the other, each by a rewrite of the file. Out of memory is possible only before the first.
    void set(std::vector<Setting> settings);

    /// Adds one line of the file to the map.
    void parse(std::string line);
    /// Removes blanks (0x20 only) at both ends.
    static void trim(std::string& text);

    // The file's numbers, in the form of C++ streams of the classic locale. 0, or 4 with the output untouched.
    [[nodiscard]] static eErr ConvertLongToStr(unsigned long value, std::string* text);
    [[nodiscard]] static eErr ConvertStrToLong(unsigned long* value, std::string text);
    [[nodiscard]] static eErr ConvertDoubleToStr(double value, std::string* text);
    [[nodiscard]] static eErr ConvertStrToDouble(double* value, std::string text);

private:
    std::string& entry(const std::string& key);
    [[nodiscard]] bool readFile();
    void writeFile(std::string text);
    [[nodiscard]] std::string image(const std::string& key, const std::string& value) const;

    Semaphore semaphore_{"FILE_HXAUXINI_IS_IN_USE"};
    Lock lock_{semaphore_}; ///< without it the settings are used unlocked, and nothing is released
    std::map<std::string, std::string> entries_;
    std::string fileName_;
    std::string stored_; ///< the file's text as it was last read or written
    bool mayWrite_ = true;
};

} // namespace Halvix
