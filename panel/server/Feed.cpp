// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Feed.h"

#include <utility>

namespace hxpanel {

namespace {

/// A page that is loaded again comes back within this time.
constexpr Milliseconds kGrace{2000};

} // namespace

Feed::Feed(Loop& loop, std::string name) : loop_{loop}, name_{std::move(name)} {}

Feed::~Feed()
{
    loop_.cancel(end_);
    loop_.cancel(life_);
}

void Feed::add(Stream& stream)
{
    streams_.insert(&stream);
    loop_.cancel(std::exchange(end_, 0));
    if (std::exchange(working_, true))
        return;
    keepShowingLife();
    begin();
}

void Feed::remove(Stream& stream)
{
    streams_.erase(&stream);
    if (!streams_.empty())
        return;
    end_ = loop_.after(kGrace, [this] {
        end_ = 0;
        working_ = false;
        loop_.cancel(std::exchange(life_, 0));
        frames_.restart();
        end();
    });
}

void Feed::keepShowingLife()
{
    life_ = loop_.after(kBetweenSigns, [this] {
        keepShowingLife();
        showLife();
    });
}

void Feed::showLife()
{
    push(frameOf("alive", "{}"));
}

void Feed::push(Frame frame)
{
    frames_.push(std::move(frame));
    wakeAll();
}

void Feed::restart()
{
    frames_.restart();
    wakeAll();
}

void Feed::wakeAll()
{
    for (Stream* const stream : streams_)
        stream->wake_();
}

Stream::Stream(std::shared_ptr<Feed> feed, std::function<void()> wake) : feed_{std::move(feed)}, wake_{std::move(wake)}
{
    feed_->add(*this);
}

Stream::~Stream()
{
    feed_->remove(*this);
}

Frame Stream::next()
{
    const Frames& frames = feed_->frames_;
    if (position_ < frames.begin()) {
        Frame snapshot = feed_->snapshot();
        if (snapshot != nullptr)
            position_ = frames.end();
        return snapshot;
    }
    return position_ < frames.end() ? frames.at(position_++) : nullptr;
}

} // namespace hxpanel
