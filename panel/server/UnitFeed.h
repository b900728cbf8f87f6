// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Feed.h"
#include "panel/server/HealthyUnit.h"
#include "panel/server/UnitLink.h"
#include "panel/server/Window.h"

#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <string>

namespace hxpanel {

/// The feed of a simulated unit. It follows the unit's events, and has a copy of its state for snapshots, so that a
/// stream that falls behind costs the unit nothing. When the unit stops it waits for one of the same name.
class UnitFeed : public Feed {
public:
    UnitFeed(Loop& loop, const std::string& unit, const HealthyUnit& healthy, bool readOnly)
        : Feed{loop, unit}, healthy_{healthy}, readOnly_{readOnly}
    {
    }
    ~UnitFeed() override;

    void refresh() override;
    /// The healthy values are known now.
    void showHealthy();

    static constexpr Milliseconds kBetweenMessages{20};

protected:
    Frame snapshot() override;
    void begin() override { connect(); }
    void end() override;
    void showLife() override;

private:
    using Json = nlohmann::json;
    enum class State { Gone, Asking, Following };

    void connect();
    void ask();
    void lose();
    void take(const Json& event, std::string_view line);
    void flush();
    void flushSoon();
    void apply();
    void noteTime(const Json& answer) { time_ = answer.value("time", time_); }
    void noteFaults(const Json& answer);
    void noteDevices(const Json& answer);
    void follow(const Json& programs);

    const HealthyUnit& healthy_;
    bool readOnly_;
    State state_ = State::Gone;
    std::unique_ptr<UnitLink> link_{};
    Loop::Timer retry_ = 0;
    Loop::Timer flush_ = 0;
    SteadyTime flushed_{};
    Window window_{};
    bool refreshing_ = false;
    bool silent_ = false; ///< the unit is there and does not answer

    double time_ = 0;
    Json properties_ = Json::object();
    Json actions_ = Json::object();
    Json faults_ = Json::array();
    Json devices_ = Json::object(); ///< {"devices":[...],"removed":[...]}
    std::map<int, std::string> programs_{};
    Frame snapshot_{}; ///< of this state, when it has been asked for
};

} // namespace hxpanel
