// The worker thread of a VoTaskManagerPooling: takes tasks from its queue
// until none is left and runs them, swallowing their exceptions. It holds a
// counted reference to its queue and deletes itself when its thread ends.
//
//   auto* worker = new VoThreadPoolingWorker(queue, priority);   // queue: BxSmartPointer
//   worker->SetAutoDelete(true);
//   worker->Start();
//
// Only VoTaskManagerPooling creates workers. The thread is named "VoThreadPoolingWorker".
#pragma once

#include <vobase/tasks/votaskmanagerpooling.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthread.h>
#include <bxbase/threading/bxthreadapi.h>

/// The worker thread of a VoTaskManagerPooling: takes tasks from its queue until none is left and runs them,
/// swallowing their exceptions.
class VOBASE_API VoThreadPoolingWorker : public BxThread<VoThreadPoolingWorker, BxThreadPolicyMFC>
{
public:
    /// A worker for `queue` (a counted reference is kept), named
    /// "VoThreadPoolingWorker", at `priority`, bound to the process affinity
    /// mask; it runs once Start is called.
    VoThreadPoolingWorker(BxSmartPointer<VoTaskManagerPooling> queue, EThreadPriority priority);
    ~VoThreadPoolingWorker() = default;

    /// The process affinity mask read when the worker was built (0 when unknown).
    DWORD_PTR GetProcessAffinityMask() const noexcept { return m_processAffinityMask; }

private:
    /// The thread function: 1 when the queue was drained, 0 when the factory failed.
    DWORD work();

    BxSmartPointer<VoTaskManagerPooling> m_queue;
    DWORD_PTR m_processAffinityMask;
    BxEvent m_event;
};
