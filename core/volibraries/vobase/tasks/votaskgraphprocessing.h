// The pool task that walks a task manager's graph: it runs the work item of
// its start node and then, node by node, the items that depend on it. At a
// fork it hands every branch to a child task of its own and waits for them;
// a child stops at the join where the branches meet and the forking task
// runs the join and goes on. Only VoTaskManager creates these tasks.
//
//   // inside VoTaskManager::Start:
//   BxSmartPointer<VoTaskGraphProcessing> task(
//       new VoTaskGraphProcessing(*this, node, id, &controls.startedEvent, predecessor, 1));
//   BxThreadPool::GetInstance().AddTask(task, 1);
//
// The root task (the one Start creates) first waits for its predecessor (the
// task it replaced), then marks its component as pending, sets its started
// event and walks; at its end it drops its controls and marks the component
// terminated. A child task has no started event and no predecessor.
//
// Fields are set at construction and read by the task's own thread, except
// the predecessor, which the manager's task-control critical section guards
// (other threads ask whether it still runs).
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxtask.h>
#include <bxbase/threading/bxtimer.h>

#include <cstdint>
#include <optional>
#include <vector>

class VoGraphNode;
class VoTaskManager;

namespace TaskManager {

/// The pool task that walks a task manager's graph: it runs the work item of its start node and then, node by
/// node, the items that depend on it.
class VOBASE_API VoTaskGraphProcessing : public BxTask
{
public:
    /// startedEvent: a copy of the controls' started event for the root task, null for a child.
    VoTaskGraphProcessing(VoTaskManager& manager, VoGraphNode& node, std::int32_t taskID,
                          const BxEvent* startedEvent, BxSmartPointer<BxTask> predecessor, int priority);

    /// The node the walk starts at.
    VoGraphNode& GetStartNode() const noexcept { return *m_node; }
    /// The join at which a child stopped, or null.
    VoGraphNode* GetStopNode() const noexcept { return m_stopNode; }
    std::int32_t GetTaskID() const noexcept { return m_taskID; }
    /// True for the task that Start created.
    bool IsRoot() const noexcept { return m_startedEvent.has_value(); }

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override;
    void onAfterRun() override;
    void onException(const std::exception& exception) override;

private:
    friend class ::VoTaskManager;

    /// Walks from m_node; true when the walk completed.
    bool walk();
    /// Runs one node's item; false when the walk ends here.
    bool process(VoGraphNode& node);
    /// Forks one child per successor, waits for them and returns the common join (or null).
    /// `ok` becomes false when the children disagree about the join.
    VoGraphNode* fork(VoGraphNode& node, bool& ok);
    /// Runs a fork child on this thread, swallowing what its onException rethrows.
    static void runInline(VoTaskGraphProcessing& child);
    /// The closing marks of a root task.
    void finish();

    VoTaskManager* m_manager;                ///< not owned; outlives its tasks (reset waits for them)
    VoGraphNode* m_node;                     ///< the start node
    std::int32_t m_taskID;
    VoGraphNode* m_stopNode = nullptr;       ///< the join a child stopped at
    std::optional<BxEvent> m_startedEvent;   ///< root task only
    BxSmartPointer<BxTask> m_predecessor;    ///< guarded by the manager's task-control critical section
    int m_priority;
    BxTimer m_timer{1000000};
    /// Root task only: the nodes of its component, fixed while the task is not
    /// idle (edits need an idle component); set by Start before the pool sees the task.
    std::vector<VoGraphNode*> m_component;
};

}  // namespace TaskManager
