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
#include <bxbase/threading/bxlockt.h>
#include <bxbase/threading/bxscopedlock.h>

#include <mutex>

/// A plain, non-recursive lock.
class BXBASE_API BxMutex : public BxLockT<std::mutex>
{
public:
    /// The wrapped standard mutex, for use with std::condition_variable.
    std::mutex& GetNative() { return m_mutex; }
};

/// Holds a BxMutex for the lifetime of the locker.
using BxMutexLocker = BxScopedLock<BxMutex>;
