// SPDX-License-Identifier: LicenseRef-HXAux
// A calibration of the touch screen with five points.

#include <hx-aux/TouchScreenCalib.h>

#include <cstdio>
#include <unistd.h>

using namespace Halvix;

// Prints an error; true on success.
static bool worked(const char* what, eErr err)
{
    if (err != ERR_SUCCESS)
        std::printf("%s: %s (%d)\n", what, GetErrorStringA(err), static_cast<int>(err));
    return err == ERR_SUCCESS;
}

// Waits up to ten seconds until the user has touched a point.
static bool touched(TouchScreenCalib& calibration, unsigned char point)
{
    for (int i = 0; i < 100; ++i) {
        bool finished = false;
        if (!worked("point", calibration.CheckCalibrationPointFinished(&finished, point)))
            return false;
        if (finished)
            return true;
        usleep(100000);
    }
    std::printf("point %d: not touched\n", point);
    return false;
}

int main()
{
    TouchScreenCalib* calibration = GetTouchScreenCalib();
    bool good = worked("start", calibration->SetMode(CalibrationMode5Points));
    for (unsigned char point = 1; good && point <= 5; ++point) {
        // A real program draws the target to touch here.
        good = worked("announce", calibration->SetCalibrationPoint(point)) && touched(*calibration, point);
        if (good)
            std::printf("point %d: touched\n", point);
    }
    CalibrationModeSettings mode = CalibrationModeNone;
    if (good && worked("end", calibration->GetMode(&mode)))
        std::printf("%s\n", mode == CalibrationModeNone ? "calibrated" : "still calibrating");
    calibration->Release();
    return good ? 0 : 1;
}
