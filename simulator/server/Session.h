// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/protocol/Channel.h"
#include "simulator/protocol/Mailbox.h"
#include "simulator/protocol/Messages.h"
#include "simulator/server/HostCommands.h"
#include "simulator/server/RunningUnit.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace hxsim {

class Sessions;

/// An open file of the unit, which several connections may use. It is closed when the connection on which it was opened
/// ends: then no program holds a descriptor of it.
struct ServedFile {
    std::unique_ptr<OpenFile> open;
    Caller opener;
    std::uint64_t number = 0;
    int session = -1;               ///< the descriptor of that connection
    std::optional<Caller> closer{}; ///< the caller that is closing it
};

/// One connection of a program, or of a command of hx-sim: answers its requests, one after the other.
class Session {
public:
    /// Takes the descriptor.
    Session(int fd, RunningUnit& unit, Sessions& others) : fd_{fd}, unit_{unit}, others_{others} {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    [[nodiscard]] int fd() const { return fd_; }
    /// The process whose control connection this is; 0: none.
    [[nodiscard]] int process() const { return process_; }
    /// The file that was opened on this connection; null: none.
    [[nodiscard]] const std::shared_ptr<ServedFile>& opened() const { return opened_; }
    [[nodiscard]] const std::string& name() const { return name_; }

    /// Whatever a program sends, only its own request can fail.
    void handleGuarded(const Packet& packet);
    /// Tries again what waits for the unit; false when nothing does any more.
    bool retry();
    /// The time at which a waiting read has to be tried again.
    [[nodiscard]] std::optional<Time> wakeAt() const { return read_ ? read_->wakeAt : std::nullopt; }
    [[nodiscard]] bool drains() const { return drains_; }
    [[nodiscard]] bool reads() const { return read_.has_value(); }

    /// A thread that waits for the virtual time.
    struct Sleeper {
        Caller caller;
        Time until;
        std::uint64_t order; ///< in which they began to wait
        bool isWatched;
    };
    [[nodiscard]] const std::optional<Sleeper>& sleeper() const { return sleeper_; }
    /// Its time has come.
    void wakeUp();
    /// The thread that has been woken and has not noticed it.
    [[nodiscard]] const std::optional<Caller>& unaware() const { return unaware_; }

    /// Handles a request in the mailbox; false when there is no new one.
    bool servePosted();
    void watchMailbox(bool watches) { mailbox_->watch(watches); }

    /// Sends each new entry of the journal from now on, as a line or as JSON.
    void follow(bool asJson) { follows_ = asJson ? Follows::AsJson : Follows::AsLines; }
    void show(const Entry& entry);

private:
    enum class Follows { Nothing, AsLines, AsJson };
    struct WaitingRead {
        Caller caller;
        std::size_t size;
        Time started;
        std::optional<Time> wakeAt;
    };

    template <typename Message>
    bool handleIf(const Packet& packet);
    void handle(const Packet& packet);
    void handle(const wire::Hello& request);
    void handle(const wire::Locate& request);
    void handle(const wire::Absent& request);
    void handle(const wire::Fault& request);
    void handle(const wire::Note& request);
    void handle(const wire::Command& request);
    void handle(const wire::Which& request);
    void handle(const wire::Open& request);
    void handle(const wire::Shape& request);
    void handle(const wire::Ioctl& request);
    void handle(const wire::Read& request);
    void handle(const wire::Cancel& request);
    void handle(const wire::Write& request);
    void handle(const wire::SetTerminal& request);
    void handle(const wire::GetTerminal& request);
    void handle(const wire::Flush& request);
    void handle(const wire::Drain& request);
    void handle(const wire::Readable& request);
    void handle(const wire::Closing& request);
    void handle(const wire::Close& request);
    void handle(const wire::Share& request);
    void handle(const wire::Bell& request);
    void handle(const wire::Sleep& request);
    void refuse(wire::Kind kind);

    [[nodiscard]] OpenFile& file() const { return *file_->open; }
    bool tryRead(Calls::Attempt attempt);
    void answer(std::int64_t result, wire::Bytes bytes = {});
    template <typename Message>
    void send(const Message& message);

    const int fd_;
    RunningUnit& unit_;
    Sessions& others_;
    int process_ = 0;
    std::string name_{};
    std::shared_ptr<ServedFile> opened_{};
    std::unique_ptr<ServerMailbox> mailbox_{};
    Caller caller_{};                    ///< of the current request
    std::shared_ptr<ServedFile> file_{}; ///< its subject
    std::optional<WaitingRead> read_{};
    bool drains_ = false;
    std::optional<Sleeper> sleeper_{};
    std::optional<Caller> unaware_{};
    Follows follows_ = Follows::Nothing;
};

} // namespace hxsim
