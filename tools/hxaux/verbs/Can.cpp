// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/CanSetting.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

using Halvix::CanSetting;

constexpr int kNetworks = 4;

const Names kFrameTypes = namesOf<Halvix::CanFrameType>(
    {{Halvix::CanFrameTypeStandard, "standard"}, {Halvix::CanFrameTypeExtended, "extended"}});

void readOne(Call& call, CanSetting& can, int net)
{
    const std::string name = "can " + std::to_string(net);
    unsigned short kbit = 0;
    if (call.attempt(call.has("network") ? "" : name, can.getBaudrate(static_cast<unsigned char>(net), &kbit)))
        call.print(name, kbit, "kbit/s");
}

void readRates(Call& call)
{
    const Interface<CanSetting> can(GetCanSetting());
    if (call.has("network"))
        return readOne(call, *can, call.as<int>("network"));
    for (int net = 1; net <= kNetworks; ++net)
        readOne(call, *can, net);
}

void setRate(Call& call)
{
    const Interface<CanSetting> can(GetCanSetting());
    const Halvix::eErr code = can->setBaudrate(call.as<unsigned char>("network"), call.as<unsigned short>("rate"));
    if (code == Halvix::ERR_IOCTRL_FAILED)
        call.note("the system accepts a new rate only while the interface is down: ip link set can" +
                  std::to_string(call.integer("network") - 1) + " down");
    call.check(code);
}

void frameType(Call& call)
{
    const Interface<CanSetting> can(GetCanSetting());
    const auto net = call.as<unsigned char>("network");
    if (call.has("type"))
        return call.check(can->setFrameType(net, call.as<Halvix::CanFrameType>("type")));
    auto type = Halvix::CanFrameTypeStandard;
    call.check(can->getFrameType(net, &type));
    call.print("frame type", kFrameTypes.nameOf(type));
}

const Argument kNetwork = integer("network", 1, kNetworks, "", "CAN network; network 1 is the interface can0");

} // namespace

const Object objects::Can{
    "can",
    "bit rates of the CAN networks",
    {
        {.name = "get",
         .help = "Reads the bit rate of one network, or of all.",
         .example = "hxaux can get 1",
         .run = readRates,
         .values = {integer("network", 1, kNetworks, "", "which network; all when it is left out").optional()},
         .repeat = Repeat::Watch,
         .details = "A rate that is not an integer number of kbit/s is rounded down."},
        {.name = "set",
         .help = "Sets the bit rate of a network.",
         .example = "hxaux can set 1 250",
         .run = setRate,
         .values = {kNetwork, integer("rate", 0, 1000, "kbit/s", "the new bit rate")},
         .details = "The system accepts a new rate only while the interface is down."},
        {.name = "frame-type",
         .help = "Shows or sets which kind of frames a network carries; this platform supports neither.",
         .example = "hxaux can frame-type 1",
         .run = frameType,
         .values = {kNetwork, choice("type", kFrameTypes, "the new kind").optional()}},
    }};

} // namespace hxaux
