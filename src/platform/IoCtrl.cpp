// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/ControlCodeTable.h"
#include "platform/LinuxWrapper.h"
#include "platform/Registers.h"

namespace Halvix {

namespace {

/// Index of the row of each code, by the code's low byte: no two codes have the same.
constexpr std::array<std::uint8_t, 256> indexByLowByte()
{
    std::array<std::uint8_t, 256> index{};
    for (std::size_t i = 0; i < std::size(kControlCodes); ++i)
        index[kControlCodes[i].code & 0xFF] = static_cast<std::uint8_t>(i);
    return index;
}

constexpr auto kIndex = indexByLowByte();
static_assert(std::ranges::all_of(kControlCodes,
                                  [](const Row& row) { return &kControlCodes[kIndex[row.code & 0xFF]] == &row; }),
              "two codes have the same low byte: find them in another way");

const Row* rowOf(unsigned long code)
{
    const Row& row = kControlCodes[kIndex[code & 0xFF]];
    return row.code == code ? &row : nullptr;
}

bool sendBlock(const Call& call)
{
    return request(call, call.in);
}

bool fillBlock(const Call& call)
{
    return request(call, call.out);
}

bool readByte(const Call& call)
{
    char local[2] = {};
    if (call.out == nullptr || !request(call, local))
        return false;
    call.out[0] = local[0];
    return true;
}

bool writeByte(const Call& call)
{
    if (call.in == nullptr)
        return false;
    char local[2] = {0, call.in[0]}; // the drivers take the value from the second byte
    return request(call, local);
}

bool copyAnswer(const Call& call, unsigned bytes)
{
    char local[8] = {};
    if (call.out == nullptr || !request(call, local))
        return false;
    std::memcpy(call.out, local, bytes);
    return true;
}

bool isRead(const Step& step)
{
    return step.kind == Step::Kind::Get16 || step.kind == Step::Kind::Get8;
}

bool readStep(const Call& call, const Step& step, std::uint16_t& value)
{
    return call.out != nullptr && registers::read(call.handle, step.reg, value);
}

std::uint16_t valueToWrite(const Call& call, const Step& step)
{
    switch (step.kind) {
    case Step::Kind::Put16:
        return load<std::uint16_t>(call.in, step.offset);
    case Step::Kind::Put8:
        return load<std::uint8_t>(call.in, step.offset);
    case Step::Kind::PutSigned8: // 0xFF arrives as 0xFFFF; the supervisor relies on it
        return static_cast<std::uint16_t>(load<std::int8_t>(call.in, step.offset));
    default:
        return 1;
    }
}

bool writeStep(const Call& call, const Step& step)
{
    if (call.in == nullptr && step.kind != Step::Kind::PutOne)
        return false;
    const auto value = static_cast<std::uint16_t>(valueToWrite(call, step) & step.mask);
    return registers::write(call.handle, step.reg, value);
}

void storeAnswer(const Call& call, const Step& step, std::uint16_t value)
{
    if (step.kind == Step::Kind::Get8)
        store(call.out, step.offset, static_cast<std::uint8_t>(value));
    else
        store(call.out, step.offset, value);
}

/// The first failed step ends the request. Registers written before it stay written, but the caller's block is filled
/// only if every register could be read.
bool registerSteps(const Call& call, const Row& row)
{
    std::uint16_t values[kMostSteps];
    unsigned count = 0;
    for (; count < kMostSteps && row.steps[count].kind != Step::Kind::None; ++count) {
        const Step& step = row.steps[count];
        values[count] = 0;
        if (step.kind == Step::Kind::Zero16)
            continue;
        if (!(isRead(step) ? readStep(call, step, values[count]) : writeStep(call, step)))
            return false;
    }
    for (unsigned i = 0; i < count; ++i)
        if (isRead(row.steps[i]) || row.steps[i].kind == Step::Kind::Zero16)
            storeAnswer(call, row.steps[i], values[i]);
    return true;
}

bool perform(const Call& call, const Row& row)
{
    switch (row.action) {
    case Action::PassIn:
        return sendBlock(call);
    case Action::PassOut:
        return fillBlock(call);
    case Action::ByteRead:
        return readByte(call);
    case Action::ByteWrite:
        return writeByte(call);
    case Action::CopyOut:
        return copyAnswer(call, row.copied);
    case Action::Registers:
        return registerSteps(call, row);
    case Action::Named:
        return row.named(call);
    }
    return false;
}

} // namespace

bool LinuxWrapper::IoCtrl(int handle, unsigned long code, char* in, int inLength, char* out, int outLength,
                          int* returned)
{
    if ((inLength >= 1 && in == nullptr) || (outLength >= 1 && out == nullptr))
        return false;
    const Row* row = rowOf(code);
    if (row == nullptr)
        return false;
    if (!perform({handle, code, in, inLength, out, outLength, returned}, *row))
        return false;
    if (row->count != Count::Unset)
        *returned = row->count == Count::InLength ? inLength : outLength;
    return true;
}

} // namespace Halvix
