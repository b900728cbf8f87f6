// SPDX-License-Identifier: LicenseRef-HXAux
// Recordings of any content: refused with a line, or replayed within bounds.
#include "simulator/record/Recording.h"

#include "fuzz/Require.h"
#include "simulator/model/Text.h"

#include <cstdint>
#include <string>

using namespace hxsim;

namespace {

std::string written(const Recording& recording)
{
    std::string text = recording.headText();
    for (const RecordedCall& call : recording.calls)
        text += call.lineText() + '\n';
    return text;
}

void requireBounds(const Unit& unit, const Recording& recording)
{
    for (const auto& [path, content] : recording.files)
        REQUIRE(unit.hasFile(path));
    for (const RecordedCall& call : recording.calls) {
        if (call.entry.kind == Entry::Kind::Read)
            REQUIRE(call.result <= static_cast<std::int64_t>(call.entry.out.size()));
        REQUIRE(call.entry.in.size() <= 65536 && call.entry.out.size() <= 65536);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Unit unit;
    try {
        const Recording recording = Recording::parse({reinterpret_cast<const char*>(data), size}, unit);
        requireBounds(unit, recording);
        const std::string text = written(recording);
        REQUIRE(written(Recording::parse(text, unit)) == text);
    } catch (const BadText& bad) {
        const std::string text = bad.what();
        const std::size_t line = text.find(':');
        REQUIRE(line != std::string::npos && line > 0);
        REQUIRE(text.find_first_not_of("0123456789") == line);
    }
    return 0;
}
