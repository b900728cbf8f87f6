// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/File.h"
#include "upgrade/ByteSource.h"

#include <array>

namespace Halvix {

/// Reads the file on demand: one read per character.
class CharacterSource final : public ByteSource {
public:
    explicit CharacterSource(const File& file) : file_{file} {}
    [[nodiscard]] std::span<const char> more() override;

private:
    const File& file_;
    char character_ = '\0';
};

/// Reads the file in pieces.
class BufferedSource final : public ByteSource {
public:
    explicit BufferedSource(const File& file) : file_{file} {}
    [[nodiscard]] std::span<const char> more() override;

private:
    const File& file_;
    std::array<char, 4096> buffer_{};
};

} // namespace Halvix
