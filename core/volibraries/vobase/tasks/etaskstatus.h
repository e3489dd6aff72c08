// The state of the task that owns a work item's connected component, as the
// task graph manager computes it (it is never stored).
//
//   if (status == TaskManager::eTS_Idle) manager.AddDependency("a", "b");
#pragma once

namespace TaskManager {

enum ETaskStatus
{
    eTS_Idle = 0,      ///< no task, or its task has ended
    eTS_Scheduled = 1, ///< a task exists but does not run its own walk yet (or a run was requested)
    eTS_Running = 2    ///< the task walks the component
};

}  // namespace TaskManager
