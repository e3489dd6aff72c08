// The task graph manager: named work items (IWorkItem) joined by dependencies
// into a directed graph and run on the shared thread pool. Starting an item
// runs it and, in dependency order, everything that depends on it; a fork
// (an item with several dependents) runs its branches as pool tasks of their
// own, and they meet again at a join (an item with several predecessors),
// which the forking task runs.
//
//   VoTaskManager manager;
//   manager.Add("load", load);
//   manager.Add("left", left);
//   manager.Add("right", right);
//   manager.Add("merge", merge);
//   manager.AddDependency("load", "left");       // load -> left -> merge
//   manager.AddDependency("load", "right");      // load -> right -> merge
//   manager.AddDependency("left", "merge");
//   manager.AddDependency("right", "merge");
//   manager.Start("load", ITaskManager::eP_Normal);
//   manager.WaitUntilTerminate("merge");
//   manager.GetStatus("merge");                   // ITaskManager::eCS_Computed
//   manager.Add("report", [&] { print(); });      // a callable is a work item too
//
// Every connected component of the graph has at most one task at a time; a
// task has an ID (0, 1, 2, ..., wrapping to 0 after 2147483647). Starting an
// item of a component whose task runs stops that task (automatically) and
// the new task waits for it before it begins. The graph of a component may
// only be edited while its component is idle.
//
// Each connected component that was started keeps its shape (a
// TaskManager::VoTaskGraphShape: its nodes in order with their slots,
// successors, predecessor counts and which start nodes passed validation)
// until an edit touches it: Add, Remove, AddDependency, RemoveDependency and
// Reset drop the shapes of the components they change, and the next Start
// builds a new one. Starting an unchanged component is one pass over that
// array, and its walk indexes it.
//
// Locks: every public operation holds a write lock on the root node of the
// manager's private data manager (so graph edits, queries and dumps are
// serialised; the table of shapes is guarded by it too); inside it, and only
// inside it or alone, the critical section of the task-control map. Pool
// threads never take the data lock: they touch only the nodes (and the
// shape) of their own component, which is not edited while it is busy, and
// the task-control map under its critical section. A thread outside the pool
// that waits for a task watches it for a few microseconds, yielding its
// core, before it blocks; it never runs graph work.
#pragma once

#include <vobase/tasks/etaskstatus.h>
#include <vobase/tasks/iinterceptortaskmanager.h>
#include <vobase/tasks/itaskmanager.h>
#include <vobase/tasks/iworkitem.h>
#include <vobase/tasks/sworkitemstatus.h>
#include <vobase/tasks/voworkitemt.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxstreamwriteasciit.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/interceptor/cdispatcher.h>
#include <bxbase/interceptor/cframework.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxcriticalsection.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class VoGraphNode;

namespace TaskManager {
class VoTaskGraphProcessing;
class VoTaskGraphShape;
}

/// The task graph manager: named work items (IWorkItem) joined by dependencies into a directed graph and run on
/// the shared thread pool.
class VOBASE_API VoTaskManager
    : public ITaskManager,
      public Interceptor::CFramework<TaskManager::IInterceptorTaskManager,
                                     Interceptor::CDispatcher<TaskManager::IInterceptorTaskManager>>,
      private INonCopyable
{
public:
    VoTaskManager();
    /// Stops every task and waits for it (reset), then frees the graph.
    ~VoTaskManager() override;

    void Add(const char* name, BxSmartPointer<IWorkItem> item) override;
    /// Adds a work item made from a callable, `void()` or
    /// `void(TaskManager::SWorkItemStatus&)` (see VoWorkItemT):
    /// `manager.Add("load", [&] { load(); });`
    template <VoWorkItemCallable F>
    void Add(const char* name, F&& work)
    {
        Add(name, VoMakeWorkItem(std::forward<F>(work)));
    }
    void Remove(const char* name) override;
    bool Exists(const char* name) const override;
    void AddDependency(const char* from, const char* to) override;
    void RemoveDependency(const char* from, const char* to) override;
    void Start(const char* name, EPriority priority) override;
    void Stop(const char* name) override;
    void WaitUntilTerminate(const char* name) override;
    EComputationState GetStatus(const char* name) override;

    /// Stops every task, waits for all of them and empties the graph.
    void Reset();
    /// Waits for the tasks of every item.
    void WaitUntilTerminate();
    /// Writes the graph as text, or as a Graphviz digraph when `graphviz`.
    void DumpGraph(BxStreamWriteASCIIT<CStringA>& stream, bool graphviz);

    /// The state of the task that owns the item's component (idle for an unknown name).
    TaskManager::ETaskStatus GetTaskStatus(const char* name);
    /// The ID of the task that last ran the item's component; -1 for an unknown name or none.
    std::int32_t GetTaskID(const char* name);

    /// Replaces the logger (null restores the default "Core.TaskManager" logger).
    void SetLogger(BxSmartPointer<Logging::ILogger> logger);

    /// Sets the ID the next task gets (for tests of the wrap-around); 0 to 0x7FFFFFFF.
    void SetNextTaskID(std::int32_t id);

private:
    friend class TaskManager::VoTaskGraphProcessing;
    struct SImpl;
    class CLock;

    using NodeVisitor = std::function<void(VoGraphNode&)>;
    using NodeList = std::vector<VoGraphNode*>;

    // Slots of a node.
    BxSmartPointer<IWorkItem>& workItem(VoGraphNode& node) const;
    TaskManager::SWorkItemStatus& status(VoGraphNode& node) const;
    std::uint32_t& componentID(VoGraphNode& node) const;
    std::uint32_t& visitCounter(VoGraphNode& node) const;
    std::int32_t loadTaskID(VoGraphNode& node) const;
    void storeTaskID(VoGraphNode& node, std::int32_t id) const;

    VoGraphNode* findNode(const char* name) const;

    // Walks.
    /// The node and everything reachable from it.
    static void graphOperationDependentNodes(VoGraphNode& node, const NodeVisitor& visit);
    /// The node's whole connected component.
    static void graphOperationConnectedComponent(VoGraphNode& node, const NodeVisitor& visit);
    /// Gives the node's component (walking predecessors and/or successors) the number `id`;
    /// false when every reached node had it already.
    bool setConnectedComponentID(VoGraphNode& node, std::uint32_t id, bool predecessors, bool successors);
    void updateConnectedComponentIDs(VoGraphNode& from, VoGraphNode& to);
    void setComputationState(VoGraphNode& node, EComputationState state);
    void setBreakEvents(VoGraphNode& node, bool set);
    /// The component marking at the beginning (terminating false) and end of a task.
    void setTerminatedEvents(TaskManager::VoTaskGraphShape& shape, bool terminating, std::int32_t taskID);
    /// The nodes of the node's connected component (the start node first).
    static NodeList componentNodes(VoGraphNode& node);
    /// Checks the fork-join shape of what is reachable from `node`; returns the
    /// join at which a branch ended, or null. The first call resets the visit
    /// counters of `component` (the node's component; walked when null), and
    /// afterwards exactly the reachable nodes have a visit count.
    VoGraphNode* validateBeforeComputation(VoGraphNode& node, bool first, const NodeList* component = nullptr);
    VoGraphNode* validateBranch(VoGraphNode& node, bool inBranch);
    void arrive(VoGraphNode& node);

    // Cached shapes.
    /// The shape of the node's component and the node's index in it, built
    /// when the component has none. Caller: the data lock.
    std::pair<std::shared_ptr<TaskManager::VoTaskGraphShape>, std::uint32_t> shapeOf(VoGraphNode& node);
    /// Forgets the shape of the node's component (before an edit of it). Caller: the data lock.
    void invalidateShape(VoGraphNode& node);

    // Tasks.
    TaskManager::ETaskStatus getTaskStatus(VoGraphNode& node);
    TaskManager::ETaskStatus getTaskStatusLocked(std::int32_t taskID) const;
    void stop(VoGraphNode& node);
    /// Drops the controls of a task ID (never those of -1). Called by callers
    /// under the data lock and by pool threads with the critical section only.
    void setTaskTerminated(std::int32_t taskID);
    /// Called by a root task once its predecessor ended: marks the component
    /// pending (terminated events reset), sets its started-event and, unless
    /// the task was stopped meanwhile, clears the component's break events.
    /// Returns false when it was stopped.
    bool beginTask(TaskManager::VoTaskGraphProcessing& task);
    void initializeWorkItems(VoGraphNode& node);
    /// The critical section of the task-control map.
    BxCriticalSection& controlsLock() const;
    /// The current logger (kept alive as long as the manager).
    Logging::ILogger& currentLogger() const;
    void waitUntilTerminate(const std::string& name);
    void reset();

    bool logs(Logging::ELogLevel level) const;
    /// True when an interceptor is registered (so that a context is worth building).
    bool hasInterceptors() const;

    std::unique_ptr<SImpl> m_impl;
};
