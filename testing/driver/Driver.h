// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Replaces the kernel's drivers, one call at a time: this program's own `open` and `ioctl`.
///
/// A test defines the expected calls and their answers; every transferred byte is compared. For tests of what exactly
/// reaches a driver; use the simulated unit for a whole unit with state.
namespace driver {

using Bytes = std::vector<std::uint8_t>;

/// Bytes written as hexadecimal digits; blanks are ignored.
Bytes operator""_hex(const char* digits, std::size_t length);

/// The block passed to the driver.
enum class Block { Callers, Local, Null };

/// One `ioctl`: what the driver must see, and what it puts into the block.
struct Exchange {
    std::uint32_t request;
    Block block;
    Bytes seen;
    Bytes answer;
    int error = 0; ///< 0, or the errno of the driver
};
bool operator==(const Exchange& a, const Exchange& b);
std::ostream& operator<<(std::ostream& out, const Exchange& exchange);

/// The driver gets a block of the library.
Exchange local(std::uint32_t request, Bytes seen, Bytes answer = {});
/// The driver gets the caller's block.
Exchange callers(std::uint32_t request, Bytes seen, Bytes answer = {});
Exchange null(std::uint32_t request);
/// The supervisor's registers.
Exchange readsRegister(std::uint8_t reg, std::uint16_t value);
Exchange writesRegister(std::uint8_t reg, std::uint16_t value);

/// The script of one test; only one exists at a time.
class Script {
public:
    explicit Script(std::vector<Exchange> expected = {});
    ~Script();
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    /// The block that counts as the caller's.
    void callersBlock(const void* begin, std::size_t size);
    /// The call of that index is refused.
    void failAt(std::size_t index, int error);
    /// Files under /dev cannot be opened.
    void deviceIsAbsent() { absent_ = true; }
    /// A plain file of the unit, such as /etc/firmware.ver; by default it does not exist.
    void file(const std::string& path, std::string content) { files_[path] = std::move(content); }

    /// Every `write` of the library returns this and writes nothing.
    void answerWritesWith(long answer) { writesAnswer_ = answer; }

    /// The calls, in order.
    [[nodiscard]] const std::vector<Exchange>& calls() const { return made_; }
    /// The first difference from the expected calls, or an empty text.
    [[nodiscard]] std::string complaint() const;
    [[nodiscard]] const std::vector<std::string>& opened() const { return paths_; }
    [[nodiscard]] int lastOpenFlags() const { return flags_; }

    int ioctl(unsigned long request, void* argument);
    int open(const char* path, int openFlags);
    long write(int handle, const void* bytes, std::size_t count);

private:
    [[nodiscard]] Block kindOf(const void* argument) const;
    [[nodiscard]] int openFile(const char* path) const;

    std::vector<Exchange> expected_;
    std::vector<Exchange> made_;
    std::vector<std::string> paths_;
    std::map<std::string, std::string> files_;
    std::string firstComplaint_;
    const std::uint8_t* blockBegin_ = nullptr;
    std::size_t blockSize_ = 0;
    std::optional<long> writesAnswer_;
    int flags_ = 0;
    bool absent_ = false;
};

/// Answers every `ioctl` instead of a script while it is set: for benchmarks, where a script costs too much.
extern int (*unscripted)(unsigned long request, void* argument);

} // namespace driver
