// Marks a thread whose identity matters to what it holds, so that while it
// waits on a pool thread it does not run other tasks in its place.
//
// A pool worker that waits for a task normally runs that task itself (see
// BxThreadPool). That is wrong for a thread that holds locks keyed by its
// thread id (data-manager locks, pending lock requests, a recursive
// BxCriticalSection it re-enters) or owns message windows: the task would
// run with that identity and could re-enter or steal what the waiter holds.
// Such a thread carries a raised marker; a waiting pool thread with a raised
// marker just waits (the pool compensates for the blocked worker).
//
//   {
//       BxNoHelpScope noHelp;          // the calling thread, for this block
//       child->WaitUntilTerminate();   // waits; never runs child here
//   }
//
//   BxNoHelpScope::Raise(threadId);    // counted, for any thread by its id:
//   BxNoHelpScope::Lower(threadId);    // the data manager calls these when a
//                                      // thread gets its first lock and drops its last
//
// Raises are counted per thread id (GetCurrentThreadId); the marker is down
// when the count is back to zero. Lower without a matching Raise is ignored.
// A thread's raises of its own marker are counted in a thread-local counter,
// so that IsRaised costs no lock; raises for another thread are counted in a
// process-wide map, and a Lower for a thread is taken from the same place as
// its Raise was (the calling thread's own counter first when it names itself).
//
// Locks: one process-wide mutex guards the map; an atomic total of its counts
// lets IsRaised skip the mutex while the map is empty, the usual case.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <cstdint>

/// Marks the calling thread as one that must not run other tasks while it waits.
class BXBASE_API BxNoHelpScope
{
public:
    /// Raises the marker of the calling thread until the scope closes.
    BxNoHelpScope();
    ~BxNoHelpScope();
    BxNoHelpScope(const BxNoHelpScope&) = delete;
    BxNoHelpScope& operator=(const BxNoHelpScope&) = delete;

    /// Raises the marker of the thread with this id by one.
    static void Raise(std::uint32_t threadId);
    /// Lowers the marker of the thread with this id by one.
    static void Lower(std::uint32_t threadId);
    /// True while the calling thread's marker is raised.
    static bool IsRaised();

private:
    std::uint32_t m_threadId;
};
