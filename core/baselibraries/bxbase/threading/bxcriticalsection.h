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
#include <bxbase/threading/bxlockt.h>
#include <bxbase/threading/bxscopedlock.h>

#include <mutex>

class BXBASE_API BxCriticalSection : public BxLockT<std::recursive_mutex>
{
};

/// Holds a BxCriticalSection for the lifetime of the locker.
using BxCriticalSectionLocker = BxScopedLock<BxCriticalSection>;
