// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// All of a file; nothing of one that cannot be read.
inline std::string fileContent(const std::filesystem::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}
