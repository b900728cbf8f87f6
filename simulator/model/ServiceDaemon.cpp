// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/ServiceDaemon.h"

#include "simulator/model/Text.h"

#include <cerrno>
#include <cstring>

namespace hxsim {

ServiceDaemon::ServiceDaemon(Unit& unit)
{
    Node& node = unit.addNode("/tmp/hxauxd.fifo");
    node.openError = [this] { return running || plainFile ? 0 : ENXIO; }; // no reader
    node.onWrite([this](OpenFile&, std::span<const std::uint8_t> in) -> Outcome {
        if (plainFile)
            return {static_cast<std::int64_t>(in.size()), false, {}};
        if (!running)
            return {-EPIPE, false, {}};
        if (full)
            return {-EAGAIN, false, {}};
        take(in);
        return {static_cast<std::int64_t>(in.size()), false, {}};
    });
    unit.properties().flag("daemon.running", running, "whether the service daemon reads its FIFO");
    unit.properties().flag("daemon.full", full, "whether the FIFO is full and not read");
    unit.properties().add(
        "daemon.plain-file", [this] { return onOrOff(plainFile); },
        [this, &node](const std::string& text) {
            plainFile = parseFlag(text);
            node.showAsFile(plainFile);
        },
        "whether a plain file exists in place of the FIFO; running programs do not see a change");
    unit.properties().readOnly(
        "daemon.commands", [this] { return shown(); }, "commands that the daemon got, in order");
}

void ServiceDaemon::take(std::span<const std::uint8_t> bytes)
{
    unread_.insert(unread_.end(), bytes.begin(), bytes.end());
    std::int32_t command = 0;
    while (unread_.size() >= sizeof command) {
        std::memcpy(&command, unread_.data(), sizeof command);
        commands.push_back(command);
        unread_.erase(unread_.begin(), unread_.begin() + sizeof command);
    }
}

std::string ServiceDaemon::shown() const
{
    std::string text;
    for (const std::int32_t command : commands)
        text += (text.empty() ? "" : " ") + std::to_string(command);
    return text;
}

HXSIM_HARDWARE(ServiceDaemon)

} // namespace hxsim
