// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/LinuxWrapper.h"

#include <string_view>

namespace Halvix {

/// The production data in one EEPROM: lines "KEY:value" ended by CR LF, the text by 0x00 or 0xFF.
///
/// The constructor reads the EEPROM; look-ups use that copy. Only the value of an existing key can be changed, which
/// rewrites the whole EEPROM. Not locked: objects in several processes overwrite each other's changes.
class EepromConfig {
public:
    static constexpr unsigned int kSize = 4096;

    explicit EepromConfig(EepromType which);
    ~EepromConfig();
    EepromConfig(const EepromConfig&) = delete;
    EepromConfig& operator=(const EepromConfig&) = delete;

    /// Reads the EEPROM again and returns `isValid`.
    bool Reload();
    /// Copies the value, cut to `size` - 1 characters, and a final 0. False when the key is missing or has no value.
    [[nodiscard]] bool GetProperty(const char* key, char* buffer, unsigned int size) const;
    /// Changes the value of an existing key. Takes about two seconds. False when nothing or not everything was written.
    [[nodiscard]] bool UpdateProperty(const char* key, const char* value);
    /// Writes a production text for tests of the board. The copy in memory is not refreshed.
    [[nodiscard]] bool TestWriteDefaults() const;

    /// Whether the last `Reload` found a text of an acceptable length.
    [[nodiscard]] bool isValid() const { return valid_; }
    /// Length of the text in bytes.
    [[nodiscard]] int length() const { return length_; }

private:
    /// Position of a key's value in the image; end is the first byte after it.
    struct Value {
        std::size_t start = 0;
        std::size_t end = 0;
    };

    [[nodiscard]] std::string_view text() const { return {image_, static_cast<std::size_t>(length_)}; }
    [[nodiscard]] bool locate(const char* key, Value& value) const;
    void findEnd();

    char image_[kSize];
    int length_ = 0;
    EepromType which_;
    unsigned long board_ = 0;
    bool valid_ = false;
};

} // namespace Halvix
