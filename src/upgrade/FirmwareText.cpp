// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/FirmwareText.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Halvix {

namespace {

struct Plausible {
    int deviceType;
    std::size_t smallest;
    std::size_t largest;
    const char* foreignName;
};
constexpr Plausible kPlausible[] = {
    {0, 95000, 1000000, "Front_uc"},
    {1, 50000, 110000, "SystemSupervisor"},
};

const Plausible* find(int deviceType)
{
    const auto* row = std::ranges::find(kPlausible, deviceType, &Plausible::deviceType);
    return row != std::end(kPlausible) ? row : nullptr;
}

} // namespace

bool isFirmwareSize(std::size_t size, int deviceType)
{
    const Plausible* row = find(deviceType);
    return row != nullptr && size >= row->smallest && size <= row->largest;
}

eErr checkFirmwareText(const char* text, std::size_t size, int deviceType)
{
    if (!isFirmwareSize(size, deviceType))
        return ERR_DATATYPE_MISMATCH;
    return std::strstr(text, find(deviceType)->foreignName) == nullptr ? ERR_SUCCESS : ERR_DATATYPE_MISMATCH;
}

} // namespace Halvix
