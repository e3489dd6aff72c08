// A keyed, coalescing work queue with one worker thread at a time. Callers
// post wide-string keys; when the worker picks a key up, the factory turns it
// into a task and the worker runs it. A key posted again while it is still
// pending is not queued twice; pending keys run in no particular order.
//
//   BxSmartPointer<VoTaskManagerPooling> thumbnails(new VoTaskManagerPooling(
//       [](const CStringT<wchar_t>& path) { return BxSmartPointer<ITaskSimple>(new CThumbnail(path)); },
//       VoTaskManagerPooling::EThreadPriority::eTP_BelowNormal));
//   thumbnails->AddTask(L"a.png");
//   thumbnails->AddTask(L"a.png");   // still pending: one run
//
// The queue is idle (no worker) or draining (one worker, which ends when it
// finds no key left). m_lock guards m_pending and m_workerRunning; it is never
// held while a task runs or a worker starts.
#pragma once

#include <vobase/tasks/itasksimple.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxthread.h>

#include <functional>

class VoThreadPoolingWorker;

/// A keyed, coalescing work queue with one worker thread at a time.
class VOBASE_API VoTaskManagerPooling : public BxReferenceCountedObject, private INonCopyable
{
public:
    /// The priority the worker threads run at.
    using EThreadPriority = BxThread<VoThreadPoolingWorker, BxThreadPolicyMFC>::EThreadPriority;
    /// Turns a key into the task that handles it; called on the worker thread,
    /// outside the queue's lock. It must not return null.
    using Factory = std::function<BxSmartPointer<ITaskSimple>(const CStringT<wchar_t>&)>;

    /// factory: turns a key into its task (must not return null); priority: of the worker threads.
    VoTaskManagerPooling(const Factory& factory, EThreadPriority priority);
    ~VoTaskManagerPooling() override = default;

    /// Marks the key pending and starts a worker when none runs.
    void AddTask(const CStringT<wchar_t>& key);

protected:
    friend class VoThreadPoolingWorker;

    /// Takes one pending key and makes its task; empty (and the queue idle)
    /// when nothing is pending. A factory that yields no task throws
    /// BxException: the calling worker ends and a new one takes over
    /// the keys left.
    BxSmartPointer<ITaskSimple> GetNextTask();

private:
    /// Starts a self-deleting worker (m_workerRunning is set already).
    void startWorker();

    Factory m_factory;
    BxMap<CStringT<wchar_t>, int> m_pending; ///< the pending keys (value always 1); guarded by m_lock
    EThreadPriority m_priority;
    BxCriticalSection m_lock;
    bool m_workerRunning = false;            ///< a worker exists; guarded by m_lock
};
