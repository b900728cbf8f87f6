// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

/// A fuzzer's bytes, taken from the front for the program's actions and from the back for the answers of the
/// environment, so that an input with other answers still performs the same actions. Zeros when they are used up.
class Input {
public:
    Input() = default;
    Input(const std::uint8_t* data, std::size_t size) : data_{data}, size_{size} {}

    [[nodiscard]] bool isEmpty() const { return size_ == 0; }

    std::uint8_t byte()
    {
        if (size_ == 0)
            return 0;
        --size_;
        return *data_++;
    }
    template <class Number>
    Number number()
    {
        Number value{};
        unsigned char bytes[sizeof value];
        for (unsigned char& one : bytes)
            one = byte();
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    /// Up to `most` characters and no zero.
    std::string text(std::size_t most)
    {
        const std::size_t length = std::min<std::size_t>(byte() % (most + 1), size_);
        const std::string bytes{reinterpret_cast<const char*>(data_), length};
        data_ += length;
        size_ -= length;
        return bytes.substr(0, bytes.find('\0'));
    }
    std::string rest() { return {reinterpret_cast<const char*>(data_), std::exchange(size_, 0)}; }

    std::uint8_t answer() { return size_ == 0 ? 0 : data_[--size_]; }
    void answer(void* block, std::size_t size)
    {
        for (auto* next = static_cast<std::uint8_t*>(block); size > 0; --size)
            *next++ = answer();
    }
    /// About one in `n`; never when the bytes are used up.
    bool oneIn(unsigned n) { return size_ != 0 && answer() % n == n - 1; }

private:
    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};
