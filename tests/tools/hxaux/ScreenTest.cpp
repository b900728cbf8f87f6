// SPDX-License-Identifier: LicenseRef-HXAux
// What reaches a terminal, a pipe and standard error.
#include "tools/hxaux/Screen.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace screen_test {

using hxaux::Exit;
using hxaux::Form;
using hxaux::Report;
using hxaux::Screen;

enum class Output { Terminal, Pipe };

// Standard output and standard error of this program, as long as it lives.
class Redirected {
public:
    explicit Redirected(Output output)
    {
        std::array<int, 2> ends{-1, -1};
        termios raw{};
        cfmakeraw(&raw);
        const int made =
            output == Output::Terminal ? openpty(ends.data(), &ends[1], nullptr, &raw, nullptr) : pipe(ends.data());
        std::array<int, 2> errors{-1, -1};
        if (made != 0 || pipe(errors.data()) != 0)
            throw std::runtime_error("no terminal");
        output_ = replace(stdout, STDOUT_FILENO, ends[1]);
        error_ = replace(stderr, STDERR_FILENO, errors[1]);
        outputReader_ = ends[0];
        errorReader_ = errors[0];
    }
    ~Redirected()
    {
        restore(stdout, STDOUT_FILENO, output_);
        restore(stderr, STDERR_FILENO, error_);
        close(outputReader_);
        close(errorReader_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

    [[nodiscard]] std::string output() const { return written(stdout, outputReader_); }
    [[nodiscard]] std::string error() const { return written(stderr, errorReader_); }

private:
    static int replace(std::FILE* stream, int descriptor, int by)
    {
        std::fflush(stream);
        const int before = dup(descriptor);
        dup2(by, descriptor);
        close(by);
        return before;
    }

    static void restore(std::FILE* stream, int descriptor, int before)
    {
        std::fflush(stream);
        dup2(before, descriptor);
        close(before);
    }

    // What was written until now: a mark behind it shows the end, and is not part of it.
    static std::string written(std::FILE* stream, int reader)
    {
        constexpr char kMark = '\x04';
        std::fputc(kMark, stream);
        std::fflush(stream);
        std::string text;
        for (char byte = 0; read(reader, &byte, 1) == 1 && byte != kMark;)
            text += byte;
        return text;
    }

    int output_ = -1;
    int error_ = -1;
    int outputReader_ = -1;
    int errorReader_ = -1;
};

Report reportOf(std::vector<hxaux::Field> fields)
{
    return {"voltage", "", Exit::Done, std::move(fields), {}, {}};
}

TEST(Screen, RedrawsOverTheLinesThatItDrewLast)
{
    const Redirected redirected(Output::Terminal);
    Screen screen(Form::Text);
    screen.redrawInPlace();

    screen.show(reportOf({{"a", 1}, {"b", 2}}));
    screen.show(reportOf({{"c", 3}}));
    screen.show(reportOf({}));
    screen.show(reportOf({{"d", 4}}));

    EXPECT_EQ(redirected.output(), "a: 1\nb: 2\n\x1b[2A\x1b[Jc: 3\n\x1b[1A\x1b[Jd: 4\n");
}

TEST(Screen, RedrawsNothingUnlessItShould)
{
    const Redirected redirected(Output::Terminal);
    Screen screen(Form::Text);

    screen.show(reportOf({{"a", 1}}));
    screen.show(reportOf({{"a", 2}}));

    EXPECT_EQ(redirected.output(), "a: 1\na: 2\n");
}

TEST(Screen, PrintsNothingButTextToAPipe)
{
    const Redirected redirected(Output::Pipe);
    Screen screen(Form::Text);
    screen.redrawInPlace();

    screen.show(reportOf({{"a", 1}}));
    screen.passingLine("working");
    screen.endPassingLine();
    screen.show(reportOf({{"a", 2}}));

    EXPECT_FALSE(screen.onTerminal());
    EXPECT_EQ(redirected.output(), "a: 1\na: 2\n");
}

TEST(Screen, ReplacesAPassingLineByTheNextAndEndsTheLast)
{
    const Redirected redirected(Output::Terminal);
    Screen screen(Form::Text);

    screen.passingLine("one");
    screen.passingLine("two");
    screen.show(reportOf({{"a", 1}}));
    screen.endPassingLine();

    EXPECT_TRUE(screen.onTerminal());
    EXPECT_EQ(redirected.output(), "\rone\x1b[K\rtwo\x1b[K\na: 1\n");
}

TEST(Screen, LeavesNoPassingLineBehind)
{
    const Redirected redirected(Output::Terminal);

    Screen(Form::Text).passingLine("one");

    EXPECT_EQ(redirected.output(), "\rone\x1b[K\n");
}

TEST(Screen, PrintsTheSameJsonOnATerminalWithoutRedrawing)
{
    const Redirected redirected(Output::Terminal);
    Screen screen(Form::Json);
    screen.redrawInPlace();

    screen.show(reportOf({{"a", 1}}));
    screen.passingLine("working");
    screen.show(reportOf({{"a", 2}}));

    EXPECT_FALSE(screen.onTerminal());
    EXPECT_EQ(redirected.output(), asJson(reportOf({{"a", 1}})) + asJson(reportOf({{"a", 2}})));
}

TEST(Screen, PrintsProblemsInFrontOfNotesOnStandardError)
{
    const Redirected redirected(Output::Pipe);
    Screen screen(Form::Text);

    screen.show({"led", "set", Exit::Refused, {{"a", 1}}, {"do this"}, {{"red", 7, "it fails"}}});

    EXPECT_EQ(redirected.error(), "led set: red: it fails (7)\ndo this\n");
    EXPECT_EQ(redirected.output(), "a: 1\n");
}

TEST(Screen, PrintsProblemsAndNotesInJsonAlone)
{
    const Redirected redirected(Output::Pipe);
    Screen screen(Form::Json);

    screen.show({"led", "set", Exit::Refused, {}, {"do this"}, {{"red", 7, "it fails"}}});

    EXPECT_EQ(redirected.error(), "");
    const auto document = nlohmann::json::parse(redirected.output());
    EXPECT_EQ(document["notes"][0], "do this");
    EXPECT_EQ(document["errors"][0]["item"], "red");
}

TEST(Screen, SaysWhenItsOutputCannotBeWritten)
{
    const Redirected redirected(Output::Pipe);
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    const int before = dup(STDOUT_FILENO);
    dup2(full, STDOUT_FILENO);
    close(full);

    Screen(Form::Text).show(reportOf({{"a", 1}}));
    const bool flushed = Screen::flushed();

    dup2(before, STDOUT_FILENO);
    close(before);
    std::clearerr(stdout);
    EXPECT_FALSE(flushed);
    EXPECT_TRUE(Screen::flushed());
}

} // namespace screen_test
