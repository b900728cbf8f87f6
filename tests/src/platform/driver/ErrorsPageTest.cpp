// SPDX-License-Identifier: LicenseRef-HXAux
// docs/errors.md has every code with its number, name and text.
#include "hx-aux/errors.h"
#include "testing/FileContent.h"

#include <gmock/gmock.h>

#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace {

std::vector<std::string> rows()
{
    std::vector<std::string> found;
    std::ifstream page{HX_SOURCE_DIR "/docs/errors.md"};
    const std::regex row{R"(\| [0-9]+ \| `ERR_.*)"};
    for (std::string line; std::getline(page, line);)
        if (std::regex_match(line, row))
            found.push_back(line);
    return found;
}

/// The name in the header.
std::string nameOf(int code)
{
    const std::string text = fileContent(HX_SOURCE_DIR "/include/hx-aux/errors.h");
    std::smatch found;
    const std::regex enumerator{R"((ERR_[A-Z0-9_]+) =\s*)" + std::to_string(code) + ","};
    return std::regex_search(text, found, enumerator) ? found[1].str() : "";
}

} // namespace

TEST(ErrorsPage, HasEveryCodeWithItsNumberNameAndText)
{
    const std::vector<std::string> lines = rows();
    ASSERT_EQ(lines.size(), 33U);
    for (int code = 0; code <= 32; ++code) {
        const std::string start = "| " + std::to_string(code) + " | `" + nameOf(code) + "` | " +
                                  GetErrorStringA(static_cast<Halvix::eErr>(code)) + " | ";
        EXPECT_THAT(lines[static_cast<std::size_t>(code)], testing::StartsWith(start));
    }
}
