// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Node.h"

#include <algorithm>
#include <cassert>
#include <cerrno>

namespace hxsim {

std::uint16_t Request::u16(std::size_t offset) const
{
    return static_cast<std::uint16_t>(in[offset] | in[offset + 1] << 8);
}

std::uint32_t Request::u32(std::size_t offset) const
{
    return u16(offset) | static_cast<std::uint32_t>(u16(offset + 2)) << 16;
}

void Request::put16(std::size_t offset, std::uint16_t value) const
{
    out[offset] = static_cast<std::uint8_t>(value);
    out[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}

void Request::put32(std::size_t offset, std::uint32_t value) const
{
    put16(offset, static_cast<std::uint16_t>(value));
    put16(offset + 2, static_cast<std::uint16_t>(value >> 16));
}

Node& Node::request(std::uint32_t code, Takes takes, Gives gives, RequestHandler handler)
{
    [[maybe_unused]] const bool isNew =
        requests_.emplace(code, Row{{takes.bytes, gives.bytes}, std::move(handler)}).second;
    assert(isNew && "a driver answers a request in one way");
    return *this;
}

Node& Node::onOpen(Opener opener)
{
    opener_ = std::move(opener);
    return *this;
}

Node& Node::onClose(Closer closer)
{
    closer_ = std::move(closer);
    return *this;
}

Node& Node::onRead(Reader reader)
{
    reader_ = std::move(reader);
    return *this;
}

Node& Node::onWrite(Writer writer)
{
    writer_ = std::move(writer);
    return *this;
}

Node& Node::attribute(std::function<std::string()> get, std::function<int(const std::string&)> set)
{
    text_ = true;
    reader_ = [get = std::move(get)](OpenFile& file, std::span<std::uint8_t> out, Time) {
        if (file.position == 0)
            file.content = get();
        const std::size_t rest = file.content.size() - file.position;
        const std::size_t count = std::min(rest, out.size());
        std::copy_n(file.content.begin() + static_cast<std::ptrdiff_t>(file.position), count, out.begin());
        file.position += count;
        return Outcome{static_cast<std::int64_t>(count), false, {}};
    };
    if (set)
        writer_ = [set = std::move(set)](OpenFile&, std::span<const std::uint8_t> in) {
            const int result = set({in.begin(), in.end()});
            return Outcome{result < 0 ? result : static_cast<std::int64_t>(in.size()), false, {}};
        };
    return *this;
}

Node& Node::onPoll(std::function<bool(OpenFile&, Time)> readable)
{
    readable_ = std::move(readable);
    return *this;
}

Node& Node::serialLine(std::function<void(const LineSettings&)> changed, std::function<void(bool, bool)> flush,
                       std::function<Outcome()> drained)
{
    lineChanged_ = std::move(changed);
    flush_ = std::move(flush);
    drained_ = std::move(drained);
    return *this;
}

Node& Node::unrecorded()
{
    recorded_ = false;
    return *this;
}

const Node::Shape* Node::shape(std::uint32_t code) const
{
    const auto row = requests_.find(code);
    return row == requests_.end() ? nullptr : &row->second.shape;
}

std::vector<std::uint32_t> Node::requests() const
{
    std::vector<std::uint32_t> codes;
    for (const auto& [code, row] : requests_)
        codes.push_back(code);
    return codes;
}

std::unique_ptr<OpenFile> Node::open(int flags)
{
    return opener_ ? opener_(flags) : std::make_unique<OpenFile>(*this, flags);
}

void Node::close(OpenFile& file) const
{
    if (closer_)
        closer_(file);
}

int Node::ioctl(OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out) const
{
    const auto row = requests_.find(code);
    if (row == requests_.end())
        return -ENOTTY;
    if (in.size() < row->second.shape.takes || out.size() < row->second.shape.gives)
        return -EFAULT;
    Request request{in.first(row->second.shape.takes), out.first(row->second.shape.gives), file};
    return row->second.handler(request);
}

Outcome Node::read(OpenFile& file, std::span<std::uint8_t> out, Time started) const
{
    return reader_ ? reader_(file, out, started) : Outcome{-EINVAL, false, {}};
}

Outcome Node::write(OpenFile& file, std::span<const std::uint8_t> in) const
{
    return writer_ ? writer_(file, in) : Outcome{-EINVAL, false, {}};
}

void Node::setLine(const LineSettings& settings) const
{
    if (lineChanged_)
        lineChanged_(settings);
}

void Node::flush(bool input, bool output) const
{
    if (flush_)
        flush_(input, output);
}

Outcome Node::drain() const
{
    return drained_ ? drained_() : Outcome{};
}

} // namespace hxsim
