// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/HexImage.h"
#include "upgrade/IFlasher.h"
#include "upgrade/STM32/stm32_bootloader.h"

namespace Halvix {

/// Programs or verifies one of the unit's two microcontrollers from an Intel HEX file.
///
/// The whole file is read before the target is touched, so a bad file never leaves incomplete firmware.
class Flasher_STM32 : public IFlasher {
public:
    enum eDeviceType : int { Supervisor = 0, FrontController = 1 };

    explicit Flasher_STM32(eDeviceType type = Supervisor) : type_{type} {}
    void setDeviceType(eDeviceType type) { type_ = type; }

    eErr Run(Task task) override;

    /// Routes the UART to the target and brings the target into its bootloader. 9 for an unknown device type.
    eErr initHW(Task task);
    /// 1, 8, 12, 13.
    eErr openFile();
    /// 1, 8, 14, 15, 16.
    eErr writeAndVerifyFlash(Task task);

    /// Copies up to `*length` bytes from the image's position on; `*length` becomes their number. Always true.
    static bool hex_read(HexImage* image, void* buffer, unsigned* length);
    static void hex_restart(HexImage* image);
    static std::uint32_t calcPercent(std::uint32_t done, std::uint32_t total);
    /// Requests a restart of the unit from the daemon.
    static bool restartAfterUpgrade();
    static bool cpu_le();
    /// Returns the value unchanged, unlike the bootloader's function of this name: HEX addresses rely on it.
    static unsigned long be_u32(unsigned long value);

    [[nodiscard]] const HexImage* image() const { return image_.get(); }

private:
    eErr prepareSupervisor();
    eErr prepareFrontController();
    eErr readImage();
    stm32_target* connect(serial_port* serial);
    eErr transfer(serial_port* serial, Task task);
    eErr program(const stm32_target* target);
    eErr compare(const stm32_target* target);
    [[nodiscard]] unsigned nextChunk(const stm32_target* target, unsigned char* chunk);

    eDeviceType type_;
    std::unique_ptr<HexImage> image_;
    bool modeChanged_ = false;
    bool directionChanged_ = false;
};

} // namespace Halvix
