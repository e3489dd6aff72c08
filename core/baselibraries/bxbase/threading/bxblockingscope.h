// Marks a stretch of code in which the calling thread blocks (waits for an
// event or for another task), so that the owner of the thread can react.
//
// The thread pool installs a hook on each of its workers: when a worker
// blocks inside a task, the pool may start a compensating worker so that
// queued tasks - perhaps the very task being waited for - keep running. Threads
// without a hook pay one thread-local read.
//
//   {
//       BxBlockingScope blocking;   // hook(context, true)
//       cv.wait(lock, ...);
//   }                               // hook(context, false)
//
// BxEvent::Wait and BxTask::WaitUntilTerminate open a scope only when they
// really have to wait. Scopes nest; only the outermost one calls the hook.
#pragma once

#include <bxbase/bxbaseapi.h>

/// Marks a stretch of code in which the calling thread blocks (waits for an event or for another task), so that
/// the owner of the thread can react.
class BXBASE_API BxBlockingScope
{
public:
    /// Called with blocked = true when the thread starts to block, false when it goes on.
    using Hook = void (*)(void* context, bool blocked);

    BxBlockingScope();
    ~BxBlockingScope();
    BxBlockingScope(const BxBlockingScope&) = delete;
    BxBlockingScope& operator=(const BxBlockingScope&) = delete;

    /// Installs (or, with nullptr, removes) the calling thread's hook.
    static void SetThreadHook(Hook hook, void* context);

private:
    bool m_counted = false;   ///< a hook was installed when the scope opened
    bool m_outermost = false; ///< this scope called hook(context, true)
};
