// The hooks through which outside code follows a workflow manager. Every
// hook has an empty default, so an interceptor overrides only what it needs.
//
//   class CTrace : public Workflow::IInterceptorWorkflowManager {
//       void OnStateChange(const Workflow::CContextStateChange& c) override { log(c.GetTo()); }
//   };
//   manager.GetDispatcher()->Add(std::make_shared<CTrace>());
//
// All hooks are called on the manager's thread, under its lock, after the
// step they report has been done.
#pragma once

#include <vobase/workflow/ccontextstart.h>
#include <vobase/workflow/ccontextstatechange.h>
#include <vobase/workflow/ccontextstop.h>
#include <vobase/workflow/ccontexttransferfunction.h>

namespace Workflow {

/// The hooks through which outside code follows a workflow manager.
class VOBASE_API IInterceptorWorkflowManager
{
public:
    virtual ~IInterceptorWorkflowManager() = default;
    /// The workflow has started in a state.
    virtual void OnStart(const CContextStart&) {}
    /// The workflow has stopped.
    virtual void OnStop(const CContextStop&) {}
    /// The current state has changed (entered, left, or replaced by another).
    virtual void OnStateChange(const CContextStateChange&) {}
    /// A transfer function has been started.
    virtual void OnTransferFunctionStart(const CContextTransferFunction&) {}
    /// A transfer function has ended (before its target state is entered).
    virtual void OnTransferFunctionEnd(const CContextTransferFunction&) {}
};

}  // namespace Workflow
