// A unit of work for BxThreadPool, reference counted and owned through
// BxSmartPointer<BxTask>. A derived class implements run(); onAfterRun()
// follows a run that returned, onException() replaces it when run() (or
// onAfterRun()) threw.
//
//   class CSum : public BxTask
//   {
//   protected:
//       BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { m_sum = add(); return true; }
//       void onException(const std::exception& e) override { log(e.what()); }
//   };
//
//   BxSmartPointer<CSum> task(new CSum);
//   BxThreadPool::GetInstance().AddTask(task, 1);
//   task->WaitUntilTerminate();                // also the termination event
//
// State: idle -> queued (AddTask) -> running -> idle again. The termination
// event is not set while the task waits to run or runs, and set once it has
// run; a new task is not terminated yet.
//
// WaitUntilTerminate without a time-out on a pool thread helps: a task still
// queued is run right there instead of being waited for (see BxThreadPool:
// never an unrelated task, never while the thread's BxNoHelpScope marker is
// raised), so fork-join inside pool tasks never waits for a free worker. A
// task that already runs elsewhere is given a few yields to end before the
// thread blocks (and the pool compensates a blocked worker). Outside the
// pool the wait yields a few times, then blocks.
//
// Locks: m_eventLock guards making the termination event and setting or
// resetting it; the state, the result, the terminated flag and the pool
// priority are atomics.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxcheckreturn.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/threading/bxevent.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <optional>

/// A unit of work for BxThreadPool, reference counted and owned through BxSmartPointer<BxTask>.
class BXBASE_API BxTask : public BxReferenceCountedObject
{
public:
    BxTask() = default;
    ~BxTask() override = default;
    BxTask(const BxTask&) = delete;
    BxTask& operator=(const BxTask&) = delete;

    /// Runs the task on the calling thread now: run, then onAfterRun, or
    /// onException when either threw; then sets the termination event. An
    /// exception that onException throws leaves Run (after the event is set).
    /// A queued task run this way is not run again by the pool. Calling Run
    /// on a task that is running already runs it twice at once: don't.
    void Run();

    /// True while the task runs.
    bool IsRunning() const { return m_state.load(std::memory_order_acquire) == eRunning; }
    /// True while the task waits in the pool's queue.
    bool IsQueued() const { return m_state.load(std::memory_order_acquire) == eQueued; }

    /// Waits until the task has run (true) or timeoutMs passed (false).
    bool WaitUntilTerminate(DWORD timeoutMs = INFINITE);

    /// The termination event (a copy sharing the state). It is made on first
    /// request, so a task nobody waits for costs no event.
    BxEvent GetTerminationEvent() const;

    /// What the last run() returned (false before the first run and after an exception).
    bool GetResult() const { return m_result.load(std::memory_order_acquire); }

protected:
    /// The work. Runs on a pool thread (or the thread that calls Run).
    virtual BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() = 0;
    /// Called after run() returned.
    virtual void onAfterRun() {}
    /// Called instead of onAfterRun when run() or onAfterRun() threw; a
    /// non-standard exception arrives as a BxException. The default drops it.
    virtual void onException(const std::exception& exception) {}

private:
    friend class BxThreadPool;
    /// eFinishing: run() has returned and the termination is being marked;
    /// AddTask waits the moment until it is idle again.
    enum EState { eIdle, eQueued, eRunning, eFinishing };
    static constexpr unsigned kWaitSpinRounds = 64;

    /// idle -> queued (after a finishing run is idle); false when the task is already queued or running.
    bool markQueued();
    /// queued -> idle without running (the pool is shutting down).
    void cancel();
    /// queued -> running; false when someone else has taken the task.
    bool claim() { return transition(eQueued, eRunning); }
    bool transition(EState from, EState to);
    /// Runs a claimed task.
    void runClaimed();
    /// Marks the task terminated (or not) and sets (resets) the event if it exists.
    void setTerminated(bool terminated);
    /// Brings the existing event in line with m_hasRun.
    void syncEvent() const;

    std::atomic<int> m_state{eIdle};
    std::atomic<int> m_poolPriority{1};           ///< the priority of the last AddTask
    std::atomic<bool> m_result{false};
    std::atomic<bool> m_hasRun{false};           ///< the state the event shows
    mutable std::atomic<bool> m_eventMade{false}; ///< m_terminated exists (set once, under m_eventLock)
    mutable std::mutex m_eventLock;              ///< guards making m_terminated and its Set/Reset
    mutable std::optional<BxEvent> m_terminated; ///< made on first request, then never changed
};
