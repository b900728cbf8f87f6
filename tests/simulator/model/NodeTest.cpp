// SPDX-License-Identifier: LicenseRef-HXAux
// A device as a program sees it, without any hardware behind it.
#include "simulator/model/Node.h"

#include "tests/simulator/model/ModelTest.h"

namespace node_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

class NodeTest : public testing::Test {
protected:
    Node node{"/dev/x"};
    std::unique_ptr<OpenFile> file = node.open(O_RDWR);

    Outcome read(Bytes& out) { return node.read(*file, out, 0ns); }
    std::string readText(std::size_t size)
    {
        Bytes out(size);
        const auto count = read(out).result;
        return {out.begin(), out.begin() + static_cast<std::ptrdiff_t>(count)};
    }
};

TEST_F(NodeTest, RefusesRequestsThatItDoesNotKnow)
{
    EXPECT_EQ(node.ioctl(*file, 0x80010001, {}, {}), -ENOTTY);
    EXPECT_EQ(node.shape(0x80010001), nullptr);
}

TEST_F(NodeTest, HandsARequestExactlyTheBytesThatItTakesAndGives)
{
    std::pair<std::size_t, std::size_t> sizes;
    node.request(0xC0040001, Takes{3}, Gives{2}, [&](Request& request) {
        sizes = {request.in.size(), request.out.size()};
        return 5;
    });
    Bytes out(10);

    EXPECT_EQ(node.ioctl(*file, 0xC0040001, Bytes(10), out), 5);

    EXPECT_EQ(sizes, (std::pair<std::size_t, std::size_t>{3, 2}));
    EXPECT_EQ(node.shape(0xC0040001)->takes, 3U);
    EXPECT_EQ(node.shape(0xC0040001)->gives, 2U);
    EXPECT_THAT(node.requests(), testing::ElementsAre(0xC0040001U));
}

TEST_F(NodeTest, FailsWhereTheBlockIsTooSmallWithoutAskingTheHardware)
{
    node.request(0xC0040001, Takes{3}, Gives{2}, [](Request&) { return 0; });
    Bytes small(1);
    Bytes enough(2);

    EXPECT_EQ(node.ioctl(*file, 0xC0040001, Bytes(2), enough), -EFAULT);
    EXPECT_EQ(node.ioctl(*file, 0xC0040001, Bytes(3), small), -EFAULT);
    EXPECT_EQ(node.ioctl(*file, 0xC0040001, Bytes(3), enough), 0);
}

TEST_F(NodeTest, ReadsAndWritesNumbersLowByteFirst)
{
    const Bytes in{0x01, 0x02, 0x03, 0x84};
    Bytes out(8);
    const Request request{in, out, *file};

    EXPECT_EQ(request.u8(3), 0x84);
    EXPECT_EQ(request.u16(1), 0x0302);
    EXPECT_EQ(request.u32(0), 0x84030201U);
    request.put8(0, 0xAA);
    request.put16(1, 0x1234);
    request.put32(4, 0x89ABCDEF);
    EXPECT_EQ(out, (Bytes{0xAA, 0x34, 0x12, 0, 0xEF, 0xCD, 0xAB, 0x89}));
}

TEST_F(NodeTest, CanNeitherBeReadNorWrittenByItself)
{
    Bytes out(4);

    EXPECT_EQ(read(out).result, -EINVAL);
    EXPECT_EQ(node.write(*file, out).result, -EINVAL);
    EXPECT_FALSE(node.drain().waits);
    EXPECT_TRUE(node.readable(*file, 0ns));
}

TEST_F(NodeTest, GivesAnAttributeInParts)
{
    node.attribute([] { return "abcde"; });

    EXPECT_EQ(readText(2), "ab");
    EXPECT_EQ(readText(10), "cde");
    EXPECT_EQ(readText(10), "");
    EXPECT_EQ(readText(10), "") << "at the end for good";
}

TEST_F(NodeTest, TakesAnAttributesTextWhenItsReadingBegins)
{
    std::string text = "before";
    node.attribute([&] { return text; });
    text = "old";
    EXPECT_EQ(readText(1), "o");
    text = "new";
    EXPECT_EQ(readText(10), "ld");

    file->position = 0;
    EXPECT_EQ(readText(10), "new");
}

TEST_F(NodeTest, SetsAnAttributeWithOneWrite)
{
    std::string taken;
    node.attribute([] { return ""; },
                   [&](const std::string& text) {
                       taken = text;
                       return text == "bad" ? -EINVAL : 0;
                   });
    const std::string good = "125000\n";
    const std::string bad = "bad";

    EXPECT_EQ(node.write(*file, Bytes{good.begin(), good.end()}).result, 7);
    EXPECT_EQ(taken, good);
    EXPECT_EQ(node.write(*file, Bytes{bad.begin(), bad.end()}).result, -EINVAL);
}

TEST_F(NodeTest, OpensAndClosesFilesOfItsHardwaresOwn)
{
    int opened = -1;
    const OpenFile* closed = nullptr;
    node.onOpen([&](int flags) {
        opened = flags;
        return std::make_unique<OpenFile>(node, flags);
    });
    node.onClose([&](OpenFile& which) { closed = &which; });

    const auto own = node.open(O_WRONLY);
    EXPECT_EQ(opened, O_WRONLY);
    node.close(*own);
    EXPECT_EQ(closed, own.get());
}

TEST_F(NodeTest, IsASerialPortWhenItHearsOfItsLine)
{
    EXPECT_FALSE(node.isSerial());
    std::uint32_t baud = 0;
    std::string flushed;
    node.serialLine([&](const LineSettings& line) { baud = line.baud; },
                    [&](bool input, bool output) { flushed += input    ? "i"
                                                              : output ? "o"
                                                                       : "-"; },
                    [] { return Outcome::notBefore(7ms); });

    EXPECT_TRUE(node.isSerial());
    node.setLine(LineSettings{.baud = 1200});
    EXPECT_EQ(baud, 1200U);
    node.flush(true, false);
    node.flush(false, true);
    EXPECT_EQ(flushed, "io");
    EXPECT_EQ(node.drain().wakeAt, Time{7ms});
}

TEST_F(NodeTest, IsRecordedUnlessItsHardwareDoesSoItself)
{
    EXPECT_TRUE(node.recorded());
    node.unrecorded();
    EXPECT_FALSE(node.recorded());
}

} // namespace

} // namespace node_test
