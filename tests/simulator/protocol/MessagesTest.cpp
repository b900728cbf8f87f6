// SPDX-License-Identifier: LicenseRef-HXAux
// Each message in its packet and back.
#include "simulator/protocol/Messages.h"

#include <gmock/gmock.h>

namespace messages_test {

using namespace hxsim;
using namespace hxsim::wire;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr Caller kCaller{4711, 4712};
constexpr std::uint8_t kData[] = {0, 1, 0, 255};

template <typename Message>
std::string textOf(const Message& message)
{
    const Packed packed{message};
    return {packed.bytes().begin(), packed.bytes().end()};
}

template <typename Message>
std::optional<Message> unpackedFrom(const std::string& text)
{
    return unpacked<Message>(Head{}, bytesOf(text));
}

TEST(Packed, NamesItsKindAndItsCaller)
{
    const Packed packed{Drain{9}, kCaller};

    EXPECT_EQ(packed.head().kind, Kind::Drain);
    EXPECT_EQ(packed.head().process, 4711);
    EXPECT_EQ(packed.head().thread, 4712);
    EXPECT_EQ(packed.head().file, 9U);
    EXPECT_THAT(packed.bytes(), IsEmpty());
}

TEST(Packed, PutsNumbersIntoTheHead)
{
    const Packed read{Read{7, 4096, true}};
    EXPECT_EQ(read.head().file, 7U);
    EXPECT_EQ(read.head().value, 4096);
    EXPECT_EQ(read.head().other, 1);

    const Packed request{Ioctl{7, 0xC004003A, kData}};
    EXPECT_EQ(request.head().request, 0xC004003A);
    EXPECT_EQ(request.bytes().data(), kData) << "nothing is copied";
    EXPECT_EQ(request.bytes().size(), sizeof kData);
}

TEST(Packed, SeparatesTextsByNul)
{
    using namespace std::string_literals;
    EXPECT_EQ(textOf(Locate{"/dev/x"}), "/dev/x");
    EXPECT_EQ(textOf(wire::Fault{"/any", "sem_wait"}), "/any\0sem_wait"s);
    EXPECT_EQ(textOf(Note{5, "sleep", "100 ms", "\0\1"s}), "sleep\000100 ms\0\0\1"s);
    EXPECT_EQ(textOf(Open{2, "name", "/dev/x"}), "name\0/dev/x"s);
}

TEST(Packed, EndsEachWordOfACommandByNul)
{
    using namespace std::string_literals;
    EXPECT_EQ(textOf(Command{{"set", "", "a=b"}}), "set\0\0a=b\0"s);
    EXPECT_EQ(textOf(Command{}), "");
}

TEST(Unpacked, IsWhatWasPacked)
{
    const Packed packed{Open{0x802, "name", "/dev/x"}};
    const auto open = unpacked<Open>(packed.head(), packed.bytes());
    ASSERT_TRUE(open);
    EXPECT_EQ(open->flags, 0x802);
    EXPECT_EQ(open->name, "name");
    EXPECT_EQ(open->path, "/dev/x");

    const Packed answer{FileFound{0, 1ULL << 40, 0x800, "/dev/y"}};
    const auto found = unpacked<FileFound>(answer.head(), answer.bytes());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->file, 1ULL << 40);
    EXPECT_EQ(found->flags, 0x800);
    EXPECT_EQ(found->path, "/dev/y");
}

TEST(Unpacked, KeepsNegativeResults)
{
    const Packed packed{Answer{-5, {}}};
    EXPECT_EQ(unpacked<Answer>(packed.head(), packed.bytes())->result, -5);
    const Packed unknown{ShapeKnown{}};
    EXPECT_EQ(unpacked<ShapeKnown>(unknown.head(), unknown.bytes())->takes, -1);
}

TEST(Unpacked, TakesAllThatIsLeftAsTheLastText)
{
    using namespace std::string_literals;
    const auto note = unpackedFrom<Note>("sleep\0action\0a\0b\0"s);
    ASSERT_TRUE(note);
    EXPECT_EQ(note->action, "action");
    EXPECT_EQ(note->data, "a\0b\0"s);
    EXPECT_EQ(unpackedFrom<Locate>("")->path, "");
    EXPECT_EQ(unpackedFrom<wire::Fault>("\0"s)->call, "");
}

TEST(Unpacked, IsNothingWhereATextIsMissing)
{
    using namespace std::string_literals;
    EXPECT_FALSE(unpackedFrom<Open>("no path"));
    EXPECT_FALSE(unpackedFrom<wire::Fault>(""));
    EXPECT_FALSE(unpackedFrom<Note>("subject\0action"s));
}

TEST(Unpacked, LeavesOutAWordWithoutItsEnd)
{
    using namespace std::string_literals;
    EXPECT_THAT(unpackedFrom<Command>("set\0\0a=b\0"s)->words, ElementsAre("set", "", "a=b"));
    EXPECT_THAT(unpackedFrom<Command>("get\0whole"s)->words, ElementsAre("get"));
    EXPECT_THAT(unpackedFrom<Command>("")->words, IsEmpty());
}

TEST(Unpacked, RefersToTheBytesOfThePacket)
{
    const auto write = unpacked<Write>(Head{}, kData);
    ASSERT_TRUE(write);
    EXPECT_EQ(write->in.data(), kData);
    EXPECT_EQ(write->in.size(), sizeof kData);
}

} // namespace

} // namespace messages_test
