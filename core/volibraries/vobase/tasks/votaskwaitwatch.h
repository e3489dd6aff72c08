// Knows which task's work item the calling thread runs, so that a
// VoTaskManager::WaitUntilTerminate called from inside the task it waits for
// (from the work item itself or from another item of the same component, also
// after the item started its component anew, whose new task waits for the
// running one) is reported instead of waiting in silence. Such a wait cannot end: the task
// ends only after the work item that waits returns. It still waits, as the
// program asked, but once the detection time (VoHangDetector::GetTimeout)
// has passed it is logged once as a warning, through VoHangDetector's
// logger, and listed by VoHangDetector::GetBlockedWaits as
// eK_TaskWaitsForItself.
//
//   // in the walk, around a work item's run:
//   VoTaskWaitWatch::CRunning running(manager, taskID, node.GetName());
//   item.Run(status);
//
//   // in WaitUntilTerminate, before waiting for task `id`:
//   if (VoTaskWaitWatch::RunsTask(manager, id))
//       return VoTaskWaitWatch::WaitForOwnTask(task, terminated, name, id, id);
//
// The mark is thread-local (one pointer, restored on the way out), so it
// costs the walk no lock and no allocation; work items that run nested on one
// thread (a pool thread helping a fork) stack their marks.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxtask.h>

#include <cstdint>
#include <string>

/// Knows which task's work item the calling thread runs, and reports a wait of that task for itself.
class VOBASE_API VoTaskWaitWatch
{
public:
    /// Marks the calling thread as running work item `item` of task `taskID`
    /// of the task manager `manager` while it lives.
    class VOBASE_API CRunning
    {
    public:
        /// Pushes the mark; `item` must outlive it.
        CRunning(const void* manager, std::int32_t taskID, const std::string& item) noexcept;
        /// Pops the mark: the one it hid is the thread's mark again.
        ~CRunning();
        CRunning(const CRunning&) = delete;
        CRunning& operator=(const CRunning&) = delete;

    private:
        friend class VoTaskWaitWatch;
        const void* m_manager;
        std::int32_t m_taskID;
        const std::string* m_item;
        const CRunning* m_outer;  ///< the mark this one hides, or null
    };

    /// True when the calling thread runs a work item of task `taskID` of `manager`.
    static bool RunsTask(const void* manager, std::int32_t taskID) noexcept;
    /// True when the calling thread runs a work item of any task of `manager`.
    static bool RunsTaskOf(const void* manager) noexcept;

    /// Waits, without limit, for `task` to end (when there is one) and for
    /// `terminated`, like WaitUntilTerminate. `task` is task `taskID` of the
    /// work item `waited`; the caller runs a work item of task `ownTaskID`,
    /// which is that task or one it waits for before it begins (the task a
    /// new Start replaced), so the wait cannot end: once the detection time
    /// has passed it is reported and listed until it ends.
    static void WaitForOwnTask(const BxSmartPointer<BxTask>& task, const BxEvent& terminated,
                               const std::string& waited, std::int32_t taskID, std::int32_t ownTaskID);
};
