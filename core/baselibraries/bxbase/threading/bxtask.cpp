#include <bxbase/threading/bxtask.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxthreadpool.h>

bool BxTask::transition(EState from, EState to)
{
    int expected = from;
    return m_state.compare_exchange_strong(expected, to, std::memory_order_acq_rel);
}

bool BxTask::markQueued()
{
    if (!transition(eIdle, eQueued))
        return false;
    setTerminated(false);
    return true;
}

void BxTask::cancel()
{
    if (transition(eQueued, eIdle))
        setTerminated(true);
}

void BxTask::setTerminated(bool terminated)
{
    std::lock_guard lock(m_eventLock);
    m_hasRun = terminated;
    if (m_terminated)
    {
        if (terminated)
            m_terminated->Set();
        else
            m_terminated->Reset();
    }
}

BxEvent BxTask::GetTerminationEvent() const
{
    std::lock_guard lock(m_eventLock);
    if (!m_terminated)
        m_terminated.emplace(m_hasRun);
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
            task.m_state.store(eIdle, std::memory_order_release);
            task.setTerminated(true);
        }
    } finish{*this};

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
    if (timeoutMs == INFINITE && BxThreadPool::IsPoolThread() && claim())
    {
        BxThreadPool::runTask(*this);
        return true;
    }
    {
        std::lock_guard lock(m_eventLock);
        if (m_hasRun)
            return true;
    }
    return GetTerminationEvent().Wait(timeoutMs);
}
