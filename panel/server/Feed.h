// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Frames.h"
#include "panel/server/Loop.h"

#include <functional>
#include <memory>
#include <set>
#include <string>

namespace hxpanel {

class Stream;

/// What the streams of one unit are fed with. It exists once for all of them, and works only while there is one.
class Feed {
public:
    Feed(Loop& loop, std::string name);
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;
    virtual ~Feed();

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] bool isFollowed() const { return !streams_.empty(); }
    /// Adds a message for all streams.
    void push(Frame frame);
    /// Looks at what may have changed without an event.
    virtual void refresh() {}

    static constexpr Milliseconds kBetweenSigns{5000};

protected:
    /// The message with which a stream can continue at the end of the frames; nothing while there is none yet.
    virtual Frame snapshot() = 0;
    virtual void begin() = 0; ///< with the first stream
    virtual void end() = 0;   ///< some time after the last one
    virtual void showLife();  ///< every five seconds
    /// All streams continue with a snapshot.
    void restart();

    Loop& loop_;

private:
    friend class Stream;

    void add(Stream& stream);
    void remove(Stream& stream);
    void wakeAll();
    void keepShowingLife();

    std::string name_;
    Frames frames_{};
    std::set<Stream*> streams_{};
    bool working_ = false;
    Loop::Timer end_ = 0;
    Loop::Timer life_ = 0;
};

/// One reader of a feed. What it does not read is not kept for it: a reader that falls behind gets a snapshot.
class Stream {
public:
    /// `wake` is called when there may be a next message.
    Stream(std::shared_ptr<Feed> feed, std::function<void()> wake);
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream();

    /// The next message, or nothing.
    Frame next();

private:
    friend class Feed;

    std::shared_ptr<Feed> feed_;
    std::function<void()> wake_;
    std::uint64_t position_ = 0;
};

/// The feed of the list of units alone.
class ListFeed : public Feed {
public:
    using List = std::function<std::string()>;

    ListFeed(Loop& loop, List list) : Feed{loop, ""}, list_{std::move(list)} {}

protected:
    Frame snapshot() override { return frameOf("units", list_()); }
    void begin() override {}
    void end() override {}

private:
    List list_;
};

} // namespace hxpanel
