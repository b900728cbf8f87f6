// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/HXAuxPrivate.h"
#include "tools/cli/NearNames.h"
#include "tools/cli/PlainText.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <array>

namespace hxaux {

namespace {

using Halvix::HXAuxPrivate;

const Names kStores = namesOf<int>({{0, "main"}, {1, "add-on"}});

constexpr std::array kMainKeys = {"DATA",    "PCB_SERIAL", "UNIT_SERIAL", "PCB_ART", "DATE",  "HWVERSION",
                                  "PCB_REV", "PROD_REV",   "PROD_ART",    "ETH",     "MAC1",  "MAC2",
                                  "CAN",     "VIDEO",      "USBHOST",     "SERIAL",  "RS232", "CF"};
constexpr std::array kAddOnKeys = {"DATA", "PCB_SERIAL", "PCB_ART", "DATE",     "PCB_REV",
                                   "WLAN", "GPS",        "GSM",     "BLUETOOTH"};

unsigned char storeOf(Call& call)
{
    return call.has("store") ? call.as<unsigned char>("store") : 0;
}

// The library takes non-const texts but never changes them.
Halvix::eErr read(HXAuxPrivate& service, unsigned char store, std::string key, std::string& value)
{
    std::array<char, 256> text{};
    const Halvix::eErr code =
        service.getEepromProperty(store, key.data(), text.data(), static_cast<int>(text.size()) - 1);
    if (code == Halvix::ERR_SUCCESS)
        value = text.data();
    return code;
}

void checkPropertyKey(Call& call)
{
    if (const std::string reason = cli::refusedPropertyKey(call.text("key")); !reason.empty())
        call.fail(Exit::Usage, "the key cannot be used: " + reason);
}

// The documented key that was meant, and where those are listed that there are.
std::string hintFor(Call& call)
{
    const Words known =
        storeOf(call) == 0 ? Words(kMainKeys.begin(), kMainKeys.end()) : Words(kAddOnKeys.begin(), kAddOnKeys.end());
    const std::string store = storeOf(call) == 0 ? "" : " --store add-on";
    const std::string near = cli::suggestion(call.text("key"), known);
    return "the property is missing, or the EEPROM cannot be read" + (near.empty() ? ";" : near) +
           " 'hxaux eeprom list" + store + "' shows those that are present";
}

void getProperty(Call& call)
{
    checkPropertyKey(call);
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    std::string value;
    const Halvix::eErr code = read(*service, storeOf(call), call.text("key"), value);
    if (code == Halvix::ERR_JIDA_EEPROM)
        call.note(hintFor(call));
    call.check(code);
    call.printNamedByUser(call.text("key"), value);
}

void setProperty(Call& call)
{
    checkPropertyKey(call);
    if (const std::string reason = cli::refusedProperty(call.text("value")); !reason.empty())
        call.fail(Exit::Usage, "the value cannot be stored: " + reason);
    const HeldSignals held; // an interrupted write leaves half of the old and half of the new text
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    std::string key = call.text("key");
    std::string value = call.text("value");
    call.check(service->setEepromProperty(storeOf(call), key.data(), value.data()));
}

template <std::size_t Count>
bool listKeys(Call& call, HXAuxPrivate& service, unsigned char store, const std::array<const char*, Count>& keys)
{
    bool found = false;
    for (const char* key : keys) {
        std::string value;
        if (read(service, store, key, value) != Halvix::ERR_SUCCESS)
            continue;
        call.printNamedByUser(key, value);
        found = true;
    }
    return found;
}

void list(Call& call)
{
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    const unsigned char store = storeOf(call);
    const bool found =
        store == 0 ? listKeys(call, *service, store, kMainKeys) : listKeys(call, *service, store, kAddOnKeys);
    if (!found)
        call.check(Halvix::ERR_JIDA_EEPROM);
}

Argument store()
{
    return choice("store", kStores, "whose production data; the main board's when it is left out").optional();
}

} // namespace

const Object objects::Eeprom{
    "eeprom",
    "production data in the EEPROMs of main board and add-on board",
    {
        {.name = "get",
         .help = "Reads a property.",
         .example = "hxaux eeprom get UNIT_SERIAL",
         .run = getProperty,
         .values = {text("key", "name of the property")},
         .options = {store()}},
        {.name = "set",
         .help = "Changes the value of a property that exists.",
         .example = "hxaux eeprom set UNIT_SERIAL 12345",
         .run = setProperty,
         .values = {text("key", "name of the property"), text("value", "its new value, without blanks")},
         .options = {store()},
         .details = "The whole EEPROM is rewritten, which takes a few seconds; do not switch the unit off meanwhile."},
        {.name = "list",
         .help = "Lists the documented properties that are present.",
         .example = "hxaux eeprom list --store add-on",
         .run = list,
         .options = {store()}},
    }};

} // namespace hxaux
