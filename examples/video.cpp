// SPDX-License-Identifier: LicenseRef-HXAux
// An analog video input as a window on the display.

#include <hx-aux/Video.h>

#include <cstdio>

using namespace Halvix;

// Prints an error; true on success.
static bool worked(const char* what, eErr err)
{
    if (err != ERR_SUCCESS)
        std::printf("%s: %s (%d)\n", what, GetErrorStringA(err), static_cast<int>(err));
    return err == ERR_SUCCESS;
}

int main()
{
    Video* video = GetVideo();
    if (!worked("open", video->init(1))) {
        video->Release();
        return 1;
    }
    worked("channel", video->setActiveChannel(VideoChannel2));
    worked("area", video->setVideoArea(100, 50, 640, 480));
    worked("scaling", video->setScaling(0.5F, 0.5F));
    worked("show", video->showVideo(true));
    float x = 0, y = 0;
    if (worked("scaling", video->getScaling(&x, &y)))
        std::printf("scaling: %.2f by %.2f\n", static_cast<double>(x), static_cast<double>(y));
    videoStandard standard = videoStandardUnknown7;
    if (worked("standard", video->getVideoStandard(&standard)))
        std::printf("standard: %s\n", standard == videoStandardPal ? "PAL" : "another");
    if (video->activateSnapshot(true) == ERR_NOT_SUPPORTED)
        std::printf("snapshots are not supported\n");
    worked("hide", video->showVideo(false));
    video->Release();
    return 0;
}
