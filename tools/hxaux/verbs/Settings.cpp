// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/HXAuxPrivate.h"
#include "tools/cli/PlainText.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <array>

namespace hxaux {

namespace {

using Halvix::HXAuxPrivate;

constexpr std::array kKeys = {"ABL_status",         "ABL_bSoftTransitions", "ABL_k",    "ABL_averageWndSize",
                              "ABL_rejectWndSize",  "ABL_rejectDeltaInLux", "ABL_mode", "UseLEDDimming",
                              "GPRSPowerAtStartup", "WLANPowerAtStartup"};

Halvix::eErr read(HXAuxPrivate& service, const std::string& key, std::string& value)
{
    std::array<char, 4096> text{};
    const Halvix::eErr code = service.getFileSetting(key.c_str(), text.data(), static_cast<int>(text.size()));
    if (code == Halvix::ERR_SUCCESS)
        value = text.data();
    return code;
}

void checkSettingKey(Call& call)
{
    if (const std::string reason = cli::refusedSettingKey(call.text("key")); !reason.empty())
        call.fail(Exit::Usage, "the key cannot be used: " + reason);
}

void getSetting(Call& call)
{
    checkSettingKey(call);
    const HeldSignals held;
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    std::string value;
    const Halvix::eErr code = read(*service, call.text("key"), value);
    if (code == Halvix::ERR_COMMAND_FAILED)
        call.note("the setting is missing or empty; 'hxaux settings list' shows those that are set");
    call.check(code);
    call.printNamedByUser(call.text("key"), value);
}

void setSetting(Call& call)
{
    checkSettingKey(call);
    if (const std::string reason = cli::refusedSetting(call.text("value")); !reason.empty())
        call.fail(Exit::Usage, "the value cannot be stored: " + reason);
    const HeldSignals held;
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    call.check(service->setFileSetting(call.text("key").c_str(), call.text("value").c_str()));
    std::string stored;
    if (read(*service, call.text("key"), stored) != Halvix::ERR_SUCCESS ? !call.text("value").empty()
                                                                        : stored != call.text("value"))
        call.fail(Exit::File, "the setting is not in the file afterwards: the file cannot be written");
}

void listSettings(Call& call)
{
    const HeldSignals held;
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    for (const char* key : kKeys) {
        std::string value;
        if (read(*service, key, value) == Halvix::ERR_SUCCESS)
            call.printNamedByUser(key, value);
    }
}

} // namespace

const Object objects::Settings{
    "settings",
    "the settings file",
    {
        {.name = "get",
         .help = "Reads a setting.",
         .example = "hxaux settings get ABL_k",
         .run = getSetting,
         .values = {text("key", "name of the setting")}},
        {.name = "set",
         .help = "Stores a setting.",
         .example = "hxaux settings set ABL_k 50",
         .run = setSetting,
         .values = {text("key", "name of the setting"), text("value", "its value; '' empties it")},
         .details = "Running programs are not notified. To change the automatic backlight use 'hxaux backlight auto'."},
        {.name = "list",
         .help = "Lists the documented settings that are present.",
         .example = "hxaux settings list",
         .run = listSettings},
    }};

} // namespace hxaux
