// The process-wide pool of worker threads that runs BxTasks, by priority:
// 2 (high) before 1 (normal) before 0 (low), first in first out within one
// priority.
//
//   BxSmartPointer<BxTask> task(new CMyTask);
//   BxThreadPool::GetInstance().AddTask(task, BxThreadPool::ePriorityNormal);
//   task->WaitUntilTerminate();
//
// Workers: std::thread::hardware_concurrency() of them, at least 2 (or the
// count given to the constructor of a private pool). Waiting inside a task
// cannot starve the pool:
//   - BxTask::WaitUntilTerminate on a worker runs a still queued task itself;
//   - any other real wait on a worker (BxEvent::Wait, WaitForMultipleEvents,
//     a task that runs elsewhere) counts the worker as blocked for its
//     duration (BxBlockingScope), and while work is queued and fewer than the
//     worker count are unblocked, the pool starts a compensating worker. When
//     the waits end, surplus workers park after their task; a later wait
//     reuses a parked worker, and one that no wait needed for 2 s retires.
// So fork-join nested deeper than the number of workers completes. The pool
// has at most eMaxThreads threads; beyond that, queued tasks wait for a free one.
//
// A worker that finds the queues empty yields its core a few times (tasks
// tend to come in bursts) before it sleeps; AddTask wakes a sleeping worker
// only when there is one.
//
// A queued task waited for by a worker runs on that worker's stack, so very
// deep chains of such waits need a correspondingly deep stack.
//
// An exception that leaves a task (its onException rethrew) is logged
// (category "Core.ThreadPool") and dropped.
//
// Shut-down (destructor; for the instance at process exit): tasks still
// queued are dropped without running, their termination events set; running
// tasks are waited for, then every worker is joined.
//
// Locks: m_lock guards the queues, the thread list and every counter;
// m_queuedCount and m_stoppingFlag mirror them as atomics (written under the
// lock) for workers that spin outside it.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxtask.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

/// The process-wide pool of worker threads that runs BxTasks, by priority: 2 (high) before 1 (normal) before 0
/// (low), first in first out within one priority.
class BXBASE_API BxThreadPool
{
public:
    enum EPriority
    {
        ePriorityLow = 0,
        ePriorityNormal = 1,
        ePriorityHigh = 2
    };
    static constexpr unsigned eMaxThreads = 256;

    /// The process-wide pool, made on first use.
    static BxThreadPool& GetInstance();

    /// A private pool with workerCount workers (at least 1).
    explicit BxThreadPool(unsigned workerCount);
    ~BxThreadPool();
    BxThreadPool(const BxThreadPool&) = delete;
    BxThreadPool& operator=(const BxThreadPool&) = delete;

    /// Queues the task with priority 0, 1 or 2. False when the task is already
    /// queued or running (a task is in a pool at most once) or the pool shuts
    /// down. A null task or another priority throws BxExceptionPreconditionViolation.
    bool AddTask(BxSmartPointer<BxTask> task, int priority = ePriorityNormal);

    /// The number of workers the pool keeps busy.
    unsigned GetWorkerCount() const { return m_workerCount; }
    /// Threads the pool has now, compensating workers included.
    unsigned GetThreadCount() const;
    /// Tasks waiting in the queues.
    std::size_t GetQueuedCount() const;

    /// True on a worker thread of any pool.
    static bool IsPoolThread();

private:
    friend class BxTask;
    struct SWorker
    {
        std::thread thread;
        bool finished = false; ///< the thread has left its loop and may be joined
    };

    static void runTask(BxTask& task);
    static void onBlocking(void* pool, bool blocked);

    void workerMain(SWorker* self);
    /// Waits briefly, without the lock, for work; true when some arrived.
    bool spinForWork(std::unique_lock<std::mutex>& lock);
    BxSmartPointer<BxTask> popLocked();
    bool hasWorkLocked() const;
    /// When work is queued: wakes a sleeping worker, or else grows (below).
    void wakeForWorkLocked();
    /// Wakes a parked worker or starts one when work is queued and too few workers are unblocked.
    void growLocked();
    /// Workers that take tasks: neither blocked nor parked (wake-ups under way count).
    unsigned activeLocked() const;
    /// Parks a surplus worker; true when it was woken for work, false when it should retire.
    bool parkLocked(std::unique_lock<std::mutex>& lock);
    void reapLocked();

    const unsigned m_workerCount;
    mutable std::mutex m_lock;
    std::condition_variable m_wake;                             ///< idle workers wait here
    std::condition_variable m_unpark;                           ///< parked surplus workers wait here
    std::array<std::deque<BxSmartPointer<BxTask>>, 3> m_queues; ///< by priority
    std::list<SWorker> m_threads;
    unsigned m_threadCount = 0; ///< threads in their loop
    unsigned m_blocked = 0;     ///< workers inside a blocking wait
    unsigned m_idle = 0;        ///< workers waiting for work
    unsigned m_parked = 0;      ///< surplus workers waiting to be reused or to retire
    unsigned m_unparkTokens = 0; ///< parked workers asked to come back, not yet awake
    bool m_stopping = false;
    std::atomic<std::size_t> m_queuedCount{0}; ///< mirror of the queues' size for spinning workers
    std::atomic<bool> m_stoppingFlag{false};    ///< mirror of m_stopping for spinning workers
    static constexpr unsigned kSpinRounds = 64;
    static constexpr unsigned kParkMilliseconds = 2000;
};
