// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/Record.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

#include "simulator/Host.h"
#include "simulator/UnitClient.h"
#include "simulator/interpose/preloaded/PreloadedLink.h"
#include "simulator/model/Text.h"
#include "simulator/record/MachineCalls.h"
#include "simulator/record/ReplayedCalls.h"

namespace hxsim {

namespace {

namespace fs = std::filesystem;

void tellCount(const std::string& count, const std::string& file)
{
    std::fprintf(stderr, "hx-sim record: %s calls in %s\n", count.c_str(), file.c_str());
}

bool describesUnit(const UnitOptions& unit)
{
    return !unit.descriptions.empty() || !unit.settings.empty() || !unit.keep.empty() || unit.scale != 1.0;
}

int recordOnRunningUnit(const std::string& name, const std::string& file, const std::vector<std::string>& command)
{
    UnitClient client{name};
    const double scale = parseReal(client.ask({"scale"}));
    client.ask({"record", fs::absolute(file), std::to_string(getpid())});
    const int status = runOnUnitAndWait(name, scale, command);
    tellCount(client.ask({"end-record"}), file);
    return status;
}

/// The devices of this machine; within 'hx-sim run' those are that unit's, whose time the program keeps.
void takeMachine(Host& host)
{
    host.answerWith(std::make_unique<MachineCalls>(host.unit()));
    host.standAside();
}

double scaleOfMachine()
{
    const char* const scale = std::getenv(PreloadedLink::kScaleVariable);
    return scale == nullptr ? 1.0 : std::atof(scale);
}

Recording readRecording(const std::string& file)
{
    std::ifstream stream{file, std::ios::binary};
    if (!stream || fs::is_directory(file))
        throw BadRecording{"cannot read " + file};
    try {
        return Recording::parse(std::string{std::istreambuf_iterator<char>{stream}, {}});
    } catch (const BadText& bad) {
        throw BadRecording{file + ':' + bad.what()};
    }
}

/// The unit as it was when the recording began, as far as a program sees it without a call on a device.
void prepare(Host& host, const Recording& recording)
{
    for (const std::string& name : recording.absent)
        host.unit().setAbsent(name, true);
    for (const auto& [path, content] : recording.files) {
        const std::string file = host.folder() + "/files" + path;
        fs::create_directories(fs::path{file}.parent_path());
        std::ofstream{file, std::ios::binary} << content;
    }
}

} // namespace

int record(const RecordOptions& options, const std::vector<std::string>& command)
{
    const std::string file =
        options.file.empty() ? fs::path{command[0]}.filename().string() + ".recording" : options.file;
    const char* const around = std::getenv(PreloadedLink::kFolderVariable);
    const bool onRunning = !options.on.empty() || (around != nullptr && !options.machine);
    if (onRunning && describesUnit(options.unit))
        throw BadUsage{"the unit around this command is recorded; --description, --set, --keep and --scale are for a "
                       "unit of the program's own"};
    if (onRunning)
        return recordOnRunningUnit(UnitClient::choose(options.on), file, command);
    UnitOptions unit = options.unit;
    if (options.machine)
        unit.scale = scaleOfMachine();
    std::size_t count = 0;
    unit.before = [&](Host& host) {
        if (options.machine)
            takeMachine(host);
        host.record(-1, file, 0);
    };
    unit.afterwards = [&](Host& host) { count = host.endRecord(-1); };
    const int status = runOnOwnUnit(unit, command);
    tellCount(std::to_string(count), file);
    return status;
}

int replay(const std::string& file, double scale, const std::vector<std::string>& command)
{
    const Recording recording = readRecording(file);
    int program = 0;
    const auto differs = [&](const std::string& what) {
        std::fprintf(stderr, "hx-sim replay: %s:%s\n", file.c_str(), what.c_str());
        if (program > 0)
            kill(program, SIGTERM); // nothing that it does from here on can be compared
    };
    ReplayedCalls* calls = nullptr;
    UnitOptions unit;
    unit.scale = scale;
    unit.before = [&](Host& host) {
        prepare(host, recording);
        auto replayed = std::make_unique<ReplayedCalls>(host.unit(), recording, differs);
        calls = replayed.get();
        host.answerWith(std::move(replayed));
    };
    unit.started = [&](int process) { program = process; };
    bool differed = false;
    unit.afterwards = [&](Host&) {
        program = 0; // has ended
        calls->finish();
        differed = calls->differed();
    };
    const int status = runOnOwnUnit(unit, command);
    return differed ? kDiffers : status;
}

} // namespace hxsim
