// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/STM32/stm32_bootloader.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

/// Plays the target's part of a conversation that is written down in `tests/upgrade/dialogues/<name>.txt`, in place of
/// the serial port. Every byte of ours is compared, and each line of ours has to come in one write.
///
///     # a remark
///     > 43 BC         we send exactly this
///     < 79            the target sends this
///     > 41*256        a byte many times
///
/// Where the script has no byte left before our next line, the target is silent.
class Dialogue {
public:
    explicit Dialogue(const std::string& name);
    ~Dialogue();
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;

    /// A target that has been identified, with the usual command codes.
    [[nodiscard]] const stm32_target* target() const { return &target_; }
    /// What did not go as written, or an empty text. Lines that were not reached count.
    [[nodiscard]] std::string complaint() const;

    int write(const std::uint8_t* bytes, std::size_t length);
    int read(std::uint8_t* bytes, std::size_t length);

    /// From the n-th byte of the target's on (counted from 1), there is silence.
    void silentFrom(std::size_t byte) { silentFrom_ = byte; }
    /// The n-th line of the target's is a NACK.
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
