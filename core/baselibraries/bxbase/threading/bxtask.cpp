#include <bxbase/threading/bxtask.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxtasktrace.h>
#include <bxbase/threading/bxthreadpool.h>

#include <thread>

bool BxTask::transition(EState from, EState to)
{
    int expected = from;
    return m_state.compare_exchange_strong(expected, to, std::memory_order_acq_rel);
}

bool BxTask::markQueued()
{
    for (;;)
    {
        int expected = eIdle;
        if (m_state.compare_exchange_weak(expected, eQueued, std::memory_order_acq_rel))
            break;
        if (expected != eIdle && expected != eFinishing)
            return false;
        if (expected == eFinishing)
            std::this_thread::yield(); // only until its runner has marked the termination
    }
    setTerminated(false);
    return true;
}

void BxTask::cancel()
{
    if (!transition(eQueued, eFinishing))
        return;
    setTerminated(true);
    m_state.store(eIdle, std::memory_order_release);
}

void BxTask::setTerminated(bool terminated)
{
    // No lock while nobody asked for the event. The stores and loads of
    // m_hasRun and m_eventMade are sequentially consistent, so either this
    // call sees the event or its maker sees the new state.
    // Unchanged (a new task being queued): the event already shows it.
    if (m_hasRun.load(std::memory_order_relaxed) == terminated)
        return;
    m_hasRun.store(terminated);
    if (m_eventMade.load())
        syncEvent();
}

void BxTask::syncEvent() const
{
    std::lock_guard lock(m_eventLock);
    if (m_hasRun.load()) // the latest state, whichever call got here last
        m_terminated->Set();
    else
        m_terminated->Reset();
}

BxEvent BxTask::GetTerminationEvent() const
{
    {
        std::lock_guard lock(m_eventLock);
        if (m_terminated)
            return *m_terminated;
        m_terminated.emplace(false);
        m_eventMade.store(true);
    }
    syncEvent();
    return *m_terminated;
}

void BxTask::Run()
{
    m_state.store(eRunning, std::memory_order_release);
    runClaimed();
}

void BxTask::runClaimed()
{
    // Idle again and the event set on every way out, also when onException throws.
    struct SFinish
    {
        BxTask& task;
        ~SFinish()
        {
            // Terminated before idle: whoever queues the task again after
            // this sees the termination and replaces it.
            task.m_state.store(eFinishing, std::memory_order_release);
            task.setTerminated(true);
            task.m_state.store(eIdle, std::memory_order_release);
        }
    } finish{*this};
    const BxTaskTrace::CScope span(*this); // ends before finish: recorded before a waiter wakes

    m_result.store(false, std::memory_order_release);
    try
    {
        bool result = run();
        m_result.store(result, std::memory_order_release);
        onAfterRun();
    }
    catch (const std::exception& e)
    {
        onException(e);
    }
    catch (...)
    {
        onException(BxException(__FILE__, __LINE__, "BxTask::Run", "unknown exception"));
    }
}

bool BxTask::WaitUntilTerminate(DWORD timeoutMs)
{
    if (m_hasRun.load())
        return true;
    if (timeoutMs == 0)
        return GetTerminationEvent().Wait(0);
    if (timeoutMs == INFINITE && BxThreadPool::helpWith(*this))
        return true;
    // Tasks are often short: yield a little before blocking, which costs a
    // system call and, on a pool worker, a compensating worker.
    for (unsigned i = 0; i < kWaitSpinRounds && !m_hasRun.load(); ++i)
        std::this_thread::yield();
    if (m_hasRun.load())
        return true;
    return GetTerminationEvent().Wait(timeoutMs);
}
