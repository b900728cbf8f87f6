// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/UnitFolder.h"

#include "simulator/model/Text.h"
#include "simulator/protocol/Wire.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace hxsim {

namespace fs = std::filesystem;

namespace {

constexpr char kSemaphores[] = "/dev/shm";
constexpr char kPidFile[] = "/pid";
constexpr char kMarkFile[] = "/made-by-hx-sim";

bool isFolderOfThisUser(const struct stat& found)
{
    return S_ISDIR(found.st_mode) && found.st_uid == getuid();
}

bool isOwnFolder(const std::string& path)
{
    struct stat found {};
    return lstat(path.c_str(), &found) == 0 && isFolderOfThisUser(found);
}

/// Whether a unit created this directory; others are never removed.
bool isMarked(const fs::path& folder)
{
    struct stat found {};
    const std::string mark = folder.string() + kMarkFile;
    return isOwnFolder(folder) && lstat(mark.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

/// The mark is removed last, so that an interrupted removal can be completed later.
void removeMarked(const fs::path& folder)
{
    if (!isMarked(folder))
        return;
    std::error_code ignored;
    std::vector<fs::path> inside;
    for (const fs::directory_entry& entry : fs::directory_iterator{folder, ignored})
        if (entry.path() != folder.string() + kMarkFile)
            inside.push_back(entry.path());
    for (const fs::path& path : inside)
        fs::remove_all(path, ignored);
    fs::remove_all(folder, ignored);
}

/// The directories of this user's units, running or not.
std::vector<fs::path> markedFolders()
{
    std::vector<fs::path> folders;
    std::error_code ignored;
    if (isOwnFolder(UnitFolder::base()))
        for (const fs::directory_entry& entry : fs::directory_iterator{UnitFolder::base(), ignored})
            if (isMarked(entry.path()))
                folders.push_back(entry.path());
    return folders;
}

/// The start time of a process: distinguishes it from a later one with the same number.
std::string startOf(long process)
{
    std::ifstream stream{"/proc/" + std::to_string(process) + "/stat"};
    std::string text;
    std::getline(stream, text); // a process that ends meanwhile causes a read error here, not an exception
    std::size_t at = text.rfind(')');
    if (at == std::string::npos || text.compare(at, 3, ") Z") == 0)
        return ""; // a zombie: its status is not collected yet
    for (int field = 2; field < 22 && at != std::string::npos; ++field)
        at = text.find(' ', at + 1);
    if (at == std::string::npos)
        return "";
    return text.substr(at + 1, text.find(' ', at + 1) - at - 1);
}

/// A directory is created under this name and then renamed, so that it is never visible without its process number.
constexpr char kUnfinished[] = ".new-";

bool isAlive(const fs::path& folder)
{
    const std::string name = folder.filename();
    if (name.starts_with(kUnfinished))
        return kill(std::atoi(name.c_str() + sizeof kUnfinished - 1), 0) == 0;
    std::ifstream stream{folder.string() + kPidFile};
    long process = 0;
    std::string start;
    return stream >> process >> start && startOf(process) == start;
}

/// What the semaphores of both ABIs begin with.
std::string semaphoresOf(const std::string& mark)
{
    return "hxsim-" + std::to_string(getuid()) + '-' + mark + '-';
}

void removeSemaphores(const fs::path& folder)
{
    const std::string prefix = "sem." + semaphoresOf(UnitFolder::markOf(folder));
    std::error_code ignored;
    std::vector<fs::path> left;
    for (const fs::directory_entry& entry : fs::directory_iterator{kSemaphores, ignored})
        if (entry.path().filename().string().starts_with(prefix))
            left.push_back(entry.path());
    for (const fs::path& path : left)
        fs::remove(path, ignored);
}

/// A program that creates a semaphore looks for the socket afterwards: it is gone before the others are removed.
void removeUnit(const fs::path& folder)
{
    if (isMarked(folder))
        (void)::unlink((folder.string() + wire::kSocket).c_str());
    removeSemaphores(folder);
    removeMarked(folder); // last: commands that wait for the end wait for this
}

/// The base directory must belong to this user, or another user could impersonate a unit. It is checked once: the last
/// unit that stops can remove it at any time, and then the caller retries.
void makeBase(const std::string& base)
{
    if (mkdir(base.c_str(), 0700) != 0 && errno != EEXIST)
        throw std::runtime_error{"cannot make the folder " + base + ": " + std::strerror(errno)};
    struct stat found {};
    const bool isGone = lstat(base.c_str(), &found) != 0 && errno == ENOENT;
    if (!isGone && !isFolderOfThisUser(found))
        throw std::runtime_error{base + " does not belong to this user"};
}

/// The directory of a unit before it gets its name.
std::string makeUnfinished(const std::string& unit)
{
    std::string folder = UnitFolder::base() + '/' + kUnfinished + std::to_string(getpid()) + '-' + unit;
    std::error_code error;
    for (int attempt = 0; attempt < 100; ++attempt) { // the last unit that stops removes the base directory
        makeBase(UnitFolder::base());
        fs::create_directory(folder, error);
        if (!error)
            break;
    }
    if (error)
        throw std::runtime_error{"cannot make the folder " + folder + ": " + error.message()};
    std::ofstream{folder + kMarkFile} << "hx-sim created this directory for a unit and removes it with the unit.\n";
    std::ofstream{folder + kPidFile} << getpid() << ' ' << startOf(getpid()) << '\n';
    fs::create_directories(folder + "/files", error);
    return folder;
}

} // namespace

UnitFolder::UnitFolder(const std::string& unit) : unit_{unit}, path_{pathOf(unit)}
{
    const std::string unfinished = makeUnfinished(unit);
    const bool taken = isMarked(path_) && isAlive(path_);
    std::error_code error;
    if (!taken) {
        if (isMarked(path_))
            removeUnit(path_); // with locks that the dead one's programs hold
        fs::rename(unfinished, path_, error);
    }
    if (!taken && !error)
        return;
    removeMarked(unfinished);
    throw std::runtime_error{taken ? "a unit named '" + unit + "' is already running"
                                   : "cannot make the folder " + path_};
}

UnitFolder::~UnitFolder()
{
    remove();
}

void UnitFolder::remove() const
{
    removeUnit(path_);
    (void)::rmdir(base().c_str()); // remains while it contains other units
}

std::string UnitFolder::whatIsWrongWith(const std::string& unit)
{
    const auto isLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    const auto mayFollow = [&](char c) { return isLetter(c) || c == '.' || c == '_' || c == '-'; };
    if (!unit.empty() && isLetter(unit.front()) && std::ranges::all_of(unit, mayFollow))
        return {};
    return "a unit's name is made of letters, digits, '.', '_' and '-' and begins with a letter or digit; " +
           inQuotes(unit) + " is not";
}

std::string UnitFolder::pathOf(const std::string& unit)
{
    if (const std::string wrong = whatIsWrongWith(unit); !wrong.empty())
        throw BadUsage{wrong};
    return base() + '/' + unit;
}

std::string UnitFolder::fileOf(const std::string& unitPath) const
{
    std::string file = path_ + "/files" + unitPath;
    std::error_code ignored;
    fs::create_directories(fs::path{file}.parent_path(), ignored);
    return file;
}

std::string UnitFolder::base()
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const std::string root = runtime != nullptr && *runtime == '/' ? runtime : "/tmp";
    return root + "/hx-sim-" + std::to_string(getuid());
}

std::string UnitFolder::markOf(const std::string& folder)
{
    const fs::path path = fs::path{folder}.lexically_normal();
    std::uint32_t hash = 2166136261; // FNV-1a: the same in 32-bit and 64-bit programs
    for (const char character : path.parent_path().string())
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619;
    return path.filename().string() + '-' + std::to_string(hash);
}

std::string UnitFolder::semaphorePrefix(const std::string& mark)
{
    constexpr const char* kAbi = sizeof(void*) == 4 ? "i386" : "x86_64";
    return '/' + semaphoresOf(mark) + kAbi + '-';
}

bool UnitFolder::isOpen(const std::string& folder)
{
    return access((folder + wire::kSocket).c_str(), F_OK) == 0;
}

std::vector<std::string> UnitFolder::running()
{
    std::vector<std::string> units;
    for (const fs::path& folder : markedFolders())
        if (whatIsWrongWith(folder.filename()).empty() && isAlive(folder))
            units.push_back(folder.filename());
    return units;
}

std::string UnitFolder::whatHidesThem()
{
    DIR* const folder = opendir(base().c_str());
    if (folder == nullptr)
        return errno == ENOENT ? "" : "the folder " + base() + " cannot be read: " + std::strerror(errno);
    closedir(folder);
    return {};
}

void UnitFolder::sweep()
{
    for (const fs::path& folder : markedFolders())
        if (!isAlive(folder))
            removeUnit(folder);
    (void)::rmdir(base().c_str());
}

} // namespace hxsim
