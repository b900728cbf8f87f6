// SPDX-License-Identifier: LicenseRef-HXAux
// docs/control-codes.md matches the library's table.
#include "platform/ControlCodeTable.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace Halvix;

namespace {

struct Line {
    std::string action;
    std::string count;
};

std::vector<std::string> cellsOf(const std::string& line)
{
    std::vector<std::string> cells;
    for (std::size_t begin = 2; begin < line.size();) {
        const std::size_t end = line.find(" |", begin);
        cells.push_back(line.substr(begin, end - begin));
        begin = end == std::string::npos ? line.size() : end + 3;
    }
    return cells;
}

std::map<std::string, Line> page()
{
    std::map<std::string, Line> lines;
    std::ifstream file{HX_SOURCE_DIR "/docs/control-codes.md"};
    for (std::string line; std::getline(file, line);)
        if (line.rfind("| 0x", 0) == 0) {
            const std::vector<std::string> cells = cellsOf(line);
            EXPECT_EQ(cells.size(), 5U) << line;
            EXPECT_TRUE(lines.emplace(cells.at(0), Line{cells.at(3), cells.at(4)}).second) << line;
        }
    return lines;
}

std::string words(const Step& step)
{
    std::ostringstream text;
    const auto put = [&](const char* what) -> std::ostream& {
        return text << "register " << +step.reg << " = " << what << " at " << +step.offset;
    };
    const auto get = [&](const char* what) -> std::ostream& {
        return text << what << " at " << +step.offset << " = register " << +step.reg;
    };
    using Kind = Step::Kind;
    if (step.kind == Kind::Get16)
        get("word");
    else if (step.kind == Kind::Get8)
        get("byte");
    else if (step.kind == Kind::Zero16)
        text << "word at " << +step.offset << " = 0";
    else if (step.kind == Kind::PutOne)
        text << "register " << +step.reg << " = 1";
    else if (step.kind == Kind::PutSigned8)
        put("byte") << ", sign-extended";
    else
        put(step.kind == Kind::Put16 ? "word" : "byte");
    if (step.mask != 0xFFFF)
        text << " & " << step.mask;
    return text.str();
}

std::string steps(const Row& row)
{
    std::string text;
    for (const Step& step : row.steps)
        if (step.kind != Step::Kind::None)
            text += (text.empty() ? "" : "; ") + words(step);
    return text;
}

std::string actionOf(const Row& row)
{
    switch (row.action) {
    case Action::PassIn:
        return "the sent block goes to the driver";
    case Action::PassOut:
        return "the answer block goes to the driver";
    case Action::ByteRead:
        return "byte 0 of a 2-byte block is the answer";
    case Action::ByteWrite:
        return "the value goes as byte 1 of a 2-byte block";
    case Action::CopyOut:
        return std::to_string(row.copied) + " bytes of an own block are the answer";
    case Action::Registers:
        return steps(row);
    case Action::Named:
        break;
    }
    return "";
}

std::string countOf(const Row& row)
{
    return row.count == Count::InLength ? "sent" : row.count == Count::OutLength ? "answered" : "unset";
}

std::string codeOf(const Row& row)
{
    std::ostringstream text;
    text << "0x" << std::hex << row.code;
    return text.str();
}

} // namespace

TEST(ControlCodesPage, NamesNoCodeThatTheTableDoesNotHave)
{
    auto described = page();
    for (const Row& row : kControlCodes)
        described.erase(codeOf(row));

    for (const auto& [code, line] : described)
        ADD_FAILURE() << "docs/control-codes.md describes " << code << ", which is not in ControlCodeTable.h";
}

TEST(ControlCodesPage, DescribesEveryRow)
{
    const auto lines = page();
    for (const Row& row : kControlCodes) {
        const auto line = lines.find(codeOf(row));
        if (line == lines.end()) {
            ADD_FAILURE() << "add to docs/control-codes.md: | " << codeOf(row)
                          << " | `NAME` | `Interface::operation` | " << actionOf(row) << " | " << countOf(row) << " |";
            continue;
        }
        if (row.action == Action::Named) {
            EXPECT_NE(line->second.action, "") << codeOf(row);
            continue;
        }
        EXPECT_EQ(line->second.action, actionOf(row)) << codeOf(row);
        EXPECT_EQ(line->second.count, countOf(row)) << codeOf(row);
    }
}
