// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_FIRMWAREUPGRADE_H
#define HX_AUX_FIRMWAREUPGRADE_H

#include "hx-aux/errors.h"

namespace Halvix {

enum UpgradeAction HX_32BIT {
    UpgradeActionPrepareHardware = 0,
    UpgradeActionConnect = 1,
    UpgradeActionReserved = 2,
    UpgradeActionReadFile = 3,
    UpgradeActionWrite = 4,
    UpgradeActionVerify = 5,
    UpgradeActionFinished = 6,
    UpgradeActionFailed = 7,
    HX_32BIT_RANGE(UpgradeAction)
};

struct UpgradeStatus {
    UpgradeAction action;
    unsigned char percent;
    unsigned char reserved[3];
    eErr error;
};

class FirmwareUpgrade {
public:
    virtual eErr startFpgaUpgrade(const char* file, bool blocking) = 0;
    virtual eErr startFpgaVerification(const char* file, bool blocking) = 0;
    virtual eErr startSSUpgrade(const char* file, bool blocking) = 0;
    virtual eErr startSSVerification(const char* file, bool blocking) = 0;
    virtual eErr startFrontUpgrade(const char* file, bool blocking) = 0;
    virtual eErr startFrontVerification(const char* file, bool blocking) = 0;
    virtual eErr getUpgradeStatus(UpgradeStatus* status, bool wait) = 0;
    virtual eErr shutDown() = 0;
    virtual void Release() = 0;

protected:
    ~FirmwareUpgrade() {}
};

} // namespace Halvix

HX_EXPORT Halvix::FirmwareUpgrade* GetFirmwareUpgrade();

#endif
