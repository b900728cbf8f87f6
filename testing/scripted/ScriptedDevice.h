// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Replaces `LinuxWrapper`'s device access, for answers that no driver path gives: a count other than the requested
/// length, an echo of another number.
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
    /// Clears the script and the recorded calls.
    void restart();
    void isAbsent() { absent_ = true; }
    void returns() { absent_ = false; }

    std::vector<Request> requests;
    std::vector<std::string> opened;
    std::function<void()> whileOpening; ///< called by each open before it returns
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
    bool absent_ = false;
};
