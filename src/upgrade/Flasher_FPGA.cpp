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

constexpr Read<unsigned char> kStatus{codes::fpgaFlashStatus};
constexpr Request<FlashBlock, std::uint32_t> kWrite{codes::fpgaFlashWrite};
constexpr Request<FlashBlock, FlashBlock> kRead{codes::fpgaFlashRead};

} // namespace

eErr Flasher_FPGA::Run(Task task)
{
    eErr result = initHW();
    bool modeChanged = false;
    if (result == ERR_SUCCESS)
        result = convertAndTransfer(task, &modeChanged);
    if (modeChanged)
        (void)redirector_.setSsMode(0xC3);
    publishOutcome(result);
    if (channel_.handle() >= 0)
        channel_.end();
    releaseRunLock();
    return result;
}

eErr Flasher_FPGA::convertAndTransfer(Task task, bool* modeChanged)
try {
    eErr result = Mcs2Bin();
    if (result != ERR_SUCCESS)
        return result;
    readBack_.reserve(image_.size()); // throws before the flash is touched
    *modeChanged = true;              // restored even if it could not be sent
    (void)redirector_.setSsMode(0x0F);
    if (task == Task::Program)
        result = flash();
    if (result != ERR_SUCCESS)
        return result;
    progress(UpgradeActionVerify, 0);
    LinuxWrapper::SleepFully(50);
    return verify();
} catch (const std::exception&) { // out of memory
    return ERR_MEM_ALLOC_FAIL;
}

int Flasher_FPGA::openHWConnection()
{
    return channel_.open();
}

eErr Flasher_FPGA::initHW()
{
    progress(UpgradeActionPrepareHardware, 0);
    openHWConnection();
    if (const eErr err = channel_.opened(); err != ERR_SUCCESS)
        return failed(UpgradeActionPrepareHardware, 0, err);
    progress(UpgradeActionPrepareHardware, 50);
    unsigned char status = 0;
    if (const eErr err = channel_.readInPlace(kStatus, &status); err != ERR_SUCCESS)
        return failed(UpgradeActionPrepareHardware, 100, err);
    if (status != 0)
        return failed(UpgradeActionPrepareHardware, 100, ERR_INIT_FAILED);
    progress(UpgradeActionPrepareHardware, 100);
    return ERR_SUCCESS;
}

eErr Flasher_FPGA::Mcs2Bin()
{
    image_.clear();
    progress(UpgradeActionReadFile, 0);
    if (LinuxWrapper::isSpecialFile(fileName())) // reading it might never end
        return failed(UpgradeActionReadFile, 0, ERR_OPEN_FAILED);
    const File file{fileName()};
    if (!file.isOpen())
        return failed(UpgradeActionReadFile, 0, ERR_OPEN_FAILED);
    const std::uint32_t size = file.size();
    BufferedSource source{file};
    const auto afterRecord = [this, size](std::uint32_t charactersRead) {
        progress(UpgradeActionReadFile, calcPercent(charactersRead, size));
    };
    std::uint32_t wrongAt = 0;
    if (const eErr err = convertMcs(source, image_, afterRecord, &wrongAt); err != ERR_SUCCESS)
        return failed(UpgradeActionReadFile, calcPercent(wrongAt, size), err);
    progress(UpgradeActionReadFile, 100);
    return ERR_SUCCESS;
}

bool Flasher_FPGA::writeBlock(std::uint32_t length, std::uint32_t from, std::uint32_t* position) const
{
    FlashBlock block{length, *position, {}};
    std::memcpy(block.data, image_.data() + from, length);
    std::uint32_t answer = 0;
    if (channel_.query(kWrite, block, &answer) != ERR_SUCCESS)
        return false;
    *position = answer;
    return true;
}

eErr Flasher_FPGA::flash()
{
    progress(UpgradeActionWrite, 0);
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
        progress(UpgradeActionWrite, calcPercent(done, size));
    }
    progress(UpgradeActionWrite, 100);
    return ERR_SUCCESS;
}

eErr Flasher_FPGA::verify()
{
    readBack_.clear();
    progress(UpgradeActionVerify, 0);
    const auto size = static_cast<std::uint32_t>(image_.size());
    if (size == 0)
        return failed(UpgradeActionVerify, 0, ERR_INVALID_DATA);
    FlashBlock block{};
    while (readBack_.size() < size) {
        block.length = kPage;
        if (channel_.exchange(kRead, &block, DeviceChannel::CountCheck::Yes) != ERR_SUCCESS)
            return failed(UpgradeActionVerify, 100, ERR_IOCTRL_FAILED);
        if (block.length == 0)
            return failed(UpgradeActionVerify, 100, ERR_DEVICE_READ_DATA_FAILED);
        // A whole page counts, whatever number the driver reports.
        const std::size_t first = readBack_.size();
        const std::size_t taken = std::min<std::size_t>(kPage, size - first);
        readBack_.insert(readBack_.end(), block.data, block.data + taken);
        if (const eErr err = compareFrom(first); err != ERR_SUCCESS)
            return err;
        progress(UpgradeActionVerify, calcPercent(static_cast<std::uint32_t>(readBack_.size()), size));
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
