// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/ProgramCheck.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cstdlib>
#include <elf.h>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace hxsim {

namespace {

namespace fs = std::filesystem;

constexpr char kLibraryName[] = "libhxsim-preload.so";
constexpr int kDeepest = 4; ///< scripts that are interpreters of scripts
constexpr std::size_t kMostHeaders = 256;

/// The bytes of a file; reads outside it fail.
class Image {
public:
    explicit Image(const std::string& path) : fd_{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)} {}
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }

    template <typename Record>
    [[nodiscard]] std::optional<Record> at(std::uint64_t offset) const
    {
        Record record{};
        const bool good =
            fd_ >= 0 && offset < std::uint64_t{1} << 40 &&
            ::pread(fd_, &record, sizeof record, static_cast<off_t>(offset)) == static_cast<ssize_t>(sizeof record);
        return good ? std::optional{record} : std::nullopt;
    }
    [[nodiscard]] std::string text(std::uint64_t offset, std::size_t size) const
    {
        std::string bytes(size, '\0');
        const ssize_t got = fd_ < 0 ? -1 : ::pread(fd_, bytes.data(), size, static_cast<off_t>(offset));
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return bytes.substr(0, bytes.find('\0'));
    }

private:
    int fd_;
};

/// The relevant properties of an executable.
struct Executable {
    std::uint16_t machine = 0;
    bool is64 = false;
    bool hasName = false; ///< is a library: the loader itself, for example
    std::string loader{}; ///< the program interpreter, empty in static programs
};

template <typename Dynamic>
bool hasLibraryName(const Image& image, std::uint64_t offset, std::uint64_t size)
{
    for (std::uint64_t at = 0; at + sizeof(Dynamic) <= size && at < 65536; at += sizeof(Dynamic)) {
        const auto entry = image.at<Dynamic>(offset + at);
        if (!entry || entry->d_tag == DT_NULL)
            return false;
        if (entry->d_tag == DT_SONAME)
            return true;
    }
    return false;
}

template <typename Header, typename Segment, typename Dynamic>
std::optional<Executable> executableIn(const Image& image)
{
    const auto header = image.at<Header>(0);
    if (!header)
        return std::nullopt;
    Executable found{.machine = header->e_machine, .is64 = sizeof(Header) == sizeof(Elf64_Ehdr)};
    for (std::size_t i = 0; i < std::min<std::size_t>(header->e_phnum, kMostHeaders); ++i) {
        const auto segment = image.at<Segment>(std::uint64_t{header->e_phoff} + i * sizeof(Segment));
        if (segment && segment->p_type == PT_INTERP)
            found.loader = image.text(segment->p_offset,
                                      static_cast<std::size_t>(std::min<std::uint64_t>(segment->p_filesz, 4096)));
        if (segment && segment->p_type == PT_DYNAMIC)
            found.hasName = hasLibraryName<Dynamic>(image, segment->p_offset, segment->p_filesz);
    }
    return found;
}

std::optional<Executable> executableIn(const Image& image)
{
    const std::string start = image.text(0, SELFMAG + 1);
    if (start.size() <= SELFMAG || !start.starts_with(ELFMAG))
        return std::nullopt;
    if (start.back() == static_cast<char>(ELFCLASS64))
        return executableIn<Elf64_Ehdr, Elf64_Phdr, Elf64_Dyn>(image);
    return executableIn<Elf32_Ehdr, Elf32_Phdr, Elf32_Dyn>(image);
}

/// The kernel gives such a program rights that its caller lacks, and the loader then preloads nothing.
bool gainsRights(const std::string& program)
{
    struct stat found {};
    if (::stat(program.c_str(), &found) != 0)
        return false;
    if ((found.st_mode & S_ISUID) != 0 && found.st_uid != geteuid())
        return true;
    if ((found.st_mode & (S_ISGID | S_IXGRP)) == (S_ISGID | S_IXGRP) && found.st_gid != getegid())
        return true;
    return geteuid() != 0 && ::getxattr(program.c_str(), "security.capability", nullptr, 0) > 0;
}

bool hasLibrary(const std::string& preload, bool is64)
{
    const std::vector<std::string> folders = is64 ? std::vector<std::string>{"lib/x86_64-linux-gnu", "lib64"}
                                                  : std::vector<std::string>{"lib/i386-linux-gnu", "lib32"};
    return std::ranges::any_of(folders, [&](const std::string& folder) {
        std::error_code ignored;
        return fs::exists(preload + '/' + folder + '/' + kLibraryName, ignored);
    });
}

std::string whyNot(const Executable& executable, const std::string& preload)
{
    const bool isOurs = executable.machine == (executable.is64 ? EM_X86_64 : EM_386);
    if (!isOurs)
        return "is not a program for i386 or x86-64";
    if (executable.loader.empty())
        return executable.hasName ? "" : "is statically linked";
    if (!fs::path{executable.loader}.filename().string().starts_with("ld-linux"))
        return "uses another C library (" + executable.loader + ')';
    const std::string bits = executable.is64 ? "64-bit" : "32-bit";
    return hasLibrary(preload, executable.is64)
               ? ""
               : "is a " + bits + " program, and the " + bits + " preload library is not installed";
}

/// The interpreter on a script's first line; behind "env" the program that it starts.
std::string interpreterIn(const std::string& line)
{
    std::vector<std::string> parts = words(line.substr(0, line.find('\n')));
    if (parts.size() > 1 && fs::path{parts[0]}.filename() == "env") {
        const auto isProgram = [](const std::string& word) {
            return !word.starts_with('-') && word.find('=') == std::string::npos;
        };
        const auto program = std::find_if(parts.begin() + 1, parts.end(), isProgram);
        return program == parts.end() ? parts[0] : findProgram(*program);
    }
    return parts.empty() ? "" : parts[0];
}

std::string whyNot(const std::string& program, const std::string& preload, int depth)
{
    struct stat found {};
    if (::stat(program.c_str(), &found) != 0 || !S_ISREG(found.st_mode))
        return {};
    const Image image{program};
    const std::string start = image.text(0, 256);
    if (start.starts_with("#!")) { // the kernel ignores a script's own set-user-ID
        const std::string interpreter = interpreterIn(start.substr(2));
        const std::string why = depth == 0 ? "" : whyNot(interpreter, preload, depth - 1);
        return why.empty() ? why : "is a script, and its interpreter " + interpreter + ' ' + why;
    }
    if (gainsRights(program))
        return "runs with rights that its file gives it (set-user-ID, set-group-ID or capabilities)";
    const std::optional<Executable> executable = executableIn(image);
    return executable ? whyNot(*executable, preload) : "";
}

} // namespace

std::string whyNotSimulated(const std::string& program, const std::string& preload)
{
    return whyNot(program, preload, kDeepest);
}

std::string findProgram(const std::string& name)
{
    if (name.find('/') != std::string::npos)
        return name;
    const char* const folders = std::getenv("PATH");
    const std::string path = folders == nullptr ? "/usr/bin:/bin" : folders;
    for (std::size_t at = 0; at <= path.size();) {
        const std::size_t end = std::min(path.find(':', at), path.size());
        std::string file = (end == at ? "." : path.substr(at, end - at)) + '/' + name;
        std::error_code ignored;
        const bool isOther = !name.empty() && fs::is_directory(file, ignored); // no name is none that is missing
        if (access(file.c_str(), X_OK) == 0 && !isOther)
            return file;
        at = end + 1;
    }
    return name;
}

} // namespace hxsim
