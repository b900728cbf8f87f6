// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Frames.h"

namespace hxpanel {

Frame frameOf(const std::string& name, const std::string& document)
{
    return std::make_shared<const std::string>("event: " + name + "\ndata: " + document + "\n\n");
}

void Frames::push(Frame frame)
{
    bytes_ += frame->size();
    frames_.push_back(std::move(frame));
    while (bytes_ > kMostBytes && frames_.size() > 1) {
        bytes_ -= frames_.front()->size();
        frames_.pop_front();
        ++begin_;
    }
}

void Frames::restart()
{
    begin_ = end() + 1;
    frames_.clear();
    bytes_ = 0;
}

} // namespace hxpanel
