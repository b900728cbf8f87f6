// SPDX-License-Identifier: LicenseRef-HXAux
// Where results go: lines, JSON, or a picture that is redrawn in place on a terminal.
#ifndef HXAUX_SCREEN_H
#define HXAUX_SCREEN_H

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
    // A person looks at the output, and wants text.
    [[nodiscard]] bool onTerminal() const { return terminal_; }

    // From here on a report takes the place of the one before it, if a person looks.
    void redrawInPlace() { redraw_ = terminal_; }
    void show(const Report& report);
    // A line that the next one replaces, for bars; nothing unless a person looks.
    void passingLine(const std::string& line);
    void endPassingLine();

    // False when standard output could not take everything.
    [[nodiscard]] static bool flushed();

private:
    Form form_;
    bool terminal_;
    bool redraw_ = false;
    bool passing_ = false;
    std::size_t drawnLines_ = 0;
};

} // namespace hxaux

#endif
