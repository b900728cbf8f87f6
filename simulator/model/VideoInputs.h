// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <array>
#include <cstdint>
#include <string>

namespace hxsim {

/// One analog video input: its driver's settings and its decoder chip.
class VideoInput {
public:
    VideoInput(Unit& unit, const std::string& path, const std::string& name);

    bool started = false;      ///< started at least once
    std::uint8_t control = 0;  ///< bit 0 shown, bits 1 and 2 fields, bit 3 mirrored
    std::uint32_t channel = 1; ///< 1 to 4
    std::array<std::uint8_t, 3> colorKey{};
    std::array<std::uint16_t, 4> area{0, 0, 720, 576};
    std::array<std::uint8_t, 4> scaling{128, 128, 64, 64};
    std::array<std::uint8_t, 4> cropping{};
    std::array<std::uint16_t, 2> rawSize{720, 576};
    std::uint8_t rawQuarters = 100;
    std::array<std::uint8_t, 256> decoder{};

private:
    void describeRequests(Node& node);
    void describeGeometry(Node& node);
    void describeDecoder(Node& node);
    void describeProperties(Unit& unit, const std::string& name);
    [[nodiscard]] std::string standard() const;
    void setStandard(const std::string& name);
    [[nodiscard]] std::string fields() const;
};

/// Both video inputs.
class VideoInputs : public Hardware {
public:
    explicit VideoInputs(Unit& unit);

    VideoInput first;
    VideoInput second;
};

} // namespace hxsim
