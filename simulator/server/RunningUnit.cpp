// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/RunningUnit.h"

#include "simulator/model/Text.h"
#include "simulator/protocol/Wire.h"
#include "simulator/record/RecordedCalls.h"
#include "simulator/server/PlainFile.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace hxsim {

RunningUnit::RunningUnit(const std::string& name, Pace pace)
    : pace_{pace}, folder_{name}, clockPage_{pace.isVirtual ? std::make_unique<ClockPage>(folder_.path()) : nullptr}
{
    files_ = folder_.path() + "/files";
    semaphores_ = UnitFolder::markOf(folder_.path());
    (void)folder_.fileOf("/opt/etc/hxaux.ini"); // its directory must exist
}

void RunningUnit::keep()
{
    if (kept_ != nullptr)
        kept_->save();
}

void RunningUnit::advanceTo(Time time)
{
    unit_.clock().advanceTo(time);
    shown_ = unit_.clock().now();
    if (clockPage_ != nullptr)
        clockPage_->show(shown_);
}

Time RunningUnit::now() const
{
    if (isVirtual())
        return shown_;
    const std::chrono::duration<double, std::nano> real = std::chrono::steady_clock::now() - start_;
    return Time{static_cast<std::int64_t>(real.count() * pace_.scale)};
}

std::chrono::nanoseconds RunningUnit::until(Time time) const
{
    const double real = std::clamp(static_cast<double>((time - now()).count()) / pace_.scale, 0.0, 60e9);
    return std::chrono::nanoseconds{static_cast<std::int64_t>(std::ceil(real))};
}

void RunningUnit::record(int owner, const std::string& file, int process)
{
    if (recorder_ != nullptr)
        throw BadText{"this unit is being recorded already"};
    checkWritable(file);
    recorder_ = std::make_unique<Recorder>(file, process, recordingHead());
    recorderOwner_ = owner;
    calls_->decorate(std::make_unique<RecordedCalls>(calls_->undecorated(), *recorder_, unit_.clock()));
}

std::size_t RunningUnit::endRecord(int owner)
{
    if (owner != recorderOwner_ || recorder_ == nullptr)
        return 0;
    calls_->decorate(nullptr);
    const std::size_t count = recorder_->count();
    const bool good = recorder_->finish();
    recorder_.reset();
    recorderOwner_ = -1;
    if (!good)
        throw BadText{"the recording could not be written"};
    return count;
}

Recording RunningUnit::recordingHead()
{
    Recording head;
    for (const auto& [path, node] : unit_.nodes())
        if (!calls_->present(path))
            head.absent.push_back(path);
    for (const std::string& name : unit_.absent())
        if (unit_.findNode(name) == nullptr)
            head.absent.push_back(name);
    for (const std::string& path : unit_.files()) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(files_ + path, ignored))
            head.files[path] = contentOf(files_ + path);
    }
    return head;
}

void RunningUnit::withdraw()
{
    const char* const outer = std::getenv(wire::kFolderVariable);
    files_ = outer == nullptr ? "" : std::string{outer} + "/files";
    semaphores_ = outer == nullptr ? "" : UnitFolder::markOf(outer);
    withdrawn_ = true;
}

std::string RunningUnit::pathList()
{
    const bool onMachine = withdrawn_ && semaphores_.empty();
    std::string list;
    for (const auto& [path, node] : unit_.nodes()) {
        list += std::string{node.isSerial() ? "S " : node.isText() ? "T " : "D "} + path;
        list += onMachine && calls_->present(path) ? ' ' + path + '\n' : "\n";
    }
    for (const std::string& path : unit_.files())
        list += "F " + path + ' ' + files_ + path + '\n';
    list += "N " + semaphores_ + '\n';
    list += "R " + (files_.empty() ? files_ : std::filesystem::path{files_}.parent_path().string()) + '\n';
    return list;
}

} // namespace hxsim
