// SPDX-License-Identifier: LicenseRef-HXAux
// The output of results: lines, JSON, or a screen that is redrawn in place on a terminal.
#pragma once

#include "tools/hxaux/Report.h"

#include <string>

namespace hxaux {

enum class Form { Text, Json };

class Screen {
public:
    explicit Screen(Form form);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    [[nodiscard]] Form form() const { return form_; }
    /// The output is a terminal, and text is wanted.
    [[nodiscard]] bool onTerminal() const { return terminal_; }

    /// From here on each report replaces the previous one on a terminal.
    void redrawInPlace() { redraw_ = terminal_; }
    void show(const Report& report);
    /// A line that the next one replaces, for progress bars; prints nothing unless interactive.
    void passingLine(const std::string& line);
    void endPassingLine();

    /// False when standard output could not be written completely.
    [[nodiscard]] static bool flushed();

private:
    Form form_;
    bool terminal_;
    bool redraw_ = false;
    bool passing_ = false;
    std::size_t drawnLines_ = 0;
};

} // namespace hxaux
