// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>
#include <string>

/// A row of a table of cases, shown by its name.
struct Named {
    std::string name;

    friend std::ostream& operator<<(std::ostream& stream, const Named& row) { return stream << row.name; }
};

/// For INSTANTIATE_TEST_SUITE_P with such rows.
constexpr auto kNameOfRow = [](const auto& info) { return info.param.name; };
