// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/ErrorNames.h"

#include "hx-aux/errors.h"
#include "tools/hxaux/Verb.h"

namespace hxaux {

std::string errorName(int code)
{
    using namespace Halvix;
#define NAME(code)                                                                                                     \
    {                                                                                                                  \
        code, #code                                                                                                    \
    }
    static const Names names = namesOf<eErr>({
        NAME(ERR_SUCCESS),
        NAME(ERR_OPEN_FAILED),
        NAME(ERR_NOT_SUPPORTED),
        NAME(ERR_UNKNOWN_FEATURE),
        NAME(ERR_DATATYPE_MISMATCH),
        NAME(ERR_CODE_NOT_EXIST),
        NAME(ERR_BUFFER_SIZE),
        NAME(ERR_IOCTRL_FAILED),
        NAME(ERR_INVALID_DATA),
        NAME(ERR_INVALID_PARAMETER),
        NAME(ERR_CREATE_THREAD),
        NAME(ERR_IN_PROGRESS),
        NAME(ERR_CHECKSUM),
        NAME(ERR_INIT_FAILED),
        NAME(ERR_VERIFY_FAILED),
        NAME(ERR_DEVICE_READ_DATA_FAILED),
        NAME(ERR_DEVICE_WRITE_DATA_FAILED),
        NAME(ERR_COMMAND_FAILED),
        NAME(ERR_JIDA_EEPROM),
        NAME(ERR_JIDA_TEMP),
        NAME(ERR_AVERAGE_CALC_STARTED),
        NAME(ERR_NOT_RUNNING),
        NAME(ERR_I2C_EXPANDER_READ_FAILED),
        NAME(ERR_I2C_EXPANDER_WRITE_FAILED),
        NAME(ERR_I2C_EXPANDER_INIT_FAILED),
        NAME(ERR_NEWER_SS_VERSION_REQUIRED),
        NAME(ERR_NEWER_FPGA_VERSION_REQUIRED),
        NAME(ERR_NEWER_FRONT_VERSION_REQUIRED),
        NAME(ERR_TELEMATICS_GPRS_NOT_AVAILABLE),
        NAME(ERR_TELEMATICS_WLAN_NOT_AVAILABLE),
        NAME(ERR_TELEMATICS_BT_NOT_AVAILABLE),
        NAME(ERR_TELEMATICS_GPS_NOT_AVAILABLE),
        NAME(ERR_MEM_ALLOC_FAIL),
    });
#undef NAME
    return names.nameOf(code);
}

} // namespace hxaux
