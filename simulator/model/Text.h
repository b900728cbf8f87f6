// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hxsim {

/// A text from a user or a description file is invalid; what() says which and why.
class BadText : public std::exception {
public:
    explicit BadText(std::string text) : text_{std::move(text)} {}
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

private:
    std::string text_;
};

/// A usage error on the command line.
class BadUsage : public BadText {
public:
    using BadText::BadText;
};

std::string trimmed(std::string_view text);
std::vector<std::string> words(std::string_view text);

/// "0x40010003": requests are always written with eight digits.
std::string requestName(std::uint32_t request);
/// "00 80 ff"
std::string hexBytes(std::span<const std::uint8_t> bytes);
/// "\"2.1.0.5\\n\"": bytes as a C string literal.
std::string quoted(std::span<const std::uint8_t> bytes);
std::string inQuotes(std::string_view text);

/// Decimal, or hexadecimal after 0x. Throws BadText unless the whole text is a number within the range.
std::int64_t parseNumber(std::string_view text, std::int64_t low, std::int64_t high);
double parseReal(std::string_view text);
/// With a decimal point and without an exponent, whatever the application's locale; `parseReal` reads the same number.
std::string decimal(double value);
std::string onOrOff(bool value);
/// "on", "yes", "true", "1" and their opposites.
bool parseFlag(std::string_view text);

/// "EIO" for 5; numbers without a name are written as "E<number>".
std::string errnoName(int number);
int parseErrno(std::string_view text);

/// "open rdwr nonblock": flags as words, in a fixed order. Flags that concern only the process are left out.
std::string openAction(int flags);

} // namespace hxsim
