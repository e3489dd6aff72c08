// The common face of the library's locks: Lock, TryLock and Unlock over a
// standard mutex, plus the standard Lockable names so that std::lock_guard,
// std::unique_lock and std::condition_variable_any work with them.
// BxMutex (std::mutex) and BxCriticalSection (std::recursive_mutex) are made
// of it; use those.
#pragma once

/// The common face of the library's locks: Lock, TryLock and Unlock over a standard mutex, plus the standard
/// Lockable names so that std::lock_guard, std::unique_lock and std::condition_variable_any work with them.
template <class TNative>
class BxLockT
{
public:
    BxLockT() = default;
    BxLockT(const BxLockT&) = delete;
    BxLockT& operator=(const BxLockT&) = delete;

    /// Blocks until the lock is held by the calling thread.
    void Lock() { m_mutex.lock(); }
    /// Takes the lock if it is free; true when it was taken.
    bool TryLock() { return m_mutex.try_lock(); }
    /// Releases the lock; the caller must hold it.
    void Unlock() { m_mutex.unlock(); }

    // Lockable
    /// Lock() under the standard name, for std::lock_guard and std::unique_lock.
    void lock() { m_mutex.lock(); }
    /// TryLock() under the standard name.
    bool try_lock() { return m_mutex.try_lock(); }
    /// Unlock() under the standard name.
    void unlock() { m_mutex.unlock(); }

protected:
    ~BxLockT() = default;

    /// The native mutex; std::mutex for BxMutex (not re-entrant), std::recursive_mutex for BxCriticalSection
    /// (a thread may take it again while holding it).
    TNative m_mutex;
};
