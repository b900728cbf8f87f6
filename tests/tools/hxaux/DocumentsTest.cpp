// SPDX-License-Identifier: LicenseRef-HXAux
// The documents of the tool say what the verb table says.
#include "testing/Command.h"
#include "testing/FileContent.h"
#include "tools/cli/Manual.h"
#include "tools/hxaux/ErrorNames.h"
#include "tools/hxaux/Objects.h"
#include <hx-aux/hx-aux.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace hxtest;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

std::string page(const std::string& name)
{
    return fileContent(std::string(HX_DOCS) + "/" + name);
}

/// The words of each call of a tool that stands between backticks.
std::vector<std::vector<std::string>> callsIn(const std::string& text)
{
    std::vector<std::vector<std::string>> calls;
    for (const char* const tool : {"`hxaux ", "`hx-sim "}) {
        for (std::size_t at = text.find(tool); at != std::string::npos; at = text.find(tool, at + 1)) {
            std::istringstream words(text.substr(at + 1, text.find('`', at + 1) - at - 1));
            calls.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
        }
    }
    return calls;
}

bool isSimulatorVerb(const std::string& word)
{
    static const std::string known = run("hx-sim run -- hx-sim completion words ''").output;
    return ("\n" + known).find("\n" + word + "\t") != std::string::npos;
}

/// Placeholders and options match themselves.
bool isKnown(const std::vector<std::string>& call)
{
    const std::string& word = call[1];
    if (std::isupper(static_cast<unsigned char>(word[0])) != 0 || word[0] == '-' || word == "recording")
        return true;
    if (call[0] == "hx-sim")
        return isSimulatorVerb(word);
    const hxaux::Object* const object = hxaux::program().find(word);
    return object != nullptr &&
           (call.size() == 2 || cli::findVerb(*object, {call.begin() + 2, call.end()}).first != nullptr ||
            (call.size() > 2 && call[2] == "--help"));
}

/// Each virtual or exported function of a header with the comment in front of it.
std::vector<std::pair<std::string, std::string>> operationsIn(const fs::path& header)
{
    std::vector<std::pair<std::string, std::string>> all;
    std::ifstream stream(header);
    std::string words;
    std::string ofClass; // a thread word there is each operation's that has none
    for (std::string line; std::getline(stream, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        const std::string text = begin == std::string::npos ? "" : line.substr(begin);
        if (text.starts_with("///"))
            words += text + "\n";
        else if (text.starts_with("virtual ") ||
                 (text.starts_with("HX_EXPORT ") && text.find('(') != std::string::npos))
            all.emplace_back(text, (words.find("@threadsafe") == std::string::npos ? ofClass : "") +
                                       std::exchange(words, ""));
        else if (text.starts_with("class "))
            ofClass = std::exchange(words, "");
        else
            words.clear();
    }
    return all;
}

} // namespace

TEST(Reference, IsWhatTheVerbTableSays)
{
    EXPECT_TRUE(page("hxaux-reference.md") == cli::markdownReference(hxaux::program()))
        << "update it: scripts/update-pages";
}

TEST(CommandLinePage, ListsEveryExitStatus)
{
    const std::string text = page("command-line.md");
    for (const auto& [status, meaning] : hxaux::program().exits)
        EXPECT_THAT(text, HasSubstr("\n| " + std::to_string(status) + " | " + std::string(meaning)));
}

TEST(ErrorPage, ListsEachCodeWithItsNameAndItsText)
{
    const std::string text = page("errors.md");
    constexpr int kCodes = 33;
    for (int code = 0; code < kCodes; ++code)
        EXPECT_THAT(text, HasSubstr("\n| " + std::to_string(code) + " | `" + hxaux::errorName(code) + "` | " +
                                    GetErrorStringA(static_cast<Halvix::eErr>(code)) + " | "));
    EXPECT_EQ(hxaux::errorName(kCodes), std::to_string(kCodes)) << "the page must list a new code";
}

TEST(SimulatorPage, ListsEachCommandAndEachStatus)
{
    const std::string text = page("simulator.md");
    std::istringstream commands(run("XDG_RUNTIME_DIR=/nonexistent hx-sim completion words '' | cut -f 1").output);
    int count = 0;
    for (std::string command; commands >> command; ++count)
        EXPECT_THAT(text, ContainsRegex("\n\\| [^|]*`" + command + "[` ]"));
    EXPECT_GT(count, 15);
    std::istringstream statuses(run("hx-sim --man | sed -n '/EXIT STATUS/,/SEE ALSO/p' | grep -v '^\\.[TS]'").output);
    count = 0;
    for (std::string status, meaning; std::getline(statuses, status) && std::getline(statuses, meaning); ++count)
        EXPECT_THAT(text, HasSubstr("\n| " + status.substr(status.find(' ') + 1) + " | " + meaning + " |"));
    EXPECT_GE(count, 8);
}

TEST(UnitPropertiesPage, IsWhatTheSimulatedUnitSays)
{
    EXPECT_TRUE(page("unit-properties.md") == run("hx-sim run --scale 0.001 -- hx-sim properties --markdown").output)
        << "update it: scripts/update-pages";
}

TEST(Pages, AreAllListed)
{
    const std::string list = page("README.md");
    for (const auto& entry : fs::directory_iterator(HX_DOCS)) {
        const std::string name = entry.path().filename();
        if (entry.path().extension() == ".md" && name != "README.md" && name != "mainpage.md") {
            EXPECT_THAT(list, HasSubstr("(" + name + ")"));
        }
    }
}

// Calls in running text, `hxaux voltage 0`, are of verbs that there are.
TEST(Pages, NameNoVerbThatTheToolsDoNotHave)
{
    for (const auto& entry : fs::directory_iterator(HX_DOCS)) {
        if (entry.path().extension() != ".md")
            continue;
        SCOPED_TRACE(entry.path().filename());
        for (const std::vector<std::string>& call : callsIn(page(entry.path().filename())))
            EXPECT_TRUE(isKnown(call)) << testing::PrintToString(call);
    }
}

// Doxygen refuses what has no words at all; this checks that each operation documents its codes and threads.
TEST(PublicHeaders, DocumentEachOperationsCodesAndThreads)
{
    int operations = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(HX_DOCS).parent_path() / "include/hx-aux"))
        for (const auto& [declaration, words] : operationsIn(entry.path())) {
            SCOPED_TRACE(entry.path().filename().string() + ": " + declaration);
            const bool isMember = declaration.starts_with("virtual ");
            EXPECT_THAT(words, AllOf(HasSubstr("@brief"), HasSubstr(isMember ? "@threadsafe" : "")));
            EXPECT_THAT(words, HasSubstr(declaration.starts_with("virtual eErr ") ? "@retval ERR_" : ""));
            ++operations;
        }
    EXPECT_GT(operations, 200);
}
