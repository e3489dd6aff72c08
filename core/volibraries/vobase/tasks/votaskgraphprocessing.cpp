#include <vobase/tasks/votaskgraphprocessing.h>

#include <vobase/graphs/vographnode.h>
#include <vobase/tasks/votaskmanager.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxthreadpool.h>

#include <vector>

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

VoTaskGraphProcessing::VoTaskGraphProcessing(VoTaskManager& manager, VoGraphNode& node, std::int32_t taskID,
                                             const BxEvent* startedEvent, BxSmartPointer<BxTask> predecessor,
                                             int priority)
    : m_manager(&manager), m_node(&node), m_taskID(taskID), m_predecessor(std::move(predecessor)),
      m_priority(priority)
{
    if (startedEvent != nullptr)
        m_startedEvent.emplace(*startedEvent);
}

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoTaskGraphProcessing::run()
{
    m_timer.Start();
    // The timing context goes out on every way out of the run.
    struct SAfterRun
    {
        VoTaskGraphProcessing& task;
        ~SAfterRun()
        {
            task.m_timer.Stop();
            try
            {
                task.m_manager->dispatch(&IInterceptorTaskManager::OnAfterRun,
                                         CContextAfterRun(*task.m_manager, task.m_node->GetName(),
                                                          task.m_timer.GetElapsed()));
            }
            catch (...)
            {
                // An interceptor's failure must not turn the run into a failure.
            }
        }
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
        m_manager->setTerminatedEvents(m_component, false, m_taskID);
        m_manager->beginTask(*this);
        m_manager->initializeWorkItems(*m_node);
    }
    return walk();
}

bool VoTaskGraphProcessing::walk()
{
    VoGraphNode* node = m_node;
    bool forkedJoin = false;  // the forking task runs the join its children met at
    while (node != nullptr)
    {
        if (!IsRoot() && !forkedJoin && node->GetIncomingConnections().GetCount() > 1)
        {
            m_stopNode = node;
            return true;
        }
        forkedJoin = false;
        if (!process(*node))
            return true;
        const VoGraphConnectionList& successors = node->GetOutgoingConnections();
        if (successors.IsEmpty())
            return true;
        if (successors.GetCount() == 1)
        {
            node = successors[0]->GetNode(VoGraphConnection::eNT_Target);
            continue;
        }
        bool ok = true;
        node = fork(*node, ok);
        if (!ok)
            return false;
        forkedJoin = true;
    }
    return true;
}

bool VoTaskGraphProcessing::process(VoGraphNode& node)
{
    SWorkItemStatus& status = m_manager->status(node);
    if (status.breakEvent.IsSet())
    {
        status.terminatedEvent.Set();
        return false;
    }
    BxSmartPointer<IWorkItem> item = m_manager->workItem(node);
    item->Prepare(node);
    if (!item->IsReady())
    {
        VO_TASK_LOG(Logging::eLL_Warn, Warn, "VoTaskGraphProcessing::run", L"WorkItem not ready -> abort (ID %d) %S",
                    m_taskID, node.GetName().c_str());
        status.computationState.store(ITaskManager::eCS_Aborted);
        return false;
    }
    status.running.store(1);
    VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskGraphProcessing::run", L"Running (ID %d) %S", m_taskID,
                node.GetName().c_str());
    item->Run(status);
    status.running.store(0);
    status.terminatedEvent.Set();
    if (status.breakEvent.IsSet())
    {
        VO_TASK_LOG(Logging::eLL_Info, Info, "VoTaskGraphProcessing::run", L"Abort (ID %d) %S", m_taskID,
                    node.GetName().c_str());
        return false;
    }
    status.computationState.store(ITaskManager::eCS_Computed);
    return true;
}

// Every branch becomes a child task. All but the last go to the pool; the
// last runs right here, which saves it the trip through the pool and keeps
// this thread busy. Then the children are waited for in order (a child still
// queued runs right here too). They must all have stopped at the same join;
// when one of them ended before reaching it (a break, an item that was not
// ready or failed), the join is not run.
VoGraphNode* VoTaskGraphProcessing::fork(VoGraphNode& node, bool& ok)
{
    const VoGraphConnectionList& successors = node.GetOutgoingConnections();
    std::vector<BxSmartPointer<VoTaskGraphProcessing>> children;
    children.reserve(successors.GetCount());
    BxThreadPool& pool = BxThreadPool::GetInstance();
    for (const auto& connection : successors)
    {
        if (!children.empty())
            pool.AddTask(children.back(), m_priority);
        children.emplace_back(new VoTaskGraphProcessing(*m_manager, *connection->GetNode(VoGraphConnection::eNT_Target),
                                                        m_taskID, nullptr, BxSmartPointer<BxTask>(), m_priority));
    }
    runInline(*children.back());
    VoGraphNode* join = nullptr;
    bool reached = true;
    for (std::size_t i = 0; i < children.size(); ++i)
    {
        children[i]->WaitUntilTerminate(INFINITE);
        VoGraphNode* stop = children[i]->GetStopNode();
        if (stop == nullptr)
        {
            reached = false;
            continue;
        }
        if (join != nullptr && stop != join)
            ok = false;
        join = stop;
    }
    return reached ? join : nullptr;
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
    m_manager->setTerminatedEvents(m_component, true, m_taskID);
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
    m_manager->setComputationState(*m_node, ITaskManager::eCS_Failed);
    VO_TASK_LOG(Logging::eLL_Error, Error, "VoTaskGraphProcessing::onException", L"Exception in work item '%S' (ID %d)",
                m_node->GetName().c_str(), m_taskID);
    if (!IsRoot())
        throw BxException(__FILE__, __LINE__, "VoTaskGraphProcessing::onException", std::string(exception.what()));
    m_manager->setTerminatedEvents(m_component, true, m_taskID);
    m_manager->setTaskTerminated(m_taskID);
}

}  // namespace TaskManager
