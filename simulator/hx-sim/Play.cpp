// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Play.h"

#include "simulator/hx-sim/UnitClient.h"
#include "simulator/model/LightSensor.h"
#include "simulator/model/LightTrace.h"
#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"
#include "simulator/plot/LightPlot.h"
#include "simulator/server/Host.h"
#include "simulator/server/PlainFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace hxsim {

namespace {

constexpr int kRounds = 20; // of a profile that repeats

LightProfile profileOf(const LightPlay& play)
{
    try {
        return LightProfile::parse(contentOf(play.file));
    } catch (const BadText& bad) {
        throw BadText{play.file + ": " + bad.what()};
    }
}

void draw(Host& host, const LightPlay& play, const LightProfile& profile)
{
    const auto luxAt = [&](double seconds) {
        return profile.luxAt(std::chrono::duration_cast<Time>(std::chrono::duration<double>(seconds)));
    };
    checkWritable(play.plot);
    std::ofstream stream{play.plot, std::ios::binary};
    stream << lightPlot(host.unit().get<LightTrace>(), std::filesystem::path{play.file}.stem().string(), luxAt);
    if (!stream.flush())
        throw BadText{"cannot write " + play.plot};
}

std::vector<std::string> namesOfProfiles()
{
    std::vector<std::string> names;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator{profileFolder(), missing})
        names.push_back(entry.path().stem());
    std::ranges::sort(names);
    return names;
}

} // namespace

/// Beside this program in a build, under share/ when installed.
std::string profileFolder()
{
    const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const auto& folder : {own / "units/light", own.parent_path() / "share/hx-sim/light"})
        if (std::filesystem::is_directory(folder))
            return folder;
    return {};
}

std::string profileNamed(const std::string& name)
{
    std::string known = profileFolder() + '/' + name + ".profile";
    if (name.empty() || name.find('/') != std::string::npos || std::filesystem::exists(name))
        return name;
    if (std::filesystem::is_regular_file(known))
        return known;
    const std::vector<std::string> names = namesOfProfiles();
    std::string near = suggestion(name, names);
    if (near.empty())
        for (const std::string& each : names)
            near += (near.empty() ? "; profiles are " : ", ") + each;
    throw BadText{"there is no file or profile '" + name + '\'' + near};
}

void playLightOn(const std::string& unit, const LightPlay& play)
{
    (void)profileOf(play); // errors in the file are reported with its name
    UnitClient{UnitClient::choose(unit)}.request({"set", LightProfile::asLine(contentOf(play.file))});
}

int playLightWith(const LightPlay& play, const std::vector<std::string>& command)
{
    const LightProfile profile = profileOf(play);
    const double once = std::chrono::duration<double>(profile.length()).count();
    UnitOptions options = play.unit;
    options.endAfter = play.seconds > 0 ? play.seconds : once * (profile.repeats() ? kRounds : 1);
    options.before = [&](Host& host) {
        host.unit().get<LightSensor>().play(profile);
        host.unit().get<LightTrace>().recording = true;
    };
    options.afterwards = [&](Host& host) {
        if (!play.plot.empty())
            draw(host, play, profile);
    };
    return runOnOwnUnit(options, command);
}

} // namespace hxsim
