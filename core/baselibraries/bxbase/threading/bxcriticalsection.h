// A recursive lock, as a Win32 critical section is: the thread that holds it
// may take it again and must release it as often as it took it.
//
//   BxCriticalSection m_lock;     // guards m_items
//   {
//       BxCriticalSectionLocker locker(m_lock);
//       m_items.push_back(item);
//   }
//
// It satisfies the standard Lockable requirements, so std::lock_guard and
// std::unique_lock work with it too.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <mutex>

class BXBASE_API BxCriticalSection
{
public:
    BxCriticalSection() = default;
    BxCriticalSection(const BxCriticalSection&) = delete;
    BxCriticalSection& operator=(const BxCriticalSection&) = delete;

    void Lock() { m_mutex.lock(); }
    bool TryLock() { return m_mutex.try_lock(); }
    void Unlock() { m_mutex.unlock(); }

    // Lockable
    void lock() { m_mutex.lock(); }
    bool try_lock() { return m_mutex.try_lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a BxCriticalSection for the lifetime of the locker.
class BxCriticalSectionLocker
{
public:
    explicit BxCriticalSectionLocker(BxCriticalSection& lock) : m_lock(lock) { m_lock.Lock(); }
    ~BxCriticalSectionLocker() { m_lock.Unlock(); }
    BxCriticalSectionLocker(const BxCriticalSectionLocker&) = delete;
    BxCriticalSectionLocker& operator=(const BxCriticalSectionLocker&) = delete;

private:
    BxCriticalSection& m_lock;
};
