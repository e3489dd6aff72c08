#include <vobase/tasks/votaskmanagerpooling.h>

#include <vobase/tasks/vothreadpoolingworker.h>

#include <bxbase/bxexception.h>

VoTaskManagerPooling::VoTaskManagerPooling(const Factory& factory, EThreadPriority priority)
    : m_factory(factory), m_priority(priority)
{
}

void VoTaskManagerPooling::AddTask(const CStringT<wchar_t>& key)
{
    {
        BxCriticalSectionLocker locker(m_lock);
        m_pending.try_emplace(key, 1);
        if (m_workerRunning)
            return;
        m_workerRunning = true;
    }
    startWorker();
}

void VoTaskManagerPooling::startWorker()
{
    auto* worker = new VoThreadPoolingWorker(BxSmartPointer<VoTaskManagerPooling>(this), m_priority);
    worker->SetAutoDelete(true);
    if (!worker->Start())
    {
        delete worker;
        BxCriticalSectionLocker locker(m_lock);
        m_workerRunning = false;
        BX_THROW(BxException, "VoTaskManagerPooling::AddTask", "no worker thread could be started");
    }
}

BxSmartPointer<ITaskSimple> VoTaskManagerPooling::GetNextTask()
{
    CStringT<wchar_t> key;
    {
        BxCriticalSectionLocker locker(m_lock);
        if (m_pending.empty())
        {
            m_workerRunning = false;
            return {};
        }
        const auto first = m_pending.begin();
        key = first->first;
        m_pending.erase(first);
    }
    BxSmartPointer<ITaskSimple> task = m_factory(key);
    if (!task)
    {
        // This worker ends; another one takes over the keys left.
        bool restart = false;
        {
            BxCriticalSectionLocker locker(m_lock);
            restart = !m_pending.empty();
            m_workerRunning = restart;
        }
        if (restart)
            startWorker();
        BX_THROW(BxException, "VoTaskManagerPooling::GetNextTask", L"the factory made no task for " + key);
    }
    return task;
}
