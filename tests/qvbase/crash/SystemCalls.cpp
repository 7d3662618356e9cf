// SPDX-License-Identifier: LGPL-2.1-or-later
#include "SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using calls::Event;
using calls::Fault;

/// A file by what stays the same when it is renamed or a descriptor is duplicated.
using Identity = std::pair<dev_t, ino_t>;

struct State {
    bool watching = false;
    std::string folder;
    Identity folderIdentity;
    std::map<Identity, int> files;
    int nextFile = 0;
    std::vector<Event> events;
    Fault fault;
    long made = 0;
    long intervention = 0;
    std::function<void()> act;
};

State& state()
{
    static State s;
    return s;
}

/// The function of this name in the library behind this one: the C library, as a rule.
template <class Function> Function* next(char const* name)
{
    void* const found = dlsym(RTLD_NEXT, name);
    if (!found)
        std::abort();
    return reinterpret_cast<Function*>(found);
}

#define CALLS_NEXT(function)                                                                                           \
    (*[] {                                                                                                             \
        static auto* const f = next<decltype(function)>(#function);                                                    \
        return f;                                                                                                      \
    }())

bool identify(int fd, Identity& identity)
{
    struct stat64 status = {};
    int const before = errno;
    bool const ok = CALLS_NEXT(fstat64)(fd, &status) == 0;
    errno = before;
    identity = {status.st_dev, status.st_ino};
    return ok;
}

bool identify(char const* path, Identity& identity)
{
    struct stat64 status = {};
    int const before = errno;
    bool const ok = CALLS_NEXT(stat64)(path, &status) == 0;
    errno = before;
    identity = {status.st_dev, status.st_ino};
    return ok;
}

/// The name within the watched folder; empty for every other path.
std::string nameOf(int folderFd, char const* path)
{
    State const& s = state();
    if (!s.watching || !path)
        return {};
    std::string whole = path;
    if (whole.front() != '/' && folderFd != AT_FDCWD) {
        Identity identity;
        return identify(folderFd, identity) && identity == s.folderIdentity ? whole : std::string();
    }
    std::string const prefix = s.folder + '/';
    return whole.compare(0, prefix.size(), prefix) == 0 ? whole.substr(prefix.size()) : std::string();
}

constexpr int noFile = -1;
constexpr int theFolder = -2;

/// The number of the watched file, theFolder, or noFile.
int fileOf(int fd)
{
    State const& s = state();
    Identity identity;
    if (!s.watching || !identify(fd, identity))
        return noFile;
    if (identity == s.folderIdentity)
        return theFolder;
    auto const found = s.files.find(identity);
    return found == s.files.end() ? noFile : found->second;
}

int fileOf(std::string const& name)
{
    State const& s = state();
    Identity identity;
    if (name.empty() || !identify((s.folder + '/' + name).c_str(), identity))
        return noFile;
    auto const found = s.files.find(identity);
    return found == s.files.end() ? noFile : found->second;
}

int remember(Identity const& identity)
{
    State& s = state();
    auto const added = s.files.emplace(identity, s.nextFile);
    s.nextFile += added.second;
    return added.first->second;
}

/// Its number in the file system may serve another file soon.
void forget(int file)
{
    auto& files = state().files;
    auto const found = std::find_if(files.begin(), files.end(), [file](auto const& f) { return f.second == file; });
    if (found != files.end())
        files.erase(found);
}

void record(Event::Kind kind, int file, std::int64_t offset = 0, std::string bytes = {}, std::string name = {},
    std::string newName = {})
{
    state().events.push_back({kind, file, offset, std::move(bytes), std::move(name), std::move(newName)});
}

void find(std::filesystem::path const& path)
{
    Identity identity;
    if (!identify(path.c_str(), identity))
        return;
    std::ifstream file(path, std::ios::binary);
    std::string const bytes(std::istreambuf_iterator<char>(file), {});
    record(Event::Found, remember(identity), 0, bytes, path.filename());
}

/// Whether this call is one that is to fail now. Each call asks once for each class it belongs to.
bool strikes(std::initializer_list<Fault::Calls> classes)
{
    State& s = state();
    if (std::find(classes.begin(), classes.end(), s.fault.calls) == classes.end())
        return false;
    long const number = s.made++;
    if (s.act && number == s.intervention)
        std::exchange(s.act, {})();
    return s.fault.count > 0 && number >= s.fault.first && number - s.fault.first < s.fault.count;
}

/// For calls that are not short but fail.
bool fails(std::initializer_list<Fault::Calls> classes)
{
    if (!strikes(classes))
        return false;
    errno = state().fault.error;
    return true;
}

using C = Fault::Calls;

/// How many of @p size bytes this call may transfer; -1 when it fails.
ssize_t allowed(size_t size, std::initializer_list<C> classes)
{
    if (state().fault.calls == C::Transferring)
        return static_cast<ssize_t>(size > 1 && strikes({C::Transferring}) ? size / 2 : size);
    return fails(classes) ? -1 : static_cast<ssize_t>(size);
}

/// Where the next write through this descriptor goes.
std::int64_t writeOffset(int fd)
{
    if (!(fcntl(fd, F_GETFL) & O_APPEND))
        return CALLS_NEXT(lseek64)(fd, 0, SEEK_CUR);
    struct stat64 status = {};
    return CALLS_NEXT(fstat64)(fd, &status) == 0 ? status.st_size : 0;
}

template <class Open> int openWatched(int folderFd, char const* path, int flags, Open open)
{
    std::string const name = nameOf(folderFd, path);
    if (name.empty())
        return open();
    bool const creating = flags & O_CREAT;
    if (creating ? fails({C::Any, C::Opening, C::Interruptible, C::Changing})
                 : fails({C::Any, C::Opening, C::Interruptible}))
        return -1;
    Identity identity;
    bool const existed = identify((state().folder + '/' + name).c_str(), identity);
    int const fd = open();
    if (fd < 0 || !identify(fd, identity) || (flags & O_DIRECTORY))
        return fd;
    int const file = remember(identity);
    if (!existed)
        record(Event::Create, file, 0, {}, name);
    if (existed && (flags & O_TRUNC))
        record(Event::Truncate, file);
    return fd;
}

template <class Write> ssize_t writeWatched(int fd, void const* data, size_t size, std::int64_t offset, Write write)
{
    ssize_t const allowedSize = allowed(size, {C::Any, C::Changing, C::Interruptible});
    if (allowedSize < 0)
        return -1;
    ssize_t const written = write(static_cast<size_t>(allowedSize));
    if (written > 0)
        record(Event::Write, fileOf(fd), offset,
            std::string(static_cast<char const*>(data), static_cast<size_t>(written)));
    return written;
}

template <class Truncate> int truncateWatched(int file, std::int64_t size, Truncate truncate)
{
    if (file == noFile)
        return truncate();
    if (fails({C::Any, C::Changing, C::Interruptible}))
        return -1;
    int const result = truncate();
    if (result == 0)
        record(Event::Truncate, file, size);
    return result;
}

template <class Sync> int syncWatched(int fd, Sync sync)
{
    int const file = fileOf(fd);
    if (file == noFile)
        return sync();
    if (fails({C::Any, C::Interruptible}))
        return -1;
    int const result = sync();
    if (result == 0)
        record(file == theFolder ? Event::SyncFolder : Event::Sync, file);
    return result;
}

template <class Rename> int renameWatched(int from, char const* oldPath, int to, char const* newPath, Rename rename)
{
    std::string const name = nameOf(from, oldPath);
    std::string const newName = nameOf(to, newPath);
    if (name.empty() || newName.empty())
        return rename();
    if (fails({C::Any, C::Changing}))
        return -1;
    int const replaced = fileOf(newName);
    int const file = fileOf(name);
    int const result = rename();
    if (result != 0)
        return result;
    record(Event::Rename, file, 0, {}, name, newName);
    if (replaced != file)
        forget(replaced);
    return result;
}

template <class Remove> int removeWatched(int folderFd, char const* path, Remove remove)
{
    std::string const name = nameOf(folderFd, path);
    if (name.empty())
        return remove();
    if (fails({C::Any}))
        return -1;
    int const file = fileOf(name);
    int const result = remove();
    if (result == 0) {
        record(Event::Remove, file, 0, {}, name);
        forget(file);
    }
    return result;
}

template <class Read> ssize_t readWatched(int fd, size_t size, Read read)
{
    ssize_t const allowedSize
        = fileOf(fd) == noFile ? static_cast<ssize_t>(size) : allowed(size, {C::Any, C::Interruptible});
    return allowedSize < 0 ? -1 : read(static_cast<size_t>(allowedSize));
}

template <class Ask> int askWatched(bool isWatched, Ask ask)
{
    return isWatched && fails({C::Any}) ? -1 : ask();
}

mode_t modeOf(int flags, va_list arguments)
{
    return flags & (O_CREAT | O_TMPFILE) ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

} // namespace

namespace calls {

void watch(std::string const& folder)
{
    State& s = state();
    s = {};
    s.folder = folder;
    s.watching = identify(folder.c_str(), s.folderIdentity);
    for (auto const& entry : std::filesystem::directory_iterator(folder))
        find(entry.path());
}

void stopWatching()
{
    state() = {};
}

std::vector<Event> const& events()
{
    return state().events;
}

void mark(int number)
{
    record(Event::Mark, number);
}

void inject(Fault const& fault)
{
    state().fault = fault;
    state().made = 0;
}

void intervene(long call, std::function<void()> const& act)
{
    inject({});
    state().intervention = call;
    state().act = act;
}

long heal()
{
    state().fault = {};
    state().act = {};
    return state().made;
}

} // namespace calls

// The names below are the C library's, in the order of its manual: opening, moving bytes, syncing, names, asking.

extern "C" {

#define CALLS_OPEN(function)                                                                                           \
    CALLS_EXPORT int function(char const* path, int flags, ...)                                                        \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        mode_t const mode = modeOf(flags, arguments);                                                                  \
        va_end(arguments);                                                                                             \
        return openWatched(AT_FDCWD, path, flags, [=] { return CALLS_NEXT(function)(path, flags, mode); });            \
    }
CALLS_OPEN(open)
CALLS_OPEN(open64)

#define CALLS_OPENAT(function)                                                                                         \
    CALLS_EXPORT int function(int folder, char const* path, int flags, ...)                                            \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        mode_t const mode = modeOf(flags, arguments);                                                                  \
        va_end(arguments);                                                                                             \
        return openWatched(folder, path, flags, [=] { return CALLS_NEXT(function)(folder, path, flags, mode); });      \
    }
CALLS_OPENAT(openat)
CALLS_OPENAT(openat64)

CALLS_EXPORT int creat(char const* path, mode_t mode)
{
    return open(path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}

CALLS_EXPORT int close(int fd)
{
    // The descriptor is gone even when close() reports an error.
    bool const failing = fileOf(fd) != noFile && fails({C::Any, C::Interruptible});
    int const error = errno;
    int const result = CALLS_NEXT(close)(fd);
    if (!failing)
        return result;
    errno = error;
    return -1;
}

CALLS_EXPORT ssize_t read(int fd, void* data, size_t size)
{
    return readWatched(fd, size, [=](size_t n) { return CALLS_NEXT(read)(fd, data, n); });
}

CALLS_EXPORT ssize_t pread(int fd, void* data, size_t size, off_t offset)
{
    return readWatched(fd, size, [=](size_t n) { return CALLS_NEXT(pread)(fd, data, n, offset); });
}

CALLS_EXPORT ssize_t pread64(int fd, void* data, size_t size, off64_t offset)
{
    return readWatched(fd, size, [=](size_t n) { return CALLS_NEXT(pread64)(fd, data, n, offset); });
}

CALLS_EXPORT ssize_t write(int fd, void const* data, size_t size)
{
    auto const go = [=](size_t n) { return CALLS_NEXT(write)(fd, data, n); };
    return fileOf(fd) == noFile ? go(size) : writeWatched(fd, data, size, writeOffset(fd), go);
}

CALLS_EXPORT ssize_t pwrite(int fd, void const* data, size_t size, off_t offset)
{
    auto const go = [=](size_t n) { return CALLS_NEXT(pwrite)(fd, data, n, offset); };
    return fileOf(fd) == noFile ? go(size) : writeWatched(fd, data, size, offset, go);
}

CALLS_EXPORT ssize_t pwrite64(int fd, void const* data, size_t size, off64_t offset)
{
    auto const go = [=](size_t n) { return CALLS_NEXT(pwrite64)(fd, data, n, offset); };
    return fileOf(fd) == noFile ? go(size) : writeWatched(fd, data, size, offset, go);
}

CALLS_EXPORT ssize_t writev(int fd, iovec const* parts, int count)
{
    if (fileOf(fd) == noFile)
        return CALLS_NEXT(writev)(fd, parts, count);
    std::string joined;
    for (int i = 0; i < count; ++i)
        joined.append(static_cast<char const*>(parts[i].iov_base), parts[i].iov_len);
    return write(fd, joined.data(), joined.size());
}

CALLS_EXPORT int ftruncate(int fd, off_t size) noexcept
{
    return truncateWatched(fileOf(fd), size, [=] { return CALLS_NEXT(ftruncate)(fd, size); });
}

CALLS_EXPORT int ftruncate64(int fd, off64_t size) noexcept
{
    return truncateWatched(fileOf(fd), size, [=] { return CALLS_NEXT(ftruncate64)(fd, size); });
}

CALLS_EXPORT int truncate(char const* path, off_t size) noexcept
{
    return truncateWatched(fileOf(nameOf(AT_FDCWD, path)), size, [=] { return CALLS_NEXT(truncate)(path, size); });
}

CALLS_EXPORT int truncate64(char const* path, off64_t size) noexcept
{
    return truncateWatched(fileOf(nameOf(AT_FDCWD, path)), size, [=] { return CALLS_NEXT(truncate64)(path, size); });
}

CALLS_EXPORT int fsync(int fd)
{
    return syncWatched(fd, [=] { return CALLS_NEXT(fsync)(fd); });
}

CALLS_EXPORT int fdatasync(int fd)
{
    return syncWatched(fd, [=] { return CALLS_NEXT(fdatasync)(fd); });
}

CALLS_EXPORT int flock(int fd, int operation) noexcept
{
    if (fileOf(fd) != noFile && fails({C::Any, C::Interruptible}))
        return -1;
    return CALLS_NEXT(flock)(fd, operation);
}

CALLS_EXPORT int rename(char const* from, char const* to) noexcept
{
    return renameWatched(AT_FDCWD, from, AT_FDCWD, to, [=] { return CALLS_NEXT(rename)(from, to); });
}

CALLS_EXPORT int renameat(int fromFolder, char const* from, int toFolder, char const* to) noexcept
{
    return renameWatched(
        fromFolder, from, toFolder, to, [=] { return CALLS_NEXT(renameat)(fromFolder, from, toFolder, to); });
}

CALLS_EXPORT int renameat2(int fromFolder, char const* from, int toFolder, char const* to, unsigned flags) noexcept
{
    return renameWatched(
        fromFolder, from, toFolder, to, [=] { return CALLS_NEXT(renameat2)(fromFolder, from, toFolder, to, flags); });
}

CALLS_EXPORT int unlink(char const* path) noexcept
{
    return removeWatched(AT_FDCWD, path, [=] { return CALLS_NEXT(unlink)(path); });
}

CALLS_EXPORT int unlinkat(int folder, char const* path, int flags) noexcept
{
    return removeWatched(folder, path, [=] { return CALLS_NEXT(unlinkat)(folder, path, flags); });
}

CALLS_EXPORT int fstat(int fd, struct stat* status) noexcept
{
    return askWatched(fileOf(fd) != noFile, [=] { return CALLS_NEXT(fstat)(fd, status); });
}

CALLS_EXPORT int fstat64(int fd, struct stat64* status) noexcept
{
    return askWatched(fileOf(fd) != noFile, [=] { return CALLS_NEXT(fstat64)(fd, status); });
}

CALLS_EXPORT int stat(char const* path, struct stat* status) noexcept
{
    return askWatched(!nameOf(AT_FDCWD, path).empty(), [=] { return (CALLS_NEXT(stat))(path, status); });
}

CALLS_EXPORT int stat64(char const* path, struct stat64* status) noexcept
{
    return askWatched(!nameOf(AT_FDCWD, path).empty(), [=] { return (CALLS_NEXT(stat64))(path, status); });
}

CALLS_EXPORT int lstat(char const* path, struct stat* status) noexcept
{
    return askWatched(!nameOf(AT_FDCWD, path).empty(), [=] { return CALLS_NEXT(lstat)(path, status); });
}

CALLS_EXPORT int statx(int folder, char const* path, int flags, unsigned mask, struct statx* status) noexcept
{
    bool const isWatched = *path ? !nameOf(folder, path).empty() : fileOf(folder) != noFile;
    return askWatched(isWatched, [=] { return CALLS_NEXT(statx)(folder, path, flags, mask, status); });
}

} // extern "C"
