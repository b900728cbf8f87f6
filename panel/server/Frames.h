// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

namespace hxpanel {

/// A message of an event stream, as it is sent. All streams share its text.
using Frame = std::shared_ptr<const std::string>;

/// A message with this name and this document.
Frame frameOf(const std::string& name, const std::string& document);

/// The last messages of a unit, numbered. Old ones make way for new ones: a stream whose next message is not here any
/// more has fallen behind.
class Frames {
public:
    void push(Frame frame);
    /// Nobody can continue from here: every stream has fallen behind.
    void restart();

    [[nodiscard]] std::uint64_t begin() const { return begin_; }
    [[nodiscard]] std::uint64_t end() const { return begin_ + frames_.size(); }
    [[nodiscard]] const Frame& at(std::uint64_t number) const { return frames_[number - begin_]; }
    [[nodiscard]] std::size_t bytes() const { return bytes_; }

    static constexpr std::size_t kMostBytes = 2U << 20;

private:
    std::deque<Frame> frames_{};
    std::uint64_t begin_ = 1;
    std::size_t bytes_ = 0;
};

} // namespace hxpanel
