// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Screen.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace hxaux {

namespace {

void put(const std::string& text, std::FILE* stream)
{
    std::fwrite(text.data(), 1, text.size(), stream);
}

} // namespace

Screen::Screen(Form form) : form_(form), terminal_(form == Form::Text && isatty(STDOUT_FILENO) == 1) {}

Screen::~Screen()
{
    endPassingLine();
}

void Screen::show(const Report& report)
{
    endPassingLine();
    if (form_ == Form::Json) {
        put(asJson(report), stdout);
        std::fflush(stdout);
        return;
    }
    const std::string text = asText(report);
    if (redraw_ && drawnLines_ > 0)
        std::printf("\x1b[%zuA\x1b[J", drawnLines_); // up to the first line of the screen, and clear below
    put(text, stdout);
    std::fflush(stdout);
    drawnLines_ = static_cast<std::size_t>(std::ranges::count(text, '\n'));
    put(problemLines(report) + noteLines(report), stderr);
}

void Screen::passingLine(const std::string& line)
{
    if (!terminal_)
        return;
    put("\r" + line + "\x1b[K", stdout);
    std::fflush(stdout);
    passing_ = true;
}

void Screen::endPassingLine()
{
    if (passing_)
        put("\n", stdout);
    passing_ = false;
}

bool Screen::flushed()
{
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

} // namespace hxaux
