// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Loop.h"

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hxpanel {

/// The events of a unit during a few milliseconds, which reach the page as one message. A property that changes several
/// times is one change, from its first value to its last one. Requests have a limit; what is beyond it is counted.
class Window {
public:
    /// An event as the unit has sent it.
    void add(const nlohmann::json& event, std::string_view line, SteadyTime now);
    [[nodiscard]] bool isEmpty() const { return items_.empty() && skipped_ == 0; }
    /// The changed properties with their new values.
    [[nodiscard]] const std::map<std::string, std::string>& changes() const { return values_; }
    [[nodiscard]] bool hasFaults() const { return hasFaults_; }
    /// {"time":...,"events":[...]}; the window is empty afterwards.
    std::string take();

    /// It is to be sent before its time is over.
    [[nodiscard]] bool isFull() const { return size_ >= kLargest; }

    /// Requests a second and their bytes; those of a second at once.
    static constexpr double kMostRequests = 2000;
    static constexpr double kMostBytes = 4U << 20;
    /// Bytes of a message that does not wait for more.
    static constexpr std::size_t kLargest = 128U << 10;

private:
    struct Change {
        std::size_t item;
        std::string old;
    };

    void addProperty(const nlohmann::json& event);
    bool mayPass(std::size_t bytes, SteadyTime now);

    std::vector<std::optional<std::string>> items_{};
    std::size_t size_ = 0;
    std::map<std::string, Change> changed_{};
    std::map<std::string, std::string> values_{};
    bool hasFaults_ = false;
    std::size_t skipped_ = 0;
    double time_ = 0;
    double requests_ = kMostRequests; ///< that may pass now
    double bytes_ = kMostBytes;
    SteadyTime credited_{};
};

} // namespace hxpanel
