// SPDX-License-Identifier: LicenseRef-HXAux
// The board maker's library as its stand-in asks for it, call by call, without the stand-in.
#include "simulator/model/BoardLibrary.h"

#include "tests/simulator/model/ModelTest.h"

#include <cstring>

namespace board_library_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;
using testing::ElementsAre;

namespace {

using jida::Function;

class BoardLibraryTest : public modeltest::ModelTest {
protected:
    BoardLibrary& library = unit.get<BoardLibrary>();

    BoardLibrary::Done call(Function function, std::uint32_t board = 0, std::vector<std::uint32_t> arguments = {},
                            const Bytes& bytes = {}, std::uint32_t answerSize = 0)
    {
        jida::Call asked{function, board, {}, answerSize};
        std::copy(arguments.begin(), arguments.end(), asked.arguments);
        return library.call(asked, bytes);
    }
    std::uint32_t result(Function function, std::uint32_t board = 0, std::vector<std::uint32_t> arguments = {},
                         const std::string& text = {})
    {
        return call(function, board, std::move(arguments), {text.begin(), text.end()}).reply.result;
    }
    /// A handle of the only board.
    std::uint32_t open()
    {
        const auto done = call(Function::BoardOpenA, 0, {0, 0});
        EXPECT_EQ(done.reply.result, 1U);
        return done.reply.values[0];
    }
    std::string lastLine() { return unit.journal().entries().back().text(); }
};

TEST_F(BoardLibraryTest, IsInstalledAndCountsItsUsers)
{
    EXPECT_EQ(result(Function::DllInitialize), 1U);
    EXPECT_EQ(result(Function::DllInitialize), 1U);
    EXPECT_EQ(property("jida.users"), "2");
    EXPECT_EQ(result(Function::DllUninitialize), 1U);
    EXPECT_EQ(property("jida.users"), "1");
}

TEST_F(BoardLibraryTest, HasNeverLessThanNoUsers)
{
    EXPECT_EQ(result(Function::DllUninitialize), 1U);

    EXPECT_EQ(property("jida.users"), "0");
}

TEST_F(BoardLibraryTest, IsInitializedOnlyWhenItIsInstalled)
{
    set("jida.installed", "off");
    EXPECT_EQ(result(Function::DllInitialize), 0U);
    EXPECT_EQ(property("jida.users"), "0");

    EXPECT_EQ(result(Function::DllInstall, 0, {1}), 1U);
    EXPECT_EQ(result(Function::DllInitialize), 1U);
    EXPECT_EQ(property("jida.installed"), "on");
    EXPECT_EQ(result(Function::DllInstall, 0, {0}), 1U);
    EXPECT_EQ(property("jida.installed"), "off");
}

TEST_F(BoardLibraryTest, CanRefuseBoth)
{
    set("jida.refuses", "on");
    set("jida.installed", "off");

    EXPECT_EQ(result(Function::DllInstall, 0, {1}), 0U);
    EXPECT_EQ(property("jida.installed"), "off");
    EXPECT_EQ(result(Function::DllInitialize), 0U);
}

TEST_F(BoardLibraryTest, CountsBoardsOfAnyClassOrOfOne)
{
    set("jida.boards", "3");

    EXPECT_EQ(result(Function::BoardCountA), 3U);
    EXPECT_EQ(lastLine(), "libjida.so JidaBoardCountA any = 3");
    EXPECT_EQ(result(Function::BoardCountA, 0, {0}, "CPU"), 1U);
    EXPECT_EQ(lastLine(), "libjida.so JidaBoardCountA CPU = 1");
    EXPECT_EQ(result(Function::BoardCountA, 0, {0}, "VGA"), 0U);
    EXPECT_EQ(lastLine(), "libjida.so JidaBoardCountA VGA = 0");
    set("jida.boards", "0");
    EXPECT_EQ(result(Function::BoardCountA, 0, {0}, "CPU"), 0U);
}

TEST_F(BoardLibraryTest, OpensTheBoardsThatThereAre)
{
    set("jida.boards", "2");

    EXPECT_EQ(result(Function::BoardOpenA, 0, {0, 0}), 1U);
    EXPECT_EQ(result(Function::BoardOpenA, 0, {1, 0}), 1U);
    EXPECT_EQ(result(Function::BoardOpenA, 0, {2, 0}), 0U);
    EXPECT_EQ(result(Function::BoardOpenA, 0, {0, 0}, "CPU"), 1U);
    EXPECT_EQ(result(Function::BoardOpenA, 0, {1, 0}, "CPU"), 0U) << "one processor board";
    EXPECT_EQ(result(Function::BoardOpenA, 0, {0, 0}, "VGA"), 0U);
}

TEST_F(BoardLibraryTest, GivesEachOpeningAHandleOfItsOwn)
{
    const std::uint32_t first = open();
    const std::uint32_t second = open();
    EXPECT_NE(first, 0U);
    EXPECT_NE(first, second);

    EXPECT_EQ(result(Function::BoardClose, first), 1U);
    EXPECT_EQ(result(Function::BoardClose, first), 0U) << "it is closed already";
    EXPECT_EQ(result(Function::TemperatureCount, first), 0U);
    EXPECT_EQ(result(Function::TemperatureCount, second), 2U);
    EXPECT_NE(open(), first) << "a handle is not used again";
}

TEST_F(BoardLibraryTest, ReadsItsSensors)
{
    set("temperature.pm.1", "-12.345");
    set("temperature.pm.1.status", "7");
    set("temperature.pm.1.type", "4");
    const std::uint32_t board = open();

    const auto reading = call(Function::TemperatureGetCurrent, board, {1});
    EXPECT_EQ(reading.reply.result, 1U);
    EXPECT_EQ(static_cast<std::int32_t>(reading.reply.values[0]), -12345);
    EXPECT_EQ(reading.reply.values[1], 7U);
    const auto information = call(Function::TemperatureGetInfo, board, {1, 44});
    EXPECT_EQ(information.reply.result, 1U);
    EXPECT_EQ(information.reply.values[0], 4U);
}

TEST_F(BoardLibraryTest, RefusesSensorsThatItDoesNotHave)
{
    const std::uint32_t board = open();
    set("jida.sensors", "1");

    EXPECT_EQ(result(Function::TemperatureCount, board), 1U);
    EXPECT_EQ(result(Function::TemperatureGetCurrent, board, {0}), 1U);
    EXPECT_EQ(result(Function::TemperatureGetCurrent, board, {1}), 0U);
    EXPECT_EQ(result(Function::TemperatureGetInfo, board, {1, 44}), 0U);
    EXPECT_EQ(result(Function::TemperatureGetInfo, board, {0, 43}), 0U) << "a record of another size";
    EXPECT_EQ(result(Function::TemperatureGetCurrent, board + 1, {0}), 0U) << "no handle";
}

TEST_F(BoardLibraryTest, WritesToPartsOfItsBus)
{
    const std::uint32_t board = open();

    EXPECT_EQ(call(Function::I2CWrite, board, {0, 0x40}, {0x00, 0xF0}).reply.result, 1U);
    EXPECT_EQ(property("expander.directions"), "240");
    EXPECT_EQ(call(Function::I2CWriteRegister, board, {0, 0x40, 10}, {0x05}).reply.result, 1U);
    EXPECT_EQ(property("expander.latch"), "5");
}

TEST_F(BoardLibraryTest, ReadsFromPartsOfItsBus)
{
    const std::uint32_t board = open();
    set("expander.latch", "90");

    EXPECT_THAT(call(Function::I2CReadRegister, board, {0, 0x41, 10}, {}, 1).answer, ElementsAre(90));
    EXPECT_THAT(call(Function::I2CWriteReadCombined, board, {0, 0xAE}, {0, 0}, 7).answer,
                ElementsAre('D', 'A', 'T', 'A', ':', '2', '\r'));
}

TEST_F(BoardLibraryTest, SendsARegisterAboveOneByteWithItsHighByteFirst)
{
    const std::uint32_t board = open();

    EXPECT_EQ(call(Function::I2CWriteRegister, board, {0, 0xA4, 0x0102}, {0x33}).reply.result, 1U);
    pass(10ms);
    EXPECT_THAT(call(Function::I2CWriteReadCombined, board, {0, 0xA4}, {0x01, 0x02}, 1).answer, ElementsAre(0x33));
}

TEST_F(BoardLibraryTest, RefusesTransfersOnOtherBusesToNobodyAndWithoutAHandle)
{
    const std::uint32_t board = open();

    EXPECT_EQ(call(Function::I2CWrite, board, {1, 0x40}, {0x00, 0xF0}).reply.result, 0U);
    EXPECT_EQ(unit.journal().entries().back().error, ENODEV);
    EXPECT_EQ(call(Function::I2CWrite, board, {0, 0x50}, {0x00}).reply.result, 0U);
    EXPECT_EQ(unit.journal().entries().back().error, ENXIO);
    EXPECT_EQ(call(Function::I2CWrite, board + 1, {0, 0x40}, {0x00, 0xF0}).reply.result, 0U);
    EXPECT_EQ(property("expander.directions"), "255") << "nothing was written";
}

TEST_F(BoardLibraryTest, AnswersATransferWhenTheBusIsDone)
{
    const std::uint32_t board = open();

    EXPECT_EQ(call(Function::TemperatureCount, board).ready, 0ns) << "needs no bus";
    // Address and two bytes of nine clocks each, a start and a stop, at 100 kHz.
    EXPECT_EQ(call(Function::I2CWrite, board, {0, 0x40}, {0x00, 0xF0}).ready, 290us);
}

TEST_F(BoardLibraryTest, FailsTheCallsThatItIsAskedToFailBeforeTheyDoAnything)
{
    unit.addFault("libjida.so JidaBoardOpenA EBUSY 1");
    unit.addFault("libjida.so JidaI2CWrite EIO 1");

    EXPECT_EQ(result(Function::BoardOpenA, 0, {0, 0}), 0U);
    EXPECT_EQ(lastLine(), "libjida.so JidaBoardOpenA any 0 !EBUSY");
    const std::uint32_t board = open();
    EXPECT_EQ(call(Function::I2CWrite, board, {0, 0x40}, {0x00, 0xF0}).reply.result, 0U);
    EXPECT_EQ(property("expander.directions"), "255");
}

TEST_F(BoardLibraryTest, WritesItsCallsIntoTheJournal)
{
    const std::uint32_t board = open();
    const std::string handle = std::to_string(board);
    EXPECT_EQ(lastLine(), "libjida.so JidaBoardOpenA any 0 = handle " + handle);

    (void)call(Function::I2CWriteReadCombined, board, {0, 0xAE}, {0, 0}, 4);
    EXPECT_EQ(lastLine(),
              "libjida.so JidaI2CWriteReadCombined handle " + handle + " 0xae read 4: 00 00 -> 44 41 54 41");
    (void)call(Function::TemperatureGetCurrent, board, {0});
    EXPECT_EQ(lastLine(), "libjida.so JidaTemperatureGetCurrent handle " + handle + " sensor 0 = 45500");
    (void)call(Function::TemperatureGetInfo, board, {1, 44});
    EXPECT_EQ(lastLine(), "libjida.so JidaTemperatureGetInfo handle " + handle + " sensor 1 size 44 = type 1");
    (void)call(Function::BoardClose, board);
    EXPECT_EQ(lastLine(), "libjida.so JidaBoardClose handle " + handle);
    (void)call(Function::DllInstall, 0, {1});
    EXPECT_EQ(lastLine(), "libjida.so JidaDllInstall 1 = 1");
}

class BoardLibraryNode : public BoardLibraryTest {
protected:
    Node& channel = node("/dev/.hxsim-jida");
    std::unique_ptr<OpenFile> file = channel.open(O_RDWR);

    std::int64_t send(const jida::Call& asked, const Bytes& more = {})
    {
        Bytes message(sizeof asked);
        std::memcpy(message.data(), &asked, sizeof asked);
        message.insert(message.end(), more.begin(), more.end());
        return channel.write(*file, message).result;
    }
};

TEST_F(BoardLibraryNode, AnswersWhatWasWrittenToIt)
{
    EXPECT_EQ(send({Function::BoardCountA, 0, {}, 0}), 24);

    Bytes reply(100);
    EXPECT_EQ(channel.read(*file, reply, 0ns).result, 12);
    EXPECT_EQ(reply[0], 1);
}

TEST_F(BoardLibraryNode, AnswersEachConnectionByItself)
{
    const auto other = channel.open(O_RDWR);
    ASSERT_EQ(send({Function::BoardCountA, 0, {}, 0}), 24);
    Bytes reply(100);

    ASSERT_EQ(channel.read(*other, reply, 0ns).result, 12);
    EXPECT_EQ(reply[0], 0) << "nothing was asked there";
}

TEST_F(BoardLibraryNode, LetsAReaderWaitForTheBus)
{
    const std::uint32_t board = open();
    ASSERT_EQ(send({Function::I2CWrite, board, {0, 0x40}, 0}, {0x00, 0xF0}), 26);
    Bytes reply(12);

    const Outcome waiting = channel.read(*file, reply, 0ns);
    EXPECT_TRUE(waiting.waits);
    EXPECT_EQ(waiting.wakeAt, Time{290us});
    pass(290us);
    EXPECT_EQ(channel.read(*file, reply, 0ns).result, 12);
}

TEST_F(BoardLibraryNode, RefusesMessagesThatAreNoCall)
{
    EXPECT_EQ(channel.write(*file, Bytes(23)).result, -EINVAL);
    EXPECT_EQ(send({Function{13}, 0, {}, 0}), -EINVAL);
    EXPECT_EQ(send({Function::I2CReadRegister, 0, {}, 4097}), -EINVAL);
    EXPECT_EQ(send({Function::I2CReadRegister, 0, {}, 4096}), 24);
    EXPECT_EQ(unit.journal().entries().size(), 1U) << "the calls alone";
}

TEST_F(BoardLibraryTest, RefusesTemperaturesBelowTheLowest)
{
    EXPECT_EQ(refusalOfSet("temperature.pm.0", "-273.16"), "temperature.pm.0: '-273.16' is not a temperature");
    EXPECT_EQ(refusalOfSet("temperature.pm.0", "-273.15"), "");
    EXPECT_EQ(property("temperature.pm.0"), "-273.150");
}

} // namespace

} // namespace board_library_test
