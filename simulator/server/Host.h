// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/file/UnitCalls.h"
#include "simulator/model/Unit.h"
#include "simulator/protocol/Channel.h"
#include "simulator/protocol/UnitFolder.h"
#include "simulator/record/RecordedCalls.h"
#include "simulator/server/KeptMemory.h"

namespace hxsim {

/// A unit in real or scaled time, and the programs that use it: one thread, one loop, one connection per open file and
/// per process.
class Host {
public:
    /// Throws BadText for a bad description and std::runtime_error when the unit cannot be started.
    Host(const std::string& unit, double scale);
    /// From now on this source answers the calls of programs, not the model.
    void answerWith(std::unique_ptr<Calls> source) { calls_ = std::make_unique<UnitCalls>(unit_, std::move(source)); }
    UnitCalls& calls() { return *calls_; }
    /// Programs find the machine's files and semaphores, or those of the unit that this program itself runs on.
    void standAside();
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void describe(const std::string& text) { unit_.describe(text); }
    /// From now on the contents of the unit's memories are kept in this directory.
    void keepIn(const std::string& folder) { kept_ = std::make_unique<KeptMemory>(unit_, folder); }
    Unit& unit() { return unit_; }
    [[nodiscard]] const std::string& folder() const { return folder_.path(); }
    [[nodiscard]] double scale() const { return scale_; }

    /// Serves programs until `stop` is called, or until `alsoWatched` becomes readable and `seen` says to end.
    void run(int alsoWatched, const std::function<bool()>& seen);
    void stop() { stopping_ = true; }

    /// Records the calls of this process and its children to a file from now on, until the connection closes.
    void record(int connection, const std::string& file, int process);
    /// Stops the recording; returns the number of calls.
    std::size_t endRecord(int connection);
    /// Sends new journal entries to this connection, as lines.
    void follow(int connection, bool json);
    void advance();

private:
    /// An open file of the unit. It is closed when its connection ends: then no program holds a descriptor of it.
    struct File {
        std::unique_ptr<OpenFile> open;
        Caller opener;
        std::uint64_t number = 0;
        int connection = -1;
        std::optional<Caller> closer{}; ///< the caller that is closing it
    };
    struct WaitingRead {
        Caller caller;
        std::size_t size;
        Time started;
        std::optional<Time> wakeAt;
    };
    struct Connection {
        int fd;
        int process = 0;    ///< of a control connection
        std::string name{}; ///< of the connection of a file
        std::shared_ptr<File> opened{};
        std::shared_ptr<File> file{}; ///< subject of the last request
        std::optional<WaitingRead> read{};
        bool drains = false;
        bool follows = false;
        bool json = false;
    };

    void accept();
    void receive(int fd);
    void drop(int fd);
    /// Adds the earlier notes of a process to the journal before its current request.
    void takeNotesOf(const Connection& asking, int process);
    void handleGuarded(Connection& connection, const Packet& packet);
    void handle(Connection& connection, const Packet& packet);
    void handleControl(Connection& connection, const Packet& packet);
    void handleFile(Connection& connection, const Packet& packet);
    void open(Connection& connection, const Packet& packet);
    void which(Connection& connection, const Packet& packet);
    void close(Connection& connection, const Packet& packet);
    void setTerminal(Connection& connection, const Packet& packet);
    void shape(Connection& connection, const Packet& packet);
    void ioctl(Connection& connection, const Packet& packet);
    void read(Connection& connection, const Packet& packet);
    void cancel(Connection& connection);
    void keep();
    void answer(Connection& connection, std::int64_t value, std::span<const std::uint8_t> bytes = {},
                std::int64_t other = 0, std::uint64_t file = 0);
    /// Retries the waiting reads after a change.
    void retryWaiting();
    bool tryRead(Connection& connection, Calls::Attempt attempt);
    [[nodiscard]] std::string pathList();
    [[nodiscard]] Recording recordingHead();
    /// Time until the next timer; nothing when there is none.
    [[nodiscard]] std::optional<timespec> timeToNextDeadline();
    [[nodiscard]] Time modelNow() const;

    double scale_;
    UnitFolder folder_;
    Unit unit_;
    std::unique_ptr<KeptMemory> kept_;
    std::unique_ptr<UnitCalls> calls_ = std::make_unique<UnitCalls>(unit_);
    std::unique_ptr<Recorder> recorder_;
    int recorderOwner_ = -1; ///< the connection that started the recording
    std::string files_;      ///< directory that contains the unit's files under their own paths
    std::string semaphores_; ///< mark of the unit whose semaphores programs get; empty: the machine's
    bool standsAside_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    int listener_ = -1;
    bool stopping_ = false;
    bool full_ = false;        ///< no descriptor is left for another connection
    bool takingNotes_ = false; ///< inside takeNotesOf
    bool waiting_ = false;     ///< some connection has a read that waits
    std::map<int, Connection> connections_;
    std::map<std::uint64_t, std::shared_ptr<File>> openFiles_;
    std::uint64_t opened_ = 0;    ///< files so far
    std::map<int, int> controls_; ///< process to control connection
    std::vector<std::uint8_t> buffer_;
};

} // namespace hxsim
