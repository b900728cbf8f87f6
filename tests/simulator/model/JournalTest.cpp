// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Journal.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace journal_test {

using hxsim::Entry;
using hxsim::Journal;
using modeltest::Bytes;

namespace {

struct Line : Named {
    Entry entry;
    const char* text;
};

Entry ioctl(std::uint32_t request, Bytes in, Bytes out, int error = 0)
{
    return {.kind = Entry::Kind::Ioctl,
            .subject = "/dev/x",
            .request = request,
            .in = std::move(in),
            .out = std::move(out),
            .error = error};
}

Entry call(const char* action, Bytes in = {}, Bytes out = {}, bool asText = false, int error = 0)
{
    return {.subject = "/dev/x",
            .action = action,
            .in = std::move(in),
            .out = std::move(out),
            .error = error,
            .asText = asText};
}

class JournalLine : public hxtest::TestWithRow<Line> {};

ROW_TEST(JournalLine, ShowsTheCall)
{
    EXPECT_EQ(row().entry.call(), row().text);
    EXPECT_EQ(row().entry.text(), "/dev/x " + std::string{row().text});
}

TEST_ROWS(Journal, JournalLine, kNameOfRow, Line{{"Plain"}, call("open rdwr nonblock"), "open rdwr nonblock"},
          Line{{"Written"}, call("write", {0, 0x80}), "write: 00 80"},
          Line{{"Read"}, call("read 2", {}, {0x7F, 1}), "read 2 -> 7f 01"},
          Line{{"ReadText"}, call("read 8192", {}, {'2', '.', '1', '\n'}, true), R"(read 8192 -> "2.1\n")"},
          Line{{"WrittenText"}, call("write", {'5'}, {}, true), R"(write: "5")"},
          Line{{"Failed"}, call("open rdonly", {}, {}, false, ENOENT), "open rdonly !ENOENT"},
          Line{{"Request"}, ioctl(0x80010002, {}, {0x80}), "0x80010002 -> 80"},
          Line{{"RequestWithBlock"}, ioctl(0x40010003, {0, 128}, {}), "0x40010003: 00 80"},
          Line{{"BothWays"}, ioctl(0x8002000D, {0x8C, 0}, {0x8C, 3}), "0x8002000d: 8c 00 -> 8c 03"},
          Line{{"GetRegister"}, ioctl(0xC004003A, {3, 0, 0, 0}, {3, 0, 0xD9, 4}), "get 3 -> 1241"},
          Line{{"PutRegister"}, ioctl(0xC004003B, {0, 1, 0xFF, 0xFF}, {}), "put 256 = 65535"},
          Line{{"GetFailed"}, ioctl(0xC004003A, {3, 0, 0, 0}, {}, EIO), "get 3 !EIO"},
          Line{{"GetCutShort"}, ioctl(0xC004003A, {3, 0}, {}), "0xc004003a: 03 00"});

TEST(Journal, KeepsCallsInTheirOrder)
{
    Journal journal;
    for (const char* action : {"open rdwr", "read 1", "close"})
        journal.add(call(action));

    ASSERT_EQ(journal.entries().size(), 3U);
    EXPECT_EQ(journal.entries().front().action, "open rdwr");
    EXPECT_EQ(journal.entries().back().action, "close");
}

TEST(Journal, KeepsTheLastHundredThousand)
{
    Journal journal;
    for (int i = 0; i < 100002; ++i)
        journal.add(Entry{.action = std::to_string(i)});

    EXPECT_EQ(journal.entries().size(), 100000U);
    EXPECT_EQ(journal.entries().front().action, "2");
    EXPECT_EQ(journal.entries().back().action, "100001");
}

TEST(Journal, ShowsEachCallToItsListener)
{
    Journal journal;
    journal.add(call("before"));
    std::string heard;
    journal.listen(&heard, [&](const Entry& entry) { heard += entry.action + ' '; });

    journal.add(call("one"));
    journal.add(call("two"));
    journal.listen(&heard, {});
    journal.add(call("after"));

    EXPECT_EQ(heard, "one two ");
}

TEST(Journal, ForgetsEverythingWhenItIsCleared)
{
    Journal journal;
    journal.add(call("one"));

    journal.clear();

    EXPECT_TRUE(journal.entries().empty());
}

} // namespace

} // namespace journal_test
