// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace hxsim {

class Microcontroller;

/// The program in the microcontroller's system memory that takes new firmware over its serial port, as ST's application
/// note AN3155 describes it. It works byte by byte and has no time limits of its own.
class RomBootloader {
public:
    explicit RomBootloader(Microcontroller& chip) : chip_{chip} {}

    /// As after a reset: it waits for the byte from which it learns the baud rate.
    void start();
    void receive(std::uint8_t byte);

private:
    enum class Expect { Synchronise, Command, Address, ReadCount, WriteBlock, EraseList, SectorList };
    using Frame = std::vector<std::uint8_t>;

    [[nodiscard]] std::size_t frameLength() const;
    void complete(const Frame& frame);
    void synchronise(const Frame& frame);
    void command(const Frame& frame);
    void identify(std::uint8_t code);
    void change(std::uint8_t code);
    void address(const Frame& frame);
    void readCount(const Frame& frame);
    void writeBlock(const Frame& frame);
    void eraseList(const Frame& frame);
    void sectorList(const Frame& frame);
    void restartAfterAnswer();
    void expect(Expect next) { expect_ = next; }
    void refuse();

    Microcontroller& chip_;
    Expect expect_ = Expect::Synchronise;
    Frame frame_;
    std::uint8_t command_ = 0;
    std::uint32_t address_ = 0;
};

} // namespace hxsim
