// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim shell, as people and scripts use it.
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using hxtest::errorIs;
using hxtest::errorMatches;
using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::runOnTerminal;
using hxtest::statusIs;
using testing::AllOf;

class HxSimShell : public UnitFixture {
protected:
    HxSimShell() { run("hx-sim start bench"); }

    /// What a shell does with these lines.
    static hxtest::Outcome shell(const std::string& lines)
    {
        return run("printf '%s\\n' " + lines + " | hx-sim shell");
    }
};

/// A shell on a terminal of its own, for what is typed while it reads.
class TypedShell {
public:
    TypedShell() : child_{forkpty(&terminal_, nullptr, nullptr, nullptr)}
    {
        if (child_ == 0) {
            execl(HXSIM_PROGRAM, "hx-sim", "shell", nullptr);
            _exit(127);
        }
    }
    TypedShell(const TypedShell&) = delete;
    TypedShell& operator=(const TypedShell&) = delete;
    ~TypedShell()
    {
        close(terminal_);
        waitpid(child_, nullptr, 0);
    }

    void type(const std::string& keys) const { (void)!write(terminal_, keys.data(), keys.size()); }
    /// Waits until the terminal shows this, behind what was waited for before.
    bool shows(const std::string& text)
    {
        while (shown_.find(text) == std::string::npos) {
            char buffer[1024];
            pollfd source{terminal_, POLLIN, 0};
            const ssize_t count = poll(&source, 1, 30000) == 1 ? read(terminal_, buffer, sizeof buffer) : 0;
            if (count <= 0)
                return false;
            shown_.append(buffer, static_cast<std::size_t>(count));
        }
        shown_.erase(0, shown_.find(text) + text.size());
        return true;
    }

private:
    int terminal_ = -1;
    std::string shown_{};
    pid_t child_;
};

} // namespace

TEST_F(HxSimShell, TakesTheCommandsOfTheCommandLine)
{
    EXPECT_THAT(shell("'set light 250' 'get light' 'press front' 'fail /dev/backlight open EIO' unfail 'log --clear'"),
                AllOf(outputIs("250\n"), errorIs(""), statusIs(0)));
}

TEST_F(HxSimShell, RunsProgramsOnItsUnit)
{
    EXPECT_THAT(shell("'set daemon.running off' 'run -- hx-sim get daemon.running'"), outputIs("off\n"));
}

TEST_F(HxSimShell, ContinuesAfterAnErrorAndReportsItsLine)
{
    EXPECT_THAT(shell("'# a remark' '' 'get nothing' 'get light'"),
                AllOf(outputMatches("^[0-9.]+\n$"), errorIs("hx-sim: line 3: the unit has no property 'nothing'\n")));
}

TEST_F(HxSimShell, SuggestsTheNearPropertyForAMistypedOne)
{
    EXPECT_THAT(shell("'get volage.0'"),
                errorIs("hx-sim: line 1: the unit has no property 'volage.0'; did you mean 'voltage.0'?\n"));
}

TEST_F(HxSimShell, EndsWithTheStatusOfTheFirstLineThatFailed)
{
    EXPECT_THAT(shell("'set light' 'jump' 'get light'"), statusIs(1));
    EXPECT_THAT(shell("'log --sideways' 'jump'"), statusIs(2));
    EXPECT_THAT(shell("'get light' exit jump"), AllOf(errorIs(""), statusIs(0)));
}

TEST_F(HxSimShell, TakesQuotedWordsAndRefusesAnOpenQuote)
{
    EXPECT_THAT(shell("\"run -- printf '%s|' 'a b' \\\"c d\\\"\""), outputIs("a b|c d|"));
    EXPECT_THAT(shell("\"get 'light\""), AllOf(errorIs("hx-sim: line 1: a quote is left open\n"), statusIs(2)));
}

TEST_F(HxSimShell, Helps)
{
    EXPECT_THAT(shell("help"), AllOf(outputMatches("\n  properties "), statusIs(0)));
    EXPECT_THAT(shell("'help set'"), AllOf(outputMatches("hx-sim set voltage.0 11.5"), statusIs(0)));
}

TEST_F(HxSimShell, EndsWithItsUnit)
{
    EXPECT_THAT(shell("stop 'get light'"), AllOf(outputIs(""), errorIs(""), statusIs(0)));
    EXPECT_THAT(run("hx-sim shell </dev/null"), AllOf(errorMatches("no unit is running"), statusIs(6)));
    EXPECT_THAT(run("hx-sim shell --unit other </dev/null"), AllOf(errorMatches("no unit named 'other'"), statusIs(6)));
}

TEST_F(HxSimShell, HasAPromptInATerminalAlone)
{
    EXPECT_THAT(runOnTerminal("(echo get light; sleep 0.2) | hx-sim shell"), outputMatches("^[0-9.]+\r\n$"));
    EXPECT_THAT(runOnTerminal("timeout --foreground 0.5 hx-sim shell"), outputMatches("bench> "));
}

TEST_F(HxSimShell, ClearsTheLineAtCtrlC)
{
    run("hx-sim set light 77");
    TypedShell shell;
    ASSERT_TRUE(shell.shows("bench> "));

    shell.type("nonsense");
    ASSERT_TRUE(shell.shows("nonsense"));
    shell.type("\x03get light\n");

    EXPECT_TRUE(shell.shows("\n77\r\n")) << "the rest of the line was not cleared";
    EXPECT_TRUE(shell.shows("bench> "));
    shell.type("exit\n");
}

TEST_F(HxSimShell, EndsAProgramAtCtrlCAndContinues)
{
    run("hx-sim set light 77");
    TypedShell shell;
    ASSERT_TRUE(shell.shows("bench> "));

    shell.type("run -- sh -c 'echo be''gun; exec sleep 100'\n");
    ASSERT_TRUE(shell.shows("begun\r\n"));
    shell.type("\x03");
    ASSERT_TRUE(shell.shows("bench> "));
    shell.type("get light\n");

    EXPECT_TRUE(shell.shows("\n77\r\n"));
    shell.type("exit\n");
}
