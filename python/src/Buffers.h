// SPDX-License-Identifier: LicenseRef-HXAux
// Operations on buffers of the C allocator. Python has bytes in their place.
#pragma once

#include "python/src/Held.h"
#include <hx-aux/Video.h>

#include <cstdlib>
#include <cstring>
#include <optional>

namespace hxpython {

using HeldVideo = Held<Halvix::Video>;

inline py::bytes takeSnapshotRaw(HeldVideo& self, Integer size, bool flag)
{
    std::string buffer(size.as<unsigned long>("size"), '\0');
    self.call("Video.take_snapshot_raw",
              [&](Halvix::Video& video) { return video.takeSnapshotRaw(buffer.data(), buffer.size(), flag); });
    return {buffer};
}

/// Moves a buffer that the library has allocated into Python.
inline py::bytes taken(HeldVideo& self, char* buffer, unsigned long size)
{
    py::bytes copy{buffer, size};
    self.call("Video.free_bmp_buffer", [&](Halvix::Video& video) { return video.freeBmpBuffer(buffer); });
    return copy;
}

inline py::bytes takeSnapshotBmp(HeldVideo& self, bool first, bool second)
{
    char* buffer = nullptr;
    unsigned long size = 0;
    self.call("Video.take_snapshot_bmp",
              [&](Halvix::Video& video) { return video.takeSnapshotBmp(&buffer, &size, first, second); });
    return taken(self, buffer, size);
}

inline py::bytes createBitmap(HeldVideo& self, const py::bytes& raw, bool first, bool second)
{
    const std::string image{raw};
    char* buffer = nullptr;
    unsigned long size = 0;
    self.call("Video.create_bitmap", [&](Halvix::Video& video) {
        return video.createBitmap(&buffer, &size, image.data(), image.size(), first, second);
    });
    return taken(self, buffer, size);
}

/// The library frees a copy: the bytes themselves belong to Python.
inline void freeBmpBuffer(HeldVideo& self, const std::optional<py::bytes>& buffer)
{
    char* copy = nullptr;
    if (buffer) {
        const std::string bytes{*buffer};
        copy = static_cast<char*>(std::malloc(bytes.size() + 1));
        if (copy == nullptr)
            throw std::bad_alloc{};
        std::memcpy(copy, bytes.c_str(), bytes.size() + 1);
    }
    self.call("Video.free_bmp_buffer", [&](Halvix::Video& video) { return video.freeBmpBuffer(copy); });
}

} // namespace hxpython
