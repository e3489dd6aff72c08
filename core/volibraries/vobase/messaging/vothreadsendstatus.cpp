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
        m_replied.Set();
}
