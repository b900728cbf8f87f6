// SPDX-License-Identifier: LicenseRef-HXAux
// A whole upgrade or verification of a microcontroller through the service UART. The file, the target and every answer
// of the line are valid unless the input changes them, so that inputs reach the end.
#include "fuzz/Require.h"
#include "fuzz/system/System.h"
#include "platform/LinuxWrapper.h"
#include "testing/FirmwareTexts.h"
#include "upgrade/Flasher_STM32.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

using namespace Halvix;

namespace {

constexpr char kFirmware[] = "firmware.hex";
constexpr std::uint32_t kFlash = 0x08000000;
constexpr std::uint32_t kLargestFlash = 0x100000;
constexpr std::size_t kLargestImage = 1024;

/// A file that can only be read.
class Text : public fuzzed::OwnFile {
public:
    explicit Text(std::string text) : text_{std::move(text)} {}
    std::size_t read(unsigned char* block, std::size_t size) override
    {
        const std::size_t count = text_.copy(reinterpret_cast<char*>(block), size, position_);
        position_ += count;
        return count;
    }
    void write(const unsigned char*, std::size_t) override { REQUIRE(false); }

private:
    std::string text_;
    std::size_t position_ = 0;
};

/// The bootloader at the other end of the line, with the data written to it and the data that it returned.
class Bootloader : public fuzzed::OwnFile {
public:
    explicit Bootloader(Input& input) : input_{input} {}

    std::size_t read(unsigned char* block, std::size_t size) override
    {
        REQUIRE(size >= 1);
        if (input_.oneIn(64)) // too late
            return 0;
        const std::size_t count = input_.oneIn(8) ? 1 : size;
        for (std::size_t i = 0; i < count; ++i) {
            block[i] = given_ < answer_.size() && !input_.oneIn(128) ? answer_[given_] : input_.answer();
            if (address_ >= kFlash && given_ >= 1) // after the acknowledgement
                received[address_ + static_cast<std::uint32_t>(given_ - 1)] = block[i];
            ++given_;
        }
        return count;
    }

    void write(const unsigned char* block, std::size_t size) override
    {
        std::uint8_t sum = 0;
        for (std::size_t i = 0; i < size; ++i)
            sum ^= block[i];
        REQUIRE(size == 1 ? sum == kSynchronise : sum == (size == 2 ? 0xFF : 0));
        answer_ = {kAck};
        given_ = 0;
        if (size == 2)
            takeByte(block[0]);
        else if (size == 5)
            takeAddress(block);
        else if (size > 5)
            takeData(block, size);
    }

    std::map<std::uint32_t, std::uint8_t> flash;
    std::map<std::uint32_t, std::uint8_t> received; ///< data returned as the content of the flash
    bool programmed = false;

private:
    static constexpr std::uint8_t kAck = 0x79;
    static constexpr std::uint8_t kSynchronise = 0x7F;
    static constexpr std::uint8_t kRead = 0x11;
    static constexpr std::uint8_t kWrite = 0x31;
    static constexpr std::uint8_t kErase = 0x43;

    void takeByte(std::uint8_t byte)
    {
        const bool isLength = command_ == kRead && addressed_;
        const bool isPages = command_ == kErase && byte == 0xFF;
        command_ = isLength || isPages ? 0 : byte;
        addressed_ = false;
        if (isLength)
            for (std::uint32_t i = 0; i <= byte; ++i)
                answer_.push_back(flash[address_ + i]);
        else if (isPages)
            flash.clear();
        else if (byte == 0x00)
            answer_ = {kAck, 11, 0x22, 0x00, 0x01, 0x02, kRead, 0x21, kWrite, kErase, 0x63, 0x73, 0x82, 0x92, kAck};
        else if (byte == 0x01)
            answer_ = {kAck, 0x22, 0, 0, kAck};
        else if (byte == 0x02)
            answer_ = {kAck, 1, 0x04, 0x10, kAck};
    }
    void takeAddress(const unsigned char* block)
    {
        address_ = 0;
        for (int i = 0; i < 4; ++i)
            address_ = address_ << 8 | block[i];
        REQUIRE(address_ >= kFlash && address_ < kFlash + kLargestFlash && address_ % 4 == 0);
        addressed_ = true;
    }
    void takeData(const unsigned char* block, std::size_t size)
    {
        for (std::uint32_t i = 0; i + 2 < size; ++i)
            flash[address_ + i] = block[i + 1];
        programmed = true;
        addressed_ = false;
    }

    Input& input_;
    std::uint8_t command_ = 0;
    bool addressed_ = false; ///< the command has its address
    std::uint32_t address_ = 0;
    std::vector<std::uint8_t> answer_; ///< to the last frame
    std::size_t given_ = 0;            ///< bytes since the last frame
};

std::string textOf(const firmware::Bytes& image, Input& input)
{
    std::string text = firmware::intelHex(image);
    if (input.byte() % 4 == 3)
        text[input.number<std::uint16_t>() % text.size()] = static_cast<char>(input.byte());
    return text;
}

/// The semaphores of a run that holds its lock, and its published status.
struct Run {
    explicit Run(Flasher_STM32& flasher)
    {
        REQUIRE(lock.tryWait());
        flasher.attach(status, lock);
    }

    SharedStatus status;
    Semaphore lock{nullptr};
};

bool isDocumented(eErr err)
{
    static constexpr eErr kCodes[] = {ERR_SUCCESS,
                                      ERR_OPEN_FAILED,
                                      ERR_INVALID_DATA,
                                      ERR_CHECKSUM,
                                      ERR_VERIFY_FAILED,
                                      ERR_DEVICE_READ_DATA_FAILED,
                                      ERR_DEVICE_WRITE_DATA_FAILED};
    return std::find(std::begin(kCodes), std::end(kCodes), err) != std::end(kCodes);
}

/// Success means that the whole image was read back, except for a device that the library does not know: writing it is
/// refused, and verifying has no flash to read.
void requireWasSeen(const HexImage& image, const Bootloader& bootloader, bool written)
{
    if (!written && bootloader.received.empty())
        return;
    for (std::uint32_t i = 0; i < image.size; ++i) {
        const auto found = bootloader.received.find(kFlash + i);
        REQUIRE(found != bootloader.received.end() && found->second == image.data.get()[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input{data, size};
    fuzzed::begin(input);
    fuzzed::semaphoresMayFail(false);
    const std::uint8_t way = input.byte();
    const bool written = way % 2 == 0;
    const firmware::Bytes image = firmware::pattern(input.number<std::uint16_t>() % kLargestImage);
    Text text{textOf(image, input)};
    Bootloader bootloader{input};
    if (!written)
        for (std::uint32_t i = 0; i < image.size(); ++i)
            bootloader.flash[kFlash + i] = image[i];
    fuzzed::setFile(kFirmware, text);
    fuzzed::setFile("/dev/ttyS0", bootloader);
    {
        Flasher_STM32 flasher{(way & 2) == 0 ? Flasher_STM32::Supervisor : Flasher_STM32::FrontController};
        Run run{flasher};
        flasher.setFileName(kFirmware);
        const eErr err = flasher.Run(written ? IFlasher::Task::Program : IFlasher::Task::Verify);
        REQUIRE(isDocumented(err));
        REQUIRE(run.status.record.action == (err == ERR_SUCCESS ? UpgradeActionFinished : UpgradeActionFailed));
        REQUIRE(run.status.record.error == err);
        REQUIRE(run.lock.tryWait()); // the next run may start
        if (err == ERR_SUCCESS)
            requireWasSeen(*flasher.image(), bootloader, written);
        REQUIRE(written || !bootloader.programmed);
    }
    REQUIRE(fuzzed::openFiles("none") == 0);
    fuzzed::endThreads();
    return 0;
}
