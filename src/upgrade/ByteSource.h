// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <span>

namespace Halvix {

/// Returns the characters of a firmware file, one at a time. A failed read ends it as the end of the file does.
class ByteSource {
public:
    [[nodiscard]] virtual bool next(char& character) = 0;

protected:
    ~ByteSource() = default;
};

/// The contents of a file in memory.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const char> contents) : contents_{contents} {}
    [[nodiscard]] bool next(char& character) override
    {
        if (position_ == contents_.size())
            return false;
        character = contents_[position_++];
        return true;
    }

private:
    std::span<const char> contents_;
    std::size_t position_ = 0;
};

} // namespace Halvix
