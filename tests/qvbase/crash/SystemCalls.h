// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Sees the system calls that a program makes on the files of one folder: records what changes them, and makes the
/// calls fail on demand.
///
/// A shared library of its own that stands before the C library in the order in which symbols are looked up, so that it
/// gets the calls of Qt and of the library under test, not only those of the test. It serves one thread.
namespace calls {

/// Something that happened to a file, or a mark that the test has set between two such.
struct Event {
    enum Kind { Found, Create, Write, Truncate, Sync, Rename, Remove, SyncFolder, Mark };
    Kind kind;
    int file; ///< Number of the file, kept through renames; of a mark: what the test gave.
    std::int64_t offset; ///< Of a write, in bytes; of a truncation: the new size.
    std::string bytes; ///< Of a write: what was written; of a file found: all of it.
    std::string name; ///< Of a file found, made, renamed or removed: the name within the folder.
    std::string newName; ///< Of a rename.
};

/// Which of the calls fails, and how.
struct Fault {
    enum Calls {
        Any, ///< Every call on a file.
        Changing, ///< Those that need room: creating, writing, truncating, renaming.
        Opening, ///< Those that need a file handle.
        Interruptible, ///< Those that a signal may interrupt.
        Transferring ///< Reads and writes: half the bytes are transferred, the call succeeds.
    };
    Calls calls = Any;
    int error = 0; ///< The errno value, unless the call is merely short.
    long first = 0; ///< The first call to fail, counted from 0 among those of the kind.
    long count = 0; ///< How many fail in a row; 0: none does.
};

#define CALLS_EXPORT __attribute__((visibility("default")))

/// From now on watches the files directly in @p folder, an absolute path without links; those that are there
/// are found, in the state of having been synced. Forgets what was before.
CALLS_EXPORT void watch(std::string const& folder);
CALLS_EXPORT void stopWatching();

/// What happened since watch(), in order.
CALLS_EXPORT std::vector<Event> const& events();
CALLS_EXPORT void mark(int number);

/// Counts from now on the calls that @p fault speaks of, and makes them fail.
CALLS_EXPORT void inject(Fault const& fault);
/// The cause is gone. Returns how many calls of the kind were made since inject(), failed ones included.
CALLS_EXPORT long heal();

/// Does @p act before the call of that number, counted from 0 from now on: what another process may do between two
/// calls. Ends with heal().
CALLS_EXPORT void intervene(long call, std::function<void()> const& act);

} // namespace calls
