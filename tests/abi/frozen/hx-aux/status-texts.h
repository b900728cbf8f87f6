// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_STATUS_TEXTS_H
#define HX_AUX_STATUS_TEXTS_H

#include "hx-aux/types.h"

HX_EXPORT const char* GetHwErrorStatusStringA(unsigned short code);
HX_EXPORT const wchar_t* GetHwErrorStatusStringW(unsigned short code);
HX_EXPORT const char* GetStartupReasonStringA(unsigned short code);
HX_EXPORT const wchar_t* GetStartupReasonStringW(unsigned short code);

#endif
