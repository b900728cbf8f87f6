// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/Recording.h"

#include "simulator/jida/Protocol.h"
#include "simulator/model/NameCheck.h"
#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <sys/ioctl.h>

namespace hxsim {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr char kTitle[] = "hx-sim recording ";
constexpr int kVersion = 1;
constexpr double kLongestSeconds = 1e9;
constexpr std::size_t kMostBytes = 65536;      ///< of a call: the limit of the preload library for one message
constexpr char kBoardLibrary[] = "libjida.so"; // the user's name for its node

Bytes bytesOfText(std::string_view text)
{
    return {text.begin(), text.end()};
}

/// Parses a line from left to right.
class Cursor {
public:
    explicit Cursor(std::string_view text) : rest_{text} {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    bool skip(std::string_view text)
    {
        const bool there = rest_.starts_with(text);
        if (there)
            rest_.remove_prefix(text.size());
        return there;
    }
    std::string_view until(std::string_view mark)
    {
        const std::string_view taken = rest_.substr(0, rest_.find(mark));
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view word()
    {
        const std::string_view taken = until(" ");
        skip(" ");
        if (taken.empty())
            throw BadText{"missing word"};
        return taken;
    }
    /// The call itself, up to its data.
    std::string_view call()
    {
        std::size_t end = rest_.size();
        for (const std::string_view mark : {": ", " -> ", " = ", " !"})
            end = std::min(end, rest_.find(mark));
        const std::string_view taken = rest_.substr(0, end);
        rest_.remove_prefix(end);
        if (taken.empty())
            throw BadText{"missing call"};
        return taken;
    }
    [[nodiscard]] bool atText() const { return rest_.starts_with('"'); }
    /// Hexadecimal pairs, or a quoted text.
    Bytes bytes() { return skip("\"") ? quotedBytes() : pairs(); }

private:
    [[nodiscard]] std::uint8_t pair() const
    {
        const std::string digits{rest_.substr(0, 2)};
        if (digits.size() != 2)
            throw BadText{"'" + digits + "' is not a byte of two digits"};
        return static_cast<std::uint8_t>(parseNumber("0x" + digits, 0, 0xFF));
    }
    Bytes pairs()
    {
        Bytes bytes;
        do {
            bytes.push_back(pair());
            rest_.remove_prefix(2);
        } while (rest_.size() > 2 && rest_[0] == ' ' && std::isxdigit(static_cast<unsigned char>(rest_[1])) != 0 &&
                 skip(" "));
        return bytes;
    }
    Bytes quotedBytes()
    {
        Bytes bytes;
        while (!skip("\"")) {
            if (rest_.empty())
                throw BadText{"missing closing quote"};
            if (skip("\\n")) {
                bytes.push_back('\n');
            } else if (skip("\\x")) {
                bytes.push_back(pair());
                rest_.remove_prefix(2);
            } else {
                (void)skip("\\");
                bytes.push_back(static_cast<std::uint8_t>(rest_.empty() ? 0 : rest_[0]));
                rest_.remove_prefix(rest_.empty() ? 0 : 1);
            }
        }
        return bytes;
    }

    std::string_view rest_;
};

/// The result of a successful call unless the line says otherwise.
std::int64_t usualResult(const Entry& entry)
{
    if (entry.kind == Entry::Kind::Read)
        return static_cast<std::int64_t>(entry.out.size());
    return entry.kind == Entry::Kind::Write ? static_cast<std::int64_t>(entry.in.size()) : 0;
}

Entry::Kind kindOf(const std::string& action)
{
    if (action == "close")
        return Entry::Kind::Close;
    if (action == "write")
        return Entry::Kind::Write;
    if (action.starts_with("open "))
        return Entry::Kind::Open;
    if (action.starts_with("read "))
        return Entry::Kind::Read;
    return action.starts_with("0x") ? Entry::Kind::Ioctl : Entry::Kind::Other;
}

void parseBytes(Cursor& cursor, std::string_view mark, Entry& entry, Bytes& bytes)
{
    if (!cursor.skip(mark))
        return;
    entry.asText = cursor.atText();
    bytes = cursor.bytes();
}

void parseCall(Cursor& cursor, RecordedCall& call)
{
    Entry& entry = call.entry;
    entry.subject = cursor.word();
    entry.action = cursor.call();
    if (entry.action.starts_with("fault "))
        entry.action.erase(0, sizeof "fault " - 1);
    else if (entry.kind = kindOf(entry.action); entry.kind == Entry::Kind::Other)
        throw BadText{"there is no call '" + entry.action + "'"};
    if (entry.kind == Entry::Kind::Ioctl)
        entry.request = static_cast<std::uint32_t>(parseNumber(entry.action, 0, 0xFFFFFFFF));
    if (entry.kind != Entry::Kind::Other && entry.subject == kBoardLibrary)
        entry.subject = jida::kNode;
    parseBytes(cursor, ": ", entry, entry.in);
    parseBytes(cursor, " -> ", entry, entry.out);
    call.result = cursor.skip(" = ") ? parseNumber(cursor.until(" "), 0, INT32_MAX) : usualResult(entry);
    if (cursor.skip(" !")) {
        entry.error = parseErrno(cursor.until(" "));
        call.result = -entry.error;
    }
    if (!cursor.atEnd())
        throw BadText{"'" + std::string{cursor.until("\n")} + "' is not understood"};
}

/// A replay writes these bytes to a program's memory: never more than the program's buffer holds.
void checkBytes(const Unit& unit, const RecordedCall& call)
{
    const Entry& entry = call.entry;
    if (entry.in.size() > kMostBytes || entry.out.size() > kMostBytes)
        throw BadText{"more than " + std::to_string(kMostBytes) + " bytes in one call"};
    const std::size_t requested = entry.kind == Entry::Kind::Read
                                      ? static_cast<std::size_t>(parseNumber(
                                            std::string_view{entry.action}.substr(sizeof "read " - 1), 0, INT32_MAX))
                                      : kMostBytes;
    if (entry.out.size() > requested ||
        (entry.kind == Entry::Kind::Read && call.result > static_cast<std::int64_t>(entry.out.size())))
        throw BadText{"the read returns more than the program requested"};
    if (entry.kind == Entry::Kind::Write && call.result > static_cast<std::int64_t>(entry.in.size()))
        throw BadText{"the write takes more than the program gave"};
    const bool isKnown =
        entry.kind != Entry::Kind::Ioctl || unit.nodes().at(entry.subject).shape(entry.request) != nullptr;
    const std::size_t declared = _IOC_SIZE(entry.request);
    if (!isKnown && (entry.in.size() > declared || entry.out.size() > declared))
        throw BadText{"more bytes than the number of the request declares"};
}

void check(const Unit& unit, const RecordedCall& call)
{
    if (call.entry.kind == Entry::Kind::Other)
        return; // injected failures are on anything
    if (!unit.nodes().contains(call.entry.subject))
        throw BadText{"the unit has no device " + inQuotes(call.entry.subject) +
                      suggestionFrom(call.entry.subject, unit.nodes())};
    checkBytes(unit, call);
}

/// A replay creates these files: only the unit's own are allowed.
void checkFile(const Recording& recording, const Unit& unit, const std::string& path)
{
    std::vector<std::string> known;
    for (const std::string& file : unit.files()) // directories precede their contents
        if (!known.empty() && file.starts_with(known.back() + '/'))
            known.back() = file;
        else
            known.push_back(file);
    if (std::ranges::find(known, path) == known.end())
        throw BadText{"the unit has no file " + inQuotes(path) + suggestion(path, known)};
    if (recording.files.contains(path))
        throw BadText{"the file " + path + " occurs twice"};
}

RecordedCall parseCallLine(std::string_view text)
{
    Cursor cursor{text};
    RecordedCall call;
    call.process = static_cast<int>(parseNumber(cursor.until("."), 1, INT32_MAX));
    if (!cursor.skip("."))
        throw BadText{"missing PROCESS.THREAD"};
    call.thread = static_cast<int>(parseNumber(cursor.word(), 1, INT32_MAX));
    const std::chrono::duration<double> seconds{parseReal(cursor.word())};
    if (!(seconds.count() >= 0 && seconds.count() < kLongestSeconds))
        throw BadText{"the time is outside 0 to " + std::to_string(static_cast<int>(kLongestSeconds)) + " seconds"};
    call.entry.time = std::chrono::duration_cast<Time>(seconds);
    parseCall(cursor, call);
    return call;
}

void parseLine(Recording& recording, const Unit& unit, const std::string& line, std::size_t number)
{
    Cursor cursor{line};
    if (cursor.skip("absent ")) {
        const std::string name{cursor.until("\n")};
        checkPart(unit, name);
        recording.absent.push_back(name);
    } else if (cursor.skip("file ")) {
        const std::string path{cursor.word()};
        const Bytes content = cursor.bytes();
        if (!cursor.atEnd())
            throw BadText{"'" + std::string{cursor.until("\n")} + "' is not understood"};
        checkFile(recording, unit, path);
        recording.files[path] = {content.begin(), content.end()};
    } else {
        recording.calls.push_back(parseCallLine(line));
        recording.calls.back().line = number;
        check(unit, recording.calls.back());
    }
}

void parseTitle(std::string_view line)
{
    Cursor cursor{line};
    if (!cursor.skip(kTitle))
        throw BadText{"not a recording: its first line is not '" + (kTitle + std::to_string(kVersion)) + "'"};
    if (const auto version = parseNumber(cursor.until(" "), 1, INT32_MAX); version != kVersion)
        throw BadText{"the recording has version " + std::to_string(version) + "; this hx-sim knows version " +
                      std::to_string(kVersion)};
}

} // namespace

bool RecordedCall::makesTheSameCallAs(const RecordedCall& other) const
{
    return entry.kind == other.entry.kind && entry.subject == other.entry.subject &&
           entry.request == other.entry.request && entry.in == other.entry.in &&
           (entry.kind == Entry::Kind::Ioctl || entry.action == other.entry.action);
}

std::string RecordedCall::text() const
{
    const auto shown = [&](const Bytes& bytes) { return entry.asText ? quoted(bytes) : hexBytes(bytes); };
    std::string text = (entry.subject == jida::kNode ? kBoardLibrary : entry.subject) + ' ';
    if (entry.kind == Entry::Kind::Ioctl)
        text += requestName(entry.request);
    else
        text += (entry.kind == Entry::Kind::Other ? "fault " : "") + entry.action;
    if (!entry.in.empty())
        text += ": " + shown(entry.in);
    if (!entry.out.empty())
        text += " -> " + shown(entry.out);
    if (result >= 0 && result != usualResult(entry))
        text += " = " + std::to_string(result);
    return result < 0 ? text + " !" + errnoName(static_cast<int>(-result)) : text;
}

std::string RecordedCall::lineText() const
{
    std::array<char, 64> start{};
    std::snprintf(start.data(), start.size(), "%d.%d %.6f ", process, thread,
                  std::chrono::duration<double>(entry.time).count());
    return start.data() + text();
}

std::string Recording::headText() const
{
    std::string text = kTitle + std::to_string(kVersion) + '\n';
    for (const std::string& name : absent)
        text += "absent " + name + '\n';
    for (const auto& [path, content] : files)
        text += "file " + path + ' ' + quoted(bytesOfText(content)) + '\n';
    return text;
}

Recording Recording::parse(std::string_view text, const Unit& unit)
{
    Recording recording;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::string line{text.substr(0, text.find('\n'))};
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        ++number;
        try {
            if (number == 1)
                parseTitle(line);
            else if (!line.empty() && !line.starts_with('#'))
                parseLine(recording, unit, line, number);
        } catch (const BadText& bad) {
            throw BadText{std::to_string(number) + ": " + bad.what()};
        }
    }
    if (number == 0)
        throw BadText{"1: the file is empty"};
    return recording;
}

} // namespace hxsim
