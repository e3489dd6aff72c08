#include <vobase/tasks/votaskgraphprocessing.h>

#include <vobase/graphs/vographnode.h>
#include <vobase/tasks/votaskgraphshape.h>
#include <vobase/tasks/votaskmanager.h>
#include <vobase/tasks/votasktrace.h>
#include <vobase/tasks/votaskwaitwatch.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxthreadpool.h>

#include <utility>

namespace TaskManager {

namespace {

constexpr const char* kSource = "core/volibraries/vobase/votaskmanager";

}  // namespace

// Logs through the manager's logger only when it keeps the level.
#define VO_TASK_LOG(level, method, function, ...)                       \
    do                                                                  \
    {                                                                   \
        Logging::ILogger& log_ = m_manager->currentLogger();           \
        if (log_.IsEnabled(level))                                      \
            log_.method(kSource, __LINE__, function, __VA_ARGS__);     \
    } while (false)

VoTaskGraphProcessing::VoTaskGraphProcessing(VoTaskManager& manager, std::shared_ptr<VoTaskGraphShape> shape,
                                             std::uint32_t start, std::int32_t taskID, const BxEvent& startedEvent,
                                             BxSmartPointer<BxTask> predecessor, int priority)
    : m_manager(&manager), m_ownedShape(std::move(shape)), m_shape(m_ownedShape.get()), m_start(start),
      m_stop(VoTaskGraphShape::kNone), m_taskID(taskID), m_startedEvent(startedEvent),
      m_predecessor(std::move(predecessor)), m_priority(priority)
{
}

VoTaskGraphProcessing::VoTaskGraphProcessing(VoTaskManager& manager, VoTaskGraphShape& shape, std::uint32_t start,
                                             std::int32_t taskID, int priority)
    : m_manager(&manager), m_shape(&shape), m_start(start), m_stop(VoTaskGraphShape::kNone), m_taskID(taskID),
      m_priority(priority)
{
}

VoTaskGraphProcessing::~VoTaskGraphProcessing() = default;

VoGraphNode& VoTaskGraphProcessing::GetStartNode() const noexcept
{
    return *m_shape->Entry(m_start).node;
}

VoGraphNode* VoTaskGraphProcessing::GetStopNode() const noexcept
{
    const std::uint32_t stop = m_stop.load(std::memory_order_acquire);
    return stop == VoTaskGraphShape::kNone ? nullptr : m_shape->Entry(stop).node;
}

void VoTaskGraphProcessing::dispatchAfterRun()
{
    if (!m_manager->hasInterceptors())
        return;
    m_timer.Stop();
    try
    {
        m_manager->dispatch(&IInterceptorTaskManager::OnAfterRun,
                            CContextAfterRun(*m_manager, GetStartNode().GetName(), m_timer.GetElapsed()));
    }
    catch (...)
    {
        // An interceptor's failure must not turn the run into a failure.
    }
}

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoTaskGraphProcessing::run()
{
    m_timer.Start();
    // The timing context goes out on every way out of the run.
    struct SAfterRun
    {
        VoTaskGraphProcessing& task;
        ~SAfterRun() { task.dispatchAfterRun(); }
    } afterRun{*this};

    if (IsRoot())
    {
        BxSmartPointer<BxTask> predecessor;
        {
            BxCriticalSectionLocker locker(m_manager->controlsLock());
            predecessor = m_predecessor;
        }
        if (predecessor && !predecessor->WaitUntilTerminate(INFINITE))
            return false;
        predecessor.reset();
        m_manager->beginTask(*this);
        m_manager->initializeWorkItems(GetStartNode());
    }
    return walk();
}

bool VoTaskGraphProcessing::walk()
{
    std::uint32_t index = m_start;
    bool forkedJoin = false;  // the forking task runs the join its children met at
    for (;;)
    {
        const VoTaskGraphShape::SEntry& entry = m_shape->Entry(index);
        if (!forkedJoin && entry.predecessorCount > 1 && !IsRoot())
        {
            m_stop.store(index, std::memory_order_release);
            return true;
        }
        forkedJoin = false;
        if (!process(index))
            return true;
        if (entry.successorCount == 0)
            return true;
        if (entry.successorCount == 1)
        {
            index = m_shape->Successors(index)[0];
            continue;
        }
        bool ok = true;
        index = fork(index, ok);
        if (!ok)
            return false;
        if (index == VoTaskGraphShape::kNone)
            return true;
        forkedJoin = true;
    }
}

bool VoTaskGraphProcessing::process(std::uint32_t index)
{
    const VoTaskGraphShape::SEntry& entry = m_shape->Entry(index);
    SWorkItemStatus& status = *entry.status;
    if (status.breakEvent.IsSet())
    {
        status.terminatedEvent.Set();
        return false;
    }
    IWorkItem& item = *entry.item;
    item.Prepare(*entry.node);
    if (!item.IsReady())
    {
        VO_TASK_LOG(Logging::eLL_Warn, Warn, "VoTaskGraphProcessing::run", L"WorkItem not ready -> abort (ID %d) %S",
                    m_taskID, entry.node->GetName().c_str());
        status.computationState.store(ITaskManager::eCS_Aborted);
        return false;
    }
    status.running.store(1, std::memory_order_release);
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskGraphProcessing::run", L"Running (ID %d) %S", m_taskID,
                entry.node->GetName().c_str());
    {
        const VoTaskWaitWatch::CRunning running(m_manager, m_taskID, entry.node->GetName());
        const VoTaskTrace::CWorkItemScope traceSpan(*entry.node);
        item.Run(status);
    }
    status.running.store(0, std::memory_order_release);
    status.terminatedEvent.Set();
    if (status.breakEvent.IsSet())
    {
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskGraphProcessing::run", L"Abort (ID %d) %S", m_taskID,
                    entry.node->GetName().c_str());
        return false;
    }
    status.computationState.store(ITaskManager::eCS_Computed, std::memory_order_release);
    return true;
}

// A child from an earlier run of the component is idle again: its forking
// task waited for it. It is re-armed in place; a slot still empty gets a new
// child.
VoTaskGraphProcessing& VoTaskGraphProcessing::child(BxSmartPointer<VoTaskGraphProcessing>& slot,
                                                    std::uint32_t start)
{
    if (!slot || slot->IsQueued() || slot->IsRunning())
        slot = BxSmartPointer<VoTaskGraphProcessing>(
            new VoTaskGraphProcessing(*m_manager, *m_shape, start, m_taskID, m_priority));
    VoTaskGraphProcessing& task = *slot;
    task.m_start = start;
    task.m_stop.store(VoTaskGraphShape::kNone, std::memory_order_relaxed);
    task.m_taskID = m_taskID;
    task.m_priority = m_priority;
    return task;
}

// Every branch becomes a child task. All but the last go to the pool; the
// last runs right here, which saves it the trip through the pool and keeps
// this thread busy. Then every child is waited for (on a pool thread a child
// still queued runs right here), the newest first: those are the ones this
// thread most likely runs itself, while idle workers take the oldest. Only
// then are their stop nodes compared, in array order: they must all have
// stopped at the same join; when one of them ended before reaching it (a
// break, an item that was not ready or failed), the join is not run.
std::uint32_t VoTaskGraphProcessing::fork(std::uint32_t index, bool& ok)
{
    const std::span<const std::uint32_t> successors = m_shape->Successors(index);
    const std::span<BxSmartPointer<VoTaskGraphProcessing>> children = m_shape->Children(index);
    const std::size_t last = successors.size() - 1;
    BxThreadPool& pool = BxThreadPool::GetInstance();
    for (std::size_t i = 0; i < last; ++i)
    {
        child(children[i], successors[i]);
        if (!pool.AddTask(children[i], m_priority))
        {
            // The pool still holds the old child: this run gets a new one.
            children[i].reset();
            child(children[i], successors[i]);
            pool.AddTask(children[i], m_priority);
        }
    }
    runInline(child(children[last], successors[last]));

    for (std::size_t i = last; i-- > 0;)
        children[i]->WaitUntilTerminate(INFINITE);

    std::uint32_t join = VoTaskGraphShape::kNone;
    bool reached = true;
    for (std::size_t i = 0; i < successors.size(); ++i)
    {
        const std::uint32_t stop = children[i]->m_stop.load(std::memory_order_acquire);
        if (stop == VoTaskGraphShape::kNone)
        {
            reached = false;
            continue;
        }
        if (join != VoTaskGraphShape::kNone && stop != join)
            ok = false;
        join = stop;
    }
    return reached ? join : VoTaskGraphShape::kNone;
}

void VoTaskGraphProcessing::runInline(VoTaskGraphProcessing& child)
{
    try
    {
        child.Run();
    }
    catch (...)
    {
        // As on the pool: the child's failure is marked on its node and logged
        // by its onException; what it rethrows does not fail this branch.
    }
}

void VoTaskGraphProcessing::finish()
{
    m_manager->setTerminatedEvents(*m_shape, true, m_taskID);
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskGraphProcessing::onAfterRun", L"End regular task (ID %d)", m_taskID);
    // Last: from here on the component counts as idle and the manager may go.
    m_manager->setTaskTerminated(m_taskID);
}

void VoTaskGraphProcessing::onAfterRun()
{
    if (IsRoot())
        finish();
}

void VoTaskGraphProcessing::onException(const std::exception& exception)
{
    VoGraphNode& start = GetStartNode();
    m_manager->setComputationState(start, ITaskManager::eCS_Failed);
    VO_TASK_LOG(Logging::eLL_Error, Error, "VoTaskGraphProcessing::onException", L"Exception in work item '%S' (ID %d)",
                start.GetName().c_str(), m_taskID);
    if (!IsRoot())
        throw BxException(__FILE__, __LINE__, "VoTaskGraphProcessing::onException", std::string(exception.what()));
    m_manager->setTerminatedEvents(*m_shape, true, m_taskID);
    m_manager->setTaskTerminated(m_taskID);
}

}  // namespace TaskManager
