// A plain, non-recursive lock. Cheaper than BxCriticalSection; use it where a
// thread never re-enters the lock it holds.
//
//   BxMutex m_lock;               // guards m_queue
//   {
//       BxMutexLocker locker(m_lock);
//       m_queue.push_back(item);
//   }
//
// It satisfies the standard Lockable requirements, so std::lock_guard,
// std::unique_lock and std::condition_variable_any work with it too.
// Taking it twice on one thread is undefined, as for std::mutex.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <mutex>
#include <utility>

class BXBASE_API BxMutex
{
public:
    BxMutex() = default;
    BxMutex(const BxMutex&) = delete;
    BxMutex& operator=(const BxMutex&) = delete;

    /// Blocks until the lock is held by the calling thread.
    void Lock() { m_mutex.lock(); }
    /// Takes the lock if it is free; true when it was taken.
    bool TryLock() { return m_mutex.try_lock(); }
    /// Releases the lock; the caller must hold it.
    void Unlock() { m_mutex.unlock(); }

    // Lockable
    void lock() { m_mutex.lock(); }
    bool try_lock() { return m_mutex.try_lock(); }
    void unlock() { m_mutex.unlock(); }

    /// The wrapped standard mutex, for use with std::condition_variable.
    std::mutex& GetNative() { return m_mutex; }

private:
    std::mutex m_mutex;
};

/// Holds a BxMutex for the lifetime of the locker.
class BxMutexLocker
{
public:
    explicit BxMutexLocker(BxMutex& lock) : m_lock(lock) { m_lock.Lock(); }
    ~BxMutexLocker() { m_lock.Unlock(); }
    BxMutexLocker(const BxMutexLocker&) = delete;
    BxMutexLocker& operator=(const BxMutexLocker&) = delete;

private:
    BxMutex& m_lock;
};

/// Holds any lock with Lock()/Unlock() (BxMutex, BxCriticalSection) for its
/// lifetime; Unlock() releases it early.
///
///   BxScopedLock<BxCriticalSection> locker(m_lock);
template <class TLock>
class BxScopedLock
{
public:
    explicit BxScopedLock(TLock& lock) : m_lock(&lock) { m_lock->Lock(); }
    ~BxScopedLock() { Unlock(); }
    BxScopedLock(const BxScopedLock&) = delete;
    BxScopedLock& operator=(const BxScopedLock&) = delete;

    /// Releases the lock before the end of the scope (once; later calls do nothing).
    void Unlock()
    {
        if (m_lock)
            std::exchange(m_lock, nullptr)->Unlock();
    }

private:
    TLock* m_lock;
};
