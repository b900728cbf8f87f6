// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/BoardLibrary.h"

#include "simulator/model/CallWatch.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace hxsim {

namespace {

constexpr std::uint32_t kInformationSize = 44;

/// A program's connection: the reply waits in it until the bus is done.
class JidaFile : public OpenFile {
public:
    using OpenFile::OpenFile;
    BoardLibrary::Done done{};
};

std::vector<std::uint8_t> packed(const BoardLibrary::Done& done)
{
    std::vector<std::uint8_t> bytes(sizeof done.reply);
    std::memcpy(bytes.data(), &done.reply, sizeof done.reply);
    bytes.insert(bytes.end(), done.answer.begin(), done.answer.end());
    return bytes;
}

std::string degrees(std::int32_t milliCelsius)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", milliCelsius / 1000.0);
    return text.data();
}

std::vector<std::uint8_t> registerBytes(std::uint32_t reg)
{
    if (reg < 0x100)
        return {static_cast<std::uint8_t>(reg)};
    return {static_cast<std::uint8_t>(reg >> 8), static_cast<std::uint8_t>(reg)};
}

} // namespace

struct BoardLibrary::Work {
    const jida::Call& call;
    std::span<const std::uint8_t> bytes;
    Done& done;
    std::string words{};      ///< the call's plain arguments, as the journal shows them
    bool showsResult = false; ///< its result is a number, not a yes or no
    int error = 0;            ///< why it fails

    [[nodiscard]] std::uint32_t argument(int i) const { return call.arguments[i]; }
    void result(std::uint32_t number)
    {
        done.reply.result = number;
        showsResult = true;
    }
    void check(bool good, int otherwise)
    {
        done.reply.result = good ? 1 : 0;
        error = good ? 0 : otherwise;
    }
};

const BoardLibrary::Row& BoardLibrary::row(jida::Function function)
{
    static constexpr Row kRows[] = {
        {"JidaBoardClose", &BoardLibrary::closeBoard},
        {"JidaBoardCountA", &BoardLibrary::countBoards},
        {"JidaBoardOpenA", &BoardLibrary::openBoard},
        {"JidaDllInitialize", &BoardLibrary::initialize},
        {"JidaDllInstall", &BoardLibrary::install},
        {"JidaDllUninitialize", &BoardLibrary::uninitialize},
        {"JidaI2CReadRegister", &BoardLibrary::readRegister},
        {"JidaI2CWrite", &BoardLibrary::write},
        {"JidaI2CWriteReadCombined", &BoardLibrary::writeRead},
        {"JidaI2CWriteRegister", &BoardLibrary::writeRegister},
        {"JidaTemperatureCount", &BoardLibrary::countSensors},
        {"JidaTemperatureGetCurrent", &BoardLibrary::readSensor},
        {"JidaTemperatureGetInfo", &BoardLibrary::describeSensor},
    };
    return kRows[static_cast<std::size_t>(function)];
}

BoardLibrary::BoardLibrary(Unit& unit) : unit_{unit}
{
    Node& node = unit.addNode(jida::kNode).unrecorded();
    node.onOpen([&node](int flags) { return std::make_unique<JidaFile>(node, flags); });
    node.onWrite([this](OpenFile& file, std::span<const std::uint8_t> in) -> Outcome {
        jida::Call header{};
        if (in.size() < sizeof header)
            return {-EINVAL, false, {}};
        std::memcpy(&header, in.data(), sizeof header);
        if (header.function > jida::Function::TemperatureGetInfo || header.answerSize > jida::kLongest)
            return {-EINVAL, false, {}};
        dynamic_cast<JidaFile&>(file).done = call(header, in.subspan(sizeof header));
        return {static_cast<std::int64_t>(in.size()), false, {}};
    });
    node.onRead([this](OpenFile& file, std::span<std::uint8_t> out, Time) -> Outcome {
        const Done& done = dynamic_cast<JidaFile&>(file).done;
        if (unit_.clock().now() < done.ready)
            return Outcome::notBefore(done.ready);
        const std::vector<std::uint8_t> bytes = packed(done);
        const std::size_t count = std::min(bytes.size(), out.size());
        std::copy_n(bytes.begin(), count, out.begin());
        return {static_cast<std::int64_t>(count), false, {}};
    });
    for (int i = 0; i <= static_cast<int>(jida::Function::TemperatureGetInfo); ++i)
        unit.addFunction(row(static_cast<jida::Function>(i)).name);
    describe();
}

void BoardLibrary::describe()
{
    Properties& properties = unit_.properties();
    properties.flag("jida.installed", installed, "whether the board library needs no installation");
    properties.flag("jida.refuses", refuses, "whether the board library can neither be initialised nor installed");
    properties.number("jida.boards", boards, 0, 16, "boards that the board library finds");
    properties.number("jida.sensors", sensorCount, 0, static_cast<std::int64_t>(sensors.size()),
                      "temperature sensors of a board");
    properties.readOnly(
        "jida.users", [this] { return std::to_string(users); }, "initialisations that are still open");
    properties.number("i2c.hertz", unit_.i2c().hertz, 1000, 1000000, "clock of the I2C bus");
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        Sensor& sensor = sensors[i];
        const std::string name = "temperature.pm." + std::to_string(i);
        properties.add(
            name, [&sensor] { return degrees(sensor.milliCelsius); },
            [&sensor](const std::string& text) {
                const double value = parseReal(text);
                if (value < -273.15 || value > 2e6)
                    throw BadText{"'" + text + "' is not a temperature"};
                sensor.milliCelsius = static_cast<std::int32_t>(std::lround(value * 1000));
            },
            "sensor of the processor module, in degrees Celsius");
        properties.number(name + ".status", sensor.status, 0, 0xFFFFFFFF, "the sensor's status bits");
        properties.number(name + ".type", sensor.type, 0, 0xFFFFFFFF, "the sensor's type");
    }
}

/// Whether the call must fail; a handler checks it after it has set the call's words and before it does anything.
bool BoardLibrary::fails(Work& work)
{
    const char* const name = row(work.call.function).name;
    work.error = watched("libjida.so", name);
    if (work.error == 0)
        work.error = unit_.faults().take("libjida.so", name);
    return work.error != 0;
}

BoardLibrary::Done BoardLibrary::call(const jida::Call& header, std::span<const std::uint8_t> bytes)
{
    Done done;
    done.ready = unit_.clock().now();
    done.answer.assign(header.answerSize, 0);
    const Row& entry = row(header.function);
    Work work{header, bytes, done};
    const std::string name = entry.name;
    (this->*entry.handler)(work);
    if (work.error == 0)
        showAnswer(done.answer);

    std::string action = name + work.words;
    if (work.showsResult)
        action += " = " + std::to_string(done.reply.result);
    const bool good = work.error == 0;
    const bool isTransfer = name.starts_with("JidaI2C");
    unit_.journal().add(
        Entry{.time = unit_.clock().now(),
              .subject = "libjida.so",
              .action = action,
              .in = isTransfer ? std::vector<std::uint8_t>{bytes.begin(), bytes.end()} : std::vector<std::uint8_t>{},
              .out = good ? done.answer : std::vector<std::uint8_t>{},
              .error = work.error});
    return done;
}

void BoardLibrary::initialize(Work& work)
{
    if (fails(work))
        return;
    const bool good = installed && !refuses;
    users += good ? 1 : 0;
    work.result(good ? 1 : 0);
}

void BoardLibrary::uninitialize(Work& work)
{
    if (fails(work))
        return;
    users -= users > 0 ? 1 : 0;
    work.result(1);
}

void BoardLibrary::install(Work& work)
{
    work.words = ' ' + std::to_string(work.argument(0));
    if (fails(work))
        return;
    if (!refuses)
        installed = work.argument(0) != 0;
    work.result(refuses ? 0 : 1);
}

/// One processor board; without a class all boards.
std::uint32_t BoardLibrary::boardsOf(const std::string& className) const
{
    if (className.empty())
        return boards;
    return className == "CPU" ? std::min(boards, 1U) : 0;
}

void BoardLibrary::countBoards(Work& work)
{
    const std::string className{work.bytes.begin(), work.bytes.end()};
    work.words = ' ' + (className.empty() ? "any" : className);
    if (fails(work))
        return;
    work.result(boardsOf(className));
}

void BoardLibrary::openBoard(Work& work)
{
    const std::string className{work.bytes.begin(), work.bytes.end()};
    const std::uint32_t number = work.argument(0);
    work.words = ' ' + (className.empty() ? "any" : className) + ' ' + std::to_string(number);
    if (fails(work))
        return;
    work.check(number < boardsOf(className), ENODEV);
    if (work.error != 0)
        return;
    handles_.insert(++lastHandle_);
    work.done.reply.values[0] = lastHandle_;
    work.words += " = handle " + std::to_string(lastHandle_);
}

void BoardLibrary::closeBoard(Work& work)
{
    work.words = " handle " + std::to_string(work.call.board);
    if (fails(work))
        return;
    work.check(handles_.erase(work.call.board) == 1, EBADF);
}

void BoardLibrary::countSensors(Work& work)
{
    work.words = " handle " + std::to_string(work.call.board);
    if (fails(work))
        return;
    work.result(isOpen(work.call.board) ? sensorCount : 0);
}

void BoardLibrary::readSensor(Work& work)
{
    const std::uint32_t index = work.argument(0);
    work.words = " handle " + std::to_string(work.call.board) + " sensor " + std::to_string(index);
    if (fails(work))
        return;
    work.check(isOpen(work.call.board) && index < sensorCount, EINVAL);
    if (work.error != 0)
        return;
    work.done.reply.values[0] = static_cast<std::uint32_t>(sensors[index].milliCelsius);
    work.done.reply.values[1] = sensors[index].status;
    work.words += " = " + std::to_string(sensors[index].milliCelsius);
}

void BoardLibrary::describeSensor(Work& work)
{
    const std::uint32_t index = work.argument(0);
    work.words = " handle " + std::to_string(work.call.board) + " sensor " + std::to_string(index) + " size " +
                 std::to_string(work.argument(1));
    if (fails(work))
        return;
    work.check(isOpen(work.call.board) && index < sensorCount && work.argument(1) == kInformationSize, EINVAL);
    if (work.error != 0)
        return;
    work.done.reply.values[0] = sensors[index].type;
    work.words += " = type " + std::to_string(sensors[index].type);
}

/// Bus 0 of any open board.
void BoardLibrary::transfer(Work& work, std::span<const std::uint8_t> written)
{
    const auto address = static_cast<std::uint8_t>(work.argument(1));
    const std::uint8_t shown[] = {address};
    work.words = " handle " + std::to_string(work.call.board) + " 0x" + hexBytes(shown) + work.words;
    if (fails(work))
        return;
    if (!isOpen(work.call.board) || work.argument(0) != 0) {
        work.check(false, ENODEV);
        return;
    }
    const I2cBus::Transfer transfer = unit_.i2c().transfer(address, written, work.done.answer);
    work.done.ready = transfer.end;
    work.check(transfer.acknowledged, ENXIO);
}

void BoardLibrary::write(Work& work)
{
    transfer(work, work.bytes);
}

void BoardLibrary::writeRead(Work& work)
{
    work.words = " read " + std::to_string(work.call.answerSize);
    transfer(work, work.bytes);
}

void BoardLibrary::writeRegister(Work& work)
{
    std::vector<std::uint8_t> written = registerBytes(work.argument(2));
    written.insert(written.end(), work.bytes.begin(), work.bytes.end());
    work.words = " register " + std::to_string(work.argument(2));
    transfer(work, written);
}

void BoardLibrary::readRegister(Work& work)
{
    work.words = " register " + std::to_string(work.argument(2));
    transfer(work, registerBytes(work.argument(2)));
}

HXSIM_HARDWARE(BoardLibrary)

} // namespace hxsim
