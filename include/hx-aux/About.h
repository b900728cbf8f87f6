// SPDX-License-Identifier: LicenseRef-HXAux
/// @file About.h
/// @brief The unit's identity: serial and article numbers, revisions, connectors and fitted modules.
#ifndef HX_AUX_ABOUT_H
#define HX_AUX_ABOUT_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief The production data of the unit and of its add-on board, read from two EEPROMs.
///
/// Both EEPROMs are read when the object is created, which takes about a second; the operations answer from that copy.
/// Only a new object sees a later change of the EEPROM. Production data survives restarts and upgrades.
///
/// Outputs are written only with ERR_SUCCESS. @p size is the longest text **without** its terminating zero, so the
/// buffer must hold @p size + 1 bytes. Texts are at most 254 characters long.
///
/// @threadsafe Between objects. Operations only read: several threads may use one object, but not while it is being
/// released.
class About {
public:
    /// @brief Reads the main board's serial number.
    /// @param[out] text  The text, zero-terminated. Must not be null.
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PCB_SERIAL" is missing or empty, or the main board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    /// @retval ERR_INVALID_PARAMETER  @p text is null.
    virtual eErr getMainPCBSerial(char* text, int size) = 0;

    /// @brief Reads the unit's serial number.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "UNIT_SERIAL" is missing or empty, or the main board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getUnitSerial(char* text, int size) = 0;

    /// @brief Reads the main board's article number.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PCB_ART" is missing or empty, or the main board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getMainPCBArt(char* text, int size) = 0;

    /// @brief Reads the date on which the unit was made, as production wrote it (for example 2011-01-10).
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "DATE" is missing or empty, or the main board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getMainManufacturingDate(char* text, int size) = 0;

    /// @brief Reads the main board's hardware revision.
    ///
    /// The data's layout ("DATA") decides which property holds it: "HWVERSION" in layout 1, "PCB_REV" in layout 2.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        A property is missing, "DATA" is neither 1 nor 2, or the EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getMainHWversion(char* text, int size) = 0;

    /// @brief Reads the product's revision.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PROD_REV" is missing or empty, or the main board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getMainProdRev(char* text, int size) = 0;

    /// @brief Reads the product's article number.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PROD_ART" is missing or empty, or the main board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getMainProdArtNr(char* text, int size) = 0;

    /// @brief Reads the number of Ethernet connectors.
    /// @param[out] count  The number, 0 when the property is not a number. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p count is written.
    /// @retval ERR_JIDA_EEPROM  "ETH" is missing or empty, or the main board's EEPROM cannot be read.
    virtual eErr getNrOfETHConnections(unsigned char* count) = 0;

    /// @brief Reads the number of CAN connectors.
    /// @param[out] count  The number, 0 when the property is not a number. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p count is written.
    /// @retval ERR_JIDA_EEPROM  "CAN" is missing or empty, or the main board's EEPROM cannot be read.
    virtual eErr getNrOfCANConnections(unsigned char* count) = 0;

    /// @brief Reads the number of video connectors.
    /// @param[out] count  The number, 0 when the property is not a number. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p count is written.
    /// @retval ERR_JIDA_EEPROM  "VIDEO" is missing or empty, or the main board's EEPROM cannot be read.
    virtual eErr getNrOfVideoConnections(unsigned char* count) = 0;

    /// @brief Reads the number of USB connectors.
    /// @param[out] count  The number, 0 when the property is not a number. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p count is written.
    /// @retval ERR_JIDA_EEPROM  "USBHOST" is missing or empty, or the main board's EEPROM cannot be read.
    virtual eErr getNrOfUSBConnections(unsigned char* count) = 0;

    /// @brief Reads the number of serial connectors.
    ///
    /// The data's layout ("DATA") decides which property holds it: "SERIAL" in layout 1, "RS232" in layout 2. In any
    /// other layout the number is that of "DATA" itself.
    /// @param[out] count  The number, 0 when the property is not a number. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p count is written.
    /// @retval ERR_JIDA_EEPROM  A property is missing or empty, or the main board's EEPROM cannot be read.
    virtual eErr getNrOfSerialConnections(unsigned char* count) = 0;

    /// @brief Reads the add-on board's serial number.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PCB_SERIAL" is missing or empty, or the add-on board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getAddOnPCBSerial(char* text, int size) = 0;

    /// @brief Reads the add-on board's article number.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PCB_ART" is missing or empty, or the add-on board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getAddOnPCBArt(char* text, int size) = 0;

    /// @brief Reads the date on which the add-on board was made, as production wrote it.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "DATE" is missing or empty, or the add-on board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getAddOnManufacturingDate(char* text, int size) = 0;

    /// @brief Reads the add-on board's hardware revision.
    /// @param[out] text  The text, zero-terminated. Must not be null (not checked).
    /// @param[in]  size  Longest accepted text in characters, without the terminating zero.
    /// @retval ERR_SUCCESS            @p text is written.
    /// @retval ERR_JIDA_EEPROM        "PCB_REV" is missing or empty, or the add-on board's EEPROM cannot be read.
    /// @retval ERR_BUFFER_SIZE        The text is longer than @p size.
    virtual eErr getAddOnHWversion(char* text, int size) = 0;

    /// @brief Reads whether a WLAN module is fitted.
    /// @param[out] fitted  True when the property is the number 1. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p fitted is written.
    /// @retval ERR_JIDA_EEPROM  "WLAN" is missing or empty, or the add-on board's EEPROM cannot be read.
    virtual eErr getIsWLANMounted(bool* fitted) = 0;

    /// @brief Reads whether a GPS module is fitted.
    /// @param[out] fitted  True when the property is the number 1. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p fitted is written.
    /// @retval ERR_JIDA_EEPROM  "GPS" is missing or empty, or the add-on board's EEPROM cannot be read.
    virtual eErr getIsGPSMounted(bool* fitted) = 0;

    /// @brief Reads whether a GSM/GPRS module is fitted.
    /// @param[out] fitted  True when the property is the number 1. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p fitted is written.
    /// @retval ERR_JIDA_EEPROM  "GSM" is missing or empty, or the add-on board's EEPROM cannot be read.
    virtual eErr getIsGPRSMounted(bool* fitted) = 0;

    /// @brief Reads whether a Bluetooth module is fitted.
    /// @param[out] fitted  True when the property is the number 1. Must not be null (not checked).
    /// @retval ERR_SUCCESS      @p fitted is written.
    /// @retval ERR_JIDA_EEPROM  "BLUETOOTH" is missing or empty, or the add-on board's EEPROM cannot be read.
    virtual eErr getIsBTMounted(bool* fitted) = 0;

    /// @brief Deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    virtual eErr Release() = 0;

protected:
    ~About() {}
};

} // namespace Halvix

/// @brief Creates an object with the contents of both EEPROMs.
///
/// Succeeds whatever the EEPROMs contain; operations whose property cannot be read answer ERR_JIDA_EEPROM.
/// @return The object, or null when out of memory. Free it with Release.
/// @threadsafe Always.
HX_EXPORT Halvix::About* GetAbout();

#endif
