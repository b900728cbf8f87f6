// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <span>

namespace Halvix {

/// Returns the characters of a firmware file, in pieces. A failed read ends it as the end of the file does.
class ByteSource {
public:
    /// The next characters, at least one; none at the end. They stay valid until the next call.
    [[nodiscard]] virtual std::span<const char> more() = 0;

protected:
    ~ByteSource() = default;
};

/// The contents of a file in memory.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const char> contents) : contents_{contents} {}
    [[nodiscard]] std::span<const char> more() override
    {
        const std::span<const char> all = contents_;
        contents_ = {};
        return all;
    }

private:
    std::span<const char> contents_;
};

/// Takes the characters of a source one at a time, and asks it for more only when one is wanted.
class Characters {
public:
    explicit Characters(ByteSource& source) : source_{source} {}

    /// False at the end of the file.
    [[nodiscard]] bool next(char& character)
    {
        if (position_ == piece_.size() && !refill())
            return false;
        character = piece_[position_++];
        return true;
    }

private:
    [[nodiscard]] bool refill()
    {
        piece_ = source_.more();
        position_ = 0;
        return !piece_.empty();
    }

    ByteSource& source_;
    std::span<const char> piece_;
    std::size_t position_ = 0;
};

} // namespace Halvix
