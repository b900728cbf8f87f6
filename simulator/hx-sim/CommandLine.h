// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace hxsim {

enum Status { kDone = 0, kRefused = 1, kUsage = 2, kBadFile = 3, kNoUnit = 6 };

struct Choice;

/// The command line of hx-sim: parses the words of one command and executes it.
class CommandLine {
public:
    CommandLine();
    /// The commands of a shell: without a name they address this unit; error messages begin with this text.
    CommandLine(const std::string& unit, const std::string& place);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;
    ~CommandLine();

    /// Returns the exit status; errors are on standard error.
    int execute(std::vector<std::string> words);
    [[nodiscard]] const CLI::App& app() const { return *app_; }

private:
    CLI::App& add(const char* name);
    CLI::App& addOnUnit(const char* name);
    void defineAll();
    void defineUnits();
    void defineValues();
    void defineActions();
    void defineTrouble();
    void defineLog();
    void definePlay();
    void defineRecord();
    void defineReplay();
    void defineShell();

    std::string place_ = "hx-sim: ";
    bool inShell_ = false;
    std::unique_ptr<Choice> choice_;
    std::unique_ptr<CLI::App> app_;
};

} // namespace hxsim
