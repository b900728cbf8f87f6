// SPDX-License-Identifier: LicenseRef-HXAux
// Clients of a unit's server that send arbitrary data, stop anywhere or connect in large numbers; the unit must
// survive.
#include "simulator/protocol/Wire.h"
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace wire = hxsim::wire;

using hxtest::errorMatches;
using hxtest::jsonLinesOf;
using hxtest::jsonOf;
using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

/// A raw connection, without any of the simulator's code.
class Raw {
public:
    explicit Raw(const std::string& folder) : fd_{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)}
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, (folder + "/socket").c_str(), sizeof address.sun_path - 1);
        connected_ = connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        const timeval patience{.tv_sec = 60, .tv_usec = 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    }
    Raw(Raw&& other) noexcept : fd_{std::exchange(other.fd_, -1)}, connected_{other.connected_} {}
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;
    ~Raw()
    {
        if (fd_ >= 0)
            close(fd_);
    }

    [[nodiscard]] bool connected() const { return connected_; }
    [[nodiscard]] bool sendBytes(const std::string& bytes, int flags = 0) const
    {
        return send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL | flags) == static_cast<ssize_t>(bytes.size());
    }
    bool say(wire::Kind kind, const std::string& bytes = "", std::int64_t value = 0, int process = getpid()) const
    {
        return sendBytes(packet(kind, bytes, value, process));
    }
    /// Waits for an answer; whether there was one.
    [[nodiscard]] bool hears() const
    {
        std::array<char, 4096> buffer{};
        return recv(fd_, buffer.data(), buffer.size(), 0) >= static_cast<ssize_t>(sizeof(wire::Head));
    }
    static std::string packet(wire::Kind kind, const std::string& bytes, std::int64_t value, int process)
    {
        const wire::Head head{
            .kind = kind, .request = 0xC004003A, .process = process, .thread = process, .value = value, .other = value};
        return std::string{reinterpret_cast<const char*>(&head), sizeof head} + bytes;
    }

private:
    int fd_;
    bool connected_ = false;
};

class HostileClients : public UnitFixture {
protected:
    HostileClients() { run("hx-sim start unit --set backlight.level=77"); }

    [[nodiscard]] Raw client() const { return Raw{folderOf("unit")}; }
    void expectAnswers() const
    {
        EXPECT_THAT(run("timeout 60 hx-sim get backlight.level"), outputIs("77\n"));
        EXPECT_THAT(run("timeout 60 hx-sim run --unit unit -- hxaux backlight get"), outputIs("level: 77\n"));
    }
};

const std::string kOpen = std::string{"name-of-this-connection"} + '\0' + "/dev/adc-id";

TEST_F(HostileClients, SendHalfMessages)
{
    const std::string whole = Raw::packet(wire::Kind::Open, kOpen, 2, 1);
    for (std::size_t size = 0; size < whole.size(); ++size)
        (void)client().sendBytes(whole.substr(0, size));

    expectAnswers();
}

TEST_F(HostileClients, SendEveryKindWithAnyValueInAnyState)
{
    constexpr std::int64_t kValues[] = {0, -1, 1, 65536, INT32_MAX, INT64_MAX, INT64_MIN};
    for (std::uint32_t kind = 0; kind < 26; ++kind)
        for (const std::int64_t value : kValues) {
            const Raw fresh = client();
            fresh.say(wire::Kind{kind}, "x", value);
            const Raw control = client();
            control.say(wire::Kind::Hello);
            control.say(wire::Kind{kind}, std::string(3, '\0'), value);
            for (const char* const device : {"/dev/adc-id", "/dev/ttyS0", "/dev/fpgaflash", "/dev/.hxsim-jida"}) {
                const Raw file = client();
                file.say(wire::Kind::Open, std::string{"name"} + '\0' + device, 2);
                for (const std::size_t size : {0U, 5U, 64U})
                    file.say(wire::Kind{kind}, std::string(size, '\xff'), value);
            }
        }
    (void)client().say(wire::Kind{0xFFFFFFFF});

    expectAnswers();
}

TEST_F(HostileClients, SendChance)
{
    std::mt19937 chance{20261122};
    for (int i = 0; i < 300; ++i) {
        const Raw one = client();
        for (int packet = 0; packet < 5; ++packet) {
            std::string bytes(chance() % 200, '\0');
            for (char& byte : bytes)
                byte = static_cast<char>(chance());
            if (bytes.size() >= 4 && chance() % 4 != 0)
                std::memcpy(bytes.data(),
                            std::array<std::uint32_t, 1>{static_cast<std::uint32_t>(chance() % 22)}.data(), 4);
            if (bytes.starts_with(std::string("\6\0\0\0", 4)))
                bytes[0] = 1; // a command by chance could be "stop"
            (void)one.sendBytes(bytes, MSG_DONTWAIT);
        }
    }

    expectAnswers();
}

TEST_F(HostileClients, SendLargerMessagesThanAnyProgram)
{
    const Raw one = client();
    one.say(wire::Kind::Open, kOpen, 2);
    (void)one.say(wire::Kind::Write, std::string(wire::kLargestPacket + 4096, 'x'));
    (void)client().say(wire::Kind::Command, std::string(wire::kLargestPacket - 100, 'x'));

    expectAnswers();
}

TEST_F(HostileClients, ImpersonateEachOther)
{
    const Raw first = client();
    const Raw second = client();
    first.say(wire::Kind::Hello, "", 0, 1001);
    second.say(wire::Kind::Hello, "", 0, 1002);
    for (int i = 0; i < 200; ++i) {
        (void)first.say(wire::Kind::Open, kOpen, 2, i % 2 == 0 ? 1002 : 1001);
        (void)second.say(wire::Kind::Open, kOpen, 2, i % 2 == 0 ? 1001 : 1002);
    }

    expectAnswers();
}

TEST_F(HostileClients, FloodTheServerAndNeverListen)
{
    const Raw notes = client();
    const Raw commands = client();
    notes.say(wire::Kind::Hello);
    const std::string note = std::string{"subject"} + '\0' + "action" + '\0' + std::string(100, 'x');
    for (int i = 0; i < 4000; ++i) {
        ASSERT_TRUE(notes.say(wire::Kind::Note, note));
        ASSERT_TRUE(i % 20 != 0 || commands.say(wire::Kind::Command, std::string{"log"} + '\0'));
    }

    expectAnswers();
}

/// Each step of a client's life, the last of which it does not survive.
void liveUntil(const Raw& control, const Raw& file, const Raw& further, int last)
{
    const std::array<std::function<void()>, 9> steps{
        [&] { control.say(wire::Kind::Hello); },
        [&] { (void)control.hears(); },
        [&] { control.say(wire::Kind::Command, std::string{"follow"} + '\0'); },
        [&] { file.say(wire::Kind::Open, std::string{"n"} + '\0' + "/dev/ttyS0", 2); },
        [&] { (void)file.hears(); },
        [&] { further.say(wire::Kind::Which, "n"); },
        [&] { further.say(wire::Kind::Read, "", 10); },
        [&] { file.say(wire::Kind::Drain); },
        [&] { file.say(wire::Kind::Close); },
    };
    for (int i = 0; i <= last && i < static_cast<int>(steps.size()); ++i)
        steps[static_cast<std::size_t>(i)]();
}

TEST_F(HostileClients, AreKilledAtEachStep)
{
    for (int last = 0; last < 9; ++last) {
        const pid_t child = fork();
        if (child == 0) {
            liveUntil(client(), client(), client(), last);
            kill(getpid(), SIGKILL);
        }
        waitpid(child, nullptr, 0);
    }

    expectAnswers();
}

TEST_F(HostileClients, ComeFiveHundredAtOnceAndAreAllAnswered)
{
    std::vector<Raw> crowd;
    crowd.reserve(500);
    for (int i = 0; i < 500; ++i)
        crowd.push_back(client());
    for (const Raw& one : crowd)
        ASSERT_TRUE(one.connected() && one.say(wire::Kind::Command, std::string{"scale"} + '\0'));
    for (const Raw& one : crowd)
        ASSERT_TRUE(one.hears());

    expectAnswers();
}

TEST_F(HostileClients, TakeEveryDescriptorAndGoAgain)
{
    run("hx-sim stop unit; ulimit -n 40; hx-sim start unit --set backlight.level=77");
    {
        std::vector<Raw> crowd;
        crowd.reserve(100);
        for (int i = 0; i < 100; ++i)
            crowd.push_back(client());
        for (const Raw& one : crowd)
            (void)one.sendBytes(Raw::packet(wire::Kind::Command, std::string{"scale"} + '\0', 0, 1), MSG_DONTWAIT);
        EXPECT_TRUE(crowd.front().hears());
    }

    expectAnswers();
}

TEST_F(HostileClients, WaitWithoutLoadForADescriptorOfTheServer)
{
    run("hx-sim stop unit; ulimit -n 40; hx-sim start unit --set backlight.level=77");
    const std::string ticks = "awk '{print $14 + $15}' /proc/" + hostOf("unit") + "/stat";
    std::vector<Raw> crowd;
    crowd.reserve(100);
    for (int i = 0; i < 100; ++i)
        crowd.push_back(client());
    ASSERT_TRUE(crowd.front().say(wire::Kind::Command, std::string{"scale"} + '\0') && crowd.front().hears());

    const int before = std::stoi(run(ticks).output);
    sleep(2);
    const int spent = std::stoi(run(ticks).output) - before;

    EXPECT_LT(spent, sysconf(_SC_CLK_TCK) / 4) << "of two seconds";
    EXPECT_TRUE(crowd.front().say(wire::Kind::Command, std::string{"scale"} + '\0') && crowd.front().hears());
    std::vector<Raw> staying;
    for (std::size_t i = 80; i < crowd.size(); ++i)
        staying.push_back(std::move(crowd[i]));
    crowd.clear();
    for (const Raw& one : staying)
        EXPECT_TRUE(one.say(wire::Kind::Command, std::string{"scale"} + '\0') && one.hears());
}

TEST_F(HostileClients, SendStraySignals)
{
    for (const char* const signal : {"USR1", "USR2", "ALRM", "PIPE", "VTALRM", "PROF", "IO", "QUIT", "CHLD", "CONT"})
        run("kill -" + std::string{signal} + ' ' + hostOf("unit"));

    expectAnswers();
}

TEST_F(HostileClients, GiveTextsThatAreNotUtf8AndJsonStaysJson)
{
    run("hx-sim run --unit unit -- hx-probe try \"$(printf '/HXAUX_\\377\\302')\"");
    run("hx-sim set eeprom.main.PCB_ART \"$(printf 'A\\377\\355\\240\\200')\"");
    run("hx-sim fail \"$(printf '/\\377')\" sem_wait");

    EXPECT_THAT(jsonLinesOf(run("hx-sim log --json")), testing::Not(testing::IsEmpty()));
    EXPECT_EQ(jsonOf(run("hx-sim properties --json"))["eeprom.main.PCB_ART"]["value"].get<std::string>().substr(0, 1),
              "A");
    EXPECT_EQ(jsonOf(run("hx-sim faults --json")).size(), 1U);
    expectAnswers();
}

TEST_F(HostileClients, GiveTextsThatATerminalWouldObey)
{
    run("hx-sim set eeprom.main.PCB_ART \"$(printf 'A\\033[2J\\302\\233B')\"");

    EXPECT_THAT(hxtest::runOnTerminal("hx-sim get eeprom.main.PCB_ART"), outputIs("A\\x1b[2J\\xc2\\x9bB\r\n"));
    EXPECT_THAT(hxtest::runOnTerminal("hx-sim get \"$(printf 'x\\033[2J')\""), outputMatches("'x\\\\x1b\\[2J'"));
    EXPECT_THAT(run("hx-sim get eeprom.main.PCB_ART"), outputIs("A\033[2J\302\233B\n"));
}

TEST_F(HostileClients, AskForMoreThanAnAnswerHolds)
{
    EXPECT_THAT(run("hx-sim get $(yes eeprom.main.text | head -2000)"),
                AllOf(statusIs(1), errorMatches("the answer is too long")));
    EXPECT_THAT(run("hx-sim set light.profile \"$(head -c 120000 /dev/zero | tr '\\0' x)\""), statusIs(1));
    EXPECT_THAT(run("hx-sim get $(yes backlight.level | head -12000)"),
                AllOf(statusIs(1), errorMatches("the command is too long")));

    expectAnswers();
}

TEST_F(HostileClients, PutAFifoWhereTheSettingsFileIs)
{
    run("mkfifo " + folderOf("unit") + "/files/opt/etc/hxaux.ini");

    EXPECT_THAT(run("timeout 60 hx-sim record --unit unit -o " + folderOf("unit") + "/r -- hxaux backlight get"),
                outputIs("level: 77\n"));
    expectAnswers();
}

TEST_F(HostileClients, RecordIntoAFifo)
{
    const std::string fifo = folderOf("unit") + "/fifo";
    run("mkfifo " + fifo);

    EXPECT_THAT(run("timeout 60 hx-sim record --unit unit -o " + fifo + " -- true"),
                AllOf(statusIs(1), errorMatches("fifo is a FIFO, not a file")));
    expectAnswers();
}

TEST_F(HostileClients, WaitNoLongerThanTheirPatienceForAUnitThatIsStopped)
{
    run("kill -STOP " + hostOf("unit"));

    const auto outcome = run("timeout 80 hx-sim get backlight.level");
    run("kill -CONT " + hostOf("unit"));

    EXPECT_THAT(outcome, AllOf(statusIs(6), errorMatches("the unit does not answer")));
    expectAnswers();
}

} // namespace
