// The worker thread of a VoTaskManagerSequential: takes tasks from its queue
// until none is left and runs them one by one in posting order, swallowing
// their exceptions. It holds a counted reference to its queue and deletes
// itself when its thread ends.
//
//   auto* worker = new VoThreadSequentialWorker(queue, priority);   // queue: BxSmartPointer
//   worker->SetAutoDelete(true);
//   worker->Start();
//
// Only VoTaskManagerSequential creates workers. The thread is named "VoThreadSequentialWorker".
#pragma once

#include <vobase/tasks/votaskmanagersequential.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthread.h>
#include <bxbase/threading/bxthreadapi.h>

/// The worker thread of a VoTaskManagerSequential: takes tasks from its queue until none is left and runs them
/// one by one in posting order, swallowing their exceptions.
class VOBASE_API VoThreadSequentialWorker : public BxThread<VoThreadSequentialWorker, BxThreadPolicyMFC>
{
public:
    /// A worker for `queue` (a counted reference is kept), named
    /// "VoThreadSequentialWorker", at `priority`, bound to the process affinity
    /// mask; it runs once Start is called.
    VoThreadSequentialWorker(BxSmartPointer<VoTaskManagerSequential> queue, EThreadPriority priority);
    ~VoThreadSequentialWorker() = default;

    /// The process affinity mask read when the worker was built (0 when unknown).
    DWORD_PTR GetProcessAffinityMask() const noexcept { return m_processAffinityMask; }

private:
    /// The thread function: 1 when the queue was drained, 0 when it held an empty entry.
    DWORD work();

    BxSmartPointer<VoTaskManagerSequential> m_queue;
    DWORD_PTR m_processAffinityMask;
    BxEvent m_event;
};
