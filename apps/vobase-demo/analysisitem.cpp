#include "analysisitem.h"

#include "messenger.h"
#include "msgprogress.h"

#include <bxbase/threading/bxthreadapi.h>

CAnalysisItem::CAnalysisItem(std::string name, std::function<void()> work, const VoMessageHandlerBase& progressTarget)
    : m_name(std::move(name)), m_work(std::move(work)), m_progressTarget(progressTarget)
{
}

void CAnalysisItem::Run(TaskManager::SWorkItemStatus& status)
{
    if (status.breakEvent.IsSet())
        return;
    try {
        m_work();
    } catch (...) {
        report(false);
        throw;
    }
    report(true);
}

void CAnalysisItem::report(bool succeeded) const
{
    CMessenger::Post(BxSmartPointer<const VoMessage>(new CMsgProgress(m_name, GetCurrentThreadId(), succeeded)),
                     m_progressTarget);
}
