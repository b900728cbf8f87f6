// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Brings this program's own version of `LinuxWrapper`'s device access, to give the answers that no driver path can:
/// a count that differs from the length asked for, an echo that names something else.
///
/// One exists at a time; every `IoCtrl` of the program goes to it.
class ScriptedDevice {
public:
    ScriptedDevice();
    ~ScriptedDevice();
    ScriptedDevice(const ScriptedDevice&) = delete;
    ScriptedDevice& operator=(const ScriptedDevice&) = delete;

    struct Request {
        unsigned long code;
        std::vector<std::uint8_t> in;
        int outLength;
    };

    /// The next `IoCtrl` answers these bytes and this count; the last script is repeated forever.
    void answers(std::vector<std::uint8_t> bytes, int count);
    /// The next `IoCtrl` is refused, after the driver has put these bytes into the block.
    void refuses(std::vector<std::uint8_t> bytes = {});
    /// Forgets the script and what was asked.
    void restart();
    void isAbsent() { absent = true; }
    void returns() { absent = false; }

    std::vector<Request> requests;
    std::vector<std::string> opened;
    std::function<void()> whileOpening; ///< called by each open before it answers
    int closed = 0;

    bool ioCtrl(unsigned long code, const char* in, int inLength, char* out, int outLength, int* returned);
    bool open(int& handle, const char* path);

private:
    struct Answer {
        std::vector<std::uint8_t> bytes;
        int count;
        bool result;
    };
    std::vector<Answer> script_;
    std::size_t next_ = 0;
    bool absent = false;
};
