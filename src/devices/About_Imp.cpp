// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/About_Imp.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace Halvix {

namespace {

/// One property as read from a store: cleared first, so always a text.
struct Property {
    char text[255] = {};

    [[nodiscard]] eErr read(const EepromConfig& store, const char* key)
    {
        return store.GetProperty(key, text, sizeof text) ? ERR_SUCCESS : ERR_JIDA_EEPROM;
    }

    /// Leading decimal digits, 0 when there are none; limited to 32 bits on both ABIs.
    [[nodiscard]] int number() const
    {
        static constexpr long kSmallest = std::numeric_limits<int>::min();
        static constexpr long kLargest = std::numeric_limits<int>::max();
        return static_cast<int>(std::clamp(std::strtol(text, nullptr, 10), kSmallest, kLargest));
    }
};

/// A text of exactly `size` characters fits: the terminating zero is then written to text[size]. Callers rely on it.
eErr copyOut(const Property& property, char* text, int size)
{
    const std::size_t length = std::strlen(property.text);
    if (static_cast<int>(length) > size)
        return ERR_BUFFER_SIZE;
    std::memcpy(text, property.text, length + 1);
    return ERR_SUCCESS;
}

eErr getText(const EepromConfig& store, const char* key, char* text, int size)
{
    Property property;
    if (const eErr err = property.read(store, key); err != ERR_SUCCESS)
        return err;
    return copyOut(property, text, size);
}

eErr getNumber(const EepromConfig& store, const char* key, unsigned char* count)
{
    Property property;
    if (const eErr err = property.read(store, key); err != ERR_SUCCESS)
        return err;
    *count = static_cast<unsigned char>(property.number());
    return ERR_SUCCESS;
}

eErr getFlag(const EepromConfig& store, const char* key, bool* fitted)
{
    Property property;
    if (const eErr err = property.read(store, key); err != ERR_SUCCESS)
        return err;
    *fitted = property.number() == 1; // any other number means not fitted
    return ERR_SUCCESS;
}

} // namespace

About_Imp::About_Imp()
    : main_{std::make_unique<EepromConfig>(EepromTypeMain)}, addOn_{std::make_unique<EepromConfig>(EepromTypeAddOn)}
{
}

eErr About_Imp::getMainPCBSerial(char* text, int size)
{
    // The only one that checks the pointer, and only after the property and its length.
    Property property;
    if (const eErr err = property.read(*main_, "PCB_SERIAL"); err != ERR_SUCCESS)
        return err;
    if (static_cast<int>(std::strlen(property.text)) > size)
        return ERR_BUFFER_SIZE;
    if (text == nullptr)
        return ERR_INVALID_PARAMETER;
    return copyOut(property, text, size);
}

eErr About_Imp::getUnitSerial(char* text, int size)
{
    return getText(*main_, "UNIT_SERIAL", text, size);
}

eErr About_Imp::getMainPCBArt(char* text, int size)
{
    return getText(*main_, "PCB_ART", text, size);
}

eErr About_Imp::getMainManufacturingDate(char* text, int size)
{
    return getText(*main_, "DATE", text, size);
}

eErr About_Imp::getMainHWversion(char* text, int size)
{
    Property layout;
    if (const eErr err = layout.read(*main_, "DATA"); err != ERR_SUCCESS)
        return err;
    switch (layout.number()) {
    case 1:
        return getText(*main_, "HWVERSION", text, size);
    case 2:
        return getText(*main_, "PCB_REV", text, size);
    default:
        return ERR_JIDA_EEPROM;
    }
}

eErr About_Imp::getMainProdRev(char* text, int size)
{
    return getText(*main_, "PROD_REV", text, size);
}

eErr About_Imp::getMainProdArtNr(char* text, int size)
{
    return getText(*main_, "PROD_ART", text, size);
}

eErr About_Imp::getNrOfETHConnections(unsigned char* count)
{
    return getNumber(*main_, "ETH", count);
}

eErr About_Imp::getNrOfCANConnections(unsigned char* count)
{
    return getNumber(*main_, "CAN", count);
}

eErr About_Imp::getNrOfVideoConnections(unsigned char* count)
{
    return getNumber(*main_, "VIDEO", count);
}

eErr About_Imp::getNrOfUSBConnections(unsigned char* count)
{
    return getNumber(*main_, "USBHOST", count);
}

eErr About_Imp::getNrOfSerialConnections(unsigned char* count)
{
    Property property;
    if (const eErr err = property.read(*main_, "DATA"); err != ERR_SUCCESS)
        return err;
    switch (property.number()) {
    case 1:
        return getNumber(*main_, "SERIAL", count);
    case 2:
        return getNumber(*main_, "RS232", count);
    default: // callers rely on it: an unknown layout's number is the count
        *count = static_cast<unsigned char>(property.number());
        return ERR_SUCCESS;
    }
}

eErr About_Imp::getAddOnPCBSerial(char* text, int size)
{
    return getText(*addOn_, "PCB_SERIAL", text, size);
}

eErr About_Imp::getAddOnPCBArt(char* text, int size)
{
    return getText(*addOn_, "PCB_ART", text, size);
}

eErr About_Imp::getAddOnManufacturingDate(char* text, int size)
{
    return getText(*addOn_, "DATE", text, size);
}

eErr About_Imp::getAddOnHWversion(char* text, int size)
{
    return getText(*addOn_, "PCB_REV", text, size);
}

eErr About_Imp::getIsWLANMounted(bool* fitted)
{
    return getFlag(*addOn_, "WLAN", fitted);
}

eErr About_Imp::getIsGPSMounted(bool* fitted)
{
    return getFlag(*addOn_, "GPS", fitted);
}

eErr About_Imp::getIsGPRSMounted(bool* fitted)
{
    return getFlag(*addOn_, "GSM", fitted);
}

eErr About_Imp::getIsBTMounted(bool* fitted)
{
    return getFlag(*addOn_, "BLUETOOTH", fitted);
}

eErr About_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::About* GetAbout()
{
    // Null when any allocation fails.
    try {
        return new (std::nothrow) Halvix::About_Imp;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
