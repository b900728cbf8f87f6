// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/Recorder.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <string>

namespace hxsim {

namespace {

/// 0 when the process does not exist (any more).
int parentOf(int process)
{
    std::ifstream stream{"/proc/" + std::to_string(process) + "/stat"};
    std::string text;
    std::getline(stream, text);
    const std::size_t name = text.rfind(')'); // a blank, the state, a blank, the parent
    return name == std::string::npos || name + 4 >= text.size() ? 0 : std::atoi(text.c_str() + name + 4);
}

bool descends(int process, int root)
{
    while (process > 1 && process != root)
        process = parentOf(process);
    return process == root;
}

} // namespace

Recorder::Recorder(const std::string& file, int process, const Recording& head)
    : file_{file, std::ios::binary}, root_{process}
{
    file_ << head.headText();
    if (!file_.flush())
        throw BadText{"cannot write " + file};
}

Recorder::Process& Recorder::processOf(int process)
{
    const auto [found, isNew] = known_.try_emplace(process);
    if (isNew && (root_ == 0 || descends(process, root_)))
        found->second.number = ++processes_;
    return found->second;
}

void Recorder::add(const Entry& entry, std::int64_t result)
{
    Process& process = processOf(entry.caller.process);
    if (process.number == 0)
        return;
    auto thread = std::ranges::find(process.threads, entry.caller.thread);
    if (thread == process.threads.end())
        thread = process.threads.insert(thread, entry.caller.thread);
    const int number = static_cast<int>(thread - process.threads.begin()) + 1;
    const RecordedCall call{.process = process.number, .thread = number, .entry = entry, .result = result, .line = 0};
    file_ << call.lineText() << '\n' << std::flush; // a killed unit keeps its recording so far
    ++count_;
}

bool Recorder::finish()
{
    file_.close();
    return static_cast<bool>(file_);
}

} // namespace hxsim
