// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <mutex>

namespace qv {

/// A recursive mutex: whoever holds it may lock it again on the same thread, as a receiver does that calls back from a
/// signal emitted under it. Each lock() needs its own unlock(); prefer MutexLocker.
class Mutex {
public:
    Mutex() = default;
    Mutex(Mutex const&) = delete;
    Mutex& operator=(Mutex const&) = delete;

    void lock() { m_mutex.lock(); }
    /// Returns false at once where another thread holds the mutex.
    bool tryLock() { return m_mutex.try_lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a Mutex from construction to the end of its scope. The mutex must outlive it.
class MutexLocker {
public:
    explicit MutexLocker(Mutex& mutex)
        : m_mutex(mutex)
    {
        m_mutex.lock();
    }
    ~MutexLocker() { m_mutex.unlock(); }
    MutexLocker(MutexLocker const&) = delete;
    MutexLocker& operator=(MutexLocker const&) = delete;

private:
    Mutex& m_mutex;
};

} // namespace qv
