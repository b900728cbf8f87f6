// SPDX-License-Identifier: LicenseRef-HXAux
/// @file status-texts.h
/// @brief Texts of the supervisor's error states and start-up reasons.
#ifndef HX_AUX_STATUS_TEXTS_H
#define HX_AUX_STATUS_TEXTS_H

#include "hx-aux/types.h"

/// @brief Returns the text of a hardware error status, as `Diagnostic::getHwErrorStatus` returns it.
/// @param[in] code  0 to 131.
/// @return A constant text; neither change nor free it. A code above 131 yields "Unknown error code".
/// @threadsafe Always.
HX_EXPORT const char* GetHwErrorStatusStringA(unsigned short code);

/// @brief Returns the text of a hardware error status as a wide text (4 bytes a character).
/// @param[in] code  0 to 131.
/// @return A constant text; neither change nor free it. A code above 131 yields L"Unknown error code".
/// @threadsafe Always.
HX_EXPORT const wchar_t* GetHwErrorStatusStringW(unsigned short code);

/// @brief Returns the text of a start-up reason, as `Diagnostic::getStartupReason` returns it.
/// @param[in] code  0x0F power on, 0x55 front panel button, 0xAA external control signal, 0xF0 restart by the system.
/// @return A constant text; neither change nor free it. Another code yields "Unknown".
/// @threadsafe Always.
HX_EXPORT const char* GetStartupReasonStringA(unsigned short code);

/// @brief Returns the text of a start-up reason as a wide text (4 bytes a character).
/// @param[in] code  0x0F power on, 0x55 front panel button, 0xAA external control signal, 0xF0 restart by the system.
/// @return A constant text; neither change nor free it. Another code yields L"Unknown".
/// @threadsafe Always.
HX_EXPORT const wchar_t* GetStartupReasonStringW(unsigned short code);

#endif
