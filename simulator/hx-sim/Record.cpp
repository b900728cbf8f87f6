// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Record.h"

#include "simulator/hx-sim/UnitClient.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/Wire.h"
#include "simulator/record/MachineCalls.h"
#include "simulator/record/RecordedScenario.h"
#include "simulator/record/ReplayedCalls.h"
#include "simulator/server/Host.h"
#include "simulator/server/PlainFile.h"
#include "tools/cli/Printable.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace hxsim {

namespace {

namespace fs = std::filesystem;

constexpr int kNothing = 1; ///< status where there is nothing to compare

/// A recording without calls tests nothing, so it is reported as a failure.
int statusWith(const std::string& count, const std::string& file, int status)
{
    cli::show(stderr, "hx-sim record: " + count + " calls in " + file + '\n');
    if (count != "0")
        return status;
    cli::show(stderr,
              "hx-sim record: the program made no call on the unit's devices; a replay would compare nothing\n");
    return status == 0 ? kNothing : status;
}

bool describesUnit(const UnitOptions& unit)
{
    return !unit.descriptions.empty() || !unit.settings.empty() || !unit.keep.empty() || unit.scale != 1.0 ||
           unit.isVirtual;
}

int recordOnRunningUnit(const std::string& name, const std::string& file, const std::vector<std::string>& command)
{
    UnitClient client{name};
    const double scale = parseReal(client.request({"scale"}));
    client.request({"record", fs::absolute(file), std::to_string(getpid())});
    const int status = runOnUnitAndWait(name, scale, command);
    return statusWith(client.request({"end-record"}), file, status);
}

/// The devices of this machine; within 'hx-sim run' these are that unit's, and the program keeps its time.
void takeMachine(Host& host)
{
    host.running().answerWith(std::make_unique<MachineCalls>(host.unit()));
    host.running().withdraw();
}

double scaleOfMachine()
{
    const char* const scale = std::getenv(wire::kScaleVariable);
    return scale == nullptr ? 1.0 : std::atof(scale);
}

/// Reads and checks the whole recording before any of it is used.
Recording readRecording(const std::string& file)
{
    std::string text;
    try {
        text = contentOf(file);
    } catch (const BadText& bad) {
        throw BadRecording{bad.what()};
    }
    try {
        return Recording::parse(text, Unit{});
    } catch (const BadText& bad) {
        throw BadRecording{file + ':' + bad.what()};
    }
}

/// The unit at the beginning of the recording, as far as a program sees it without a call on a device.
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
    const char* const around = std::getenv(wire::kFolderVariable);
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
        host.running().record(-1, file, 0);
    };
    unit.afterwards = [&](Host& host) { count = host.running().endRecord(-1); };
    const int status = runOnOwnUnit(unit, command);
    return statusWith(std::to_string(count), file, status);
}

int replay(const std::string& file, double scale, const std::vector<std::string>& command)
{
    const Recording recording = readRecording(file);
    int program = 0;
    const auto differs = [&](const std::string& what) {
        cli::show(stderr, "hx-sim replay: " + file + ':' + what + '\n');
        if (program > 0)
            kill(program, SIGTERM); // nothing that it does from here on is comparable
    };
    ReplayedCalls* calls = nullptr;
    UnitOptions unit;
    unit.scale = scale;
    unit.before = [&](Host& host) {
        prepare(host, recording);
        auto replayed = std::make_unique<ReplayedCalls>(host.unit(), recording, differs);
        calls = replayed.get();
        host.running().answerWith(std::move(replayed));
    };
    unit.started = [&](int process) { program = process; };
    bool differed = false;
    unit.afterwards = [&](Host&) {
        program = 0; // has ended
        calls->finish();
        differed = calls->differed();
    };
    const int status = runOnOwnUnit(unit, command);
    if (differed)
        return kDiffers;
    if (recording.calls.empty())
        cli::show(stderr, "hx-sim replay: " + file + ": the recording has no calls: nothing was compared\n");
    return recording.calls.empty() && status == 0 ? kNothing : status;
}

void convert(const std::string& recording, const std::string& file, const std::vector<std::string>& command)
{
    const std::string target = file.empty() ? fs::path{recording}.replace_extension(".scenario").string() : file;
    const Recording content = readRecording(recording);
    const std::string text = scenarioOf(content, fs::path{recording}.filename(), command);
    if (content.calls.empty())
        throw BadRecording{recording + ": the recording has no calls: a scenario would compare nothing"};
    checkWritable(target);
    std::ofstream stream{target, std::ios::binary};
    stream << text;
    if (!stream.flush())
        throw BadText{"cannot write " + target};
    const auto lines = std::ranges::count(text, '\n');
    cli::show(stderr, "hx-sim convert: " + std::to_string(lines) + " lines in " + target + '\n');
}

} // namespace hxsim
