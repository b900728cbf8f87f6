// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/simulator/preload/PathRules.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <functional>
#include <glob.h>
#include <initializer_list>
#include <set>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

namespace {

std::string place;
std::ostream* out = nullptr;

std::string in(const std::string& name)
{
    return place + '/' + name;
}

void report(const char* what, long long result)
{
    *out << what << ' ' << result << (result < 0 ? ' ' + std::to_string(errno) : "") << '\n';
}

/// A path without the directory, so that it compares.
std::string shown(const std::string& path)
{
    return path.starts_with(place) ? "*" + path.substr(place.size()) : "elsewhere: " + path;
}

bool create(const std::string& name, const char* text = "text")
{
    std::FILE* const file = std::fopen(in(name).c_str(), "w");
    return file != nullptr && std::fputs(text, file) >= 0 && std::fclose(file) == 0;
}

std::string content(const std::string& name)
{
    char text[100]{};
    std::FILE* const file = std::fopen(in(name).c_str(), "r");
    if (file == nullptr)
        return "none";
    (void)!std::fread(text, 1, sizeof text - 1, file);
    std::fclose(file);
    return text;
}

long long size(const std::string& path)
{
    struct stat found {};
    return stat(path.c_str(), &found) == 0 ? static_cast<long long>(found.st_size) : -1;
}

void newFiles()
{
    report("create", create("a") ? 0 : -1);
    *out << content("a") << '\n';
    report("mkdir", mkdir(in("sub").c_str(), 0755));
    report("create below", create("sub/b", "12345") ? 0 : -1);
    report("size", size(in("sub/b")));
    report("size by detour", size(in("sub/../sub/./b")));
    report("create in nothing", create("none/b") ? 0 : -1);
    report("create in a file", create("a/b") ? 0 : -1);
    report("rename", rename(in("a").c_str(), in("c").c_str()));
    report("gone", access(in("a").c_str(), F_OK));
    report("symlink", symlink("c", in("link").c_str()));
    *out << content("link") << '\n';
    report("unlink", unlink(in("link").c_str()));
    report("parent", access((place + "/..").c_str(), R_OK));
    report("by a detour to itself", access((place + "/sub/..").c_str(), R_OK));
}

/// Creates a file or directory of a random name.
void temporary(const char* call, const std::string& pattern, std::size_t suffix, const std::function<int(char*)>& make)
{
    std::string path = in(pattern);
    const int fd = make(path.data());
    const bool changed = path != in(pattern) && path.starts_with(in("t-")) && path.size() == in(pattern).size() &&
                         path.substr(path.size() - suffix) == pattern.substr(pattern.size() - suffix);
    report(call, fd < 0 ? -1 : changed);
    if (fd < 0)
        return;
    report("exists", access(path.c_str(), F_OK));
    if (fd > 0) {
        report("write", write(fd, "xyz", 3));
        close(fd);
    }
    report("size", fd > 0 ? size(path) : 0);
    report("remove", remove(path.c_str()));
}

void temporaries()
{
    temporary("mkstemp", "t-XXXXXX", 0, [](char* path) { return mkstemp(path); });
    temporary("mkstemp64", "t-XXXXXX", 0, [](char* path) { return mkstemp64(path); });
    temporary("mkostemp", "t-XXXXXX", 0, [](char* path) { return mkostemp(path, O_CLOEXEC); });
    temporary("mkostemp64", "t-XXXXXX", 0, [](char* path) { return mkostemp64(path, O_CLOEXEC); });
    temporary("mkstemps", "t-XXXXXX.txt", 4, [](char* path) { return mkstemps(path, 4); });
    temporary("mkstemps64", "t-XXXXXX.txt", 4, [](char* path) { return mkstemps64(path, 4); });
    temporary("mkostemps", "t-XXXXXX.txt", 4, [](char* path) { return mkostemps(path, 4, O_CLOEXEC); });
    temporary("mkostemps64", "t-XXXXXX.txt", 4, [](char* path) { return mkostemps64(path, 4, O_CLOEXEC); });
    temporary("mkdtemp", "t-XXXXXX", 0, [](char* path) { return mkdtemp(path) == path ? 0 : -1; });
    temporary("short pattern", "t-XX", 0, [](char* path) { return mkstemp(path); });
    temporary("nowhere", "none/t-XXXXXX", 0, [](char* path) { return mkostemp(path, 0); });
    temporary("no directory", "none/t-XXXXXX", 0, [](char* path) { return mkdtemp(path) == path ? 0 : -1; });
}

/// Sets the time of a file's last change.
void times()
{
    const auto changed = [] {
        struct stat found {};
        return stat(in("c").c_str(), &found) == 0 ? static_cast<long long>(found.st_mtime) : -1;
    };
    const std::string path = in("c");
    const timespec precise[] = {{1000, 0}, {2000, 0}};
    report("utimensat", utimensat(AT_FDCWD, path.c_str(), precise, 0));
    report("changed", changed());
    timeval coarse[] = {{1000, 0}, {3000, 0}};
    report("utimes", utimes(path.c_str(), coarse));
    report("changed", changed());
    coarse[1].tv_sec = 4000;
    report("lutimes", lutimes(path.c_str(), coarse));
    report("changed", changed());
    coarse[1].tv_sec = 5000;
    report("futimesat", futimesat(AT_FDCWD, path.c_str(), coarse));
    report("changed", changed());
    const utimbuf seconds{1000, 6000};
    report("utime", utime(path.c_str(), &seconds));
    report("changed", changed());
    report("of nothing", utime(in("none").c_str(), &seconds));
}

void attributes()
{
    char text[20]{};
    const std::string path = in("c");
    for (const auto& set : {setxattr, lsetxattr}) {
        report("setxattr", set(path.c_str(), "user.hx", "one", 3, 0));
        report("again", set(path.c_str(), "user.hx", "two", 3, XATTR_CREATE));
        report("getxattr", getxattr(path.c_str(), "user.hx", text, sizeof text));
        report("lgetxattr", lgetxattr(path.c_str(), "user.hx", text, sizeof text));
        report("listxattr", listxattr(path.c_str(), text, sizeof text) == llistxattr(path.c_str(), text, sizeof text));
        report("removexattr", (set == setxattr ? removexattr : lremovexattr)(path.c_str(), "user.hx"));
        report("again", removexattr(path.c_str(), "user.hx"));
    }
    report("of nothing", setxattr(in("none").c_str(), "user.hx", "one", 3, 0));
}

void fileSystem()
{
    struct statfs first {};
    struct statfs64 second {};
    struct statvfs third {};
    struct statvfs64 fourth {};
    report("statfs", statfs(place.c_str(), &first));
    report("statfs64", statfs64(place.c_str(), &second));
    report("statvfs", statvfs(place.c_str(), &third));
    report("statvfs64", statvfs64(place.c_str(), &fourth));
    report("statfs of nothing", statfs(in("none").c_str(), &first));
    report("pathconf", pathconf(place.c_str(), _PC_NAME_MAX));
    report("lchmod", lchmod(in("c").c_str(), 0600));
    const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    report("watch", inotify_add_watch(watch, place.c_str(), IN_CREATE));
    report("watch nothing", inotify_add_watch(watch, in("none").c_str(), IN_CREATE));
    (void)!create("watched");
    char events[1000];
    report("seen", read(watch, events, sizeof events) > 0);
    report("remove", remove(in("watched").c_str()));
    close(watch);
}

int withoutDots(const dirent* entry)
{
    return entry->d_name[0] != '.' ? 1 : 0;
}

int withoutDots64(const dirent64* entry)
{
    return entry->d_name[0] != '.' ? 1 : 0;
}

template <typename Entry>
void list(const char* call, int count, Entry** const& entries)
{
    report(call, count);
    for (int i = 0; i < count; ++i) {
        *out << "  " << entries[i]->d_name << '\n';
        std::free(entries[i]);
    }
    if (count >= 0)
        std::free(entries);
}

void lists()
{
    dirent** entries = nullptr;
    dirent64** entries64 = nullptr;
    list("scandir", scandir(place.c_str(), &entries, withoutDots, alphasort), entries);
    list("scandir64", scandir64(place.c_str(), &entries64, withoutDots64, alphasort64), entries64);
    list("scandirat", scandirat(AT_FDCWD, place.c_str(), &entries, withoutDots, alphasort), entries);
    list("scandirat64", scandirat64(AT_FDCWD, place.c_str(), &entries64, withoutDots64, alphasort64), entries64);
    list("of nothing", scandir(in("none").c_str(), &entries, withoutDots, alphasort), entries);
    list("of a file", scandir(in("c").c_str(), &entries, withoutDots, alphasort), entries);
}

template <typename Found>
void matches(const char* call, int result, Found& found, void (*release)(Found*))
{
    *out << call << ' ' << result << '\n';
    for (std::size_t i = 0; result == 0 && i < found.gl_pathc; ++i)
        *out << "  " << shown(found.gl_pathv[i]) << '\n';
    release(&found);
}

void patterns()
{
    for (const char* const pattern : {"*", "[cs]*", "sub/*", "c", "none", "*/b", "c/*"}) {
        glob_t found{};
        glob64_t found64{};
        *out << pattern << '\n';
        matches("glob", glob(in(pattern).c_str(), 0, nullptr, &found), found, globfree);
        matches("glob64", glob64(in(pattern).c_str(), GLOB_MARK, nullptr, &found64), found64, globfree64);
    }
    glob_t both{};
    report("glob", glob(in("c").c_str(), 0, nullptr, &both));
    matches("and more", glob(in("sub").c_str(), GLOB_APPEND, nullptr, &both), both, globfree);
    glob_t none{};
    const auto refuse = [](const char* path, int error) {
        *out << "cannot read " << shown(path) << ' ' << error << '\n';
        return 1;
    };
    matches("error", glob(in("c/*").c_str(), 0, refuse, &none), none, globfree);
}

std::set<std::string> visited; // directories have no order

std::string visit(const char* path, int kind)
{
    return "  " + shown(path) + ' ' + std::to_string(kind);
}

template <typename Record>
int visitPlain(const char* path, const Record* /*record*/, int kind)
{
    visited.insert(visit(path, kind));
    return 0;
}

template <typename Record>
int visitWithLevel(const char* path, const Record* record, int kind, struct FTW* where)
{
    const bool opens = kind != FTW_F || access(path, R_OK) == 0;
    visited.insert(visit(path, kind) + ' ' + std::to_string(where->level) + ' ' + (path + where->base) + ' ' +
                   (kind == FTW_F ? std::to_string(record->st_size) : "") + (opens ? "" : " cannot be opened"));
    return 0;
}

template <typename Record>
int visitNested(const char* path, const Record* /*record*/, int kind)
{
    visited.insert(visit(path, kind));
    if (kind == FTW_D)
        (void)ftw(in("sub").c_str(), visitPlain<struct stat>, 5);
    return kind == FTW_F && std::string{path}.ends_with("/b") ? 7 : 0;
}

void walk(const char* call, int result)
{
    report(call, result);
    for (const std::string& line : visited)
        *out << line << '\n';
    visited.clear();
}

void walks()
{
    walk("ftw", ftw(place.c_str(), visitPlain<struct stat>, 5));
    walk("ftw64", ftw64(place.c_str(), visitPlain<struct stat64>, 5));
    walk("nftw", nftw(place.c_str(), visitWithLevel<struct stat>, 5, FTW_PHYS | FTW_DEPTH));
    walk("nftw64", nftw64(place.c_str(), visitWithLevel<struct stat64>, 5, 0));
    walk("of a file", nftw(in("c").c_str(), visitWithLevel<struct stat>, 5, 0));
    walk("of nothing", nftw(in("none").c_str(), visitWithLevel<struct stat>, 5, 0));
    walk("nested", ftw(in("sub").c_str(), visitNested<struct stat>, 5));
    report("symlink", symlink("missing", in("sub/dangling").c_str()));
    walk("dangling", ftw(in("sub").c_str(), visitPlain<struct stat>, 5));
    walk("dangling", nftw(in("sub").c_str(), visitWithLevel<struct stat>, 5, 0));
    report("unlink", unlink(in("sub/dangling").c_str()));
}

void workingDirectory()
{
    char before[4096]{};
    (void)!getcwd(before, sizeof before);
    report("chdir to nothing", chdir(in("none").c_str()));
    report("chdir to a file", chdir(in("c").c_str()));
    report("chdir", chdir(in("sub").c_str()));
    report("relative", access("b", F_OK));
    report("relative", access("../c", F_OK));
    report("back", chdir(before));
}

} // namespace

void playPathRules(const std::string& folder, std::ostream& results)
{
    place = folder;
    out = &results;
    newFiles();
    temporaries();
    times();
    attributes();
    fileSystem();
    lists();
    patterns();
    walks();
    workingDirectory();
    for (const char* const name : {"c", "sub/b", "sub"})
        report("remove", remove(in(name).c_str()));
    lists();
}
