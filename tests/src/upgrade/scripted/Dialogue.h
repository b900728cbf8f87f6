// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/STM32/stm32_bootloader.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

/// Plays the target's part of a conversation from `tests/src/upgrade/dialogues/<name>.txt`, in place of the serial
/// port. Every byte of the library is compared, and each of its lines must be one write.
///
///     # a remark
///     > 43 BC         the library sends exactly this
///     < 79            the target sends this
///     > 41*256        a byte many times
///
/// Where the script has no byte left before the next line of the library, the target is silent.
class Dialogue {
public:
    explicit Dialogue(const std::string& name);
    ~Dialogue();
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;

    /// A target that has been identified, with the usual command codes.
    [[nodiscard]] const stm32_target* target() const { return &target_; }
    /// The differences from the script, or an empty text. Lines that were not reached count.
    [[nodiscard]] std::string complaint() const;

    int write(const std::uint8_t* bytes, std::size_t length);
    int read(std::uint8_t* bytes, std::size_t length);

    /// The target is silent from its n-th byte on (counted from 1).
    void silentFrom(std::size_t byte) { silentFrom_ = byte; }
    /// The n-th line of the target is a NACK.
    void refuseAt(std::size_t line) { refuseAt_ = line; }
    [[nodiscard]] std::size_t linesOfTarget() const;
    [[nodiscard]] std::size_t writes() const { return writes_; }

private:
    struct Line {
        bool ours;
        std::vector<std::uint8_t> bytes;
    };

    std::deque<Line> script_;
    stm32_target target_{};
    std::string complaint_;
    std::size_t writes_ = 0;
    std::size_t heard_ = 0;
    std::size_t targetLines_ = 0;
    std::size_t silentFrom_ = SIZE_MAX;
    std::size_t refuseAt_ = 0;
};

/// What the program writes to standard error while this exists.
class CapturedErrors {
public:
    CapturedErrors();
    std::string text();
};
