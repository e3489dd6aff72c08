#include <vobase/tasks/votaskmanagersequential.h>

#include <vobase/tasks/vothreadsequentialworker.h>

#include <bxbase/bxexception.h>

VoTaskManagerSequential::VoTaskManagerSequential(EThreadPriority priority) : m_priority(priority) {}

void VoTaskManagerSequential::AddTask(const BxSmartPointer<ITaskSimple>& task)
{
    {
        BxCriticalSectionLocker locker(m_lock);
        m_tasks.push_back(task);
        if (m_workerRunning)
            return;
        m_workerRunning = true;
    }
    startWorker();
}

void VoTaskManagerSequential::startWorker()
{
    auto* worker = new VoThreadSequentialWorker(BxSmartPointer<VoTaskManagerSequential>(this), m_priority);
    worker->SetAutoDelete(true);
    if (!worker->Start())
    {
        delete worker;
        BxCriticalSectionLocker locker(m_lock);
        m_workerRunning = false;
        BX_THROW(BxException, "VoTaskManagerSequential::AddTask", "no worker thread could be started");
    }
}

BxSmartPointer<ITaskSimple> VoTaskManagerSequential::GetNextTask()
{
    bool restart = false;
    {
        BxCriticalSectionLocker locker(m_lock);
        if (m_tasks.empty())
        {
            m_workerRunning = false;
            return {};
        }
        BxSmartPointer<ITaskSimple> task = std::move(m_tasks.front());
        m_tasks.pop_front();
        if (task)
            return task;
        // This worker ends; another one takes over the tasks behind the empty entry.
        restart = !m_tasks.empty();
        m_workerRunning = restart;
    }
    if (restart)
        startWorker();
    BX_THROW(BxException, "VoTaskManagerSequential::GetNextTask", "empty task in the queue");
}
