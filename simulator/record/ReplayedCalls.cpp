// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/ReplayedCalls.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>

namespace hxsim {

namespace {

/// In the format of the log, or byte by byte where the log shows no difference.
std::string shownBeside(const RecordedCall& call, const RecordedCall& other)
{
    const auto requestOf = [](RecordedCall one) {
        one.entry.out.clear();
        one.entry.error = 0;
        return one.entry.text();
    };
    return requestOf(call) == requestOf(other) ? call.text() : call.entry.text();
}

} // namespace

ReplayedCalls::ReplayedCalls(Unit& unit, const Recording& recording, std::function<void(const std::string&)> differs)
    : ModelCalls{unit}, recording_{recording}, differs_{std::move(differs)}
{
    std::map<std::pair<int, int>, std::size_t> known;
    for (const RecordedCall& call : recording_.calls) {
        const auto [found, isNew] = known.try_emplace({call.process, call.thread}, parts_.size());
        if (isNew)
            parts_.push_back({call.process});
        parts_[found->second].calls.push_back(&call);
    }
}

bool ReplayedCalls::mayTake(int process, const Part& part) const
{
    const auto known = processes_.find(process);
    if (known != processes_.end())
        return known->second == part.process;
    return std::ranges::none_of(processes_, [&](const auto& other) { return other.second == part.process; });
}

ReplayedCalls::Part* ReplayedCalls::partOf(Caller caller, const RecordedCall& call)
{
    const auto known = taken_.find({caller.process, caller.thread});
    if (known != taken_.end())
        return known->second;
    for (Part& part : parts_) {
        if (part.taken || !mayTake(caller.process, part) || !part.calls.front()->makesTheSameCallAs(call))
            continue;
        part.taken = true;
        processes_[caller.process] = part.process;
        return taken_[{caller.process, caller.thread}] = &part;
    }
    return nullptr;
}

const RecordedCall* ReplayedCalls::firstLeft() const
{
    const RecordedCall* first = nullptr;
    for (const Part& part : parts_)
        if (!part.calls.empty() && (first == nullptr || part.calls.front()->line < first->line))
            first = part.calls.front();
    return first;
}

const RecordedCall* ReplayedCalls::differ(const RecordedCall* recorded, const RecordedCall& call)
{
    differed_ = true;
    if (recorded != nullptr)
        differs_(std::to_string(recorded->line) + ": the program makes another call\n  recorded: " +
                 shownBeside(*recorded, call) + "\n  now:      " + shownBeside(call, *recorded));
    else
        differs_(std::to_string(recording_.calls.empty() ? 1 : recording_.calls.back().line) +
                 ": the program makes more calls than were recorded\n  now:      " + call.entry.text());
    return nullptr;
}

const RecordedCall* ReplayedCalls::next(Caller caller, Entry entry)
{
    if (differed_)
        return nullptr;
    const RecordedCall call{.process = 0, .thread = 0, .entry = std::move(entry), .result = 0, .line = 0};
    Part* const part = partOf(caller, call);
    if (part == nullptr)
        return differ(firstLeft(), call);
    if (part->calls.empty())
        return differ(nullptr, call);
    const RecordedCall* const recorded = part->calls.front();
    if (!recorded->makesTheSameCallAs(call))
        return differ(recorded, call);
    part->calls.pop_front();
    return recorded;
}

void ReplayedCalls::finish()
{
    const RecordedCall* const left = differed_ ? nullptr : firstLeft();
    if (left == nullptr)
        return;
    differed_ = true;
    differs_(std::to_string(left->line) + ": the program ended without this call\n  recorded: " + left->entry.text());
}

/// A request is identified by its bytes; a recording has those that the driver read.
std::optional<Node::Shape> ReplayedCalls::shape(const OpenFile& file, std::uint32_t code)
{
    const std::optional<Node::Shape> known = ModelCalls::shape(file, code);
    if (known)
        return known;
    const auto isIt = [&](const RecordedCall& call) {
        return call.entry.subject == file.node.path() && call.entry.request == code && call.result >= 0;
    };
    const auto found = std::ranges::find_if(recording_.calls, isIt);
    if (found == recording_.calls.end())
        return std::nullopt;
    return Node::Shape{found->entry.in.size(), found->entry.out.size()};
}

Calls::Opened ReplayedCalls::open(Caller caller, Node& node, int flags)
{
    const RecordedCall* const recorded =
        next(caller, Entry{.kind = Entry::Kind::Open, .subject = node.path(), .action = openAction(flags)});
    if (recorded == nullptr)
        return {nullptr, EIO};
    if (recorded->entry.error != 0)
        return {nullptr, recorded->entry.error};
    return {std::make_unique<OpenFile>(node, flags), 0};
}

void ReplayedCalls::close(Caller caller, OpenFile& file, Closing closing)
{
    if (closing == Closing::ByProgram)
        (void)next(caller, Entry{.kind = Entry::Kind::Close, .subject = file.node.path(), .action = "close"});
}

std::int64_t ReplayedCalls::ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out)
{
    const RecordedCall* const recorded = next(
        caller,
        Entry{.kind = Entry::Kind::Ioctl, .subject = file.node.path(), .request = code, .in = {in.begin(), in.end()}});
    if (recorded == nullptr)
        return -EIO;
    std::copy_n(recorded->entry.out.begin(), std::min(recorded->entry.out.size(), out.size()), out.begin());
    return recorded->result;
}

Outcome ReplayedCalls::read(Caller caller, OpenFile& file, Space out, Time /*started*/, Attempt /*attempt*/)
{
    const RecordedCall* const recorded = next(
        caller,
        Entry{.kind = Entry::Kind::Read, .subject = file.node.path(), .action = "read " + std::to_string(out.size())});
    if (recorded == nullptr)
        return {-EIO, false, {}};
    std::copy_n(recorded->entry.out.begin(), std::min(recorded->entry.out.size(), out.size()), out.begin());
    return {recorded->result, false, {}};
}

Outcome ReplayedCalls::write(Caller caller, OpenFile& file, Bytes in)
{
    const RecordedCall* const recorded = next(caller, Entry{.kind = Entry::Kind::Write,
                                                            .subject = file.node.path(),
                                                            .action = "write",
                                                            .in = {in.begin(), in.end()}});
    return {recorded == nullptr ? -EIO : recorded->result, false, {}};
}

/// Calls other than on devices are not compared; an injected failure occurs again at its place.
int ReplayedCalls::fault(Caller caller, const std::string& subject, const std::string& call)
{
    const RecordedCall made{.entry = {.subject = subject, .action = call}};
    Part* const part = differed_ ? nullptr : partOf(caller, made);
    if (part == nullptr || part->calls.empty() || !part->calls.front()->makesTheSameCallAs(made))
        return 0;
    const int error = part->calls.front()->entry.error;
    part->calls.pop_front();
    return error;
}

} // namespace hxsim
