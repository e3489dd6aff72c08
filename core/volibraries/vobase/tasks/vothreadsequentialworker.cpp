#include <vobase/tasks/vothreadsequentialworker.h>

#include <vobase/tasks/voqueueworkerloop.h>

VoThreadSequentialWorker::VoThreadSequentialWorker(BxSmartPointer<VoTaskManagerSequential> queue, EThreadPriority priority)
    : BxThread(L"VoThreadSequentialWorker", priority), m_queue(std::move(queue)),
      m_processAffinityMask(VoReadProcessAffinityMask())
{
    SetAffinityMask(m_processAffinityMask);
    SetThreadFunction(&VoThreadSequentialWorker::work);
}

DWORD VoThreadSequentialWorker::work() { return VoRunQueuedTasks([this] { return m_queue->GetNextTask(); }); }
