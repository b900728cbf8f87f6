// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/FirmwareTexts.h"
#include "tests/system/conformance/Checks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

namespace conformance {

using namespace Halvix;

namespace {

/// A firmware file of a few blocks, for the duration of the checks that use it.
class FirmwareFile {
public:
    explicit FirmwareFile(const std::string& text)
    {
        std::string folder = (std::filesystem::temp_directory_path() / "hx-conformance.XXXXXX").string();
        if (mkdtemp(folder.data()) == nullptr)
            return;
        folder_ = folder;
        std::ofstream{name()} << text;
    }
    ~FirmwareFile() { std::filesystem::remove_all(folder_); }
    FirmwareFile(const FirmwareFile&) = delete;
    FirmwareFile& operator=(const FirmwareFile&) = delete;
    [[nodiscard]] std::string name() const { return (folder_ / "firmware").string(); }

private:
    std::filesystem::path folder_;
};

using Run = eErr (FirmwareUpgrade::*)(const char*, bool);
using SharedFile = std::shared_ptr<const FirmwareFile>;

/// A whole run: its code and its final status.
Check runs(const char* operation, Run run, const SharedFile& file)
{
    return {operation, "0 0 6 0 0", [run, file] {
                Held upgrade{GetFirmwareUpgrade()};
                const eErr ended = ((*upgrade).*run)(file->name().c_str(), true);
                UpgradeStatus status{};
                const eErr got = upgrade->getUpgradeStatus(&status, false);
                return answer(ended) + " " + answer(got, status.action, status.percent, status.error);
            }};
}

Check refuses(const char* operation, const char* expected, Run run, const SharedFile& file)
{
    return {operation, expected, [run, file] {
                Held upgrade{GetFirmwareUpgrade()};
                return answer(((*upgrade).*run)(file->name().c_str(), true));
            }};
}

/// The microcontrollers run this firmware afterwards: its stack is in RAM and its entry in flash.
firmware::Bytes runnable(firmware::Bytes image)
{
    constexpr std::array<std::uint8_t, 8> kVectors{0x00, 0x10, 0x00, 0x20, 0x01, 0x01, 0x00, 0x08};
    std::ranges::copy(kVectors, image.begin());
    return image;
}

} // namespace

Checks upgrades()
{
    const firmware::Bytes image = runnable(firmware::pattern(1024));
    const auto supervisor = std::make_shared<const FirmwareFile>(firmware::intelHexOfSize(95000, image));
    const auto front = std::make_shared<const FirmwareFile>(firmware::intelHexOfSize(50000, image));
    const auto fpga = std::make_shared<const FirmwareFile>(firmware::mcs(image));
    const auto other = std::make_shared<const FirmwareFile>(firmware::mcs(firmware::pattern(1024, 2)));
    return {
        runs("FirmwareUpgrade.startSSUpgrade", &FirmwareUpgrade::startSSUpgrade, supervisor),
        runs("FirmwareUpgrade.startSSVerification", &FirmwareUpgrade::startSSVerification, supervisor),
        refuses("FirmwareUpgrade.startSSUpgrade small", "4", &FirmwareUpgrade::startSSUpgrade, front),
        runs("FirmwareUpgrade.startFrontUpgrade", &FirmwareUpgrade::startFrontUpgrade, front),
        runs("FirmwareUpgrade.startFrontVerification", &FirmwareUpgrade::startFrontVerification, front),
        runs("FirmwareUpgrade.startFpgaUpgrade", &FirmwareUpgrade::startFpgaUpgrade, fpga),
        runs("FirmwareUpgrade.startFpgaVerification", &FirmwareUpgrade::startFpgaVerification, fpga),
        refuses("FirmwareUpgrade.startFpgaVerification other", "14", &FirmwareUpgrade::startFpgaVerification, other),
        {"FirmwareUpgrade.shutDown", "0",
         [] {
             Held upgrade{GetFirmwareUpgrade()};
             return answer(upgrade->shutDown());
         }},
    };
}

} // namespace conformance
