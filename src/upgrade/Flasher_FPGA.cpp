// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/Flasher_FPGA.h"

#include "platform/ControlCodes.h"
#include "platform/LinuxWrapper.h"
#include "upgrade/FileSource.h"
#include "upgrade/Mcs.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace Halvix {

namespace {

constexpr std::uint32_t kPage = 528; ///< of the configuration flash, as the driver presents it

/// Record of both block requests, in both directions: the driver writes its answer into the same fields.
struct FlashBlock {
    std::uint32_t length;
    std::uint32_t position;
    unsigned char data[kPage];
};
static_assert(sizeof(FlashBlock) == 536);

} // namespace

Flasher_FPGA::~Flasher_FPGA()
{
    closeDevice();
}

void Flasher_FPGA::closeDevice()
{
    if (initialised_ && handle_ >= 0)
        LinuxWrapper::close(handle_);
    handle_ = -1;
}

eErr Flasher_FPGA::Run(bool write)
{
    eErr result = initHW();
    bool modeChanged = false;
    if (result == ERR_SUCCESS)
        result = convertAndTransfer(write, &modeChanged);
    if (modeChanged)
        (void)redirector_.setSsMode(0xC3);
    publishOutcome(result);
    closeDevice();
    releaseRunLock();
    return result;
}

eErr Flasher_FPGA::convertAndTransfer(bool write, bool* modeChanged)
try {
    eErr result = Mcs2Bin();
    if (result != ERR_SUCCESS)
        return result;
    readBack_.reserve(image_.size()); // throws before the flash is touched
    *modeChanged = true;              // restored even if it could not be sent
    (void)redirector_.setSsMode(0x0F);
    if (write)
        result = flash();
    if (result != ERR_SUCCESS)
        return result;
    updateSharedStatus(UpgradeActionVerify, 0, ERR_SUCCESS);
    LinuxWrapper::SleepFully(50);
    return verify();
} catch (const std::exception&) { // out of memory
    return ERR_MEM_ALLOC_FAIL;
}

eErr Flasher_FPGA::failed(UpgradeAction action, std::uint32_t percent, eErr error)
{
    updateSharedStatus(action, static_cast<unsigned char>(percent), error);
    return error;
}

int Flasher_FPGA::openHWConnection()
{
    if (LinuxWrapper::open(handle_, "/dev/fpgaflash", true))
        initialised_ = true;
    return handle_;
}

eErr Flasher_FPGA::initHW()
{
    updateSharedStatus(UpgradeActionPrepareHardware, 0, ERR_SUCCESS);
    openHWConnection();
    if (!initialised_)
        return failed(UpgradeActionPrepareHardware, 0, ERR_OPEN_FAILED);
    updateSharedStatus(UpgradeActionPrepareHardware, 50, ERR_SUCCESS);
    // The request is of the sending kind, but the driver writes its answer into the byte that it is given.
    char status = 0;
    int returned = 0;
    if (!LinuxWrapper::IoCtrl(handle_, codes::fpgaFlashStatus, &status, 0, &status, sizeof status, &returned))
        return failed(UpgradeActionPrepareHardware, 100, ERR_IOCTRL_FAILED);
    if (returned != sizeof status)
        return failed(UpgradeActionPrepareHardware, 100, ERR_BUFFER_SIZE);
    if (status != 0)
        return failed(UpgradeActionPrepareHardware, 100, ERR_INIT_FAILED);
    updateSharedStatus(UpgradeActionPrepareHardware, 100, ERR_SUCCESS);
    return ERR_SUCCESS;
}

eErr Flasher_FPGA::Mcs2Bin()
{
    image_.clear();
    updateSharedStatus(UpgradeActionReadFile, 0, ERR_SUCCESS);
    if (LinuxWrapper::isSpecialFile(fileName())) // reading it might never end
        return failed(UpgradeActionReadFile, 0, ERR_OPEN_FAILED);
    const File file{fileName()};
    if (!file.isOpen())
        return failed(UpgradeActionReadFile, 0, ERR_OPEN_FAILED);
    const std::uint32_t size = file.size();
    BufferedSource source{file};
    const auto progress = [this, size](std::uint32_t charactersRead) {
        updateSharedStatus(UpgradeActionReadFile, static_cast<unsigned char>(calcPercent(charactersRead, size)),
                           ERR_SUCCESS);
    };
    std::uint32_t wrongAt = 0;
    if (const eErr err = convertMcs(source, image_, progress, &wrongAt); err != ERR_SUCCESS)
        return failed(UpgradeActionReadFile, calcPercent(wrongAt, size), err);
    updateSharedStatus(UpgradeActionReadFile, 100, ERR_SUCCESS);
    return ERR_SUCCESS;
}

bool Flasher_FPGA::writeBlock(std::uint32_t length, std::uint32_t from, std::uint32_t* position) const
{
    FlashBlock block{length, *position, {}};
    std::memcpy(block.data, image_.data() + from, length);
    char sent[sizeof block];
    std::memcpy(sent, &block, sizeof block);
    char answer[sizeof *position] = {};
    int returned = 0;
    if (!LinuxWrapper::IoCtrl(handle_, codes::fpgaFlashWrite, sent, sizeof sent, answer, sizeof answer, &returned) ||
        returned != sizeof answer)
        return false;
    std::memcpy(position, answer, sizeof answer);
    return true;
}

eErr Flasher_FPGA::flash()
{
    updateSharedStatus(UpgradeActionWrite, 0, ERR_SUCCESS);
    const auto size = static_cast<std::uint32_t>(image_.size());
    if (size == 0)
        return failed(UpgradeActionWrite, 0, ERR_INVALID_DATA);
    std::uint32_t position = 0;
    for (std::uint32_t done = 0; done < size;) {
        const std::uint32_t before = position;
        if (!writeBlock(std::min(kPage, size - done), done, &position) || position <= before)
            return failed(UpgradeActionWrite, 100, ERR_IOCTRL_FAILED);
        // The driver may accept less than it was given; the rest is sent again from its new position.
        done += std::min(position - before, size - done);
        updateSharedStatus(UpgradeActionWrite, static_cast<unsigned char>(calcPercent(done, size)), ERR_SUCCESS);
    }
    updateSharedStatus(UpgradeActionWrite, 100, ERR_SUCCESS);
    return ERR_SUCCESS;
}

eErr Flasher_FPGA::verify()
{
    readBack_.clear();
    updateSharedStatus(UpgradeActionVerify, 0, ERR_SUCCESS);
    const auto size = static_cast<std::uint32_t>(image_.size());
    if (size == 0)
        return failed(UpgradeActionVerify, 0, ERR_INVALID_DATA);
    FlashBlock block{};
    while (readBack_.size() < size) {
        block.length = kPage;
        char exchanged[sizeof block];
        std::memcpy(exchanged, &block, sizeof block);
        int returned = 0;
        if (!LinuxWrapper::IoCtrl(handle_, codes::fpgaFlashRead, exchanged, sizeof exchanged, exchanged,
                                  sizeof exchanged, &returned) ||
            returned != sizeof exchanged)
            return failed(UpgradeActionVerify, 100, ERR_IOCTRL_FAILED);
        std::memcpy(&block, exchanged, sizeof block);
        if (block.length == 0)
            return failed(UpgradeActionVerify, 100, ERR_DEVICE_READ_DATA_FAILED);
        // A whole page counts, whatever number the driver reports.
        const std::size_t first = readBack_.size();
        const std::size_t taken = std::min<std::size_t>(kPage, size - first);
        readBack_.insert(readBack_.end(), block.data, block.data + taken);
        if (const eErr err = compareFrom(first); err != ERR_SUCCESS)
            return err;
        updateSharedStatus(UpgradeActionVerify,
                           static_cast<unsigned char>(calcPercent(static_cast<std::uint32_t>(readBack_.size()), size)),
                           ERR_SUCCESS);
    }
    return ERR_SUCCESS;
}

eErr Flasher_FPGA::compareFrom(std::size_t first)
{
    for (std::size_t i = first; i < readBack_.size(); ++i) {
        if (i >= image_.size())
            return failed(UpgradeActionVerify, 100, ERR_VERIFY_FAILED);
        if (readBack_[i] != image_[i])
            return failed(UpgradeActionVerify,
                          calcPercent(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(image_.size())),
                          ERR_VERIFY_FAILED);
    }
    return ERR_SUCCESS;
}

std::uint32_t Flasher_FPGA::calcPercent(std::uint32_t done, std::uint32_t total)
{
    return percentOf(done, total);
}

} // namespace Halvix
