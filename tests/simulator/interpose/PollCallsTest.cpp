// SPDX-License-Identifier: LicenseRef-HXAux
// Waits for devices of the unit and descriptors of the machine at once, as the kernel answers them.
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/select.h>
#include <unistd.h>

namespace poll_calls_test {

class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe(ends_.data()), 0); }
    ~Pipe()
    {
        closeReader();
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int reader() const { return ends_[0]; }
    [[nodiscard]] int writer() const { return ends_[1]; }
    void closeReader() { closeEnd(ends_[0]); }
    void closeWriter() { closeEnd(ends_[1]); }

private:
    static void closeEnd(int& end)
    {
        if (end >= 0)
            close(end);
        end = -1;
    }

    std::array<int, 2> ends_{-1, -1};
};

class PollCalls : public testing::Test {
protected:
    PollCalls() : serial{open("/dev/ttyS0", O_RDWR | O_NOCTTY)}, device{open("/dev/adc-id", O_RDWR)} {}
    ~PollCalls() override
    {
        close(serial);
        close(device);
    }

    // A select that does not wait; the sets are given and answered as lists.
    int selects(std::vector<int>& readers, std::vector<int>& writers, std::vector<int>& exceptions)
    {
        std::array<fd_set, 3> sets{};
        std::array<std::vector<int>*, 3> lists{&readers, &writers, &exceptions};
        for (std::size_t i = 0; i < sets.size(); ++i)
            for (const int fd : *lists[i])
                FD_SET(fd, &sets[i]);
        timeval none{};
        errno = 0;
        const int ready = select(FD_SETSIZE, &sets[0], &sets[1], &sets[2], &none);
        for (std::size_t i = 0; i < sets.size(); ++i)
            std::erase_if(*lists[i], [&](int fd) { return !FD_ISSET(fd, &sets[i]); });
        return ready;
    }
    int reads(std::vector<int>& readers)
    {
        std::vector<int> none;
        return selects(readers, none, none);
    }

    SimulatedUnit unit{};
    int serial;
    int device;
    Pipe other{};
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(PollCalls, SelectReportsEachSetOfItsOwn)
{
    std::vector<int> readers{serial, device, other.reader()};
    std::vector<int> writers{serial, other.writer()};
    std::vector<int> exceptions{serial, device};

    EXPECT_EQ(selects(readers, writers, exceptions), 3);
    EXPECT_THAT(readers, ElementsAre(device));
    EXPECT_THAT(writers, ElementsAre(serial, other.writer()));
    EXPECT_THAT(exceptions, IsEmpty());
}

TEST_F(PollCalls, SelectReportsBytesOfAPipeBesideADevice)
{
    ASSERT_EQ(write(other.writer(), "x", 1), 1);
    std::vector<int> readers{serial, other.reader()};

    EXPECT_EQ(reads(readers), 1);
    EXPECT_THAT(readers, ElementsAre(other.reader()));
}

TEST_F(PollCalls, SelectReportsTheEndOfAPipeBesideADevice)
{
    other.closeWriter();
    std::vector<int> readers{serial, other.reader()};

    EXPECT_EQ(reads(readers), 1);
    EXPECT_THAT(readers, ElementsAre(other.reader()));
}

TEST_F(PollCalls, SelectReportsAPipeThatNobodyReadsBesideADevice)
{
    other.closeReader();
    std::vector<int> readers{serial};
    std::vector<int> writers{other.writer()};
    std::vector<int> exceptions;

    EXPECT_EQ(selects(readers, writers, exceptions), 1);
    EXPECT_THAT(writers, ElementsAre(other.writer()));
}

TEST_F(PollCalls, SelectDoesNotTakeAnEndForAnException)
{
    other.closeWriter();
    std::vector<int> readers{serial};
    std::vector<int> writers;
    std::vector<int> exceptions{other.reader()};

    EXPECT_EQ(selects(readers, writers, exceptions), 0);
    EXPECT_THAT(exceptions, IsEmpty());
}

TEST_F(PollCalls, SelectRefusesAClosedDescriptorBesideADevice)
{
    const int closed = other.reader();
    other.closeReader();
    std::vector<int> readers{serial, closed};

    EXPECT_EQ(reads(readers), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_THAT(readers, ElementsAre(serial, closed)) << "its sets are as they were";
}

TEST_F(PollCalls, SelectTakesAMissingSetForAnEmptyOne)
{
    fd_set readers{};
    FD_SET(device, &readers);

    EXPECT_EQ(select(device + 1, &readers, nullptr, nullptr, nullptr), 1);
    EXPECT_TRUE(FD_ISSET(device, &readers));
}

TEST_F(PollCalls, SelectLooksNoFurtherThanItsCount)
{
    fd_set readers{};
    FD_SET(device, &readers);
    timeval none{};

    EXPECT_EQ(select(device, &readers, nullptr, nullptr, &none), 0);
}

TEST_F(PollCalls, SelectEndsInTheTimeOfTheUnit)
{
    const std::int64_t begin = unit.now();
    fd_set readers{};
    FD_SET(serial, &readers);
    timeval time{2, 500000};

    EXPECT_EQ(select(serial + 1, &readers, nullptr, nullptr, &time), 0);
    EXPECT_FALSE(FD_ISSET(serial, &readers));
    EXPECT_EQ(unit.now() - begin, 2500);
}

struct Wanted : Named {
    short events;
    short ofDevice;
    short ofSerialPort; // to which nothing has come
};

class PolledEvents : public PollCalls, public hxtest::WithRow<Wanted> {};

ROW_TEST(PolledEvents, AreThoseOfADeviceThatNeverBlocks)
{
    std::array<pollfd, 2> both{{{device, row().events, -1}, {serial, row().events, -1}}};

    const int ready = poll(both.data(), both.size(), 0);

    EXPECT_EQ(both[0].revents, row().ofDevice);
    EXPECT_EQ(both[1].revents, row().ofSerialPort);
    EXPECT_EQ(ready, (row().ofDevice != 0 ? 1 : 0) + (row().ofSerialPort != 0 ? 1 : 0));
}

TEST_ROWS(Of, PolledEvents, kNameOfRow, Wanted{"Reading", POLLIN, POLLIN, 0},
          Wanted{"Writing", POLLOUT, POLLOUT, POLLOUT}, Wanted{"Both", POLLIN | POLLOUT, POLLIN | POLLOUT, POLLOUT},
          Wanted{"OrdinaryData", POLLRDNORM | POLLWRNORM, POLLRDNORM | POLLWRNORM, POLLWRNORM},
          Wanted{"UrgentData", POLLPRI, 0, 0}, Wanted{"Nothing", 0, 0, 0});

TEST_F(PollCalls, PollPassesOverNegativeDescriptorsAndNamesClosedOnes)
{
    const int closed = other.reader();
    other.closeReader();
    std::array<pollfd, 3> all{{{-1, POLLIN, -1}, {closed, POLLIN, 0}, {device, POLLIN, 0}}};

    EXPECT_EQ(poll(all.data(), all.size(), -1), 2);
    EXPECT_EQ(all[0].revents, 0);
    EXPECT_EQ(all[1].revents, POLLNVAL);
    EXPECT_EQ(all[2].revents, POLLIN);
}

TEST_F(PollCalls, PollReportsTheEndOfAPipeBesideADevice)
{
    other.closeWriter();
    std::array<pollfd, 2> all{{{serial, POLLIN, 0}, {other.reader(), POLLIN, 0}}};

    EXPECT_EQ(poll(all.data(), all.size(), -1), 1);
    EXPECT_EQ(all[1].revents, POLLHUP);
}

} // namespace poll_calls_test
