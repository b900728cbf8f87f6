// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/ByteSource.h"

#include <array>

namespace Halvix {

/// A file opened for reading; closed by the destructor.
class FirmwareFile {
public:
    explicit FirmwareFile(const char* name);
    ~FirmwareFile();
    FirmwareFile(const FirmwareFile&) = delete;
    FirmwareFile& operator=(const FirmwareFile&) = delete;

    [[nodiscard]] bool isOpen() const { return handle_ >= 0; }
    [[nodiscard]] int handle() const { return handle_; }
    [[nodiscard]] unsigned size() const;

private:
    int handle_ = -1;
};

/// Reads the file on demand: one read per character.
class CharacterSource final : public ByteSource {
public:
    explicit CharacterSource(const FirmwareFile& file) : file_{file} {}
    [[nodiscard]] std::span<const char> more() override;

private:
    const FirmwareFile& file_;
    char character_ = '\0';
};

/// Reads the file in pieces.
class BufferedSource final : public ByteSource {
public:
    explicit BufferedSource(const FirmwareFile& file) : file_{file} {}
    [[nodiscard]] std::span<const char> more() override;

private:
    const FirmwareFile& file_;
    std::array<char, 4096> buffer_{};
};

} // namespace Halvix
