// SPDX-License-Identifier: LicenseRef-HXAux
// Progress of a long job: a bar on a terminal, otherwise one report per change.
#pragma once

#include "tools/hxaux/Call.h"

#include <chrono>
#include <string>

namespace hxaux {

class Progress {
public:
    explicit Progress(Call& call) : call_(call) {}

    /// Call after every possible change. The extra text follows the bar. A phase that another one follows is complete.
    void update(const std::string& phase, int percent, const std::string& extra = "");
    void complete(); ///< the last phase is done
    void end() { call_.screen().endPassingLine(); }

private:
    void draw(int percent, const std::string& extra) const;

    Call& call_;
    std::string phase_;
    int percent_ = -1;
    std::chrono::steady_clock::time_point began_;
};

/// "[######------]  50 %": pure, so that it can be tested.
std::string progressBar(int percent, int width);
/// "1:05 left", or nothing when it cannot be estimated yet.
std::string timeLeft(int percent, std::chrono::milliseconds elapsed);

} // namespace hxaux
