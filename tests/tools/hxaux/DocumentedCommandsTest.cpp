// SPDX-License-Identifier: LicenseRef-HXAux
// Runs every command of hxaux and hx-sim on a page and compares its output with the page.
//
// In a page, "```console" begins commands that bring their own unit, "```console unit" such that are on one. All
// blocks of a page share a folder and the units that run. "$ " begins a command, "> " continues it; then follow
// output and errors, "..." for any lines, and "[status N]" unless N is 0. What needs a real unit stands in
// "```sh" blocks that begin with "# on a unit". A "```cpp" block that begins with "// NAME.cpp" is that file, and a
// "```python" block that begins with "# NAME.py".
#include "testing/Command.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

using namespace hxtest;

namespace {

namespace fs = std::filesystem;

const fs::path kDocs = HX_DOCS;

/// The package is built for the ABI of the machine's Python alone.
constexpr bool kHasPython = !std::string_view{HX_PYTHON_PROGRAM}.empty();

struct Shown {
    std::string command;
    bool onUnit = false;
    std::string output = "";
};

struct Page {
    std::vector<Shown> commands{};
    std::map<std::string, std::string> files{};
    std::vector<std::string> untested{}; ///< lines that call a tool outside a block that is tested
};

bool callsATool(const std::string& line)
{
    const std::size_t begin = line.find_first_not_of(' ');
    const std::string text = begin == std::string::npos ? "" : line.substr(begin);
    const std::string call = text.starts_with("$ ") ? text.substr(2) : text;
    return call.starts_with("hxaux ") || call.starts_with("hx-sim ") || call.find("/hxaux ") != std::string::npos ||
           call.find("/hx-sim ") != std::string::npos;
}

/// Reads a page line by line.
class Reader {
public:
    explicit Reader(std::istream& stream)
    {
        for (std::string line; std::getline(stream, line);)
            take(line);
    }
    Page page{};

private:
    void take(const std::string& line)
    {
        if (line.starts_with("```"))
            return fence(line);
        const bool code = !block_.empty() || line.starts_with("    ");
        if (block_.starts_with("```console"))
            return console(line);
        if (block_ == "```cpp" || block_ == "```python")
            return program(line);
        if (block_ == "```sh" && line.starts_with("# on a unit"))
            onMachine_ = true;
        const bool isProse = block_ == "```text" || block_ == "```mermaid";
        if (code && !isProse && !onMachine_ && callsATool(line))
            page.untested.push_back(line);
    }
    void fence(const std::string& line)
    {
        block_ = block_.empty() ? line : "";
        onMachine_ = false;
        file_.clear();
    }
    void program(const std::string& line)
    {
        if (line.starts_with("// ") && line.ends_with(".cpp"))
            file_ = line.substr(3);
        if (line.starts_with("# ") && line.ends_with(".py"))
            file_ = line.substr(2);
        if (!file_.empty())
            page.files[file_] += line + "\n";
    }
    void console(const std::string& line)
    {
        if (line.starts_with("$ "))
            page.commands.push_back({line.substr(2), block_ == "```console unit"});
        else if (line.starts_with("> ") && !page.commands.empty() && page.commands.back().output.empty())
            page.commands.back().command += "\n" + line.substr(2);
        else if (!page.commands.empty())
            page.commands.back().output += line + "\n";
    }

    std::string block_;
    std::string file_;
    bool onMachine_ = false;
};

Page readPage(const fs::path& file)
{
    std::ifstream stream{file};
    return Reader{stream}.page;
}

std::vector<fs::path> pages()
{
    const fs::path root = kDocs.parent_path();
    std::vector<fs::path> files{root / "README.md", root / "CONTRIBUTING.md", root / "examples/README.md"};
    for (const auto& entry : fs::directory_iterator(kDocs))
        if (entry.path().extension() == ".md" && (kHasPython || entry.path().stem() != "python"))
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

/// Whether lines match: "..." matches any number of them.
bool matches(const std::string& pattern, const std::string& text)
{
    const std::size_t gap = pattern.find("...\n");
    if (gap == std::string::npos || (gap > 0 && pattern[gap - 1] != '\n'))
        return pattern == text;
    const std::string rest = pattern.substr(gap + 4);
    if (!text.starts_with(pattern.substr(0, gap)))
        return false;
    for (std::size_t at = gap; at <= text.size();
         at = text.find('\n', at) == std::string::npos ? text.size() + 1 : text.find('\n', at) + 1)
        if (matches(rest, text.substr(at)))
            return true;
    return false;
}

/// A folder for a page's commands and a place for its units.
class Place {
public:
    Place()
    {
        fs::create_directories(folder_ / "units");
        fs::create_directories(folder_ / "work/build");
        fs::create_symlink(kDocs.parent_path() / "include", work() / "include");
        fs::create_symlink(fs::path{HX_EXAMPLE_PROGRAMS}.parent_path(), work() / "build/x86_64");
        fs::create_directory(folder_ / "bin");
        makeProgram("g++", std::string{"/usr/bin/g++"} + (sizeof(void*) == 4 ? " -m32" : ""));
        if (kHasPython)
            makeProgram("python3", "env PYTHONPATH=" HX_PYTHON_TREE " PYTHONDONTWRITEBYTECODE=1 " HX_PYTHON_PROGRAM);
        setenv("XDG_RUNTIME_DIR", (folder_ / "units").c_str(), 1);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place()
    {
        run("for unit in $(hx-sim list); do hx-sim stop $unit; done");
        unsetenv("XDG_RUNTIME_DIR");
    }
    [[nodiscard]] fs::path work() const { return folder_ / "work"; }

    [[nodiscard]] std::string outputOf(const Shown& shown) const
    {
        std::ofstream{folder_ / "command"} << "exec 2>&1; PATH=" << (folder_ / "bin").string() << ":$PATH; cd "
                                           << work().string() << "; " << shown.command << "\n";
        const std::string shell = "sh " + (folder_ / "command").string();
        const Outcome outcome = run(shown.onUnit ? "hx-sim run --unit page -- " + shell : shell);
        return outcome.output + outcome.error +
               (outcome.status == 0 ? "" : "[status " + std::to_string(outcome.status) + "]\n");
    }

private:
    /// The page's compiler and Python are those of this build of the library.
    void makeProgram(const std::string& name, const std::string& command) const
    {
        const fs::path program = folder_ / "bin" / name;
        std::ofstream{program} << "#!/bin/sh\nexec " << command << " \"$@\"\n";
        fs::permissions(program, fs::perms::owner_all);
    }

    TemporaryFolder temporary_;
    fs::path folder_{temporary_.path()};
};

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

/// A picture of a terminal as the page that shows the same.
Page readPicture(const fs::path& file)
{
    std::ifstream stream{file};
    std::string page = "```console\n";
    for (std::string line; std::getline(stream, line);) {
        const std::size_t begin = line.rfind("<text ");
        if (begin == std::string::npos)
            continue;
        const std::size_t text = line.find('>', begin) + 1;
        page += line.substr(text, line.rfind("</text>") - text) + "\n";
    }
    for (const auto& [entity, meaning] : {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}})
        replaceAll(page, entity, meaning);
    std::istringstream lines{page};
    return Reader{lines}.page;
}

void expectWhatIsShown(const Page& page, const Place& place)
{
    for (const Shown& shown : page.commands) {
        const std::string output = place.outputOf(shown);
        EXPECT_TRUE(matches(shown.output, output)) << "$ " << shown.command << "\nis shown with\n"
                                                   << shown.output << "and prints\n"
                                                   << output;
    }
}

class DocumentedCommands : public hxtest::TestWithRow<fs::path> {};

} // namespace

ROW_TEST(DocumentedCommands, PrintWhatThePageShows)
{
    const Page page = readPage(row());
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    if (!page.files.empty())
        GTEST_SKIP() << "the page's compiler makes no program for this library";
#endif
    const Place place;
    for (const auto& [name, content] : page.files)
        std::ofstream{place.work() / name} << content;
    fs::copy(kDocs.parent_path() / "simulator/units/light", place.work(), fs::copy_options::recursive);
    if (std::ranges::any_of(page.commands, &Shown::onUnit)) {
        EXPECT_EQ(run("hx-sim start page").status, 0);
    }

    expectWhatIsShown(page, place);
}

TEST(Pictures, ShowWhatTheCommandsPrint)
{
    for (const auto& entry : fs::directory_iterator(kDocs / "pictures")) {
        if (entry.path().extension() != ".session")
            continue;
        SCOPED_TRACE("scripts/terminal-picture " + entry.path().string() + " draws it again");
        const Place place;
        const Page page = readPicture(fs::path{entry.path()}.replace_extension(".svg"));
        EXPECT_FALSE(page.commands.empty());
        expectWhatIsShown(page, place);
    }
}

ROW_TEST(DocumentedCommands, StandWhereTheyAreTested)
{
    EXPECT_THAT(readPage(row()).untested, testing::IsEmpty());
}

TEST_ROWS_IN(
    Each, DocumentedCommands,
    [](const auto& each) {
        std::string name = each.parent_path().stem().string() + '_' + each.stem().string();
        std::ranges::replace_if(
            name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
        return name;
    },
    pages());
