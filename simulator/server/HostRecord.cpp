// SPDX-License-Identifier: LicenseRef-HXAux
// Recording in the host: it records the calls of programs, and can replace the model by the machine's devices.
#include <cstdlib>
#include <filesystem>

#include "simulator/model/Text.h"
#include "simulator/protocol/Wire.h"
#include "simulator/server/Host.h"
#include "simulator/server/PlainFile.h"

namespace hxsim {

void Host::record(int connection, const std::string& file, int process)
{
    if (recorder_ != nullptr)
        throw BadText{"this unit is being recorded already"};
    checkWritable(file);
    recorder_ = std::make_unique<Recorder>(file, process, recordingHead());
    recorderOwner_ = connection;
    calls_->decorate(std::make_unique<RecordedCalls>(calls_->undecorated(), *recorder_, unit_.clock()));
}

std::size_t Host::endRecord(int connection)
{
    if (connection != recorderOwner_ || recorder_ == nullptr)
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

/// The initial state of the unit that a replay needs.
Recording Host::recordingHead()
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

void Host::standAside()
{
    const char* const outer = std::getenv(wire::kFolderVariable);
    files_ = outer == nullptr ? "" : std::string{outer} + "/files";
    semaphores_ = outer == nullptr ? "" : UnitFolder::markOf(outer);
    standsAside_ = true;
}

/// All paths, one per line; Wire.h explains the letters.
std::string Host::pathList()
{
    const bool onMachine = standsAside_ && semaphores_.empty();
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
