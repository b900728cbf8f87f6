// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/simulator/preload/DescriptorRules.h"

#include "tests/simulator/preload/PassedDescriptor.h"

#include <climits>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace {

std::string name;
std::string path;

int device(int flags = O_RDWR)
{
    return open(path.c_str(), flags);
}

/// 1: the descriptor refers to the device.
int works(int fd)
{
    std::uint16_t block[2] = {0, 0};
    const bool answered = ioctl(fd, 0xC004003A, block) == 0;
    const bool refused = !answered && errno == ENOTTY; // a device of the kernel has no registers
    if (!answered && !refused)
        return -1;
    errno = 0;
    const bool isUnits = name != "zero";
    return answered == isUnits ? 1 : 0;
}

/// Runs in a child; its result.
template <typename Work>
int inChild(Work work)
{
    const pid_t child = fork();
    if (child == 0) {
        const int result = work();
        _exit(result < 0 ? 100 + errno : result);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

int passed(int fd)
{
    int ends[2];
    (void)!socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends);
    sendDescriptor(ends[0], fd);
    close(fd);
    const int received = receiveDescriptor(ends[1]);
    close(ends[0]);
    close(ends[1]);
    return received;
}

/// A child that shares the memory of this process, as those that start programs do.
__attribute__((noinline)) void borrow(int fd, int other)
{
    const pid_t child = vfork();
    if (child == 0) {
        close(fd);
        dup2(other, fd);
        close(other);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

std::string temporaryLink(const char* target)
{
    std::string pattern = "/tmp/hx-rules.XXXXXX";
    const int fd = mkstemp(pattern.data());
    close(fd);
    unlink(pattern.c_str());
    (void)!symlink(target, pattern.c_str());
    return pattern;
}

struct In {
    explicit In(const char* folder) { (void)!getcwd(before.data(), before.size()), (void)!chdir(folder); }
    In(const In&) = delete;
    In& operator=(const In&) = delete;
    ~In() { (void)!chdir(before.data()); }
    std::array<char, PATH_MAX> before{};
};

int openIn(const char* folder, const std::string& relative)
{
    const In there{folder};
    return works(open(relative.c_str(), O_RDWR));
}

int openAt(const char* folder, const std::string& relative)
{
    const int directory = open(folder, O_RDONLY | O_DIRECTORY);
    const int result = works(openat(directory, relative.c_str(), O_RDWR));
    close(directory);
    return result;
}

/// Type and permissions, or -1.
int modeOf(int result, const struct stat& record)
{
    return result == 0 ? static_cast<int>(record.st_mode) : result;
}

int readInto(int fd, int count)
{
    static char bytes[4];
    static std::vector<iovec> parts(IOV_MAX + 1, iovec{bytes, 1});
    return static_cast<int>(readv(fd, parts.data(), count));
}

int closedInTurn(int step)
{
    constexpr int kCount = 101; // prime: each step meets all
    std::vector<int> all{device()};
    while (all.size() < kCount)
        all.push_back(dup(all.back()));
    int working = 0;
    for (int i = 0; i < kCount; ++i) {
        const int fd = all[static_cast<std::size_t>(i * step % kCount)];
        working += works(fd);
        close(fd);
    }
    return working;
}

[[maybe_unused]] void* nowhere() // sanitizers leave out the rules that use it
{
    static volatile std::uintptr_t address = 8; // the compiler must not know
    return reinterpret_cast<void*>(address);    // NOLINT(performance-no-int-to-ptr): an address that nothing is at
}

struct Rule {
    const char* statement;
    int (*answer)();
};

char byte = 0;
iovec one{&byte, 1};

constexpr Rule kRules[] = {
    // Numbers.
    {"open leads to the device", [] { return works(device()); }},
    {"dup leads to the device", [] { return works(dup(device())); }},
    {"dup outlives the original",
     [] {
         const int fd = device();
         const int copy = dup(fd);
         close(fd);
         return works(copy);
     }},
    {"the original outlives a dup",
     [] {
         const int fd = device();
         close(dup(fd));
         return works(fd);
     }},
    {"a hundred duplicates, first to last", [] { return closedInTurn(1); }},
    {"a hundred duplicates, last to first", [] { return closedInTurn(100); }},
    {"a hundred duplicates, mixed", [] { return closedInTurn(37); }},
    {"dup2 replaces a file",
     [] {
         const int other = open("/dev/null", O_RDWR);
         return dup2(device(), other) == other ? works(other) : -2;
     }},
    {"dup2 of a file replaces the device",
     [] {
         const int fd = device();
         dup2(open("/dev/null", O_RDWR), fd);
         return static_cast<int>(read(fd, &byte, 1));
     }},
    {"dup2 onto itself",
     [] {
         const int fd = device();
         return dup2(fd, fd) == fd ? works(fd) : -2;
     }},
    {"dup2 of a closed number leaves the other",
     [] {
         const int fd = device();
         const int result = dup2(990, fd);
         return result == -1 && errno == EBADF ? works(fd) : result;
     }},
    {"dup3 onto itself",
     [] {
         const int fd = device();
         return dup3(fd, fd, 0);
     }},
    {"dup3 with an unknown flag", [] { return dup3(device(), 300, O_APPEND); }},
    {"dup3 closes on exec", [] { return fcntl(dup3(device(), 300, O_CLOEXEC), F_GETFD); }},
    {"dup2 does not close on exec", [] { return fcntl(dup2(device(O_RDWR | O_CLOEXEC), 301), F_GETFD); }},
    {"F_DUPFD takes the lowest from its argument on",
     [] {
         const int copy = fcntl(device(), F_DUPFD, 320);
         return copy == 320 ? works(copy) : -2;
     }},
    {"F_DUPFD_CLOEXEC closes on exec", [] { return fcntl(fcntl(device(), F_DUPFD_CLOEXEC, 330), F_GETFD); }},
    {"F_DUPFD from a negative number", [] { return fcntl(device(), F_DUPFD, -1); }},
    {"close twice",
     [] {
         const int fd = device();
         close(fd);
         return close(fd);
     }},
    {"a closed number leads nowhere",
     [] {
         const int fd = device();
         close(fd);
         return works(fd);
     }},
    {"close_range closes",
     [] {
         const int fd = device();
         return close_range(static_cast<unsigned>(fd), static_cast<unsigned>(fd), 0) == 0 ? works(fd) : -2;
     }},
    {"close_range leaves a duplicate outside the range",
     [] {
         const int fd = device();
         const int copy = fcntl(fd, F_DUPFD, 340);
         return close_range(static_cast<unsigned>(fd), static_cast<unsigned>(fd), 0) == 0 ? works(copy) : -2;
     }},
    {"close_range may close on exec alone",
     [] {
         const int fd = device();
         return close_range(static_cast<unsigned>(fd), static_cast<unsigned>(fd), CLOSE_RANGE_CLOEXEC) == 0
                    ? fcntl(fd, F_GETFD)
                    : -2;
     }},
    {"close_range of an invalid range", [] { return close_range(9, 8, 0); }},
    {"closefrom closes in the child alone",
     [] {
         const int fd = device();
         const int inIt = inChild([fd] {
             closefrom(3);
             return works(fd);
         });
         return 1000 * inIt + works(fd);
     }},
    {"opening continues after closefrom",
     [] {
         return inChild([] {
             closefrom(3);
             return works(device());
         });
     }},
    {"fclose closes",
     [] {
         const int fd = device();
         fclose(fdopen(fd, "r+"));
         return works(fd);
     }},

    // Flags.
    {"F_GETFL of read and write", [] { return fcntl(device(), F_GETFL); }},
    {"F_GETFL of reading", [] { return fcntl(device(O_RDONLY | O_NONBLOCK), F_GETFL); }},
    {"F_GETFL of writing", [] { return fcntl(device(O_WRONLY | O_APPEND), F_GETFL); }},
    {"F_GETFL without the flags of opening",
     [] { return fcntl(device(O_RDWR | O_NOCTTY | O_TRUNC | O_CLOEXEC), F_GETFL); }},
    {"F_GETFL with synchronous writing", [] { return fcntl(device(O_RDWR | O_SYNC), F_GETFL); }},
    {"F_GETFL of a path alone", [] { return fcntl(device(O_PATH), F_GETFL); }},
    {"a path alone is not the device", [] { return works(device(O_PATH)); }},
    {"O_CLOEXEC at opening", [] { return fcntl(device(O_RDWR | O_CLOEXEC), F_GETFD); }},
    {"no O_CLOEXEC at opening", [] { return fcntl(device(), F_GETFD); }},
    {"F_SETFD is of one number",
     [] {
         const int fd = device();
         const int copy = dup(fd);
         fcntl(fd, F_SETFD, FD_CLOEXEC);
         return 10 * fcntl(fd, F_GETFD) + fcntl(copy, F_GETFD);
     }},
    {"F_SETFL is of all duplicates",
     [] {
         const int fd = device();
         const int copy = dup(fd);
         fcntl(fd, F_SETFL, O_NONBLOCK);
         return fcntl(copy, F_GETFL);
     }},
    {"F_SETFL in a child is of the parent too",
     [] {
         const int fd = device();
         inChild([fd] { return fcntl(fd, F_SETFL, O_NONBLOCK); });
         return fcntl(fd, F_GETFL);
     }},
    {"F_SETFL does not change the way of access",
     [] {
         const int fd = device(O_RDONLY);
         return fcntl(fd, F_SETFL, O_RDWR) == 0 ? fcntl(fd, F_GETFL) : -1;
     }},
    {"F_SETFL without a signal of its own",
     [] {
         const int fd = device();
         return fcntl(fd, F_SETFL, O_ASYNC) == 0 ? fcntl(fd, F_GETFL) : -1;
     }},
    {"F_SETFL past the page cache", [] { return fcntl(device(), F_SETFL, O_DIRECT); }},
    {"FIOCLEX closes on exec",
     [] {
         const int fd = device();
         return ioctl(fd, FIOCLEX) == 0 ? fcntl(fd, F_GETFD) : -1;
     }},
    {"FIONBIO does not wait",
     [] {
         const int fd = device();
         int on = 1;
         return ioctl(fd, FIONBIO, &on) == 0 ? fcntl(fd, F_GETFL) : -1;
     }},
    {"F_GETFL of a closed number", [] { return fcntl(990, F_GETFL); }},

    // Access.
    {"read where only writing is allowed", [] { return static_cast<int>(read(device(O_WRONLY), &byte, 1)); }},
    {"readv where only writing is allowed", [] { return static_cast<int>(readv(device(O_WRONLY), &one, 1)); }},
    {"pread where only writing is allowed", [] { return static_cast<int>(pread(device(O_WRONLY), &byte, 1, 0)); }},
    {"preadv where only writing is allowed", [] { return static_cast<int>(preadv(device(O_WRONLY), &one, 1, 0)); }},
    {"write where only reading is allowed", [] { return static_cast<int>(write(device(O_RDONLY), &byte, 1)); }},
    {"writev where only reading is allowed", [] { return static_cast<int>(writev(device(O_RDONLY), &one, 1)); }},
    {"pwrite where only reading is allowed", [] { return static_cast<int>(pwrite(device(O_RDONLY), &byte, 1, 0)); }},
    {"pwritev where only reading is allowed", [] { return static_cast<int>(pwritev(device(O_RDONLY), &one, 1, 0)); }},
    {"read of a path alone", [] { return static_cast<int>(read(device(O_PATH), &byte, 1)); }},
    {"pread of a path alone", [] { return static_cast<int>(pread(device(O_PATH), &byte, 1, 0)); }},
    {"readv of too many blocks", [] { return readInto(device(), IOV_MAX + 1); }},
    {"readv of fewer than no blocks", [] { return readInto(device(), -1); }},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they look at the memory before the kernel does
    {"readv of blocks that are nowhere",
     [] { return static_cast<int>(readv(device(), static_cast<iovec*>(nowhere()), 1)); }},
    {"read to nowhere", [] { return static_cast<int>(read(device(), nowhere(), 1)); }},
#endif
    {"pread before the beginning", [] { return static_cast<int>(pread(device(), &byte, 1, -1)); }},
    {"preadv before the beginning", [] { return static_cast<int>(preadv(device(), &one, 1, -1)); }},
    {"pwrite before the beginning", [] { return static_cast<int>(pwrite(device(), &byte, 1, -1)); }},
    {"isatty", [] { return isatty(device()); }},

    // Waiting.
    {"poll",
     [] {
         pollfd watched{device(), POLLIN | POLLOUT, 0};
         return 100 * poll(&watched, 1, 0) + watched.revents;
     }},
    {"ppoll",
     [] {
         pollfd watched{device(), POLLIN, 0};
         return 100 * ppoll(&watched, 1, nullptr, nullptr) + watched.revents;
     }},
    {"poll of a closed number",
     [] {
         pollfd watched[] = {{device(), POLLIN, 0}, {990, POLLIN, 0}};
         return 1000 * poll(watched, 2, 0) + watched[1].revents;
     }},
    {"pselect",
     [] {
         const int fd = device();
         fd_set readers;
         FD_ZERO(&readers);
         FD_SET(fd, &readers);
         return 10 * pselect(fd + 1, &readers, nullptr, nullptr, nullptr, nullptr) +
                static_cast<int>(FD_ISSET(fd, &readers));
     }},
    {"epoll",
     [] {
         epoll_event event{};
         return epoll_ctl(epoll_create1(0), EPOLL_CTL_ADD, device(), &event);
     }},

    // Sharing.
    {"a child uses what its parent opened",
     [] {
         const int fd = device();
         return inChild([fd] { return works(fd); });
     }},
    {"a child uses what its parent has closed",
     [] {
         int start[2];
         (void)!pipe(start);
         const int fd = device();
         const pid_t child = fork();
         if (child == 0) {
             (void)!read(start[0], &byte, 1);
             _exit(works(fd));
         }
         close(fd);
         (void)!write(start[1], &byte, 1);
         int status = 0;
         waitpid(child, &status, 0);
         return WEXITSTATUS(status);
     }},
    {"a child that closes takes nothing from its parent",
     [] {
         const int fd = device();
         inChild([fd] { return close(fd); });
         return works(fd);
     }},
    {"a child that shares the memory takes nothing either",
     [] {
         const int fd = device();
         const int other = open("/dev/null", O_RDWR);
         borrow(fd, other);
         return 10 * works(fd) + static_cast<int>(read(other, &byte, 1));
     }},
    {"a descriptor that was passed on leads to the device", [] { return works(passed(dup(device()))); }},
    {"the only descriptor survives being passed on", [] { return works(passed(device())); }},
    {"a descriptor that was passed on keeps its flags",
     [] {
         const int fd = device(O_WRONLY);
         fcntl(fd, F_SETFL, O_NONBLOCK);
         return fcntl(passed(fd), F_GETFL);
     }},
    {"a descriptor that was passed on keeps its access",
     [] { return static_cast<int>(read(passed(device(O_WRONLY)), &byte, 1)); }},

    // Paths.
    {"relative", [] { return openIn("/dev", name); }},
    {"relative, with a dot", [] { return openIn("/dev", "./" + name); }},
    {"relative, up and down", [] { return openIn("/dev", "../dev/" + name); }},
    {"relative to the root", [] { return openIn("/", "dev/" + name); }},
    {"relative, elsewhere", [] { return openIn("/tmp", name); }},
    {"absolute, up and down", [] { return works(open(("/dev/../dev/./" + name).c_str(), O_RDWR)); }},
    {"absolute, with slashes", [] { return works(open(("//dev//" + name).c_str(), O_RDWR)); }},
    {"through a link to its directory",
     [] {
         const std::string link = temporaryLink("/dev");
         const int result = works(open((link + '/' + name).c_str(), O_RDWR));
         unlink(link.c_str());
         return result;
     }},
    {"up from a link to another directory",
     [] {
         const std::string link = temporaryLink("/dev/shm");
         const int result = works(open((link + "/../" + name).c_str(), O_RDWR));
         unlink(link.c_str());
         return result;
     }},
    {"openat", [] { return openAt("/dev", name); }},
    {"openat, up and down", [] { return openAt("/tmp", "../dev/" + name); }},
    {"openat with an absolute path", [] { return openAt("/tmp", path); }},
    {"openat elsewhere", [] { return openAt("/tmp", name); }},
    {"openat from a closed number", [] { return openat(990, name.c_str(), O_RDWR); }},
    {"openat from the device", [] { return openat(device(), name.c_str(), O_RDWR); }},
    {"openat from the working directory",
     [] {
         const In there{"/dev"};
         return works(openat(AT_FDCWD, name.c_str(), O_RDWR));
     }},
    {"with a slash behind", [] { return open((path + '/').c_str(), O_RDWR); }},
    {"as a directory", [] { return device(O_RDONLY | O_DIRECTORY); }},
    {"as a new file", [] { return device(O_RDWR | O_CREAT | O_EXCL); }},
    {"past the page cache", [] { return device(O_RDWR | O_DIRECT); }},
    {"opendir", [] { return opendir(path.c_str()) == nullptr ? -1 : 0; }},

    // Properties.
    {"stat",
     [] {
         struct stat record {};
         return modeOf(stat(path.c_str(), &record), record);
     }},
    {"stat with a slash behind",
     [] {
         struct stat record {};
         return modeOf(stat((path + '/').c_str(), &record), record);
     }},
    {"lstat of a relative path",
     [] {
         const In there{"/dev"};
         struct stat record {};
         return modeOf(lstat(name.c_str(), &record), record);
     }},
    {"fstat",
     [] {
         struct stat record {};
         return modeOf(fstat(device(), &record), record);
     }},
    {"fstatat",
     [] {
         struct stat record {};
         const int directory = open("/dev", O_RDONLY | O_DIRECTORY);
         const int result = modeOf(fstatat(directory, name.c_str(), &record, 0), record);
         close(directory);
         return result;
     }},
    {"fstatat of a descriptor",
     [] {
         struct stat record {};
         return modeOf(fstatat(device(), "", &record, AT_EMPTY_PATH), record);
     }},
    {"statx",
     [] {
         struct statx record {};
         const int result = statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS, &record);
         return result == 0 ? static_cast<int>(record.stx_mode) : result;
     }},
    {"statx of a descriptor",
     [] {
         struct statx record {};
         const int result = statx(device(), "", AT_EMPTY_PATH, STATX_BASIC_STATS, &record);
         return result == 0 ? static_cast<int>(record.stx_mode) : result;
     }},
    {"access", [] { return access(path.c_str(), R_OK | W_OK); }},
    {"access as a program", [] { return access(path.c_str(), X_OK); }},
    {"access with a slash behind", [] { return access((path + '/').c_str(), F_OK); }},
    {"access of a relative path",
     [] {
         const In there{"/dev"};
         return access(name.c_str(), R_OK);
     }},
    {"faccessat", [] { return faccessat(AT_FDCWD, ("/dev/../dev/" + name).c_str(), R_OK | W_OK, 0); }},
    {"euidaccess as a program", [] { return euidaccess(path.c_str(), X_OK); }},
    {"realpath",
     [] {
         char* const real = realpath(("/dev/shm/../" + name).c_str(), nullptr);
         const int result = real == nullptr ? -1 : static_cast<int>(path == real);
         free(real);
         return result;
     }},
    {"readlink",
     [] {
         char text[64];
         return static_cast<int>(readlink(path.c_str(), text, sizeof text));
     }},
};

/// An opening of the terminal; without a path of a new one of the kernel's, which goes with this process.
int terminal()
{
    if (path.empty()) {
        const int other = posix_openpt(O_RDWR | O_NOCTTY);
        (void)unlockpt(other);
        path = ptsname(other);
    }
    return device(O_RDWR | O_NOCTTY);
}

/// Sets what no fresh terminal has.
void setTerminal(int fd)
{
    termios settings{};
    (void)tcgetattr(fd, &settings);
    cfsetspeed(&settings, B57600);
    settings.c_cflag |= CSTOPB;
    settings.c_cc[VMIN] = 7;
    (void)tcsetattr(fd, TCSANOW, &settings);
}

/// 1: what was set is seen here.
int isSet(int fd)
{
    termios settings{};
    if (tcgetattr(fd, &settings) != 0)
        return -1;
    const bool all = cfgetospeed(&settings) == B57600 && (settings.c_cflag & CSTOPB) != 0 && settings.c_cc[VMIN] == 7;
    return all ? 1 : 0;
}

constexpr Rule kTerminalRules[] = {
    {"a terminal is opened with other settings", [] { return isSet(terminal()); }},
    {"the settings are those of a duplicate",
     [] {
         const int fd = terminal();
         setTerminal(fd);
         return isSet(dup(fd));
     }},
    {"the settings are those of another opening",
     [] {
         const int fd = terminal();
         const int other = terminal();
         setTerminal(fd);
         return isSet(other);
     }},
    {"the settings are those of a later opening",
     [] {
         const int fd = terminal();
         setTerminal(fd);
         return isSet(terminal());
     }},
    {"the settings outlive the opening that set them",
     [] {
         const int fd = terminal();
         const int other = terminal();
         setTerminal(fd);
         close(fd);
         return isSet(other);
     }},
    {"the settings go with a descriptor that is passed on",
     [] {
         const int fd = terminal();
         setTerminal(fd);
         return isSet(passed(fd));
     }},
    {"a child sees the settings",
     [] {
         const int fd = terminal();
         setTerminal(fd);
         return inChild([fd] { return isSet(fd); });
     }},
    {"a file that is not a terminal has none", [] { return isSet(open("/dev/null", O_RDWR)); }},
};

template <std::size_t Count>
void play(const Rule (&rules)[Count], std::ostream& results)
{
    for (const Rule& rule : rules) {
        // What the rule leaves open goes with the process that tried it.
        int answer[2] = {0, 0};
        int pipes[2];
        (void)!pipe(pipes);
        const pid_t child = fork();
        if (child == 0) {
            errno = 0;
            answer[0] = rule.answer();
            answer[1] = answer[0] < 0 ? errno : 0;
            (void)!write(pipes[1], answer, sizeof answer);
            _exit(0);
        }
        close(pipes[1]);
        if (read(pipes[0], answer, sizeof answer) != static_cast<ssize_t>(sizeof answer))
            answer[0] = -99;
        close(pipes[0]);
        waitpid(child, nullptr, 0);
        results << rule.statement << ": " << answer[0] << ' ' << std::strerror(answer[1]) << std::endl;
    }
}

} // namespace

void playDescriptorRules(const std::string& device, std::ostream& results)
{
    name = device;
    path = "/dev/" + device;
    play(kRules, results);
}

void playTerminalRules(const std::string& itsPath, std::ostream& results)
{
    path = itsPath;
    play(kTerminalRules, results);
}
