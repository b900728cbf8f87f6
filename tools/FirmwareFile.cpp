// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/FirmwareFile.h"

#include "upgrade/ByteSource.h"
#include "upgrade/FirmwareText.h"
#include "upgrade/IntelHex.h"
#include "upgrade/Mcs.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace hxaux {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Nothing when the file cannot be read; errno then says why.
std::optional<std::string> contentsOf(const std::string& name)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(name.c_str(), "rb"));
    if (file == nullptr)
        return std::nullopt;
    std::string text;
    char piece[65536];
    while (const std::size_t got = std::fread(piece, 1, sizeof piece, file.get()))
        text.append(piece, got);
    if (std::ferror(file.get()) != 0)
        return std::nullopt;
    return text;
}

std::string problemOf(Halvix::HexResult result)
{
    switch (result) {
    case Halvix::HexResult::Complete:
        return "";
    case Halvix::HexResult::WrongChecksum:
        return "a record's checksum is wrong";
    case Halvix::HexResult::OutOfMemory:
        return "there is no memory for its data";
    case Halvix::HexResult::EndRecordMissing:
        return "its end record is missing: the file is cut short";
    case Halvix::HexResult::WrongSyntax:
        break;
    }
    return "it is no Intel HEX file, or its addresses do not ascend";
}

FirmwareCheck checkHex(FirmwareTarget target, const std::string& text)
{
    FirmwareCheck check;
    check.code = Halvix::checkFirmwareText(text.c_str(), text.size(), static_cast<int>(target));
    if (check.code != Halvix::ERR_SUCCESS) {
        check.problem = target == FirmwareTarget::Supervisor
                            ? "it is no supervisor firmware (95000 to 1000000 bytes, without 'Front_uc')"
                            : "it is no front-panel firmware (50000 to 110000 bytes, without 'SystemSupervisor')";
        return check;
    }
    Halvix::MemorySource source(text);
    Halvix::HexImage image;
    const Halvix::HexResult result = Halvix::parseIntelHex(source, image, [](std::uint32_t) {});
    check.code = Halvix::errorOf(result);
    check.problem = problemOf(result);
    check.imageSize = image.size;
    return check;
}

FirmwareCheck checkMcs(const std::string& text)
{
    FirmwareCheck check;
    Halvix::MemorySource source(text);
    std::vector<unsigned char> image;
    std::uint32_t wrongAt = 0;
    check.code = Halvix::convertMcs(
        source, image, [](std::uint32_t) {}, &wrongAt);
    check.imageSize = image.size();
    if (check.code != Halvix::ERR_SUCCESS) {
        check.problem = "a record's checksum is wrong";
    } else if (image.empty()) {
        check.code = Halvix::ERR_INVALID_DATA;
        check.problem = "it holds no data record of 16 bytes";
    }
    return check;
}

} // namespace

FirmwareCheck checkFirmwareFile(FirmwareTarget target, const std::string& name)
{
    const std::optional<std::string> text = contentsOf(name);
    if (!text)
        return {Halvix::ERR_OPEN_FAILED, std::strerror(errno), 0};
    return target == FirmwareTarget::Fpga ? checkMcs(*text) : checkHex(target, *text);
}

} // namespace hxaux
