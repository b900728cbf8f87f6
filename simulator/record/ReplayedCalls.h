// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/ModelCalls.h"
#include "simulator/record/Recording.h"

#include <deque>
#include <functional>
#include <map>
#include <utility>

namespace hxsim {

/// Answers programs from a recording. Each thread of a program is matched with a recorded one with the same first call,
/// and must then make that thread's calls in the same order; the order between threads is free. After the first
/// difference every call fails with EIO.
class ReplayedCalls : public ModelCalls {
public:
    /// `differs` is called once, with a description of the difference.
    ReplayedCalls(Unit& unit, const Recording& recording, std::function<void(const std::string&)> differs);

    /// Call after the end of the program: missing calls are a difference too.
    void finish();
    [[nodiscard]] bool differed() const { return differed_; }

    Opened open(Caller caller, Node& node, int flags) override;
    void close(Caller caller, OpenFile& file, Closing closing) override;
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) override;
    Outcome read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt) override;
    Outcome write(Caller caller, OpenFile& file, Bytes in) override;
    int fault(Caller caller, const std::string& subject, const std::string& call) override;
    std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code) override;
    void setLine(OpenFile& /*file*/, const LineSettings& /*settings*/) override {}
    void flush(OpenFile& /*file*/, bool /*input*/, bool /*output*/) override {}
    Outcome drain(OpenFile& /*file*/) override { return {}; }
    bool readable(OpenFile& /*file*/) override { return true; }

private:
    /// The recorded calls of one thread; replayed ones are removed.
    struct Part {
        int process;
        std::deque<const RecordedCall*> calls{};
        bool taken = false;
    };

    /// The recorded call that answers this one, or null after a difference.
    const RecordedCall* next(Caller caller, Entry entry);
    Part* partOf(Caller caller, const RecordedCall& call);
    [[nodiscard]] bool mayTake(int process, const Part& part) const;
    const RecordedCall* differ(const RecordedCall* recorded, const RecordedCall& call);
    [[nodiscard]] const RecordedCall* firstLeft() const;

    const Recording& recording_;
    std::function<void(const std::string&)> differs_;
    std::vector<Part> parts_;
    std::map<std::pair<int, int>, Part*> taken_; ///< process and thread
    std::map<int, int> processes_;               ///< process to its recorded number
    bool differed_ = false;
};

} // namespace hxsim
