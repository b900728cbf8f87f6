// SPDX-License-Identifier: LicenseRef-HXAux
// Real programs and a real server that use mailboxes, and are killed and stopped at any moment.
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <chrono>
#include <csignal>
#include <random>
#include <sstream>
#include <thread>

namespace {

using namespace std::chrono_literals;
using hxtest::outputIs;
using hxtest::run;

class Mailboxes : public UnitFixture {
protected:
    const TemporaryFolder scratch{};
    const std::string file = scratch / "file";

    Mailboxes() { run("hx-sim start unit --set voltage.0.raw=1241"); }

    static void expectAnswers()
    {
        EXPECT_THAT(run("timeout 60 hx-sim run --unit unit -- hx-probe count /dev/adc-id 100"), outputIs("100\n"));
    }
    [[nodiscard]] pid_t host() const { return std::stoi(hostOf("unit")); }
    /// Processor time of a process so far, in ticks.
    static long ticksOf(pid_t process)
    {
        std::ifstream stream{"/proc/" + std::to_string(process) + "/stat"};
        std::string text;
        std::getline(stream, text);
        std::istringstream fields{text.substr(text.rfind(')') + 2)};
        std::string skipped;
        long user = 0;
        long system = 0;
        for (int i = 0; i < 11; ++i)
            fields >> skipped;
        fields >> user >> system;
        return user + system;
    }
};

TEST_F(Mailboxes, SurviveClientsThatAreKilledAtAnyMoment)
{
    std::mt19937 chance{20261122};
    for (int i = 0; i < 15; ++i) {
        const std::string seconds = "0." + std::to_string(chance() % 300 + 100);
        const std::string client =
            "timeout --signal=KILL " + seconds + " hx-sim run --unit unit -- hx-probe repeat /dev/adc-id 0";
        run(client + " & " + client + " & wait");
    }

    expectAnswers();
}

TEST_F(Mailboxes, SurviveClientsThatAreStoppedAtAnyMoment)
{
    run("hx-sim run --unit unit -- hx-probe repeat /dev/adc-id 0 >/dev/null 2>&1 & echo $! > " + file +
        "; sleep 0.2; "
        "kill -STOP $(cat " +
        file + ")");
    for (int i = 0; i < 20; ++i) {
        run("kill -CONT $(cat " + file + "); sleep 0.01; kill -STOP $(cat " + file + ")");
        expectAnswers();
    }
    run("kill -KILL $(cat " + file + ")");
}

TEST_F(Mailboxes, GoOnWhenTheServerGoesOn)
{
    for (int i = 0; i < 10; ++i) {
        run("timeout 60 hx-sim run --unit unit -- hx-probe count /dev/adc-id 3000 > " + file +
            " & client=$!; sleep 0.05; "
            "kill -STOP " +
            hostOf("unit") + "; sleep 0.05; kill -CONT " + hostOf("unit") + "; wait $client");
        EXPECT_THAT(run("cat " + file), outputIs("3000\n"));
    }
}

TEST_F(Mailboxes, EndWithTheServer)
{
    EXPECT_THAT(run("timeout 60 hx-sim run --unit unit -- hx-probe repeat /dev/adc-id 0 2>/dev/null > " + file +
                    " & client=$!; until grep -q repeating " + file + "; do sleep 0.01; done; kill -KILL " +
                    hostOf("unit") + "; wait $client; cat " + file),
                outputIs("repeating\nInput/output error\nInput/output error\n"));
}

TEST_F(Mailboxes, CostAStoppedServersClientNoProcessorTime)
{
    run("hx-sim run --unit unit -- hx-probe repeat /dev/adc-id 0 >/dev/null 2>&1 & echo $! > " + file +
        "; sleep 0.2; kill "
        "-STOP " +
        hostOf("unit"));
    std::string client;
    std::ifstream{file} >> client;
    const long before = ticksOf(std::stoi(client));
    std::this_thread::sleep_for(2s);

    EXPECT_LE(ticksOf(std::stoi(client)) - before, sysconf(_SC_CLK_TCK) / 5);

    run("kill -KILL " + client + "; kill -CONT " + hostOf("unit") + "");
}

TEST_F(Mailboxes, CostAnIdleServerNoProcessorTime)
{
    expectAnswers();
    run("hx-sim run --unit unit -- hx-probe hold-busy /dev/adc-id >/dev/null 2>&1 & echo $! > " + file + "; sleep 0.5");
    const long before = ticksOf(host());
    std::this_thread::sleep_for(2s);

    EXPECT_LE(ticksOf(host()) - before, sysconf(_SC_CLK_TCK) / 5);

    run("kill -KILL $(cat " + file + ")");
}

TEST_F(Mailboxes, ServeManyClientsOfBothAbisAtOnce)
{
    std::istringstream probes{HX_PROBES};
    std::string command;
    int clients = 0;
    for (std::string probe; probes >> probe;)
        for (int i = 0; i < 6 && access(probe.c_str(), X_OK) == 0; ++i, ++clients)
            command += "timeout 60 hx-sim run --unit unit -- " + probe + " count /dev/adc-id 500 & ";

    const std::string output = run(command + "wait").output;

    std::string expected;
    for (int i = 0; i < clients; ++i)
        expected += "500\n";
    EXPECT_EQ(output, expected);
}

TEST_F(Mailboxes, CanBeTurnedOff)
{
    EXPECT_THAT(run("HXSIM_MAILBOX=off hx-sim run --unit unit -- hx-probe count /dev/adc-id 50"), outputIs("50\n"));
}

TEST_F(Mailboxes, BelongToOneProcess)
{
    EXPECT_THAT(run("timeout 60 hx-sim run --unit unit -- hx-probe forked-count /dev/adc-id 500"),
                outputIs("500\n500\n"));
}

TEST_F(Mailboxes, AreNoneInAMachineOfOneProcessor)
{
    EXPECT_THAT(run("timeout 60 taskset -c 0 hx-sim run --unit unit -- hx-probe count /dev/adc-id 500"),
                outputIs("500\n"));
}

} // namespace
