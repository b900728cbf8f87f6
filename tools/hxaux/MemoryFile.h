// SPDX-License-Identifier: LicenseRef-HXAux
// A file that has a name only in this process.
#ifndef HXAUX_MEMORYFILE_H
#define HXAUX_MEMORYFILE_H

#include <string>

namespace hxaux {

// Holds a text for the library to open by its name: what the library reads is then what the tool has checked, whatever
// happens to the file that the text came from.
class MemoryFile {
public:
    // Throws std::bad_alloc when there is no room for it.
    explicit MemoryFile(const std::string& text);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] std::string name() const;

private:
    int file_;
};

} // namespace hxaux

#endif
