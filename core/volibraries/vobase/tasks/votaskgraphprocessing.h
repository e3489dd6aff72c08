// The pool task that walks a task manager's graph: it runs the work item of
// its start node and then, node by node, the items that depend on it. At a
// fork it hands every branch but the last to a child task of its own, runs
// the last branch itself and waits for the others; a child stops at the join
// where the branches meet and the forking task runs the join and goes on.
// Only VoTaskManager creates these tasks.
//
//   // inside VoTaskManager::Start, with the component's cached shape:
//   BxSmartPointer<VoTaskGraphProcessing> task(
//       new VoTaskGraphProcessing(*this, shape, startIndex, id, &controls.startedEvent, predecessor, 1));
//   BxThreadPool::GetInstance().AddTask(task, 1);
//
// The root task (the one Start creates) first waits for its predecessor (the
// task it replaced), then marks its component as pending, sets its started
// event and walks; at its end it drops its controls and marks the component
// terminated. A child task has no started event and no predecessor.
//
// The walk works on the component's VoTaskGraphShape: a node is an index,
// its item, status and successors are read from the shape's arrays. The
// children of a fork live in the shape's child slots and are reused by the
// next run of the component (a child is idle again once its forking task has
// waited for it), so a run allocates no task per fork once the component ran.
//
// Fields are set before the task is queued and read by the task's own
// thread, except the predecessor, which the manager's task-control critical
// section guards (other threads ask whether it still runs), and the stop
// index, which the forking task reads after waiting for the child.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxtask.h>
#include <bxbase/threading/bxtimer.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

class VoGraphNode;
class VoTaskManager;

namespace TaskManager {

class VoTaskGraphShape;

/// The pool task that walks a task manager's graph: it runs the work item of its start node and then, node by
/// node, the items that depend on it.
class VOBASE_API VoTaskGraphProcessing : public BxTask
{
public:
    /// A root task walking `shape` from the node at `start`; startedEvent is
    /// a copy of the controls' started event.
    VoTaskGraphProcessing(VoTaskManager& manager, std::shared_ptr<VoTaskGraphShape> shape, std::uint32_t start,
                          std::int32_t taskID, const BxEvent& startedEvent, BxSmartPointer<BxTask> predecessor,
                          int priority);
    ~VoTaskGraphProcessing() override;

    /// The node the walk starts at.
    VoGraphNode& GetStartNode() const noexcept;
    /// The join at which a child stopped, or null.
    VoGraphNode* GetStopNode() const noexcept;
    /// The task ID Start gave the component; fork children share their root's.
    std::int32_t GetTaskID() const noexcept { return m_taskID; }
    /// True for the task that Start created.
    bool IsRoot() const noexcept { return m_startedEvent.has_value(); }

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override;
    void onAfterRun() override;
    void onException(const std::exception& exception) override;

private:
    friend class ::VoTaskManager;

    /// A fork child walking `shape` from `start` (made by its forking task).
    VoTaskGraphProcessing(VoTaskManager& manager, VoTaskGraphShape& shape, std::uint32_t start,
                          std::int32_t taskID, int priority);

    /// Walks from m_start; true when the walk completed.
    bool walk();
    /// Runs one node's item; false when the walk ends here.
    bool process(std::uint32_t index);
    /// Forks one child per successor, runs the last one here, waits for the
    /// others and returns the common join (or kNone). `ok` becomes false when
    /// the children disagree about the join.
    std::uint32_t fork(std::uint32_t index, bool& ok);
    /// The child in `slot`, made or re-armed to walk from `start`.
    VoTaskGraphProcessing& child(BxSmartPointer<VoTaskGraphProcessing>& slot, std::uint32_t start);
    /// Runs a fork child on this thread, swallowing what its onException rethrows.
    static void runInline(VoTaskGraphProcessing& child);
    /// The closing marks of a root task.
    void finish();
    /// Hands the timing context to the interceptors, if there are any.
    void dispatchAfterRun();

    VoTaskManager* m_manager;                  ///< not owned; outlives its tasks (reset waits for them)
    std::shared_ptr<VoTaskGraphShape> m_ownedShape; ///< root task only: keeps the shape alive
    VoTaskGraphShape* m_shape;                 ///< the component's shape (owned by the root task's walk)
    std::uint32_t m_start;                     ///< the start node's index
    std::atomic<std::uint32_t> m_stop;         ///< the join a child stopped at, or kNone
    std::int32_t m_taskID;
    std::optional<BxEvent> m_startedEvent;     ///< root task only
    BxSmartPointer<BxTask> m_predecessor;      ///< guarded by the manager's task-control critical section
    int m_priority;
    BxTimer m_timer{1000000};
};

}  // namespace TaskManager
