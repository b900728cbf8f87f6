// SPDX-License-Identifier: LicenseRef-HXAux
// A file that exists only in this process.
#pragma once

#include <string>

namespace hxaux {

/// Holds a text that the library opens by name: the library reads what the tool has checked, even if the original file
/// changes.
class MemoryFile {
public:
    /// Throws std::bad_alloc when out of memory.
    explicit MemoryFile(const std::string& text);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] std::string name() const;

private:
    int file_;
};

} // namespace hxaux
