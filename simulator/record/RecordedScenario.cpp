// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/RecordedScenario.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <memory>
#include <set>

namespace hxsim {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Of the bytes of a long call; a condition names the first words of a call.
constexpr std::size_t kMostShown = 32;
/// The program gets this much longer than it took.
constexpr std::int64_t kExtraSeconds = 60;

/// The request as the log and a condition show it, without the answer.
std::string requestOf(const RecordedCall& call)
{
    Entry entry = call.entry;
    entry.out.clear();
    entry.error = 0;
    if (entry.in.size() > kMostShown)
        entry.in.resize(kMostShown);
    if (entry.asText)
        entry.in.clear();
    std::string text = entry.call();
    if (const std::size_t colon = text.find(": "); colon != std::string::npos)
        text.erase(colon, 1);
    return text;
}

/// The request as a failure names it: "get 3", "0x40010003", "open".
std::string nameOfRequest(const RecordedCall& call)
{
    const std::string request = requestOf(call);
    const bool isOfRegister = request.starts_with("get ") || request.starts_with("put ");
    return request.substr(0, request.find(' ', isOfRegister ? 4 : 0));
}

/// "/dev/adc-id get 0"
std::string conditionOf(const RecordedCall& call)
{
    return call.entry.subject + ' ' + requestOf(call) +
           (call.entry.error == 0 ? "" : " !" + errnoName(call.entry.error));
}

bool isMainThread(const RecordedCall& call, const Recording& recording)
{
    return call.process == recording.calls.front().process && call.thread == recording.calls.front().thread;
}

/// Reads depend on when bytes come, and closes on when a program ends.
bool isExpected(const RecordedCall& call, const Unit& unit)
{
    return unit.nodes().contains(call.entry.subject) && call.entry.kind != Entry::Kind::Read &&
           call.entry.kind != Entry::Kind::Close && call.entry.kind != Entry::Kind::Other;
}

/// A word of a scenario.
std::string wordOf(const std::string& word)
{
    if (word.find('\n') != std::string::npos)
        throw BadText{"a scenario cannot have a line break in a word of its program"};
    std::string text;
    bool plain = !word.empty() && word[0] != '#';
    for (const char c : word) {
        plain = plain && std::string_view{" \t\r\v\f\"\\"}.find(c) == std::string_view::npos;
        text += c == '"' || c == '\\' ? std::string{'\\', c} : c == '$' ? "$$" : std::string{c};
    }
    return plain ? text : '"' + text + '"';
}

/// A unit on which the recorded requests are tried, to find the properties that make it answer as recorded.
class Trial {
public:
    explicit Trial(const Recording& recording)
    {
        for (const std::string& name : recording.absent)
            unit_.setAbsent(name, true);
    }

    /// Makes the request. When the answer differs from the recorded one: a line that sets the property which causes
    /// the recorded one, or a comment. Only the first answer counts: a unit has one state at the beginning.
    void take(const RecordedCall& call)
    {
        const Entry& entry = call.entry;
        Node* const node = unit_.findNode(entry.subject);
        if (entry.kind != Entry::Kind::Ioctl || node == nullptr || !node->present || entry.error != 0)
            return;
        const bool isNew = known_.insert({entry.subject, entry.request, entry.in}).second;
        if (answers(*node, entry) || !isNew || entry.out.empty())
            return;
        const std::string line = settingFor(*node, entry);
        lines.push_back(line.empty() ? "# " + entry.subject + ' ' + entry.call() + ": no property causes this answer"
                                     : line);
    }

    std::vector<std::string> lines{};

private:
    struct Key {
        std::string subject;
        std::uint32_t request;
        Bytes in;
        auto operator<=>(const Key&) const = default; // NOLINT(modernize-use-nullptr): contains no pointer
    };

    /// Whether the unit's answer is the recorded one.
    bool answers(Node& node, const Entry& entry)
    {
        std::unique_ptr<OpenFile>& file = files_[entry.subject];
        if (file == nullptr)
            file = node.open(O_RDWR | O_NONBLOCK);
        const Node::Shape* const shape = node.shape(entry.request);
        if (shape == nullptr || shape->takes != entry.in.size() || shape->gives != entry.out.size())
            return true; // nothing to compare
        Bytes out(shape->gives);
        return node.ioctl(*file, entry.request, entry.in, out) >= 0 && out == entry.out;
    }

    std::string settingFor(Node& node, const Entry& entry)
    {
        for (const auto& [name, property] : unit_.properties().all()) {
            if (!property.set)
                continue;
            const std::string before = property.get();
            for (const std::string& value : valuesIn(entry.out)) {
                if (!set(property, value))
                    continue;
                if (answers(node, entry))
                    return "set " + name + ' ' + value;
                (void)set(property, before);
            }
        }
        return {};
    }

    static bool set(const Properties::Property& property, const std::string& value)
    {
        try {
            property.set(value);
            return true;
        } catch (const BadText&) {
            return false;
        }
    }

    /// What the bytes of an answer can mean: numbers of every size, the second half behind a register's number, a
    /// version, or the bytes themselves.
    static std::vector<std::string> valuesIn(const Bytes& out)
    {
        std::vector<std::string> values;
        for (const std::size_t size : {2U, 1U, 4U})
            for (std::size_t at = 0; at + size <= out.size() && at < 4; at += 2) {
                std::uint64_t number = 0;
                for (std::size_t i = size; i-- > 0;)
                    number = number << 8 | out[at + i];
                values.push_back(std::to_string(number));
            }
        std::string dotted;
        std::string reversed;
        std::string hexadecimal;
        for (const std::uint8_t byte : out) {
            hexadecimal += (hexadecimal.empty() ? "0x" : " 0x") + hexBytes({&byte, 1});
            dotted += (dotted.empty() ? "" : ".") + std::to_string(byte);
            reversed = std::to_string(byte) + (reversed.empty() ? "" : ".") + reversed;
        }
        values.insert(values.end(), {dotted, reversed, hexadecimal});
        return values;
    }

    Unit unit_{};
    std::map<std::string, std::unique_ptr<OpenFile>> files_;
    std::set<Key> known_;
};

/// The failures with which calls met the program: of each call as many as failed before the first that did not.
std::vector<std::string> failuresIn(const Recording& recording, const Unit& unit)
{
    struct Run {
        std::string error;
        int count = 0;
        bool ended = false;
    };
    std::map<std::string, Run> runs;
    for (const RecordedCall& call : recording.calls) {
        if (!isExpected(call, unit) ||
            std::ranges::find(recording.absent, call.entry.subject) != recording.absent.end())
            continue;
        Run& run = runs[call.entry.subject + ' ' + nameOfRequest(call)];
        const std::string error = call.entry.error == 0 ? "" : errnoName(call.entry.error);
        run.ended = run.ended || error.empty() || (run.count > 0 && error != run.error);
        if (run.ended)
            continue;
        run.error = error;
        ++run.count;
    }
    std::vector<std::string> lines;
    for (const auto& [subject, run] : runs)
        if (run.count > 0)
            lines.push_back("fail " + subject + ' ' + run.error + ' ' + std::to_string(run.count));
    return lines;
}

std::string waitFor(const RecordedCall& call, Time before)
{
    const double seconds = std::ceil(std::chrono::duration<double>(call.entry.time - before).count());
    return " request " + conditionOf(call) + " within " +
           std::to_string(std::max<std::int64_t>(0, static_cast<std::int64_t>(seconds)) + kExtraSeconds) + "s\n";
}

/// The calls of the thread that begins, in their order; before them, those of other threads, whose order among all may
/// differ each time.
std::string callsIn(const Recording& recording, const Unit& unit)
{
    std::string others;
    std::string own;
    std::string last;
    std::set<std::string> known;
    Time before{0};
    for (const RecordedCall& call : recording.calls) {
        if (!isExpected(call, unit))
            continue;
        const std::string condition = conditionOf(call);
        if (!isMainThread(call, recording)) {
            if (known.insert(condition).second)
                others += "expect" + waitFor(call, Time{0});
            continue;
        }
        if (condition != last)
            own += "wait" + waitFor(call, before);
        last = condition;
        before = call.entry.time;
    }
    return others + own;
}

} // namespace

std::string scenarioOf(const Recording& recording, const std::string& name, const std::vector<std::string>& program)
{
    const Unit unit;
    std::string text = "hx-sim scenario 1\n# Made by hx-sim convert from " + name + ".\n";
    for (const std::string& absent : recording.absent)
        text += "remove " + absent + '\n';
    Trial trial{recording};
    for (const RecordedCall& call : recording.calls)
        trial.take(call);
    for (const auto& [path, content] : recording.files)
        text += "# The recorded unit had a file " + path + ", which a scenario does not write.\n";
    for (const std::vector<std::string>& lines : {trial.lines, failuresIn(recording, unit)})
        for (const std::string& line : lines)
            text += line + '\n';
    text += "run";
    for (const std::string& word : program)
        text += ' ' + wordOf(word);
    return text + '\n' + (recording.calls.empty() ? "" : callsIn(recording, unit));
}

} // namespace hxsim
