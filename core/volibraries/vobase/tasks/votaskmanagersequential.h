// A first-in-first-out queue of ready-made tasks, run one after another by a
// single worker thread that exists only while the queue has work.
//
//   BxSmartPointer<VoTaskManagerSequential> log(new VoTaskManagerSequential(
//       VoTaskManagerSequential::EThreadPriority::eTP_Normal));
//   log->AddTask(BxSmartPointer<ITaskSimple>(new CWriteLine(L"first")));
//   log->AddTask(BxSmartPointer<ITaskSimple>(new CWriteLine(L"second")));   // runs after the first
//
// m_lock guards m_tasks and m_workerRunning; it is never held while a task
// runs or a worker starts.
#pragma once

#include <vobase/tasks/itasksimple.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxthread.h>

#include <deque>

class VoThreadSequentialWorker;

/// A first-in-first-out queue of ready-made tasks, run one after another by a single worker thread that exists
/// only while the queue has work.
class VOBASE_API VoTaskManagerSequential : public BxReferenceCountedObject, private INonCopyable
{
public:
    /// The priority the worker threads run at.
    using EThreadPriority = BxThread<VoThreadSequentialWorker, BxThreadPolicyMFC>::EThreadPriority;

    /// priority: of the worker threads.
    explicit VoTaskManagerSequential(EThreadPriority priority);
    ~VoTaskManagerSequential() override = default;

    /// Appends the task and starts a worker when none runs.
    void AddTask(const BxSmartPointer<ITaskSimple>& task);

protected:
    friend class VoThreadSequentialWorker;

    /// Removes and returns the oldest task; empty (and the queue idle) when
    /// there is none. An empty entry throws BxException: the calling
    /// worker ends and a new one takes over the tasks behind it.
    BxSmartPointer<ITaskSimple> GetNextTask();

private:
    /// Starts a self-deleting worker (m_workerRunning is set already).
    void startWorker();

    std::deque<BxSmartPointer<ITaskSimple>> m_tasks; ///< oldest first; guarded by m_lock
    EThreadPriority m_priority;
    BxCriticalSection m_lock;
    bool m_workerRunning = false;                    ///< a worker exists; guarded by m_lock
};
