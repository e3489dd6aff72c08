// Holds any lock with Lock()/Unlock() (BxMutex, BxCriticalSection) for its
// lifetime; Unlock() releases it early. BxMutexLocker and
// BxCriticalSectionLocker are this class for their locks.
//
//   BxScopedLock<BxCriticalSection> locker(m_lock);
//   ...
//   locker.Unlock();   // optional: before a slow call that needs no lock
#pragma once

#include <utility>

/// Holds any lock with Lock()/Unlock() (BxMutex, BxCriticalSection) for its lifetime; Unlock() releases it early.
template <class TLock>
class BxScopedLock
{
public:
    /// Blocks until `lock` is held; the destructor releases it unless Unlock() did. `lock` must outlive this object.
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
