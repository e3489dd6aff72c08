#include <vobase/tasks/vothreadpoolingworker.h>

#include <vobase/tasks/voqueueworkerloop.h>

VoThreadPoolingWorker::VoThreadPoolingWorker(BxSmartPointer<VoTaskManagerPooling> queue, EThreadPriority priority)
    : BxThread(L"VoThreadPoolingWorker", priority), m_queue(std::move(queue)),
      m_processAffinityMask(VoReadProcessAffinityMask())
{
    SetAffinityMask(m_processAffinityMask);
    SetThreadFunction(&VoThreadPoolingWorker::work);
}

DWORD VoThreadPoolingWorker::work() { return VoRunQueuedTasks([this] { return m_queue->GetNextTask(); }); }
