// The process-wide pool of worker threads that runs BxTasks with priorities
// 2 (high), 1 (normal) and 0 (low), by work stealing.
//
//   BxSmartPointer<BxTask> task(new CMyTask);
//   BxThreadPool::GetInstance().AddTask(task, BxThreadPool::ePriorityNormal);
//   task->WaitUntilTerminate();
//
// Queues: every pool thread has a work queue per priority (BxWorkQueue); a
// task added on a pool thread goes to that thread's own queue, a task added
// from outside the pool to the shared injection queue of its priority.
//
// Order: a worker looking for work goes through the priorities from high to
// low and, within one priority, takes its own newest task, else the oldest
// tasks of the injection queue, else steals the oldest task of another
// worker. From the injection queue it takes a run of the oldest tasks (half
// of those queued, at most kInjectedRun) at once: it runs the first and puts
// the others into its own queue so that it takes them next, oldest first
// (others may steal them). So of the tasks queued when a worker looks, it
// takes one of the highest priority present, and tasks added from outside
// with one priority start in the order in which they were added (with one
// worker: strictly high before normal before low, first in first out within
// one priority).
//
// Waiting inside a task (help while waiting, isolated): a pool thread that
// calls BxTask::WaitUntilTerminate() without a time-out on a task still
// queued runs that task itself, right there; what the task forks goes to the
// thread's own queue and is run the same way when the task waits for it. A
// waiting thread never runs a task it is not waiting for, and a task runs
// once, whoever gets to it first. A pool thread whose BxNoHelpScope marker is
// raised (it holds data-manager locks, has lock requests pending or owns
// message windows) does not help: it waits. A thread outside the pool just
// waits, after a short spin.
//
// Blocked workers are compensated: a real wait on a worker (BxEvent::Wait,
// WaitForMultipleEvents, a task that runs on another thread) counts the
// worker as blocked for its duration (BxBlockingScope), and while work is
// queued and fewer than the worker count are unblocked, the pool starts a
// compensating worker. When the waits end, surplus workers park after their
// task; a later wait reuses a parked worker, and one that no wait needed for
// 2 s retires. So fork-join nested deeper than the number of workers
// completes. The pool has at most eMaxThreads threads; beyond that, queued
// tasks wait for a free one.
//
// Sleeping: a worker that finds no work spins for about kSpinMicroseconds
// (pausing, and yielding its core now and then) before it sleeps; at most
// half the workers (at least one) spin at a time. Adding a task wakes a sleeping worker only when no worker is
// spinning, and a spinning worker that finds a task while others sleep and
// work is left hands the spinning on by waking one, so no task waits beside
// sleeping workers.
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
// Locks: each work queue has its own lock (BxWorkQueue). m_lock guards the
// thread list, the slot table's use flags, the sleeping, blocked and parking
// counters and the wake and unpark tokens; m_sleeping, m_blocked, m_surplus
// and m_stopping are atomics written under m_lock and read without it;
// m_spinning is an atomic changed by the workers and the wakers.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxtask.h>
#include <bxbase/threading/bxworkqueue.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

/// The process-wide pool of worker threads that runs BxTasks, by priority: 2 (high) before 1 (normal) before 0
/// (low), first in first out within one priority.
class BXBASE_API BxThreadPool
{
public:
    /// Priorities of AddTask; a worker always takes a task of the highest priority present.
    enum EPriority
    {
        ePriorityLow = 0,    ///< Background work, run when nothing more urgent is queued.
        ePriorityNormal = 1, ///< The default.
        ePriorityHigh = 2    ///< Run before every queued normal and low task.
    };
    /// Most threads a pool ever has, compensating workers included; beyond it, queued tasks wait for a free one.
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
    /// Tasks waiting in the queues (entries of tasks already run by a waiter
    /// included until a worker drops them).
    std::size_t GetQueuedCount() const;

    /// True on a worker thread of any pool.
    static bool IsPoolThread();

private:
    friend class BxTask;
    static constexpr int kPriorities = 3;

    /// What one pool thread owns: its queues, one per priority.
    static constexpr std::size_t kInjectedRun = 16;
    struct SSlot
    {
        std::array<BxWorkQueue, kPriorities> queues;
        std::array<BxSmartPointer<BxTask>, kInjectedRun> run; ///< tasks on their way from the injection queue
        bool used = false; ///< a thread owns the slot; guarded by m_lock
    };
    struct SWorker
    {
        std::thread thread;
        bool finished = false; ///< the thread has left its loop and may be joined; guarded by m_lock
    };

    static void runTask(BxTask& task);
    /// Runs a task that the calling pool thread waits for, if it is still
    /// queued and the thread may help; true when it ran it.
    static bool helpWith(BxTask& task);
    static void onBlocking(void* pool, bool blocked);

    void workerMain(SWorker* self, SSlot* slot);
    /// The next task for the worker owning `slot`, by the order above, or null.
    BxSmartPointer<BxTask> findWork(SSlot& slot);
    BxSmartPointer<BxTask> steal(SSlot& self, int priority);
    /// Takes a run of the oldest injected tasks of one priority; returns the first.
    BxSmartPointer<BxTask> takeInjected(SSlot& slot, int priority);
    /// Spins for work as one of the spinning workers; null when none came.
    BxSmartPointer<BxTask> spinForWork(SSlot& slot);
    /// Sleeps until woken; false when the pool stops. Returns as a spinning worker.
    bool sleep(bool spinning);
    /// Takes the task found while spinning: stops spinning and, as the last
    /// spinner, wakes a sleeper when work is left.
    void stopSpinning();
    bool hasWork() const;
    /// After a task was queued: wakes a sleeper unless a worker spins, and
    /// compensates blocked workers.
    void notifyWork();
    /// Makes one sleeping worker a spinning one, if there is any.
    void wakeOne();
    void cancelQueued();

    SSlot* claimSlotLocked();
    /// Wakes a sleeper or grows, when work is queued and too few workers are unblocked.
    void wakeForWorkLocked();
    /// Wakes a parked worker or starts one when work is queued and too few workers are unblocked.
    void growLocked();
    /// Workers that take tasks: neither blocked nor parked (wake-ups under way count).
    unsigned activeLocked() const;
    /// Parks a surplus worker; true when it was woken for work, false when it should retire.
    bool parkLocked(std::unique_lock<std::mutex>& lock);
    void reapLocked();
    void updateSurplusLocked();

    const unsigned m_workerCount;
    const unsigned m_maxSpinning;
    mutable std::mutex m_lock;
    std::condition_variable m_wake;   ///< sleeping workers wait here
    std::condition_variable m_unpark; ///< parked surplus workers wait here
    std::array<BxWorkQueue, kPriorities> m_injection; ///< tasks added from outside the pool
    std::array<std::unique_ptr<SSlot>, eMaxThreads> m_slots; ///< made under m_lock, never freed
    std::atomic<unsigned> m_slotCount{0}; ///< slots made so far; m_slots[i] is fixed for i below it
    std::list<SWorker> m_threads;         ///< guarded by m_lock
    unsigned m_threadCount = 0;           ///< threads in their loop; guarded by m_lock
    unsigned m_parked = 0;                ///< surplus workers waiting to be reused or to retire
    unsigned m_unparkTokens = 0;          ///< parked workers asked to come back, not yet awake
    unsigned m_wakeTokens = 0;            ///< sleepers asked to wake, not yet awake
    std::atomic<unsigned> m_sleeping{0}; ///< workers asleep or about to be; written under m_lock
    std::atomic<unsigned> m_blocked{0};  ///< workers inside a blocking wait; written under m_lock
    std::atomic<bool> m_surplus{false};  ///< more threads than workers; written under m_lock
    std::atomic<unsigned> m_spinning{0}; ///< workers spinning for work (wakers count ahead)
    std::atomic<bool> m_stopping{false};
    static constexpr unsigned kSpinMicroseconds = 50;
    static constexpr unsigned kParkMilliseconds = 2000;
};
