// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/KeptMemory.h"

#include "simulator/model/Text.h"
#include "simulator/server/PlainFile.h"

#include <filesystem>
#include <fstream>

namespace hxsim {

namespace fs = std::filesystem;

KeptMemory::KeptMemory(Unit& unit, const std::string& folder) : unit_{unit}, folder_{folder}
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder))
        throw BadText{"cannot keep memories in " + folder};
    for (auto& [name, memory] : unit.memories()) {
        if (!fs::exists(fileOf(name), error))
            continue;
        const std::string bytes = contentOf(fileOf(name));
        if (bytes.size() != memory.bytes.size())
            throw BadText{fileOf(name) + " does not have the size of this memory"};
        memory.bytes.assign(bytes.begin(), bytes.end());
        memory.changed = false;
    }
}

void KeptMemory::save()
{
    for (auto& [name, memory] : unit_.memories()) {
        if (!memory.changed)
            continue;
        const std::string fresh = fileOf(name) + ".new";
        std::error_code error;
        fs::remove(fresh, error); // never writes through a link or into a FIFO
        std::ofstream stream{fresh, std::ios::binary};
        stream.write(reinterpret_cast<const char*>(memory.bytes.data()),
                     static_cast<std::streamsize>(memory.bytes.size()));
        stream.close();
        if (stream)
            fs::rename(fresh, fileOf(name), error);
        memory.changed = !stream || error; // the next call makes another attempt
        if (memory.changed)
            fs::remove(fresh, error);
    }
}

} // namespace hxsim
