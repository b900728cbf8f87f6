// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_JIDA_H
#define HX_AUX_JIDA_H

#include "hx-aux/types.h"

HX_EXPORT bool JidaLinuxInitialize();
HX_EXPORT unsigned int JidaDllInitialize();
HX_EXPORT unsigned int JidaDllUninitialize();
HX_EXPORT unsigned int JidaDllInstall(unsigned long install);
HX_EXPORT unsigned int JidaBoardCountA(const char* className, unsigned long flags);
HX_EXPORT unsigned int JidaBoardOpenA(const char* className, unsigned long number, unsigned long flags,
                                      unsigned long* board);
HX_EXPORT unsigned int JidaBoardClose(unsigned long board);
HX_EXPORT unsigned int JidaTemperatureCount(unsigned long board);
HX_EXPORT unsigned int JidaTemperatureGetInfo(unsigned long board, unsigned long index, void* information);
HX_EXPORT unsigned int JidaTemperatureGetCurrent(unsigned long board, unsigned long index, unsigned long* temperature,
                                                 unsigned long* status);
HX_EXPORT unsigned int JidaI2CWrite(unsigned long board, unsigned long bus, unsigned char address,
                                    const unsigned char* bytes, unsigned long count);
HX_EXPORT unsigned int JidaI2CWriteReadCombined(unsigned long board, unsigned long bus, unsigned char address,
                                                const unsigned char* bytes, unsigned long count, unsigned char* answer,
                                                unsigned long answerSize);
HX_EXPORT unsigned int JidaI2CWriteRegister(unsigned long board, unsigned long bus, unsigned char address,
                                            unsigned short reg, unsigned char value);
HX_EXPORT unsigned int JidaI2CReadRegister(unsigned long board, unsigned long bus, unsigned char address,
                                           unsigned short reg, unsigned char* value);
HX_EXPORT unsigned int (*pJidaBoardClose)(unsigned long);
HX_EXPORT unsigned int (*pJidaTemperatureGetCurrent)(unsigned long, unsigned long, unsigned long*, unsigned long*);
HX_EXPORT unsigned int (*pJidaBoardOpenA)(const char*, unsigned long, unsigned long, unsigned long*);
HX_EXPORT unsigned int (*pJidaBoardCountA)(const char*, unsigned long);
HX_EXPORT unsigned int (*pJidaI2CWrite)(unsigned long, unsigned long, unsigned char, const unsigned char*,
                                        unsigned long);
HX_EXPORT unsigned int (*pJidaTemperatureCount)(unsigned long);
HX_EXPORT unsigned int (*pJidaDllInstall)(unsigned long);
HX_EXPORT unsigned int (*pJidaI2CWriteReadCombined)(unsigned long, unsigned long, unsigned char, const unsigned char*,
                                                    unsigned long, unsigned char*, unsigned long);
HX_EXPORT unsigned int (*pJidaDllInitialize)();
HX_EXPORT unsigned int (*pJidaDllUninitialize)();
HX_EXPORT unsigned int (*pJidaTemperatureGetInfo)(unsigned long, unsigned long, void*);
HX_EXPORT unsigned int (*pJidaI2CWriteRegister)(unsigned long, unsigned long, unsigned char, unsigned short,
                                                unsigned char);
HX_EXPORT unsigned int (*pJidaI2CReadRegister)(unsigned long, unsigned long, unsigned char, unsigned short,
                                               unsigned char*);

#endif
