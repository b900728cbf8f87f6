// SPDX-License-Identifier: LicenseRef-HXAux
// A host in this process, and connections to it as programs have them.
#pragma once

#include "simulator/protocol/Channel.h"
#include "simulator/protocol/Mailbox.h"
#include "simulator/server/Host.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace served_unit {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;
using wire::Kind;

inline constexpr int kProcess = 4711;

/// A unit that is served by a thread of the test, a thousand times faster than real time or as it is said.
class Served {
public:
    explicit Served(Pace pace = {1000})
    {
        const char* const before = std::getenv("XDG_RUNTIME_DIR");
        before_ = before == nullptr ? "" : before;
        setenv("XDG_RUNTIME_DIR", scratch_.path().c_str(), 1);
        host_ = std::make_unique<Host>("served", pace);
        server_ = std::thread{[this] { host_->run(-1, [] { return false; }); }};
    }
    ~Served()
    {
        const int fd = connectTo(host_->folder(), "");
        const std::string stop{"stop\0", 5};
        Packet answer;
        EXPECT_TRUE(exchange(fd, {Kind::Command, 0, 0, 0, 0, 0, 0}, bytesOf(stop), answer));
        server_.join();
        ::close(fd);
        host_.reset();
        if (before_.empty())
            unsetenv("XDG_RUNTIME_DIR");
        else
            setenv("XDG_RUNTIME_DIR", before_.c_str(), 1);
    }
    Served(const Served&) = delete;
    Served& operator=(const Served&) = delete;

    [[nodiscard]] const std::string& folder() const { return host_->folder(); }

private:
    TemporaryFolder scratch_;
    std::string before_;
    std::unique_ptr<Host> host_;
    std::thread server_;
};

/// A connection to it.
class Client {
public:
    explicit Client(const Served& served) : fd_{connectTo(served.folder(), "")} { EXPECT_GE(fd_, 0); }
    ~Client() { hangUp(); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void hangUp()
    {
        if (fd_ >= 0)
            ::close(std::exchange(fd_, -1));
    }
    static wire::Head head(Kind kind, std::uint64_t file = 0, std::int64_t value = 0, std::uint32_t request = 0)
    {
        return {kind, request, kProcess, 1, value, 0, file};
    }
    Packet exchange(const wire::Head& head, const Bytes& bytes = {}) const
    {
        Packet answer;
        EXPECT_TRUE(hxsim::exchange(fd_, head, bytes, answer));
        EXPECT_EQ(answer.head.kind, Kind::Answer);
        return answer;
    }
    Packet exchange(Kind kind, const std::string& text, std::int64_t value = 0) const
    {
        return exchange(head(kind, 0, value), {text.begin(), text.end()});
    }
    Packet command(std::vector<std::string> words) const
    {
        std::string text;
        for (const std::string& word : words)
            text += word + '\0';
        return exchange(Kind::Command, text);
    }
    void send(const wire::Head& head, const Bytes& bytes = {}) const { EXPECT_TRUE(sendPacket(fd_, head, bytes)); }
    Packet receive() const
    {
        Packet packet;
        packet.bytes.resize(wire::kLargestPacket);
        std::size_t size = 0;
        EXPECT_EQ(receivePacket(fd_, packet.head, packet.bytes, size, true), Received::Packet);
        packet.bytes.resize(size);
        return packet;
    }
    /// A mailbox beside this connection.
    ClientMailbox share() const
    {
        send(head(Kind::Share));
        int descriptor = -1;
        EXPECT_TRUE(receiveDescriptor(fd_, descriptor));
        EXPECT_GE(descriptor, 0);
        ClientMailbox mailbox{descriptor};
        ::close(descriptor);
        return mailbox;
    }
    /// A request in the mailbox, and its answer from there or from here.
    Packet exchangeBy(ClientMailbox& mailbox, const wire::Head& question, const Bytes& bytes = {}) const
    {
        if (!mailbox.post(question, bytes))
            send(head(Kind::Bell));
        if (mailbox.await(1ms) == ClientMailbox::Found::Elsewhere)
            return receive();
        return {mailbox.head(), {mailbox.bytes().begin(), mailbox.bytes().end()}};
    }
    [[nodiscard]] bool isOver() const
    {
        Packet packet;
        std::size_t size = 0;
        return receivePacket(fd_, packet.head, packet.bytes, size, true) == Received::Gone;
    }

private:
    int fd_;
};

} // namespace served_unit
