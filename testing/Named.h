// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

/// A row of a table of cases.
struct Named {
    std::string name;
};

/// For TEST_ROWS with such rows.
constexpr auto kNameOfRow = [](const auto& row) { return row.name; };
