// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/UnitCalls.h"
#include "simulator/model/Unit.h"

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace hxsim {

/// A unit in real time, entered by one thread at a time.
class HostedUnit {
public:
    /// Holds the unit for its life; model time is the machine's when it begins.
    class Visit {
    public:
        explicit Visit(HostedUnit& host);
        UnitCalls& calls() { return host_.calls_; }
        Clock& clock() { return host_.unit_.clock(); }
        Node& node(const std::string& path) { return *host_.unit_.findNode(path); }

    private:
        HostedUnit& host_;
        std::lock_guard<std::mutex> lock_;
    };

    void describe(const std::string& text) { unit_.describe(text); }
    [[nodiscard]] const std::map<std::string, Node>& nodes() const { return unit_.nodes(); }
    [[nodiscard]] std::string textOf(const std::string& path);

private:
    std::mutex mutex_;
    Unit unit_;
    UnitCalls calls_{unit_};
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace hxsim
