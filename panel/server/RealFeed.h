// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Feed.h"
#include "panel/server/Programs.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>

namespace hxpanel {

/// The feed of this machine itself: it has no events, so hxaux is asked once a second, one call after the other.
class RealFeed : public Feed {
public:
    RealFeed(Loop& loop, Programs& programs, bool readOnly);
    ~RealFeed() override;

    static constexpr Milliseconds kBetweenRounds{1000};

protected:
    Frame snapshot() override;
    void begin() override;
    void end() override;
    void showLife() override;

private:
    using Json = nlohmann::json;

    void askNext();
    void take(const Programs::Result& result);
    void endRound();
    [[nodiscard]] double time() const;

    Programs& programs_;
    bool readOnly_;
    SteadyTime started_ = std::chrono::steady_clock::now();
    bool works_ = false;
    bool asks_ = false;
    bool complete_ = false; ///< every reading has been asked for once
    std::size_t next_ = 0;
    std::size_t round_ = 0;
    bool changed_ = false;
    Json readings_ = Json::object();
    Loop::Timer pause_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace hxpanel
