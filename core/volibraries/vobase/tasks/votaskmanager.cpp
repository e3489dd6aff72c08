#include <vobase/tasks/votaskmanager.h>

#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/graphs/voattributedefinition.h>
#include <vobase/graphs/voconstructor.h>
#include <vobase/graphs/vodestructor.h>
#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vographnode.h>
#include <vobase/tasks/staskcontrols.h>
#include <vobase/tasks/votaskgraphprocessing.h>
#include <vobase/tasks/votaskgraphshape.h>
#include <vobase/tasks/votaskmanagerlist.h>
#include <vobase/tasks/votaskwaitwatch.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxthreadpool.h>

#include <thread>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory_resource>
#include <unordered_map>
#include <unordered_set>
#include <vector>

using namespace TaskManager;

namespace {

/// The file name the manager logs under.
constexpr const char* kSource = "core/volibraries/vobase/votaskmanager";
constexpr std::int32_t kNoTask = -1;
constexpr std::int32_t kLastTaskID = 0x7FFFFFFF;

/// How long a thread outside the pool watches a task end before it blocks.
constexpr std::chrono::microseconds kWaitSpin{4};

/// Tells the core that this is a wait loop (less power, no penalty for the
/// sibling hyper-thread).
inline void spinPause()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

/// Gives a task that is queued or running a few microseconds to end: short
/// walks end within that, and blocking costs a wake-up through the kernel on
/// both sides. The thread keeps its core (yielding it would hand it to
/// whatever else runs, for a whole time slice, on a loaded machine) and
/// never runs work.
void spinWhileBusy(const BxTask& task)
{
    const auto deadline = std::chrono::steady_clock::now() + kWaitSpin;
    for (unsigned round = 0; task.IsQueued() || task.IsRunning(); ++round)
    {
        spinPause();
        if (round % 64 == 63 && std::chrono::steady_clock::now() >= deadline)
            return;
    }
}

const char* checkedName(const char* name, const char* function)
{
    if (name == nullptr)
        BX_THROW(BxExceptionPreconditionViolation, function, "null name");
    return name;
}

}  // namespace

// The private implementation: the graph with its five node slots, the maps,
// the counters and the locks.
struct VoTaskManager::SImpl
{
    SImpl()
    {
        graph.AddDefinition(workItem);
        graph.AddDefinition(status);
        graph.AddDefinition(componentID);
        graph.AddDefinition(visitCounter);
        graph.AddDefinition(taskID);
        names.max_load_factor(1.5f);
        names.rehash(128);
        controls.max_load_factor(1.5f);
        controls.rehash(128);
        controls[kNoTask];  // a component that never ran answers as idle
    }

    VoGraph graph; ///< guarded by the data lock; pool threads read their busy component
    VoAttributeDefinition workItem{L"TaskGraph_WorkItem", 8, 68981, VoConstructor<BxSmartPointer<IWorkItem>>(),
                                   VoDestructor<BxSmartPointer<IWorkItem>>()};
    VoAttributeDefinition status{L"TaskGraph_WIStatus", 24, 68982, VoConstructor<SWorkItemStatus>(),
                                 VoDestructor<SWorkItemStatus>()};
    VoAttributeDefinition componentID{L"TaskGraph_ComponentID", 4, 68983, VoConstructor<std::uint32_t>(0u),
                                      VoDestructor<std::uint32_t>()};
    VoAttributeDefinition visitCounter{L"TaskGraph_VisitCounter", 4, 68984, VoConstructor<std::uint32_t>(0u),
                                       VoDestructor<std::uint32_t>()};
    VoAttributeDefinition taskID{L"TaskGraph_TaskID", 4, 68985, VoConstructor<std::int32_t>(kNoTask),
                                 VoDestructor<std::int32_t>()};

    std::unordered_map<std::string, VoGraphNode*> names; ///< guarded by the data lock
    std::unordered_map<std::int32_t, STaskControls> controls; ///< guarded by controlsLock
    /// Every node of a component that was started since its last edit, with
    /// the component's shape and the node's index in it; guarded by the data lock.
    std::unordered_map<const VoGraphNode*, std::pair<std::shared_ptr<VoTaskGraphShape>, std::uint32_t>> shapes;
    std::int32_t nextTaskID = 0;          ///< guarded by the data lock
    std::uint32_t nextComponentID = 0;    ///< guarded by the data lock
    BxCriticalSection controlsLock;       ///< guards controls and the tasks' predecessors
    VoDataManager dataManager;            ///< its root lock frames every public operation
    std::atomic<bool> resetting{false};   ///< written under the data lock, read anywhere

    BxCriticalSection loggerLock;                            ///< guards loggers
    std::vector<BxSmartPointer<Logging::ILogger>> loggers;   ///< every logger ever set, kept alive
    std::atomic<Logging::ILogger*> logger{nullptr};          ///< the current one
};

// The write lock on the private data manager's root, held for a scope.
class VoTaskManager::CLock
{
public:
    CLock(const VoTaskManager& manager, const char* function)
        : m_handle(manager.m_impl->dataManager, manager.m_impl->dataManager.GetRootNode())
    {
        if (!manager.m_impl->dataManager.TryLockAndWait(INFINITE))
            throw BxException(__FILE__, __LINE__, function);
    }

private:
    VoDataHandleLockOnly<1> m_handle;
};

// Logs a line only when the logger keeps its level: a filtered line costs one check.
#define VO_TASK_LOG(level, method, function, ...)                                  \
    do                                                                             \
    {                                                                              \
        Logging::ILogger* log_ = m_impl->logger.load(std::memory_order_acquire);  \
        if (log_->IsEnabled(level))                                                \
            log_->method(kSource, __LINE__, function, __VA_ARGS__);               \
    } while (false)

VoTaskManager::VoTaskManager() : m_impl(std::make_unique<SImpl>())
{
    SetLogger(nullptr);
    TaskManagerListAdd(*this);
}

VoTaskManager::~VoTaskManager()
{
    TaskManagerListRemove(*this);
    try
    {
        reset();
    }
    catch (...)
    {
        // A destructor must not throw; the tasks are gone or cannot be waited for.
    }
}

void VoTaskManager::SetLogger(BxSmartPointer<Logging::ILogger> logger)
{
    if (!logger)
        logger = BxSmartPointer<Logging::ILogger>(new Logging::CLogger(L"Core.TaskManager"));
    BxCriticalSectionLocker locker(m_impl->loggerLock);
    m_impl->loggers.push_back(logger);
    m_impl->logger.store(logger.get(), std::memory_order_release);
}

BxCriticalSection& VoTaskManager::controlsLock() const
{
    return m_impl->controlsLock;
}

Logging::ILogger& VoTaskManager::currentLogger() const
{
    return *m_impl->logger.load(std::memory_order_acquire);
}

bool VoTaskManager::logs(Logging::ELogLevel level) const
{
    return m_impl->logger.load(std::memory_order_acquire)->IsEnabled(level);
}

bool VoTaskManager::hasInterceptors() const
{
    return getDispatcher()->GetCount() != 0;
}

// ---------------------------------------------------------------------------
// Slots

BxSmartPointer<IWorkItem>& VoTaskManager::workItem(VoGraphNode& node) const
{
    return m_impl->graph.Get<BxSmartPointer<IWorkItem>>(m_impl->workItem, node.GetAttributeElement());
}

SWorkItemStatus& VoTaskManager::status(VoGraphNode& node) const
{
    return m_impl->graph.Get<SWorkItemStatus>(m_impl->status, node.GetAttributeElement());
}

std::uint32_t& VoTaskManager::componentID(VoGraphNode& node) const
{
    return m_impl->graph.Get<std::uint32_t>(m_impl->componentID, node.GetAttributeElement());
}

std::uint32_t& VoTaskManager::visitCounter(VoGraphNode& node) const
{
    return m_impl->graph.Get<std::uint32_t>(m_impl->visitCounter, node.GetAttributeElement());
}

// The task ID is written by Start while an older task of the component may
// still read it in its closing pass, hence the atomic access.
std::int32_t VoTaskManager::loadTaskID(VoGraphNode& node) const
{
    auto& id = m_impl->graph.Get<std::int32_t>(m_impl->taskID, node.GetAttributeElement());
    return std::atomic_ref<std::int32_t>(id).load(std::memory_order_acquire);
}

void VoTaskManager::storeTaskID(VoGraphNode& node, std::int32_t value) const
{
    auto& id = m_impl->graph.Get<std::int32_t>(m_impl->taskID, node.GetAttributeElement());
    std::atomic_ref<std::int32_t>(id).store(value, std::memory_order_release);
}

VoGraphNode* VoTaskManager::findNode(const char* name) const
{
    const auto entry = m_impl->names.find(name);
    return entry == m_impl->names.end() ? nullptr : entry->second;
}

// ---------------------------------------------------------------------------
// Walks

namespace {

/// Visits every node reachable from `start` along the chosen directions once,
/// skipping `excluded`.
template <class Visit>
void walkNodes(VoGraphNode& start, bool predecessors, bool successors, const VoGraphNode* excluded, Visit&& visit)
{
    // The bookkeeping lives on the stack for components of a few hundred nodes.
    std::array<std::byte, 16384> buffer;
    std::pmr::monotonic_buffer_resource arena(buffer.data(), buffer.size());
    std::pmr::unordered_set<VoGraphNode*> seen(&arena);
    seen.reserve(128);
    std::pmr::vector<VoGraphNode*> stack(&arena);
    stack.reserve(32);
    stack.push_back(&start);
    seen.insert(&start);
    auto push = [&](VoGraphNode* node) {
        if (node != excluded && seen.insert(node).second)
            stack.push_back(node);
    };
    while (!stack.empty())
    {
        VoGraphNode* node = stack.back();
        stack.pop_back();
        visit(*node);
        if (successors)
            for (const auto& connection : node->GetOutgoingConnections())
                push(connection->GetNode(VoGraphConnection::eNT_Target));
        if (predecessors)
            for (const auto& connection : node->GetIncomingConnections())
                push(connection->GetNode(VoGraphConnection::eNT_Source));
    }
}

}  // namespace

void VoTaskManager::graphOperationDependentNodes(VoGraphNode& node, const NodeVisitor& visit)
{
    walkNodes(node, false, true, nullptr, visit);
}

void VoTaskManager::graphOperationConnectedComponent(VoGraphNode& node, const NodeVisitor& visit)
{
    walkNodes(node, true, true, nullptr, visit);
}

bool VoTaskManager::setConnectedComponentID(VoGraphNode& node, std::uint32_t id, bool predecessors, bool successors)
{
    bool consumed = false;
    walkNodes(node, predecessors, successors, nullptr, [&](VoGraphNode& n) {
        std::uint32_t& current = componentID(n);
        consumed = consumed || current != id;
        current = id;
    });
    return consumed;
}

void VoTaskManager::updateConnectedComponentIDs(VoGraphNode& from, VoGraphNode& to)
{
    bool reached = false;
    walkNodes(from, true, true, nullptr, [&](VoGraphNode& n) { reached = reached || &n == &to; });
    if (!reached)
        setConnectedComponentID(to, m_impl->nextComponentID++, true, true);
}

void VoTaskManager::setComputationState(VoGraphNode& node, EComputationState state)
{
    walkNodes(node, false, true, nullptr, [&](VoGraphNode& n) { status(n).computationState.store(state); });
}

VoTaskManager::NodeList VoTaskManager::componentNodes(VoGraphNode& node)
{
    NodeList nodes;
    walkNodes(node, true, true, nullptr, [&](VoGraphNode& n) { nodes.push_back(&n); });
    return nodes;
}

void VoTaskManager::setBreakEvents(VoGraphNode& node, bool set)
{
    walkNodes(node, true, true, nullptr, [&](VoGraphNode& n) {
        BxEvent& event = status(n).breakEvent;
        set ? event.Set() : event.Reset();
    });
}

// The component marking. At the end of a task (terminating), items of this
// task that are still scheduled were never reached: they become aborted;
// every item is marked not running and terminated. At the beginning the
// terminated events are reset, so that waiters wait for the new run.
void VoTaskManager::setTerminatedEvents(VoTaskGraphShape& shape, bool terminating, std::int32_t taskID)
{
    const std::uint32_t count = shape.GetCount();
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const VoTaskGraphShape::SEntry& entry = shape.Entry(i);
        SWorkItemStatus& s = *entry.status;
        if (!terminating)
        {
            s.terminatedEvent.Reset();
            continue;
        }
        EComputationState scheduled = eCS_Scheduled;
        if (s.computationState.load(std::memory_order_acquire) == eCS_Scheduled &&
            std::atomic_ref<std::int32_t>(*entry.taskID).load(std::memory_order_acquire) == taskID)
            s.computationState.compare_exchange_strong(scheduled, eCS_Aborted);
        s.running.store(0, std::memory_order_release);
        s.terminatedEvent.Set();
    }
}

void VoTaskManager::SetNextTaskID(std::int32_t id)
{
    if (id < 0)
        BX_THROW(BxExceptionPreconditionViolation, "VoTaskManager::SetNextTaskID", "negative task ID");
    CLock lock(*this, "VoTaskManager::SetNextTaskID");
    m_impl->nextTaskID = id;
}

// ---------------------------------------------------------------------------
// Cached shapes

std::pair<std::shared_ptr<VoTaskGraphShape>, std::uint32_t> VoTaskManager::shapeOf(VoGraphNode& node)
{
    const auto known = m_impl->shapes.find(&node);
    if (known != m_impl->shapes.end())
        return known->second;
    auto shape = std::make_shared<VoTaskGraphShape>(
        componentNodes(node), [this](VoGraphNode& n, VoTaskGraphShape::SEntry& entry) {
            entry.item = workItem(n).get();
            entry.status = &status(n);
            entry.taskID = &m_impl->graph.Get<std::int32_t>(m_impl->taskID, n.GetAttributeElement());
        });
    std::uint32_t index = 0;
    const NodeList& nodes = shape->GetNodes();
    for (std::uint32_t i = 0; i < nodes.size(); ++i)
    {
        m_impl->shapes[nodes[i]] = {shape, i};
        if (nodes[i] == &node)
            index = i;
    }
    return {std::move(shape), index};
}

void VoTaskManager::invalidateShape(VoGraphNode& node)
{
    const auto known = m_impl->shapes.find(&node);
    if (known == m_impl->shapes.end())
        return;
    const std::shared_ptr<VoTaskGraphShape> shape = known->second.first;
    for (VoGraphNode* n : shape->GetNodes())
        m_impl->shapes.erase(n);
}

// A node may be reached as often as it has predecessors (once at least);
// more arrivals mean branches that do not meet properly, or a cycle.
void VoTaskManager::arrive(VoGraphNode& node)
{
    const std::uint32_t predecessors = node.GetIncomingConnections().GetCount();
    if (++visitCounter(node) > std::max<std::uint32_t>(1, predecessors))
        BX_THROW(BxException, "VoTaskManager::validateBeforeComputation",
                 "malformed fork/join structure at task " + node.GetName());
}

VoGraphNode* VoTaskManager::validateBeforeComputation(VoGraphNode& node, bool first, const NodeList* component)
{
    if (first)
    {
        if (component != nullptr)
            for (VoGraphNode* n : *component)
                visitCounter(*n) = 0;
        else
            walkNodes(node, true, true, nullptr, [&](VoGraphNode& n) { visitCounter(n) = 0; });
        arrive(node);
    }
    return validateBranch(node, !first);
}

// Follows the walk a task would take from `start`. Inside a branch a join (a
// node with several predecessors) ends the branch; every branch of a fork
// must end at the same join (or all at the end of the graph), where the walk
// goes on.
VoGraphNode* VoTaskManager::validateBranch(VoGraphNode& start, bool inBranch)
{
    VoGraphNode* node = &start;
    for (;;)
    {
        const VoGraphConnectionList& successors = node->GetOutgoingConnections();
        if (successors.IsEmpty())
            return nullptr;
        if (successors.GetCount() == 1)
        {
            VoGraphNode* next = successors[0]->GetNode(VoGraphConnection::eNT_Target);
            arrive(*next);
            if (inBranch && next->GetIncomingConnections().GetCount() > 1)
                return next;
            node = next;
            continue;
        }
        VoGraphNode* join = nullptr;
        bool firstBranch = true;
        for (const auto& connection : successors)
        {
            VoGraphNode* branch = connection->GetNode(VoGraphConnection::eNT_Target);
            arrive(*branch);
            VoGraphNode* end = branch->GetIncomingConnections().GetCount() > 1
                                   ? branch
                                   : validateBeforeComputation(*branch, false);
            if (!firstBranch && end != join)
                BX_THROW(BxException, "VoTaskManager::validateBeforeComputation",
                         "the branches of task " + node->GetName() + " end at different joins");
            join = end;
            firstBranch = false;
        }
        if (join == nullptr)
            return nullptr;
        node = join;
    }
}

// ---------------------------------------------------------------------------
// Tasks

ETaskStatus VoTaskManager::getTaskStatusLocked(std::int32_t taskID) const
{
    const auto entry = m_impl->controls.find(taskID);
    if (entry == m_impl->controls.end())
        return eTS_Idle;
    const STaskControls& controls = entry->second;
    if (!controls.task)
        return controls.scheduled ? eTS_Scheduled : eTS_Idle;
    if (!controls.task->IsRunning())
        return eTS_Scheduled;
    const BxSmartPointer<BxTask>& predecessor = controls.task->m_predecessor;
    return predecessor && predecessor->IsRunning() ? eTS_Scheduled : eTS_Running;
}

ETaskStatus VoTaskManager::getTaskStatus(VoGraphNode& node)
{
    BxCriticalSectionLocker locker(m_impl->controlsLock);
    return getTaskStatusLocked(loadTaskID(node));
}

void VoTaskManager::stop(VoGraphNode& node)
{
    BxCriticalSectionLocker locker(m_impl->controlsLock);
    const std::int32_t id = loadTaskID(node);
    if (getTaskStatusLocked(id) == eTS_Idle)
        return;
    // Under the section, so that a root task that is about to begin sees
    // either both the break and the cleared flag or neither.
    setBreakEvents(node, true);
    const auto entry = m_impl->controls.find(id);
    if (entry != m_impl->controls.end())
        entry->second.scheduled = false;
}

void VoTaskManager::setTaskTerminated(std::int32_t taskID)
{
    if (taskID == kNoTask)
        return;
    BxSmartPointer<VoTaskGraphProcessing> task;  // released outside the section
    BxCriticalSectionLocker locker(m_impl->controlsLock);
    const auto entry = m_impl->controls.find(taskID);
    if (entry == m_impl->controls.end())
        return;
    task = std::move(entry->second.task);
    m_impl->controls.erase(entry);
}

bool VoTaskManager::beginTask(VoTaskGraphProcessing& task)
{
    VoTaskGraphShape& shape = *task.m_shape;
    setTerminatedEvents(shape, false, task.m_taskID);
    BxSmartPointer<BxTask> predecessor;  // released outside the section
    BxCriticalSectionLocker locker(m_impl->controlsLock);
    predecessor = std::move(task.m_predecessor);
    const auto entry = m_impl->controls.find(task.m_taskID);
    const bool scheduled = entry != m_impl->controls.end() && entry->second.scheduled;
    if (scheduled)
    {
        const std::uint32_t count = shape.GetCount();
        for (std::uint32_t i = 0; i < count; ++i)
        {
            BxEvent& event = shape.Entry(i).status->breakEvent;
            if (event.IsSet())
                event.Reset();
        }
    }
    if (task.m_startedEvent)
        task.m_startedEvent->Set();
    return scheduled;
}

// Before the walk: the break events of the component are cleared (inside
// beginTask), unless the task was stopped before it began; the items need
// nothing else.
void VoTaskManager::initializeWorkItems(VoGraphNode& node)
{
    static_cast<void>(node);
}

// ---------------------------------------------------------------------------
// Public operations

void VoTaskManager::Add(const char* name, BxSmartPointer<IWorkItem> item)
{
    checkedName(name, "VoTaskManager::Add");
    if (m_impl->resetting.load())
        VO_TASK_LOG(Logging::eLL_Warn, Warn, "VoTaskManager::Add", L"Adding task %S while task manager is resetting!",
                    name);
    else
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Add", L"Adding task %S", name);
    dispatch(&IInterceptorTaskManager::OnAdd, CContextWorkItem(*this, name, 1));

    CLock lock(*this, "VoTaskManager::Add");
    if (findNode(name) != nullptr)
        BX_THROW(BxException, "VoTaskManager::Add", std::string("task already exists: ") + name);
    if (!item)
        BX_THROW(BxExceptionPreconditionViolation, "VoTaskManager::Add", "null work item");
    auto* node = new VoGraphNode(name);
    m_impl->graph.InsertNode(node);
    m_impl->names.emplace(name, node);
    workItem(*node) = std::move(item);
    SWorkItemStatus& s = status(*node);
    s.running.store(0);
    s.terminatedEvent.Set();
    s.computationState.store(eCS_NotComputed);
    componentID(*node) = m_impl->nextComponentID++;
}

void VoTaskManager::AddDependency(const char* from, const char* to)
{
    checkedName(from, "VoTaskManager::AddDependency");
    checkedName(to, "VoTaskManager::AddDependency");
    // The names are logged in reverse order (to, from), as the library always did.
    if (m_impl->resetting.load())
        VO_TASK_LOG(Logging::eLL_Warn, Warn, "VoTaskManager::AddDependency",
                    L"Adding dependency: (%S, %S) while task manager is resetting!", to, from);
    else
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::AddDependency", L"Adding dependency: (%S, %S)", to,
                    from);
    dispatch(&IInterceptorTaskManager::OnAddDependency, CContextWorkItemChangeDependency(*this, 0, from, to));

    CLock lock(*this, "VoTaskManager::AddDependency");
    VoGraphNode* source = findNode(from);
    VoGraphNode* target = findNode(to);
    if (source == nullptr || target == nullptr)
        BX_THROW(BxException, "VoTaskManager::AddDependency",
                 std::string("unknown task: ") + (source == nullptr ? from : to));
    if (getTaskStatus(*source) != eTS_Idle || getTaskStatus(*target) != eTS_Idle)
        BX_THROW(BxException, "VoTaskManager::AddDependency",
                 std::string("the task of ") + from + " or " + to + " is not idle");
    invalidateShape(*source);
    invalidateShape(*target);
    source->AddConnection(*target, 0.0f);
    setConnectedComponentID(*target, componentID(*source), true, true);
}

void VoTaskManager::Remove(const char* name)
{
    checkedName(name, "VoTaskManager::Remove");
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Remove", L"Removing task %S", name);

    CLock lock(*this, "VoTaskManager::Remove");
    VoGraphNode* node = findNode(name);
    if (node == nullptr)
        return;
    if (getTaskStatus(*node) != eTS_Idle)
        BX_THROW(BxException, "VoTaskManager::Remove", std::string("the task of ") + name + " is not idle");

    invalidateShape(*node);
    // Incoming edges first, so that the renumbering below cannot reach the
    // predecessors through this node.
    std::vector<VoGraphNode*> sources;
    for (const auto& connection : node->GetIncomingConnections())
        sources.push_back(connection->GetNode(VoGraphConnection::eNT_Source));
    for (VoGraphNode* source : sources)
        source->RemoveConnection(*node);

    // What the node held together falls apart into the successors' components.
    std::uint32_t running = m_impl->nextComponentID;
    std::vector<VoGraphNode*> successors;
    for (const auto& connection : node->GetOutgoingConnections())
        successors.push_back(connection->GetNode(VoGraphConnection::eNT_Target));
    for (VoGraphNode* successor : successors)
    {
        bool consumed = false;
        walkNodes(*successor, true, true, node, [&](VoGraphNode& n) {
            consumed = consumed || componentID(n) != running;
            componentID(n) = running;
        });
        if (consumed)
        {
            ++running;
            ++m_impl->nextComponentID;
        }
    }

    node->RemoveAllConnections();
    m_impl->names.erase(name);
    workItem(*node).reset();
    m_impl->graph.RemoveNode(*node);
}

void VoTaskManager::RemoveDependency(const char* from, const char* to)
{
    checkedName(from, "VoTaskManager::RemoveDependency");
    checkedName(to, "VoTaskManager::RemoveDependency");
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::RemoveDependency", L"Removing dependency: (%S, %S)", to,
                from);
    dispatch(&IInterceptorTaskManager::OnRemoveDependency, CContextWorkItemChangeDependency(*this, 1, from, to));

    CLock lock(*this, "VoTaskManager::RemoveDependency");
    VoGraphNode* source = findNode(from);
    VoGraphNode* target = findNode(to);
    if (source == nullptr || target == nullptr)
        return;
    if (getTaskStatus(*source) != eTS_Idle || getTaskStatus(*target) != eTS_Idle)
        BX_THROW(BxException, "VoTaskManager::RemoveDependency",
                 std::string("the task of ") + from + " or " + to + " is not idle");
    invalidateShape(*source);
    if (source->RemoveConnection(*target))
        updateConnectedComponentIDs(*source, *target);
}

void VoTaskManager::Start(const char* name, EPriority priority)
{
    checkedName(name, "VoTaskManager::Start");
    const bool resetting = m_impl->resetting.load();
    if (resetting)
        VO_TASK_LOG(Logging::eLL_Warn, Warn, "VoTaskManager::Start",
                    L"User started task %S while task manager is resetting. This will be ignored!", name);
    else
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Start", L"User started task %S", name);
    dispatch(&IInterceptorTaskManager::OnStart, CContextStart(*this, name, priority));
    if (resetting)
        return;

    CLock lock(*this, "VoTaskManager::Start");
    VoGraphNode* node = findNode(name);
    if (node == nullptr)
        return;
    auto [shape, start] = shapeOf(*node);
    if (!shape->Entry(start).validated)
    {
        validateBeforeComputation(*node, true, &shape->GetNodes());
        shape->Entry(start).validated = true;
    }

    // The task that owns the component now, if any.
    const std::int32_t oldID = loadTaskID(*node);
    BxSmartPointer<BxTask> predecessor;
    BxEvent started;
    ETaskStatus taskStatus;
    {
        BxCriticalSectionLocker locker(m_impl->controlsLock);
        taskStatus = getTaskStatusLocked(oldID);
        const auto entry = m_impl->controls.find(oldID);
        if (entry != m_impl->controls.end())
        {
            predecessor = entry->second.task;
            started = entry->second.startedEvent;
        }
    }
    SWorkItemStatus& nodeStatus = status(*node);
    switch (taskStatus)
    {
    case eTS_Running:
        started.Wait(INFINITE);
        if (nodeStatus.running.load() == 0 && !nodeStatus.terminatedEvent.IsSet())
            return;  // the running task has not reached the node yet and will compute it
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Start", L"Stopping automatically (Task %d) %S", oldID,
                    name);
        stop(*node);
        setTaskTerminated(oldID);
        break;
    case eTS_Scheduled:
        if (nodeStatus.computationState.load() == eCS_Scheduled)
            return;  // the scheduled task will compute it
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Start", L"Stopping automatically (scheduled Task %d)",
                    oldID);
        stop(*node);
        setTaskTerminated(oldID);
        break;
    case eTS_Idle:
        predecessor.reset();
        break;
    }

    const std::int32_t id = m_impl->nextTaskID;
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Start", L"New task (ID %d) %S", id, name);
    const int poolPriority = priority == eP_Low ? 0 : priority == eP_Normal ? 1 : 2;
    BxSmartPointer<VoTaskGraphProcessing> task;
    {
        BxCriticalSectionLocker locker(m_impl->controlsLock);
        STaskControls& controls = m_impl->controls[id];
        controls.scheduled = true;
        controls.startedEvent.Reset();
        task = BxSmartPointer<VoTaskGraphProcessing>(
            new VoTaskGraphProcessing(*this, shape, start, id, controls.startedEvent, predecessor, poolPriority));
        controls.task = task;
    }
    // One pass over the component: every node gets the new task ID, and the
    // start node and its dependents are scheduled (the ID first, so that the
    // closing pass of a stopped older task leaves them alone).
    // (a named reference: clang 14 cannot capture a structured binding)
    auto& component = *shape;
    component.ForEachNode(
        start,
        [&component, id](std::uint32_t i) {
            std::atomic_ref<std::int32_t>(*component.Entry(i).taskID).store(id, std::memory_order_release);
        },
        [&component](std::uint32_t i) {
            component.Entry(i).status->computationState.store(eCS_Scheduled, std::memory_order_release);
        });
    m_impl->nextTaskID = id == kLastTaskID ? 0 : id + 1;
    BxThreadPool::GetInstance().AddTask(task, poolPriority);
}

void VoTaskManager::Stop(const char* name)
{
    checkedName(name, "VoTaskManager::Stop");
    if (logs(Logging::eLL_Info))
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::Stop", L"User stopped task %S (ID %d)", name,
                    GetTaskID(name));
    dispatch(&IInterceptorTaskManager::OnStop, CContextStop(*this, name));

    CLock lock(*this, "VoTaskManager::Stop");
    VoGraphNode* node = findNode(name);
    if (node == nullptr)
        return;
    setComputationState(*node, eCS_Stopped);
    stop(*node);
}

ITaskManager::EComputationState VoTaskManager::GetStatus(const char* name)
{
    checkedName(name, "VoTaskManager::GetStatus");
    CLock lock(*this, "VoTaskManager::GetStatus");
    VoGraphNode* node = findNode(name);
    if (node == nullptr)
        BX_THROW(BxException, "VoTaskManager::GetStatus", std::string("unknown task: ") + name);
    return status(*node).computationState.load();
}

bool VoTaskManager::Exists(const char* name) const
{
    checkedName(name, "VoTaskManager::Exists");
    CLock lock(*this, "VoTaskManager::Exists");
    return findNode(name) != nullptr;
}

ETaskStatus VoTaskManager::GetTaskStatus(const char* name)
{
    checkedName(name, "VoTaskManager::GetTaskStatus");
    CLock lock(*this, "VoTaskManager::GetTaskStatus");
    VoGraphNode* node = findNode(name);
    return node == nullptr ? eTS_Idle : getTaskStatus(*node);
}

std::int32_t VoTaskManager::GetTaskID(const char* name)
{
    checkedName(name, "VoTaskManager::GetTaskID");
    CLock lock(*this, "VoTaskManager::GetTaskID");
    VoGraphNode* node = findNode(name);
    return node == nullptr ? kNoTask : loadTaskID(*node);
}

void VoTaskManager::WaitUntilTerminate(const char* name)
{
    checkedName(name, "VoTaskManager::WaitUntilTerminate");
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskManager::WaitUntilTerminate", L"Waiting for task %S", name);
    waitUntilTerminate(name);
}

void VoTaskManager::waitUntilTerminate(const std::string& name)
{
    BxSmartPointer<VoTaskGraphProcessing> task;
    BxEvent terminated(true);
    std::int32_t taskID = kNoTask;
    std::int32_t ownTaskID = kNoTask;  // the task of this thread's work item that the wait would wait for
    {
        CLock lock(*this, "VoTaskManager::waitUntilTerminate");
        VoGraphNode* node = findNode(name.c_str());
        if (node == nullptr)
            return;
        BxCriticalSectionLocker locker(m_impl->controlsLock);
        taskID = loadTaskID(*node);
        const auto entry = m_impl->controls.find(taskID);
        if (entry != m_impl->controls.end())
            task = entry->second.task;
        terminated = status(*node).terminatedEvent;
        // The task waited for, or a task it waits for before it begins.
        if (VoTaskWaitWatch::RunsTaskOf(this))
            for (const VoTaskGraphProcessing* t = task.get(); t != nullptr && ownTaskID == kNoTask;
                 t = static_cast<const VoTaskGraphProcessing*>(t->m_predecessor.get()))
                if (VoTaskWaitWatch::RunsTask(this, t->m_taskID))
                    ownTaskID = t->m_taskID;
    }
    // From inside the task waited for, the wait cannot end: it is reported.
    if (ownTaskID != kNoTask)
        return VoTaskWaitWatch::WaitForOwnTask(task, terminated, name, taskID, ownTaskID);
    if (task)
    {
        // A pool thread waits through the task, which lets the pool help;
        // any other thread only waits.
        if (!BxThreadPool::IsPoolThread())
            spinWhileBusy(*task);
        task->WaitUntilTerminate(INFINITE);
    }
    terminated.Wait(INFINITE);
}

// The names are taken under the lock, which is released before waiting: the
// tasks do not need it to end, but nothing may edit the graph meanwhile
// without the caller's knowledge.
void VoTaskManager::WaitUntilTerminate()
{
    std::vector<std::string> names;
    {
        CLock lock(*this, "VoTaskManager::WaitUntilTerminate");
        names.reserve(m_impl->names.size());
        for (const auto& entry : m_impl->names)
            names.push_back(entry.first);
    }
    for (const std::string& name : names)
        waitUntilTerminate(name);
}

void VoTaskManager::Reset()
{
    reset();
}

void VoTaskManager::reset()
{
    dispatch(&IInterceptorTaskManager::OnReset, CContextReset(*this));
    std::vector<std::string> names;
    {
        CLock lock(*this, "VoTaskManager::reset");
        m_impl->resetting.store(true);
        BxCriticalSectionLocker locker(m_impl->controlsLock);
        for (VoGraphNode& node : m_impl->graph)
            status(node).breakEvent.Set();
        for (auto& entry : m_impl->controls)
            entry.second.scheduled = false;  // a task that has not begun yet must not clear the breaks
        names.reserve(m_impl->names.size());
        for (const auto& entry : m_impl->names)
            names.push_back(entry.first);
    }
    for (const std::string& name : names)
        waitUntilTerminate(name);

    CLock lock(*this, "VoTaskManager::reset");
    m_impl->names.clear();
    m_impl->shapes.clear();
    m_impl->graph.RemoveAllNodes();
    m_impl->nextComponentID = 0;
    {
        BxCriticalSectionLocker locker(m_impl->controlsLock);
        for (auto entry = m_impl->controls.begin(); entry != m_impl->controls.end();)
            entry = entry->first == kNoTask ? std::next(entry) : m_impl->controls.erase(entry);
    }
    m_impl->resetting.store(false);
}

void VoTaskManager::DumpGraph(BxStreamWriteASCIIT<CStringA>& stream, bool graphviz)
{
    CLock lock(*this, "VoTaskManager::DumpGraph");
    VoGraph& graph = m_impl->graph;
    if (graphviz)
    {
        stream << "digraph G {\r\n";
        for (VoGraphNode& node : graph)
            stream << "\"node" << node.GetName() << "\" [label = \"" << node.GetName() << "(" << componentID(node)
                   << "," << loadTaskID(node) << "," << status(node).terminatedEvent.IsSet() << ")\"];\r\n";
        for (VoGraphNode& node : graph)
        {
            if (node.GetOutgoingConnections().IsEmpty())
                stream << "\"node" << node.GetName() << "\";\r\n";
            for (const auto& connection : node.GetOutgoingConnections())
                stream << "\"node" << node.GetName() << "\" -> "
                       << "\"node" << connection->GetNode(VoGraphConnection::eNT_Target)->GetName() << "\";\r\n";
        }
        stream << "}\r\n";
        return;
    }
    stream << "Task-Manager-Dump:\n"
           << "==================\n"
           << "Nodes:";
    for (VoGraphNode& node : graph)
        stream << "\t\"Node " << node.GetName() << "\" [Label = \"" << node.GetName()
               << "Component-ID: " << componentID(node) << ", Task-ID: " << loadTaskID(node)
               << ", Terminated: " << status(node).terminatedEvent.IsSet() << ")\"];\r\n";
    stream << "Dependencies:";
    for (VoGraphNode& node : graph)
    {
        if (node.GetOutgoingConnections().IsEmpty())
            stream << "\t\"Node " << node.GetName() << "\" -> Is Last Node"
                   << "\";\r\n";
        for (const auto& connection : node.GetOutgoingConnections())
            stream << "\t\"Node " << node.GetName() << "\" -> "
                   << "\"Node " << connection->GetNode(VoGraphConnection::eNT_Target)->GetName() << "\";\r\n";
    }
    stream << "}\r\n";
}
