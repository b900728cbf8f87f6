// SPDX-License-Identifier: LicenseRef-HXAux
// On a real terminal and in real time: the time limit of a read while signals arrive.
#include "upgrade/STM32/serial_posix.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

/// A terminal whose other end belongs to the test; only the test writes to it.
class Line {
public:
    Line()
    {
        EXPECT_EQ(::grantpt(end_), 0);
        EXPECT_EQ(::unlockpt(end_), 0);
        char name[64];
        EXPECT_EQ(::ptsname_r(end_, name, sizeof name), 0);
        port_ = ::serial_open(name);
        EXPECT_EQ(::serial_setup(port_, SERIAL_BAUD_115200, SERIAL_BITS_8, SERIAL_PARITY_NONE, SERIAL_STOP_1),
                  SERIAL_OK);
    }
    ~Line()
    {
        ::serial_close(port_);
        ::close(end_);
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    [[nodiscard]] const serial_port* port() const { return port_; }
    /// Of the port, which does not expose it.
    [[nodiscard]] int descriptor() const
    {
        char name[64];
        char other[64];
        EXPECT_EQ(::ptsname_r(end_, name, sizeof name), 0);
        for (int fd = 0; fd < 1024; ++fd)
            if (::ttyname_r(fd, other, sizeof other) == 0 && std::string{name} == other)
                return fd;
        return -1;
    }
    /// Number of bytes that arrive, up to that many; fewer after ten seconds without any.
    [[nodiscard]] std::size_t receive(std::size_t wanted) const
    {
        std::size_t count = 0;
        pollfd arrival{end_, POLLIN, 0};
        while (count < wanted && ::poll(&arrival, 1, 10000) == 1) {
            char bytes[1000];
            const ssize_t got = ::read(end_, bytes, sizeof bytes);
            count += got > 0 ? static_cast<std::size_t>(got) : 0;
        }
        return count;
    }
    void send(char byte) const { EXPECT_EQ(::write(end_, &byte, 1), 1); }

private:
    int end_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    serial_port* port_ = nullptr;
};

/// Interrupts the calls of the thread that created it, fifty times a second.
class Interruptions {
public:
    Interruptions()
    {
        struct sigaction action {};
        action.sa_handler = [](int) {}; // without SA_RESTART
        EXPECT_EQ(::sigaction(SIGUSR1, &action, &before_), 0);
        thread_ = std::thread{[this, target = ::pthread_self()] {
            while (!over_) {
                ::usleep(20000);
                ::pthread_kill(target, SIGUSR1);
            }
        }};
    }
    ~Interruptions()
    {
        over_ = true;
        thread_.join();
        ::sigaction(SIGUSR1, &before_, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

private:
    struct sigaction before_ {};
    std::atomic<bool> over_{false};
    std::thread thread_;
};

} // namespace

TEST(SerialPortOfATerminal, StaysOpenInAProgramStartedByExec)
{
    const Line line;

    EXPECT_EQ(::fcntl(line.descriptor(), F_GETFD), 0) << "without FD_CLOEXEC";
}

TEST(SerialPortUnderSignals, ReportsThatNothingCame)
{
    const Line line;
    const Interruptions interruptions;
    char byte = 0;

    EXPECT_EQ(::serial_read(line.port(), &byte, 1), SERIAL_NO_DATA);
}

TEST(SerialPortUnderSignals, WritesEverything)
{
    const Line line;
    const std::string text(300000, 'x'); // far more than a terminal can buffer
    std::size_t received = 0;
    std::thread receiver{[&] {
        ::usleep(200000); // the line is full by then, and the write waits
        received = line.receive(text.size());
    }};
    {
        const Interruptions interruptions;

        EXPECT_EQ(::serial_write(line.port(), text.data(), text.size()), SERIAL_OK);
    }
    receiver.join();

    EXPECT_EQ(received, text.size());
}

TEST(SerialPortUnderSignals, RestartsTheWaitForEachByte)
{
    const Line line;
    std::thread sender{[&] {
        for (int i = 0; i < 4; ++i) { // together longer than the limit of one byte
            ::usleep(1000000);
            line.send('x');
        }
    }};
    const Interruptions interruptions;
    char bytes[4] = {};

    EXPECT_EQ(::serial_read(line.port(), bytes, sizeof bytes), SERIAL_OK);

    EXPECT_THAT(bytes, testing::Each('x'));
    sender.join();
}
