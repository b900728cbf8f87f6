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

} // namespace

eErr Flasher_STM32::Run(Task task)
{
    modeChanged_ = directionChanged_ = false;
    eErr result = initHW(task);
    if (result == ERR_SUCCESS)
        result = openFile();
    if (result == ERR_SUCCESS)
        result = writeAndVerifyFlash(task);

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

eErr Flasher_STM32::initHW(Task)
{
    progress(UpgradeActionPrepareHardware, 0);
    eErr result = ERR_INVALID_PARAMETER;
    if (type_ == Supervisor)
        result = prepareSupervisor();
    else if (type_ == FrontController)
        result = prepareFrontController();
    if (result == ERR_SUCCESS)
        progress(UpgradeActionPrepareHardware, 100);
    return result;
}

// The results of the redirector are ignored: a target that is not reached is detected when it does not answer.

eErr Flasher_STM32::prepareSupervisor()
{
    // The supervisor leaves this mode on its own, so only the direction is restored.
    (void)redirector_.setSsMode(0x96);
    progress(UpgradeActionPrepareHardware, 25);
    LinuxWrapper::SleepFully(100);
    (void)redirector_.setComDir(1);
    progress(UpgradeActionPrepareHardware, 75);
    directionChanged_ = true;
    LinuxWrapper::SleepFully(100);
    return ERR_SUCCESS;
}

eErr Flasher_STM32::prepareFrontController()
{
    (void)redirector_.setSsMode(0x0F);
    progress(UpgradeActionPrepareHardware, 25);
    modeChanged_ = true;
    LinuxWrapper::SleepFully(500);
    (void)redirector_.frontBootMode();
    progress(UpgradeActionPrepareHardware, 50);
    LinuxWrapper::SleepFully(500);
    (void)redirector_.setComDir(2);
    progress(UpgradeActionPrepareHardware, 75);
    directionChanged_ = true;
    LinuxWrapper::SleepFully(500);
    return ERR_SUCCESS;
}

eErr Flasher_STM32::openFile()
{
    progress(UpgradeActionReadFile, 0);
    const eErr err = readImage();
    if (err != ERR_SUCCESS)
        image_.reset();
    else
        progress(UpgradeActionReadFile, 0);
    return err;
}

eErr Flasher_STM32::readImage()
{
    image_.reset(new (std::nothrow) HexImage);
    if (image_ == nullptr)
        return failed(UpgradeActionReadFile, 0, ERR_INIT_FAILED);
    HexResult result = HexResult::Complete;
    {
        const File file{fileName()};
        if (!file.isOpen())
            return failed(UpgradeActionReadFile, 0, ERR_OPEN_FAILED);
        const unsigned size = file.size();
        CharacterSource source{file};
        result = parseIntelHex(source, *image_, [this, size](std::uint32_t charactersRead) {
            progress(UpgradeActionReadFile, calcPercent(charactersRead, size));
        });
    }
    if (result == HexResult::Complete)
        return ERR_SUCCESS;
    return failed(UpgradeActionReadFile, result == HexResult::EndRecordMissing ? 100 : 0, errorOf(result));
}

eErr Flasher_STM32::writeAndVerifyFlash(Task task)
{
    progress(UpgradeActionConnect, 0);
    const std::unique_ptr<serial_port, SerialClose> serial{serial_open(kSerialPort)};
    if (serial == nullptr) {
        return failed(UpgradeActionConnect, 0, ERR_OPEN_FAILED);
    }
    progress(UpgradeActionConnect, 50);
    if (serial_setup(serial.get(), SERIAL_BAUD_115200, SERIAL_BITS_8, SERIAL_PARITY_EVEN, SERIAL_STOP_1) != SERIAL_OK) {
        return failed(UpgradeActionConnect, 55, ERR_OPEN_FAILED);
    }
    progress(UpgradeActionConnect, 75);
    return transfer(serial.get(), task);
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

eErr Flasher_STM32::transfer(serial_port* serial, Task task)
{
    const std::unique_ptr<stm32_target, TargetClose> target{connect(serial)};
    if (target == nullptr) {
        return failed(UpgradeActionConnect, 100, ERR_OPEN_FAILED);
    }
    progress(UpgradeActionConnect, 100);
    if (image_ == nullptr)
        return ERR_INVALID_DATA;
    hex_restart(image_.get());
    if (task == Task::Program) {
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
    progress(UpgradeActionWrite, 0);
    const stm32_device& device = *target->device;
    if (device.flash_end - device.flash_start < image_->size) {
        return failed(UpgradeActionWrite, 0, ERR_INVALID_DATA);
    }
    (void)stm32_erase_memory(target); // flash that was not erased is detected at the first block
    std::uint32_t percent = 0;
    unsigned char chunk[kChunk];
    std::uint32_t address = device.flash_start;
    while (const unsigned length = nextChunk(target, chunk)) {
        if (!stm32_write_memory(target, address, chunk, length)) {
            return failed(UpgradeActionWrite, percent, ERR_DEVICE_WRITE_DATA_FAILED);
        }
        address += length;
        percent = calcPercent(image_->position, image_->size);
        progress(UpgradeActionWrite, percent);
    }
    return ERR_SUCCESS;
}

eErr Flasher_STM32::compare(const stm32_target* target)
{
    progress(UpgradeActionVerify, 0);
    hex_restart(image_.get());
    std::uint32_t percent = 0;
    unsigned char wanted[kChunk];
    unsigned char found[kChunk];
    std::uint32_t address = target->device->flash_start;
    while (const unsigned length = nextChunk(target, wanted)) {
        if (!stm32_read_memory(target, address, found, length))
            return failed(UpgradeActionVerify, percent, ERR_DEVICE_READ_DATA_FAILED);
        if (std::memcmp(wanted, found, length) != 0)
            return failed(UpgradeActionVerify, percent, ERR_VERIFY_FAILED);
        address += length;
        percent = calcPercent(image_->position, image_->size);
        progress(UpgradeActionVerify, percent);
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
