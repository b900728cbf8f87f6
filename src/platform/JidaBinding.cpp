// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Jida.h"

#include <cstdio>
#include <dlfcn.h>

// Programs may read and write the pointers, and old ones have their own copy of them: always access them through the
// symbol.
decltype(pJidaBoardClose) pJidaBoardClose = nullptr;
decltype(pJidaTemperatureGetCurrent) pJidaTemperatureGetCurrent = nullptr;
decltype(pJidaBoardOpenA) pJidaBoardOpenA = nullptr;
decltype(pJidaBoardCountA) pJidaBoardCountA = nullptr;
decltype(pJidaI2CWrite) pJidaI2CWrite = nullptr;
decltype(pJidaTemperatureCount) pJidaTemperatureCount = nullptr;
decltype(pJidaDllInstall) pJidaDllInstall = nullptr;
decltype(pJidaI2CWriteReadCombined) pJidaI2CWriteReadCombined = nullptr;
decltype(pJidaDllInitialize) pJidaDllInitialize = nullptr;
decltype(pJidaDllUninitialize) pJidaDllUninitialize = nullptr;
decltype(pJidaTemperatureGetInfo) pJidaTemperatureGetInfo = nullptr;
decltype(pJidaI2CWriteRegister) pJidaI2CWriteRegister = nullptr;
decltype(pJidaI2CReadRegister) pJidaI2CReadRegister = nullptr;

namespace {

// Several threads may initialise at once, all with the same values: no lock, but no torn pointer either.

template <class Function>
bool resolve(void* library, const char* name, Function*& pointer)
{
    __atomic_store_n(&pointer, reinterpret_cast<Function*>(::dlsym(library, name)), __ATOMIC_RELAXED);
    if (::dlerror() == nullptr)
        return true;
    // The first call cleared the text: the result of the second one is printed.
    const char* text = ::dlerror();
    std::printf("Failed to find symbol %s. Error = %s\r\n", name, text != nullptr ? text : "(null)");
    return false;
}

template <class... Arguments>
unsigned int forward(unsigned int (*const& pointer)(Arguments...), Arguments... arguments)
{
    const auto function = __atomic_load_n(&pointer, __ATOMIC_RELAXED);
    return function != nullptr ? function(arguments...) : 0;
}

} // namespace

bool JidaLinuxInitialize()
{
    void* library = ::dlopen("libjida.so", RTLD_LAZY); // never closed: the pointers stay
    return library != nullptr && resolve(library, "JidaBoardClose", pJidaBoardClose) &&
           resolve(library, "JidaTemperatureGetCurrent", pJidaTemperatureGetCurrent) &&
           resolve(library, "JidaBoardOpenA", pJidaBoardOpenA) &&
           resolve(library, "JidaBoardCountA", pJidaBoardCountA) && resolve(library, "JidaI2CWrite", pJidaI2CWrite) &&
           resolve(library, "JidaTemperatureCount", pJidaTemperatureCount) &&
           resolve(library, "JidaDllInstall", pJidaDllInstall) &&
           resolve(library, "JidaI2CWriteReadCombined", pJidaI2CWriteReadCombined) &&
           resolve(library, "JidaDllInitialize", pJidaDllInitialize) &&
           resolve(library, "JidaDllUninitialize", pJidaDllUninitialize) &&
           resolve(library, "JidaTemperatureGetInfo", pJidaTemperatureGetInfo) &&
           resolve(library, "JidaI2CWriteRegister", pJidaI2CWriteRegister) &&
           resolve(library, "JidaI2CReadRegister", pJidaI2CReadRegister);
}

unsigned int JidaDllInitialize()
{
    return forward(pJidaDllInitialize);
}

unsigned int JidaDllUninitialize()
{
    return forward(pJidaDllUninitialize);
}

unsigned int JidaDllInstall(unsigned long install)
{
    return forward(pJidaDllInstall, install);
}

unsigned int JidaBoardCountA(const char* className, unsigned long flags)
{
    return forward(pJidaBoardCountA, className, flags);
}

unsigned int JidaBoardOpenA(const char* className, unsigned long number, unsigned long flags, unsigned long* board)
{
    return forward(pJidaBoardOpenA, className, number, flags, board);
}

unsigned int JidaBoardClose(unsigned long board)
{
    return forward(pJidaBoardClose, board);
}

unsigned int JidaTemperatureCount(unsigned long board)
{
    return forward(pJidaTemperatureCount, board);
}

unsigned int JidaTemperatureGetInfo(unsigned long board, unsigned long index, void* information)
{
    return forward(pJidaTemperatureGetInfo, board, index, information);
}

unsigned int JidaTemperatureGetCurrent(unsigned long board, unsigned long index, unsigned long* temperature,
                                       unsigned long* status)
{
    return forward(pJidaTemperatureGetCurrent, board, index, temperature, status);
}

unsigned int JidaI2CWrite(unsigned long board, unsigned long bus, unsigned char address, const unsigned char* bytes,
                          unsigned long count)
{
    return forward(pJidaI2CWrite, board, bus, address, bytes, count);
}

unsigned int JidaI2CWriteReadCombined(unsigned long board, unsigned long bus, unsigned char address,
                                      const unsigned char* bytes, unsigned long count, unsigned char* answer,
                                      unsigned long answerSize)
{
    return forward(pJidaI2CWriteReadCombined, board, bus, address, bytes, count, answer, answerSize);
}

unsigned int JidaI2CWriteRegister(unsigned long board, unsigned long bus, unsigned char address, unsigned short reg,
                                  unsigned char value)
{
    return forward(pJidaI2CWriteRegister, board, bus, address, reg, value);
}

unsigned int JidaI2CReadRegister(unsigned long board, unsigned long bus, unsigned char address, unsigned short reg,
                                 unsigned char* value)
{
    return forward(pJidaI2CReadRegister, board, bus, address, reg, value);
}
