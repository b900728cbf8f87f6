// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Texts of firmware files.
namespace firmware {

using Bytes = std::vector<std::uint8_t>;

/// One record of an Intel HEX or MCS file, with a valid checksum and a line end.
std::string record(std::uint8_t type, std::uint16_t offset, const Bytes& data);
std::string data(std::uint16_t offset, const Bytes& bytes);
std::string segment(std::uint16_t paragraph);
std::string linear(std::uint16_t high);
inline constexpr std::string_view kEnd = ":00000001FF\n";

/// Bytes that differ from their neighbours and from those of other seeds.
Bytes pattern(std::size_t size, unsigned seed = 1);
/// A whole HEX file for the start of the flash, in records of 16 bytes.
std::string intelHex(const Bytes& image, std::uint32_t start = 0x08000000);
/// The same, extended by empty lines after its end to the size of a microcontroller's firmware file.
std::string intelHexOfSize(std::size_t size, const Bytes& image);
/// A text of that many characters with a word at its end.
std::string filledUpTo(std::size_t size, char filler, std::string_view word);
/// A whole MCS file in full records; the image's size is a multiple of 16.
std::string mcs(const Bytes& image);

} // namespace firmware
