// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/scenario/ScenarioText.h"

#include "simulator/model/Suggestion.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace hxsim {

namespace {

using Words = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

constexpr char kFirstLine[] = "hx-sim scenario 1";
constexpr std::size_t kMostFiles = 100;
constexpr std::size_t kMostLines = 100000;
constexpr std::size_t kLongestLine = 4096;

bool isNameLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isName(const std::string& text)
{
    return !text.empty() && std::ranges::all_of(text, isNameLetter);
}

/// Removes a comment: '#' at the beginning of a word, outside quotes.
std::string withoutComment(const std::string& line)
{
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (quoted && line[i] == '\\')
            ++i;
        else if (line[i] == '"')
            quoted = !quoted;
        else if (line[i] == '#' && !quoted && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t'))
            return line.substr(0, i);
    }
    return line;
}

/// The lines of a scenario and of the files that it includes, and its table of examples.
class Reader {
public:
    explicit Reader(const ScenarioFiles& files) : files_{files} {}

    void read(const std::string& file, const std::string& content)
    {
        if (++read_ > kMostFiles)
            throw BadText{"more than " + std::to_string(kMostFiles) + " files are included"};
        std::size_t at = 0;
        bool begun = false;
        for (int number = 1; at < content.size(); ++number) {
            const std::size_t end = std::min(content.find('\n', at), content.size());
            const std::string text = trimmed(withoutComment(content.substr(at, end - at)));
            at = end + 1;
            if (text.empty())
                continue;
            const ScenarioLine line{file, number, text};
            guard(line, [&] { begun = begun ? take(line), true : begin(text); });
        }
        if (!begun)
            throw BadScenario{file, 1, std::string{"expected '"} + kFirstLine + "' as the first line"};
    }

    void readFirst(const std::string& file, const std::string& content)
    {
        open_.push_back(pathBeside("", file));
        read(file, content);
    }

    std::vector<ScenarioLine> lines{};
    ScenarioLine tableLine{};   ///< that began the examples
    std::vector<Words> table{}; ///< its first row has the names

private:
    /// A mistake is reported with the line that has it.
    template <typename Work>
    void guard(const ScenarioLine& line, Work work)
    {
        try {
            work();
        } catch (const BadScenario&) {
            throw;
        } catch (const BadText& bad) {
            throw BadScenario{line.file, line.number, bad.what()};
        }
    }
    static bool begin(const std::string& text)
    {
        if (text == kFirstLine)
            return true;
        if (text.starts_with("hx-sim scenario "))
            throw BadText{"this hx-sim reads version 1 of scenarios, not " + inQuotes(text.substr(16))};
        throw BadText{std::string{"expected '"} + kFirstLine + "' as the first line, not " + inQuotes(text)};
    }
    void take(const ScenarioLine& line)
    {
        if (line.text.size() > kLongestLine)
            throw BadText{"the line is longer than " + std::to_string(kLongestLine) + " bytes"};
        if (line.text.starts_with('|'))
            return takeRow(line);
        inTable_ = false;
        const Words parts = words(line.text);
        if (parts[0] == "include")
            return include(line, parts);
        if (parts[0] == "examples")
            return beginTable(line, parts);
        lines.push_back(line);
        if (lines.size() > kMostLines)
            throw BadText{"the scenario has more than " + std::to_string(kMostLines) + " lines"};
    }
    void include(const ScenarioLine& line, const Words& parts)
    {
        if (parts.size() != 2)
            throw BadText{"expected one file after 'include'"};
        const std::string path = pathBeside(line.file, parts[1]);
        if (std::ranges::find(open_, path) != open_.end())
            throw BadText{inQuotes(parts[1]) + " includes itself"};
        open_.push_back(path);
        read(path, files_(path));
        open_.pop_back();
    }
    void beginTable(const ScenarioLine& line, const Words& parts)
    {
        if (parts.size() != 1)
            throw BadText{"expected nothing after 'examples'; its rows follow: | NAME | NAME |"};
        if (!table.empty() || tableLine.number != 0)
            throw BadText{"a scenario has one table of examples"};
        tableLine = line;
        inTable_ = true;
    }
    void takeRow(const ScenarioLine& line)
    {
        if (!inTable_)
            throw BadText{"expected 'examples' before the first row of a table"};
        Words row;
        for (std::size_t at = 1; at < line.text.size();) {
            const std::size_t end = std::min(line.text.find('|', at), line.text.size());
            row.push_back(trimmed(line.text.substr(at, end - at)));
            at = end + 1;
        }
        if (!line.text.ends_with('|') || row.empty())
            throw BadText{"expected '|' at the end of the row"};
        if (table.empty() && !std::ranges::all_of(row, isName))
            throw BadText{"expected names of letters, digits and '_' in the first row"};
        if (!table.empty() && row.size() != table[0].size())
            throw BadText{"expected " + std::to_string(table[0].size()) + " values, not " + std::to_string(row.size())};
        table.push_back(row);
    }

    const ScenarioFiles& files_;
    std::size_t read_ = 0;
    bool inTable_ = false;
    Words open_{}; ///< the files that are being included
};

/// Replaces $NAME and ${NAME}; "$$" is one dollar sign.
std::string replaced(const std::string& text, const Variables& variables)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '$') {
            result += text[at];
            continue;
        }
        if (at + 1 < text.size() && text[at + 1] == '$') {
            result += text[++at];
            continue;
        }
        const bool braced = at + 1 < text.size() && text[at + 1] == '{';
        const std::size_t begin = at + (braced ? 2 : 1);
        std::size_t end = begin;
        while (end < text.size() && isNameLetter(text[end]))
            ++end;
        const std::string name = text.substr(begin, end - begin);
        if (name.empty() || (braced && (end >= text.size() || text[end] != '}')))
            throw BadText{"expected the name of a variable after '$'; write '$$' for a dollar sign"};
        const auto found = variables.find(name);
        if (found == variables.end())
            throw BadText{"there is no variable " + inQuotes(name) + suggestionFrom(name, variables)};
        result += found->second;
        at = braced ? end : end - 1;
        if (result.size() > kLongestLine)
            throw BadText{"the line is too long with its variables"};
    }
    return result;
}

/// "let NAME = VALUE"
void define(const std::string& text, Variables& variables)
{
    const std::size_t equal = text.find('=');
    const std::string name = trimmed(text.substr(3, equal == std::string::npos ? equal : equal - 3));
    if (equal == std::string::npos || !isName(name))
        throw BadText{"expected NAME = VALUE after 'let'"};
    variables[name] = replaced(trimmed(text.substr(equal + 1)), variables);
}

ScenarioRow rowOf(const std::vector<ScenarioLine>& lines, Variables variables, const std::string& name)
{
    ScenarioRow row{name, {}};
    for (const ScenarioLine& line : lines) {
        try {
            if (words(line.text)[0] == "let")
                define(line.text, variables);
            else
                row.lines.push_back({line.file, line.number, replaced(line.text, variables)});
        } catch (const BadText& bad) {
            throw BadScenario{line.file, line.number, bad.what()};
        }
    }
    return row;
}

} // namespace

BadScenario::BadScenario(const std::string& file, int line, const std::string& text)
    : BadText{file + ':' + std::to_string(line) + ": " + text}
{
}

std::string pathBeside(const std::string& file, const std::string& name)
{
    return (std::filesystem::path{file}.parent_path() / name).lexically_normal();
}

std::vector<ScenarioRow> readScenario(const std::string& file, const std::string& content, const ScenarioFiles& files)
{
    Reader reader{files};
    reader.readFirst(file, content);
    if (reader.tableLine.number == 0)
        return {rowOf(reader.lines, {}, "")};
    if (reader.table.size() < 2)
        throw BadScenario{reader.tableLine.file, reader.tableLine.number,
                          "expected a row of names and at least one row of values: | NAME | NAME |"};
    std::vector<ScenarioRow> rows;
    for (std::size_t i = 1; i < reader.table.size(); ++i) {
        Variables variables;
        std::string name;
        for (std::size_t column = 0; column < reader.table[0].size(); ++column) {
            variables[reader.table[0][column]] = reader.table[i][column];
            name += (column == 0 ? "" : " ") + reader.table[0][column] + '=' + reader.table[i][column];
        }
        rows.push_back(rowOf(reader.lines, variables, name));
    }
    return rows;
}

} // namespace hxsim
