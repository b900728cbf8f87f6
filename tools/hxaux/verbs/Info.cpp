// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/About.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/doctor/Doctor.h"

#include <array>

namespace hxaux {

namespace {

using Halvix::About;
using Halvix::eErr;

// Shown for a property that the EEPROM lacks.
constexpr eErr kMissing = Halvix::ERR_JIDA_EEPROM;

template <typename Getter>
struct Item {
    const char* name;
    Getter get;
};

using TextItem = Item<eErr (About::*)(char*, int)>;
using NumberItem = Item<eErr (About::*)(unsigned char*)>;
using FlagItem = Item<eErr (About::*)(bool*)>;

constexpr std::array kUnitTexts = {
    TextItem{"unit serial", &About::getUnitSerial},
    TextItem{"product article", &About::getMainProdArtNr},
    TextItem{"product revision", &About::getMainProdRev},
    TextItem{"manufactured", &About::getMainManufacturingDate},
    TextItem{"main board serial", &About::getMainPCBSerial},
    TextItem{"main board article", &About::getMainPCBArt},
    TextItem{"main board revision", &About::getMainHWversion},
};

constexpr std::array kConnectors = {
    NumberItem{"ethernet connectors", &About::getNrOfETHConnections},
    NumberItem{"can connectors", &About::getNrOfCANConnections},
    NumberItem{"video connectors", &About::getNrOfVideoConnections},
    NumberItem{"usb connectors", &About::getNrOfUSBConnections},
    NumberItem{"serial connectors", &About::getNrOfSerialConnections},
};

constexpr std::array kAddOnTexts = {
    TextItem{"add-on board serial", &About::getAddOnPCBSerial},
    TextItem{"add-on board article", &About::getAddOnPCBArt},
    TextItem{"add-on board manufactured", &About::getAddOnManufacturingDate},
    TextItem{"add-on board revision", &About::getAddOnHWversion},
};

constexpr std::array kModules = {
    FlagItem{"wlan fitted", &About::getIsWLANMounted},
    FlagItem{"gps fitted", &About::getIsGPSMounted},
    FlagItem{"gprs fitted", &About::getIsGPRSMounted},
    FlagItem{"bluetooth fitted", &About::getIsBTMounted},
};

// Without it nothing can be read: that does not mean that it is absent.
bool boardLibraryLoads()
{
    static const bool loads = doctor::boardLibrary().front().problem.empty();
    return loads;
}

// Reads each item by `read(getter, value)`; a missing one is shown as absent. Returns the number of items present.
template <typename Items, typename Reader>
int print(Call& call, const Items& items, Reader read)
{
    int found = 0;
    for (const auto& item : items) {
        Value value;
        const eErr code = read(item.get, value);
        if (code != kMissing && !call.attempt(item.name, code))
            continue;
        found += code == Halvix::ERR_SUCCESS ? 1 : 0;
        const Value missing = call.asJson() || boardLibraryLoads() ? Value(Absent{}) : Value("unknown");
        call.print(item.name, code == Halvix::ERR_SUCCESS ? value : missing);
    }
    return found;
}

void readInfo(Call& call)
{
    const Interface<About> about(GetAbout());
    const auto text = [&](auto get, Value& value) {
        std::array<char, 256> buffer{};
        const eErr code = ((*about).*get)(buffer.data(), static_cast<int>(buffer.size()) - 1);
        value = buffer.data();
        return code;
    };
    const auto number = [&](auto get, Value& value) {
        unsigned char count = 0;
        const eErr code = ((*about).*get)(&count);
        value = count;
        return code;
    };
    const auto fitted = [&](auto get, Value& value) {
        bool there = false;
        const eErr code = ((*about).*get)(&there);
        value = call.asJson() ? Value(there) : Value(there ? "yes" : "no");
        return code;
    };
    const int found = print(call, kUnitTexts, text) + print(call, kConnectors, number) +
                      print(call, kAddOnTexts, text) + print(call, kModules, fitted);
    if (found == 0 && !boardLibraryLoads())
        call.note("the board library cannot be loaded; 'hxaux doctor board-library' says why");
    if (found == 0)
        call.check(kMissing); // no EEPROM can be read at all
}

} // namespace

const Object objects::Info{
    "info",
    "production data of the unit: serial numbers, revisions, connectors and fitted modules",
    {
        {.name = "",
         .help = "Shows all production data of the unit.",
         .example = "hxaux info",
         .run = readInfo,
         .details = "What production left out is shown as absent, what cannot be read without the board library as "
                    "unknown. Takes about a second: both EEPROMs are read."},
    }};

} // namespace hxaux
