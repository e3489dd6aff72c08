#include <vobase/messaging/vothreadsendstatus.h>

void VoThreadSendStatus::Reset(std::uint32_t count)
{
    m_dispatched.Reset();
    m_localHandlers.clear();
    {
        BxCriticalSectionLocker locker(m_resultsLock);
        m_results.clear();
    }
    m_pending.store(count, std::memory_order_release);
    if (count == 0)
        m_replied.Set();
    else
        m_replied.Reset();
}

void VoThreadSendStatus::AddResult(std::int64_t result)
{
    BxCriticalSectionLocker locker(m_resultsLock);
    m_results.push_back(result);
}

void VoThreadSendStatus::CountDown()
{
    if (m_pending.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        m_replied.Set();
        m_wake.Set();
    }
}

void VoThreadSendStatus::MarkDispatched()
{
    m_dispatched.Set();
    m_wake.Set();
}

bool VoThreadSendStatus::WaitUntilDispatchedOrReplied()
{
    return WaitUntilDispatchedOrReplied(INFINITE) == eWR_Dispatched;
}

VoThreadSendStatus::EWaitResult VoThreadSendStatus::WaitUntilDispatchedOrReplied(DWORD timeoutMs)
{
    // The flags are set before the wake-up event: after each wake-up (also a
    // late one left over from the status's previous send) they are looked at
    // again, so none is missed and a stale wake-up costs one more look (and
    // restarts the time-out, which a caller that keeps waiting does not mind).
    for (;;)
    {
        if (m_dispatched.IsSet())
            return eWR_Dispatched;
        if (m_replied.IsSet())
            return eWR_Replied;
        if (!m_wake.Wait(timeoutMs))
            return eWR_TimedOut;
        m_wake.Reset();
    }
}
