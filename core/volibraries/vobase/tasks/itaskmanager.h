// The interface of the task graph manager: named work items joined by
// dependencies, started, stopped and waited for by name. VoTaskManager is the
// implementation.
//
//   ITaskManager& tasks = manager;
//   tasks.Add("a", itemA);
//   tasks.Add("b", itemB);
//   tasks.AddDependency("a", "b");                 // b runs after a
//   tasks.Start("a", ITaskManager::eP_Normal);
//   tasks.WaitUntilTerminate("b");
//   bool done = tasks.GetStatus("b") == ITaskManager::eCS_Computed;
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>

#include <cstdint>

class IWorkItem;

/// The interface of the task graph manager: named work items joined by dependencies, started, stopped and waited
/// for by name.
class VOBASE_API ITaskManager
{
public:
    /// The computation state of a work item.
    enum EComputationState : std::int32_t
    {
        eCS_NotComputed = 0, ///< after Add
        eCS_Scheduled = 1,   ///< a task will compute it
        eCS_Computed = 2,    ///< its Run returned without a break
        eCS_Stopped = 3,     ///< stopped by the user
        eCS_Aborted = 4,     ///< not ready, a break was seen, or its task ended before reaching it
        eCS_Failed = 5       ///< an exception left a work item of its task
    };

    /// Pool priority of a task.
    enum EPriority
    {
        eP_Low = 0,
        eP_Normal = 1,
        eP_High = 2
    };

    virtual ~ITaskManager() = default;

    /// Adds a work item under a new name; an existing name throws BxException.
    virtual void Add(const char* name, BxSmartPointer<IWorkItem> item) = 0;
    /// Removes an item and its edges; unknown names are ignored, a busy component throws.
    virtual void Remove(const char* name) = 0;
    /// True when an item of that name exists.
    virtual bool Exists(const char* name) const = 0;
    /// Makes `to` depend on `from` (it runs after it). Both must exist and be idle.
    virtual void AddDependency(const char* from, const char* to) = 0;
    /// Removes the dependency; unknown names are ignored, busy components throw.
    virtual void RemoveDependency(const char* from, const char* to) = 0;
    /// Runs the item and everything that depends on it on the thread pool.
    virtual void Start(const char* name, EPriority priority) = 0;
    /// Asks the task of the item's component to stop; the item and its dependents get state 3.
    virtual void Stop(const char* name) = 0;
    /// Waits until the task of the item's component has ended and the item is not running.
    virtual void WaitUntilTerminate(const char* name) = 0;
    /// The item's computation state; an unknown name throws BxException.
    virtual EComputationState GetStatus(const char* name) = 0;
};
