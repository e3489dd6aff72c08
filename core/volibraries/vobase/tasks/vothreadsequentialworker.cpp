#include <vobase/tasks/vothreadsequentialworker.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxthreadapi.h>

namespace {

DWORD_PTR processAffinityMask()
{
    DWORD_PTR processMask = 0, systemMask = 0;
    return GetProcessAffinityMask(GetCurrentProcess(), &processMask, &systemMask) ? processMask : 0;
}

}  // namespace

VoThreadSequentialWorker::VoThreadSequentialWorker(BxSmartPointer<VoTaskManagerSequential> queue, EThreadPriority priority)
    : BxThread(L"VoThreadSequentialWorker", priority), m_queue(std::move(queue)),
      m_processAffinityMask(processAffinityMask())
{
    SetAffinityMask(m_processAffinityMask);
    SetThreadFunction(&VoThreadSequentialWorker::work);
}

DWORD VoThreadSequentialWorker::work()
{
    try
    {
        for (BxSmartPointer<ITaskSimple> task = m_queue->GetNextTask(); task; task = m_queue->GetNextTask())
        {
            try
            {
                task->Run();
            }
            catch (...)
            {
                // One failing task never ends the worker.
            }
        }
    }
    catch (...)
    {
        return 0;  // an empty entry in the queue
    }
    return 1;
}
