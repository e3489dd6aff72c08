// The hooks through which outside code follows a task manager. Every hook has
// an empty default, so an interceptor overrides only what it needs.
//
//   class CTrace : public TaskManager::IInterceptorTaskManager {
//       void OnStart(const TaskManager::CContextStart& c) override { log(c.GetName()); }
//   };
//   manager.GetDispatcher()->Add(std::make_shared<CTrace>());
//
// Add, AddDependency, RemoveDependency, Start, Stop and reset call their hook
// on the caller's thread before doing their work (before the manager's lock);
// OnAfterRun is called on the pool thread at the end of each processing task.
#pragma once

#include <vobase/tasks/ccontextafterrun.h>
#include <vobase/tasks/ccontextreset.h>
#include <vobase/tasks/ccontextstart.h>
#include <vobase/tasks/ccontextstop.h>
#include <vobase/tasks/ccontextworkitem.h>
#include <vobase/tasks/ccontextworkitemchangedependency.h>
#include <vobase/vobaseapi.h>

namespace TaskManager {

/// The hooks through which outside code follows a task manager.
class VOBASE_API IInterceptorTaskManager
{
public:
    virtual ~IInterceptorTaskManager() = default;

    /// Called by Add before the work item is added (flag 1).
    virtual void OnAdd(const CContextWorkItem&) {}
    /// Flag 0.
    virtual void OnAddDependency(const CContextWorkItemChangeDependency&) {}
    /// Flag 1.
    virtual void OnRemoveDependency(const CContextWorkItemChangeDependency&) {}
    /// Called by Start with the name and requested priority, even when the
    /// start is then ignored.
    virtual void OnStart(const CContextStart&) {}
    /// Called by Stop with the name, before the item's component is stopped.
    virtual void OnStop(const CContextStop&) {}
    /// Called when the manager is reset (Reset or its destructor), before the
    /// running tasks are broken off and the graph is emptied.
    virtual void OnReset(const CContextReset&) {}
    /// Called on the pool thread at the end of every processing-task run, also
    /// when the run failed or was broken off.
    virtual void OnAfterRun(const CContextAfterRun&) {}
};

}  // namespace TaskManager
