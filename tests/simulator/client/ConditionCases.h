// SPDX-License-Identifier: LicenseRef-HXAux
// The cases of conditions.txt, which has a description of its format.
#pragma once

#include "simulator/client/Evaluation.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conditions {

struct Step {
    hxsim::Event event{};
    bool concludes = false;
};

struct Case {
    std::string name{};
    std::string text{};
    std::string refusal{};
    hxsim::Evaluation::Values values{};
    std::vector<Step> steps{};
    hxsim::Verdict verdict = hxsim::Verdict::Pending;
    hxsim::Time decidedAt{0};
    std::string seen{};
};

struct Table {
    hxsim::Vocabulary vocabulary{};
    std::vector<Case> cases{};
};

/// Throws std::runtime_error naming a bad line.
Table readTable(const std::string& file);

} // namespace conditions
