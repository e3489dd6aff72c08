#include <vobase/data/vodatahandlebase.h>

#include <vobase/data/vodatamanager.h>

#include <bxbase/threading/bxthreadapi.h>

VoDataHandleBase::VoDataHandleBase(VoDataManager& manager) : m_manager(&manager), m_threadId(GetCurrentThreadId()) {}

void VoDataHandleBase::Unlock()
{
    if (m_accessGranted && getNode())
        m_manager->unlock(*this);
}

void VoDataHandleBase::release() noexcept
{
    if (!getNode())
        return;
    if (m_accessGranted)
        m_manager->unlock(*this);
    else
        m_manager->unrequestLock(*this);
}
