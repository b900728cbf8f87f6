// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/HexFile.h"

#include "upgrade/ByteSource.h"
#include "upgrade/IntelHex.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>

namespace hxaux {

namespace {

enum RecordType : unsigned { kData = 0, kSegmentAddress = 2, kLinearAddress = 4 };

constexpr std::uint64_t kFlash = 0x08000000; // the flash of every microcontroller of this family
constexpr std::uint64_t kFlashAlias = 0;     // its alias while the microcontroller boots from it
constexpr std::uint64_t kLargestImage = 16U << 20;
constexpr std::uint64_t kSegment = 0x10000;

std::optional<unsigned> hexNumber(std::string_view digits)
{
    unsigned value = 0;
    for (const char digit : digits) {
        constexpr std::string_view kDigits = "0123456789abcdef0123456789ABCDEF";
        const std::size_t found = kDigits.find(digit);
        if (found == std::string_view::npos)
            return std::nullopt;
        value = value * 16 + static_cast<unsigned>(found % 16);
    }
    return value;
}

// A record read strictly: hexadecimal digits only, as many as it says.
struct Record {
    unsigned count = 0;
    unsigned offset = 0;
    unsigned type = 0;
    std::string_view data; // two digits a byte

    [[nodiscard]] bool isAddress() const { return type == kSegmentAddress || type == kLinearAddress; }
};

std::optional<Record> parsed(std::string_view text)
{
    constexpr std::size_t kHead = 9;
    if (text.size() < kHead || text[0] != ':')
        return std::nullopt;
    const auto count = hexNumber(text.substr(1, 2));
    const auto offset = hexNumber(text.substr(3, 4));
    const auto type = hexNumber(text.substr(7, 2));
    if (!count || !offset || !type)
        return std::nullopt;
    const std::size_t dataDigits = std::size_t{2} * *count;
    const std::string_view digits = text.substr(kHead, dataDigits + 2); // the checksum among them
    if (digits.size() != dataDigits + 2)
        return std::nullopt;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        if (!hexNumber(digits.substr(i, 2)))
            return std::nullopt;
    return Record{*count, *offset, *type, digits.substr(0, dataDigits)};
}

std::string address(std::uint64_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(value));
    return text;
}

// Follows the library's parser record by record and compares where it puts the data.
class Comparison {
public:
    explicit Comparison(const std::string& text) : text_(text) { image_.limit = kLargestImage; }

    HexCheck run()
    {
        Halvix::MemorySource source(text_);
        const auto result = Halvix::parseIntelHex(source, image_, [this](std::uint32_t read) { afterRecord(read); });
        if (problem_.empty() && result != Halvix::HexResult::Complete)
            problem_ = problemOf(result);
        if (problem_.empty() && image_.size == 0)
            problem_ = "it holds no data";
        return {problem_, image_.size, lastByteAt_};
    }

private:
    // Position of the next record: line ends before it are skipped.
    void findRecord() { begin_ = std::min(text_.find_first_not_of("\r\n", begin_), text_.size()); }
    [[nodiscard]] std::string_view fromRecord() const { return std::string_view{text_}.substr(begin_); }

    [[nodiscard]] std::string atLine(const std::string& problem) const
    {
        const auto before = std::string_view{text_}.substr(0, begin_);
        long lines = std::ranges::count(before, '\n');
        if (lines == 0)
            lines = std::ranges::count(before, '\r');
        return "line " + std::to_string(lines + 1) + ": " + problem;
    }

    void afterRecord(std::size_t charactersRead)
    {
        findRecord();
        if (problem_.empty()) {
            const auto record = parsed(fromRecord());
            const std::string problem = record ? compare(*record) : "it has characters that are not hexadecimal digits";
            if (!problem.empty())
                problem_ = atLine(problem);
        }
        begin_ = charactersRead;
    }

    std::string compare(const Record& record)
    {
        if (record.isAddress())
            return takeBase(record);
        return record.type == kData && record.count != 0 ? compareData(record) : "";
    }

    std::string takeBase(const Record& record)
    {
        if (record.count != 2)
            return "an address record holds two bytes, not " + std::to_string(record.count);
        isSegment_ = record.type == kSegmentAddress;
        base_ = std::uint64_t{*hexNumber(record.data)} << (isSegment_ ? 4 : 16);
        return "";
    }

    std::string compareData(const Record& record)
    {
        lastByteAt_ = begin_ + static_cast<std::size_t>(record.data.end() - fromRecord().begin()) - 2;
        const std::uint64_t position = image_.size - record.count; // where the library puts it
        const std::uint64_t wanted = base_ + record.offset;
        if (!origin_) {
            const std::uint64_t origin = wanted - position;
            origin_ = origin == kFlashAlias ? kFlashAlias : kFlash;
        }
        if (wanted != *origin_ + position)
            return "its data belongs to address " + address(wanted) + ", but the unit would write it to " +
                   address(*origin_ + position);
        if (isSegment_ && record.offset + record.count > kSegment)
            return "its data continues at the start of its segment, but the unit would write it to " +
                   address(base_ + kSegment);
        return "";
    }

    [[nodiscard]] std::string problemOf(Halvix::HexResult result)
    {
        findRecord();
        switch (result) {
        case Halvix::HexResult::EndRecordMissing:
            return "missing end record: the file is truncated";
        case Halvix::HexResult::WrongChecksum:
            return atLine("the record's checksum is wrong");
        case Halvix::HexResult::OutOfMemory:
            return atLine("its address is more than 16 MiB behind the first one");
        default:
            return atLine(syntaxProblem());
        }
    }

    [[nodiscard]] std::string syntaxProblem() const
    {
        if (!fromRecord().starts_with(':'))
            return "it does not begin with ':'; not an Intel HEX file";
        const auto record = parsed(fromRecord());
        if (!record)
            return "it is truncated, or has characters that are not hexadecimal digits";
        return record->isAddress() ? "its address is below the first one"
                                   : "its data begins before the end of the data above it";
    }

    const std::string& text_;
    Halvix::HexImage image_;
    std::size_t begin_ = 0; // of the record that is read
    std::uint64_t base_ = 0;
    bool isSegment_ = false;
    std::optional<std::uint64_t> origin_; // the address of the image's first byte
    std::size_t lastByteAt_ = 0;
    std::string problem_; // the first one
};

} // namespace

HexCheck checkHex(const std::string& text)
{
    return Comparison(text).run();
}

} // namespace hxaux
