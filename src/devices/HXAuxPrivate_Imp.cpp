// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/HXAuxPrivate_Imp.h"

#include "platform/ControlCodes.h"
#include "settings/WithSettings.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>

namespace Halvix {

namespace {

struct SmartRegister {
    std::uint16_t number;
    std::uint16_t value;
};
static_assert(sizeof(SmartRegister) == 4);

constexpr Request<SmartRegister, SmartRegister> kReadSmart{codes::smartRead};
constexpr Write<SmartRegister> kWriteSmart{codes::smartWrite};
constexpr char kLastSmartRegister = 95;

SmartRegister smartRegister(char reg, std::uint16_t value)
{
    return {static_cast<std::uint16_t>(reg), value};
}

} // namespace

eErr HXAuxPrivate_Imp::getEepromProperty(unsigned char store, char* key, char* value, int size)
try {
    char text[255] = {};
    if (!storeOf(store).GetProperty(key, text, sizeof text))
        return ERR_JIDA_EEPROM;
    const std::size_t length = std::strlen(text);
    if (static_cast<int>(length) >
        size) // a value of exactly size characters is accepted: callers pass a buffer of size + 1
        return ERR_BUFFER_SIZE;
    std::memcpy(value, text, length + 1);
    return ERR_SUCCESS;
} catch (const std::exception&) {
    return ERR_MEM_ALLOC_FAIL;
}

eErr HXAuxPrivate_Imp::setEepromProperty(unsigned char store, char* key, char* value)
try {
    return storeOf(store).UpdateProperty(key, value) ? ERR_SUCCESS : ERR_JIDA_EEPROM;
} catch (const std::exception&) {
    return ERR_MEM_ALLOC_FAIL;
}

eErr HXAuxPrivate_Imp::getFromSmart(char reg, unsigned short* value)
{
    if (reg > kLastSmartRegister) // signed: negative numbers are accepted, callers rely on it
        return ERR_INVALID_DATA;
    const SmartRegister sent = smartRegister(reg, 0);
    SmartRegister answer = sent;
    if (const eErr err = channel_.query(kReadSmart, sent, &answer); err != ERR_SUCCESS)
        return err;
    if (answer.number != sent.number)
        return ERR_DATATYPE_MISMATCH;
    *value = answer.value;
    return ERR_SUCCESS;
}

eErr HXAuxPrivate_Imp::setToSmart(char reg, unsigned short value)
{
    if (reg > kLastSmartRegister)
        return ERR_INVALID_DATA;
    return channel_.write(kWriteSmart, smartRegister(reg, value));
}

eErr HXAuxPrivate_Imp::automaticBacklightInit()
{
    return controller_.init();
}

eErr HXAuxPrivate_Imp::setFileSetting(char const* key, char const* value)
{
    return withSettings([&](IniSettings& settings) {
        if (key != nullptr)
            settings.set(key, value != nullptr ? value : "");
        return ERR_SUCCESS;
    });
}

eErr HXAuxPrivate_Imp::getFileSetting(char const* key, char* value, int size)
{
    return withSettings([&](IniSettings& settings) {
        const std::string text = key != nullptr ? settings.get(key) : std::string{};
        if (text.empty())
            return ERR_COMMAND_FAILED;
        if (size <= 0 || text.size() >= static_cast<std::size_t>(size))
            return ERR_BUFFER_SIZE;
        (void)std::snprintf(value, static_cast<std::size_t>(size), "%s", text.c_str());
        return ERR_SUCCESS;
    });
}

eErr HXAuxPrivate_Imp::resumeVideo()
{
    // The flag is ignored. The request always reports failure: its outcome cannot be determined.
    return LinuxWrapper::IoCtrl(channel_.handle(), codes::resumeVideo, nullptr, 0, nullptr, 0, nullptr)
               ? ERR_SUCCESS
               : ERR_IOCTRL_FAILED;
}

eErr HXAuxPrivate_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::HXAuxPrivate* GetHXAuxPrivate()
{
    return new Halvix::HXAuxPrivate_Imp;
}
