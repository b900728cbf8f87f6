// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/Flasher_STM32.h"

#include "platform/LinuxWrapper.h"
#include "upgrade/FileSource.h"
#include "upgrade/IntelHex.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace Halvix {

namespace {

constexpr char kSerialPort[] = "/dev/ttyS0";
constexpr unsigned kChunk = 256; ///< the most that the bootloader accepts at once

struct SerialClose {
    void operator()(serial_port* h) const { serial_close(h); }
};
struct TargetClose {
    void operator()(stm32_target* h) const { stm32_close(h); }
};

unsigned char asPercent(std::uint32_t value)
{
    return static_cast<unsigned char>(value);
}

} // namespace

eErr Flasher_STM32::Run(bool write)
{
    modeChanged_ = directionChanged_ = false;
    eErr result = initHW(write);
    if (result == ERR_SUCCESS)
        result = openFile();
    if (result == ERR_SUCCESS)
        result = writeAndVerifyFlash(write);

    // The routing is restored whatever the result. A request that fails here is ignored.
    if (modeChanged_)
        (void)redirector_.setSsMode(0xC3);
    if (directionChanged_)
        (void)redirector_.setComDir(0);
    publishOutcome(result);
    redirector_.closeHWConnection();
    releaseRunLock();
    return result;
}

eErr Flasher_STM32::initHW(bool)
{
    updateSharedStatus(UpgradeActionPrepareHardware, 0, ERR_SUCCESS);
    eErr result = ERR_INVALID_PARAMETER;
    if (type_ == Supervisor)
        result = prepareSupervisor();
    else if (type_ == FrontController)
        result = prepareFrontController();
    if (result == ERR_SUCCESS)
        updateSharedStatus(UpgradeActionPrepareHardware, 100, ERR_SUCCESS);
    return result;
}

// The results of the redirector are ignored: a target that is not reached is detected when it does not answer.

eErr Flasher_STM32::prepareSupervisor()
{
    // The supervisor leaves this mode on its own, so only the direction is restored.
    (void)redirector_.setSsMode(0x96);
    updateSharedStatus(UpgradeActionPrepareHardware, 25, ERR_SUCCESS);
    LinuxWrapper::SleepFully(100);
    (void)redirector_.setComDir(1);
    updateSharedStatus(UpgradeActionPrepareHardware, 75, ERR_SUCCESS);
    directionChanged_ = true;
    LinuxWrapper::SleepFully(100);
    return ERR_SUCCESS;
}

eErr Flasher_STM32::prepareFrontController()
{
    (void)redirector_.setSsMode(0x0F);
    updateSharedStatus(UpgradeActionPrepareHardware, 25, ERR_SUCCESS);
    modeChanged_ = true;
    LinuxWrapper::SleepFully(500);
    (void)redirector_.frontBootMode();
    updateSharedStatus(UpgradeActionPrepareHardware, 50, ERR_SUCCESS);
    LinuxWrapper::SleepFully(500);
    (void)redirector_.setComDir(2);
    updateSharedStatus(UpgradeActionPrepareHardware, 75, ERR_SUCCESS);
    directionChanged_ = true;
    LinuxWrapper::SleepFully(500);
    return ERR_SUCCESS;
}

eErr Flasher_STM32::openFailed(unsigned char percent, eErr error)
{
    updateSharedStatus(UpgradeActionReadFile, percent, error);
    image_.reset();
    return error;
}

eErr Flasher_STM32::openFile()
{
    updateSharedStatus(UpgradeActionReadFile, 0, ERR_SUCCESS);
    image_.reset(new (std::nothrow) HexImage);
    if (image_ == nullptr)
        return openFailed(0, ERR_INIT_FAILED);
    HexResult result = HexResult::Complete;
    {
        const File file{fileName()};
        if (!file.isOpen())
            return openFailed(0, ERR_OPEN_FAILED);
        const unsigned size = file.size();
        CharacterSource source{file};
        result = parseIntelHex(source, *image_, [this, size](std::uint32_t charactersRead) {
            updateSharedStatus(UpgradeActionReadFile, asPercent(calcPercent(charactersRead, size)), ERR_SUCCESS);
        });
    }
    if (result != HexResult::Complete)
        return openFailed(result == HexResult::EndRecordMissing ? 100 : 0, errorOf(result));
    updateSharedStatus(UpgradeActionReadFile, 0, ERR_SUCCESS);
    return ERR_SUCCESS;
}

eErr Flasher_STM32::writeAndVerifyFlash(bool write)
{
    updateSharedStatus(UpgradeActionConnect, 0, ERR_SUCCESS);
    const std::unique_ptr<serial_port, SerialClose> serial{serial_open(kSerialPort)};
    if (serial == nullptr) {
        updateSharedStatus(UpgradeActionConnect, 0, ERR_OPEN_FAILED);
        return ERR_OPEN_FAILED;
    }
    updateSharedStatus(UpgradeActionConnect, 50, ERR_SUCCESS);
    if (serial_setup(serial.get(), SERIAL_BAUD_115200, SERIAL_BITS_8, SERIAL_PARITY_EVEN, SERIAL_STOP_1) != SERIAL_OK) {
        updateSharedStatus(UpgradeActionConnect, 55, ERR_OPEN_FAILED);
        return ERR_OPEN_FAILED;
    }
    updateSharedStatus(UpgradeActionConnect, 75, ERR_SUCCESS);
    return transfer(serial.get(), write);
}

stm32_target* Flasher_STM32::connect(serial_port* serial)
{
    stm32_target* target = stm32_init(serial, STM32_INIT_SYNCHRONISE);
    constexpr int kFurtherCycles = 5;
    for (int i = 0; target == nullptr && i < kFurtherCycles; ++i) {
        LinuxWrapper::SleepFully(500);
        target = stm32_init(serial, STM32_INIT_CONTINUE); // it may have synchronised although its answer was lost
        if (target != nullptr)
            break;
        LinuxWrapper::SleepFully(100);
        target = stm32_init(serial, STM32_INIT_SYNCHRONISE);
    }
    return target;
}

eErr Flasher_STM32::transfer(serial_port* serial, bool write)
{
    const std::unique_ptr<stm32_target, TargetClose> target{connect(serial)};
    if (target == nullptr) {
        updateSharedStatus(UpgradeActionConnect, 100, ERR_OPEN_FAILED);
        return ERR_OPEN_FAILED;
    }
    updateSharedStatus(UpgradeActionConnect, 100, ERR_SUCCESS);
    if (image_ == nullptr)
        return ERR_INVALID_DATA;
    hex_restart(image_.get());
    if (write) {
        if (const eErr err = program(target.get()); err != ERR_SUCCESS)
            return err;
    }
    return compare(target.get());
}

unsigned Flasher_STM32::nextChunk(const stm32_target* target, unsigned char* chunk)
{
    const std::uint32_t flashSize = target->device->flash_end - target->device->flash_start;
    const std::uint32_t room = flashSize - std::min(flashSize, image_->position);
    unsigned length = std::min(kChunk, room);
    hex_read(image_.get(), chunk, &length);
    return length;
}

eErr Flasher_STM32::program(const stm32_target* target)
{
    updateSharedStatus(UpgradeActionWrite, 0, ERR_SUCCESS);
    const stm32_device& device = *target->device;
    if (device.flash_end - device.flash_start < image_->size) {
        updateSharedStatus(UpgradeActionWrite, 0, ERR_INVALID_DATA);
        return ERR_INVALID_DATA;
    }
    (void)stm32_erase_memory(target); // flash that was not erased is detected at the first block
    unsigned char percent = 0;
    unsigned char chunk[kChunk];
    std::uint32_t address = device.flash_start;
    while (const unsigned length = nextChunk(target, chunk)) {
        if (!stm32_write_memory(target, address, chunk, length)) {
            updateSharedStatus(UpgradeActionWrite, percent, ERR_DEVICE_WRITE_DATA_FAILED);
            return ERR_DEVICE_WRITE_DATA_FAILED;
        }
        address += length;
        percent = asPercent(calcPercent(image_->position, image_->size));
        updateSharedStatus(UpgradeActionWrite, percent, ERR_SUCCESS);
    }
    return ERR_SUCCESS;
}

eErr Flasher_STM32::compare(const stm32_target* target)
{
    updateSharedStatus(UpgradeActionVerify, 0, ERR_SUCCESS);
    hex_restart(image_.get());
    unsigned char percent = 0;
    const auto failed = [&](eErr error) {
        updateSharedStatus(UpgradeActionVerify, percent, error);
        return error;
    };
    unsigned char wanted[kChunk];
    unsigned char found[kChunk];
    std::uint32_t address = target->device->flash_start;
    while (const unsigned length = nextChunk(target, wanted)) {
        if (!stm32_read_memory(target, address, found, length))
            return failed(ERR_DEVICE_READ_DATA_FAILED);
        if (std::memcmp(wanted, found, length) != 0)
            return failed(ERR_VERIFY_FAILED);
        address += length;
        percent = asPercent(calcPercent(image_->position, image_->size));
        updateSharedStatus(UpgradeActionVerify, percent, ERR_SUCCESS);
    }
    return ERR_SUCCESS;
}

bool Flasher_STM32::hex_read(HexImage* image, void* buffer, unsigned* length)
{
    *length = image->read(buffer, *length);
    return true;
}

void Flasher_STM32::hex_restart(HexImage* image)
{
    image->position = 0;
}

std::uint32_t Flasher_STM32::calcPercent(std::uint32_t done, std::uint32_t total)
{
    return percentOf(done, total);
}

bool Flasher_STM32::restartAfterUpgrade()
{
    constexpr int kRestart = 128;
    return LinuxWrapper::ControlDaemon(kRestart) == ERR_SUCCESS;
}

bool Flasher_STM32::cpu_le()
{
    return ::cpu_le();
}

unsigned long Flasher_STM32::be_u32(unsigned long value)
{
    return value;
}

} // namespace Halvix
