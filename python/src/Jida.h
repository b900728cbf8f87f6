// SPDX-License-Identifier: LicenseRef-HXAux
// Functions of the board library on memory. Python has bytes in its place.
#pragma once

#include "python/src/Values.h"
#include <hx-aux/Jida.h>

namespace hxpython {

/// Calls a function while other threads of Python continue.
template <class Work>
auto withoutLock(Work work)
{
    const py::gil_scoped_release others;
    return work();
}

inline const unsigned char* bytesOf(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

inline py::tuple jidaTemperatureGetInfo(Integer board, Integer index, const py::bytes& information)
{
    const auto boardIn = board.as<unsigned long>("board");
    const auto indexIn = index.as<unsigned long>("index");
    std::string record{information};
    if (record.size() < 44)
        throw py::value_error{"information must be a record of at least 44 bytes"};
    const unsigned int answer = withoutLock([&] { return JidaTemperatureGetInfo(boardIn, indexIn, record.data()); });
    return py::make_tuple(answer, py::bytes{record});
}

inline unsigned int jidaI2CWrite(Integer board, Integer bus, Integer address, const py::bytes& bytes)
{
    const auto boardIn = board.as<unsigned long>("board");
    const auto busIn = bus.as<unsigned long>("bus");
    const auto addressIn = address.as<unsigned char>("address");
    const std::string text{bytes};
    return withoutLock([&] { return JidaI2CWrite(boardIn, busIn, addressIn, bytesOf(text), text.size()); });
}

inline py::tuple jidaI2CWriteReadCombined(Integer board, Integer bus, Integer address, const py::bytes& bytes,
                                          Integer answerSize)
{
    const auto boardIn = board.as<unsigned long>("board");
    const auto busIn = bus.as<unsigned long>("bus");
    const auto addressIn = address.as<unsigned char>("address");
    const std::string text{bytes};
    std::string read(answerSize.as<unsigned long>("answer_size"), '\0');
    const unsigned int answer = withoutLock([&] {
        return JidaI2CWriteReadCombined(boardIn, busIn, addressIn, bytesOf(text), text.size(),
                                        reinterpret_cast<unsigned char*>(read.data()), read.size());
    });
    return py::make_tuple(answer, py::bytes{read});
}

} // namespace hxpython
