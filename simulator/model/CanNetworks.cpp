// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/CanNetworks.h"

#include "simulator/model/Text.h"

#include <cerrno>

namespace hxsim {

namespace {

constexpr std::uint32_t kHighestRate = 1000000;

} // namespace

CanNetworks::CanNetworks(Unit& unit)
{
    for (std::size_t i = 0; i < networks.size(); ++i) {
        Network& network = networks[i];
        Node& node = unit.addNode("/sys/class/net/can" + std::to_string(i) + "/can_bittiming/bitrate");
        node.attribute(
            [&network] { return network.text.empty() ? std::to_string(network.bitrate) + "\n" : network.text; },
            [&network](const std::string& text) { return set(network, text); });
        const std::string name = "can." + std::to_string(i + 1);
        unit.properties().number(name + ".bitrate", network.bitrate, 0, kHighestRate, "bit rate in bit/s");
        unit.properties().flag(name + ".up", network.up, "whether the interface is up, and refuses a new rate");
        unit.properties().text(name + ".text", network.text, "what the attribute reads instead of the rate");
    }
}

int CanNetworks::set(Network& network, const std::string& text)
try {
    const auto rate = static_cast<std::uint32_t>(parseNumber(trimmed(text), 0, kHighestRate));
    if (network.up)
        return -EBUSY;
    network.bitrate = rate;
    return 0;
} catch (const BadText&) {
    return -EINVAL;
}

HXSIM_HARDWARE(CanNetworks)

} // namespace hxsim
