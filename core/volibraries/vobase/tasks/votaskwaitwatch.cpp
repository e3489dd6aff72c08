#include <vobase/tasks/votaskwaitwatch.h>

#include <vobase/messaging/vohangdetector.h>

#include <bxbase/bxstringconvert.h>

namespace {

// The innermost mark of the calling thread. Initial-exec: one load relative
// to the thread pointer instead of a call per access (the library is linked
// to its programs, not opened late with dlopen).
thread_local const VoTaskWaitWatch::CRunning* t_running __attribute__((tls_model("initial-exec"))) = nullptr;

// Removes the calling thread's entry when the wait ends.
struct SEndBlockedWait
{
    ~SEndBlockedWait() { VoHangDetector::EndBlockedWait(); }
};

}  // namespace

VoTaskWaitWatch::CRunning::CRunning(const void* manager, std::int32_t taskID, const std::string& item) noexcept
    : m_manager(manager), m_taskID(taskID), m_item(&item), m_outer(t_running)
{
    t_running = this;
}

VoTaskWaitWatch::CRunning::~CRunning()
{
    t_running = m_outer;
}

bool VoTaskWaitWatch::RunsTask(const void* manager, std::int32_t taskID) noexcept
{
    for (const CRunning* running = t_running; running != nullptr; running = running->m_outer)
        if (running->m_manager == manager && running->m_taskID == taskID)
            return true;
    return false;
}

bool VoTaskWaitWatch::RunsTaskOf(const void* manager) noexcept
{
    for (const CRunning* running = t_running; running != nullptr; running = running->m_outer)
        if (running->m_manager == manager)
            return true;
    return false;
}

void VoTaskWaitWatch::WaitForOwnTask(const BxSmartPointer<BxTask>& task, const BxEvent& terminated,
                                     const std::string& waited, std::int32_t taskID, std::int32_t ownTaskID)
{
    auto ended = [&](DWORD waitMs) { return (!task || task->WaitUntilTerminate(waitMs)) && terminated.Wait(waitMs); };
    const std::uint32_t timeoutMs = VoHangDetector::GetTimeout();
    if (ended(timeoutMs == 0 ? INFINITE : timeoutMs))
        return;

    // The innermost work item of that task is the one that waits.
    std::string item;
    for (const CRunning* running = t_running; running != nullptr; running = running->m_outer)
        if (running->m_taskID == ownTaskID)
        {
            item = *running->m_item;
            break;
        }
    VoHangDetector::SBlockedWait wait;
    wait.kind = VoHangDetector::eK_TaskWaitsForItself;
    wait.workItem = item;
    wait.waitedItem = waited;
    wait.taskID = ownTaskID;
    wait.waitedTaskID = taskID;
    const std::wstring what =
        L"runs work item \"" + BxStringConvert::Utf8ToWide(item) + L"\" of task " + std::to_wstring(ownTaskID) +
        L" and waits for work item \"" + BxStringConvert::Utf8ToWide(waited) + L"\" of " +
        (taskID == ownTaskID ? std::wstring(L"the same task")
                             : L"task " + std::to_wstring(taskID) + L", which waits for task " +
                                   std::to_wstring(ownTaskID) + L" to end");
    VoHangDetector::BeginBlockedWait(std::move(wait), timeoutMs, what, "VoTaskManager::WaitUntilTerminate");
    SEndBlockedWait end;
    (void)ended(INFINITE);
}
