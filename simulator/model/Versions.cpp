// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Versions.h"

#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace hxsim {

namespace {

std::string shown(const Versions::Version& version)
{
    std::string text;
    for (const std::uint8_t part : version)
        text += (text.empty() ? "" : ".") + std::to_string(part);
    return text;
}

Versions::Version parsed(std::string text)
{
    if (std::count(text.begin(), text.end(), '.') != 3)
        throw BadText{"'" + text + "' is not of the form 1.2.3.4"};
    std::replace(text.begin(), text.end(), '.', ' ');
    const std::vector<std::string> parts = words(text);
    if (parts.size() != 4)
        throw BadText{"a version has four numbers"};
    Versions::Version version;
    for (std::size_t i = 0; i < 4; ++i)
        version[i] = static_cast<std::uint8_t>(parseNumber(parts[i], 0, 255));
    return version;
}

} // namespace

Versions::Versions(Unit& unit)
{
    Node& node = unit.addNode("/dev/fpga-version");
    version(
        unit, node, 0x80040036, "version.fpga", fpga, [&unit] { return unit.get<FpgaFlash>().configured; },
        "FPGA configuration");
    version(
        unit, node, 0x80040037, "version.ss", supervisor,
        [&unit] { return unit.get<Microcontrollers>().supervisor.runs(); }, "supervisor firmware");
    version(
        unit, node, 0x80040038, "version.front", front, [&unit] { return unit.get<Microcontrollers>().front.runs(); },
        "front-panel microcontroller's firmware");
    version(
        unit, node, 0x80040064, "version.drv", drivers, [] { return true; }, "kernel drivers");
    unit.addNode("/etc/firmware.ver").attribute([this] { return osText; });
    unit.properties().add(
        "version.os", [this] { return trimmed(osText); }, [this](const std::string& text) { osText = text + "\n"; },
        "operating system image: the text of /etc/firmware.ver");
}

void Versions::version(Unit& unit, Node& node, std::uint32_t code, const std::string& name, Version& version,
                       std::function<bool()> isThere, const std::string& help)
{
    node.request(code, Takes{0}, Gives{4}, [&version, isThere = std::move(isThere)](Request& request) {
        if (!isThere())
            return -EIO;
        std::copy(version.begin(), version.end(), request.out.begin());
        return 0;
    });
    unit.properties().add(
        name, [&version] { return shown(version); }, [&version](const std::string& text) { version = parsed(text); },
        help);
}

HXSIM_HARDWARE(Versions)

} // namespace hxsim
