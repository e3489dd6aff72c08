// The per-node status the task graph manager keeps for every work item: the
// break event (a stop request), the terminated event (the item is not
// running), the running flag and the computation state.
//
//   void CItem::Run(TaskManager::SWorkItemStatus& status) {
//       for (int i = 0; i < 1000 && !status.breakEvent.IsSet(); ++i) step(i);
//   }
//   if (status.computationState == ITaskManager::eCS_Computed) ...
//
// The events are thread-safe by themselves; running and computationState are
// atomics because pool threads write them without the manager's lock while
// callers read them under it.
#pragma once

#include <vobase/tasks/itaskmanager.h>

#include <bxbase/threading/bxevent.h>

#include <atomic>
#include <cstdint>

namespace TaskManager {

/// The per-node status the task graph manager keeps for every work item: the break event (a stop request), the
/// terminated event (the item is not running), the running flag and the computation state.
struct SWorkItemStatus
{
    SWorkItemStatus() = default;
    /// A copy shares the events of the original (as copied BxEvents do) and
    /// takes a snapshot of the two numbers.
    SWorkItemStatus(const SWorkItemStatus& other)
        : breakEvent(other.breakEvent), terminatedEvent(other.terminatedEvent), running(other.running.load()),
          computationState(other.computationState.load())
    {
    }
    SWorkItemStatus& operator=(const SWorkItemStatus&) = delete;

    /// Set to ask the running item (and its task's walk) to stop.
    BxEvent breakEvent;
    /// Set while the item is not running (idle or finished); reset while a
    /// run of its component is pending.
    BxEvent terminatedEvent{true};
    /// 1 while the item's Run executes, else 0.
    std::atomic<std::uint32_t> running{0};
    /// See ITaskManager::EComputationState.
    std::atomic<ITaskManager::EComputationState> computationState{ITaskManager::eCS_NotComputed};
};

}  // namespace TaskManager
