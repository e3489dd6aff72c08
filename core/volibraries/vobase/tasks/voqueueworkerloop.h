// What the threads of the simple work queues (VoThreadPoolingWorker,
// VoThreadSequentialWorker) do: take tasks from their queue until it hands
// out none and run them, one failing task never ending the thread.
//
//   DWORD CMyWorker::work()
//   {
//       return VoRunQueuedTasks([this] { return m_queue->GetNextTask(); });
//   }
#pragma once

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxthreadapi.h>
#include <vobase/tasks/itasksimple.h>

/// Runs the tasks nextTask() hands out until it hands out none. 1 when the
/// queue was drained, 0 when taking the next task failed.
template <class TNextTask>
DWORD VoRunQueuedTasks(TNextTask nextTask)
{
    try
    {
        for (BxSmartPointer<ITaskSimple> task = nextTask(); task; task = nextTask())
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
        return 0;
    }
    return 1;
}

/// The process affinity mask, 0 when it cannot be read.
inline DWORD_PTR VoReadProcessAffinityMask()
{
    DWORD_PTR processMask = 0, systemMask = 0;
    return GetProcessAffinityMask(GetCurrentProcess(), &processMask, &systemMask) ? processMask : 0;
}
