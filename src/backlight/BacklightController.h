// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/ControlLaw.h"
#include "hx-aux/Lightsensor.h"

#include <memory>

namespace Halvix {

class IniSettings;

/// Sets the backlight from the ambient light, in a thread of its own that follows the settings file.
///
/// The thread is never stopped: it ends with the process. Everything it uses is therefore in a block shared with the
/// object that started it, so the object may be deleted while the thread runs; the block then stays until the process
/// ends. If no thread was started, the last owner of the block releases everything.
class BacklightController {
public:
    BacklightController();
    ~BacklightController();
    BacklightController(const BacklightController&) = delete;
    BacklightController& operator=(const BacklightController&) = delete;

    /// Succeeds once: 13 for the second call. 0, 10 (no thread) or 32 (out of memory); after these two it may be called
    /// again.
    [[nodiscard]] eErr init();
    [[nodiscard]] eErr start();

    static void threadProc(const void* sharedParts);
    [[noreturn]] void execute();
    /// Reads the seven settings and repairs the file if one is missing or not a number. True when they are usable.
    [[nodiscard]] bool readSettings();
    /// The control loop. True after a regular end, false when the sampler could not be started.
    bool executeABL();
    [[nodiscard]] eErr InitLightSensor();
    /// Stores a learned slope. Does not notify: the controller must not wake itself.
    eErr updateK(double k);

private:
    struct Parts;
    struct Texts;

    explicit BacklightController(std::shared_ptr<Parts> parts);
    void waitForNewSettings();
    [[nodiscard]] static Texts fetchSettings(IniSettings& file);
    [[nodiscard]] bool convertSettings(const Texts& texts);
    [[nodiscard]] bool repairSettings(IniSettings& file);
    [[nodiscard]] bool pass(law::Run& run);
    [[nodiscard]] bool measure(law::Run& run);
    [[nodiscard]] bool changeLevel(law::Run& run);

    std::shared_ptr<Parts> parts_;
};

} // namespace Halvix
