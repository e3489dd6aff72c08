// Records the steps of a workflow in the trace (BxTraceRecorder) as instant
// events on the manager's thread, category "workflow":
//
//   "started in CIdle"             the workflow started (or woke) in a state
//   "left CIdle"                   the current state was left
//   "transfer function Import"     a transfer function started
//   "end of transfer function Import"
//   "entered CProcessing"          a state became the current one
//   "stopped"                      the workflow stopped
//
// The workflow manager calls Record beside each interceptor hook, only while
// the recorder is on.
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/workflow/ccontextstart.h>
#include <vobase/workflow/ccontextstatechange.h>
#include <vobase/workflow/ccontextstop.h>
#include <vobase/workflow/ccontexttransferfunction.h>
#include <vobase/workflow/iinterceptorworkflowmanager.h>

/// Records a workflow manager's steps as instant events of the trace.
class VOBASE_API VoWorkflowTrace
{
public:
    /// The hook the manager is about to call, and its context.
    template <class Context>
    using Hook = void (Workflow::IInterceptorWorkflowManager::*)(const Context&);

    /// The workflow started in the context's state.
    static void Record(Hook<Workflow::CContextStart> hook, const Workflow::CContextStart& context);
    /// The workflow stopped.
    static void Record(Hook<Workflow::CContextStop> hook, const Workflow::CContextStop& context);
    /// A state was left, entered, or both.
    static void Record(Hook<Workflow::CContextStateChange> hook, const Workflow::CContextStateChange& context);
    /// A transfer function started or ended (told apart by the hook).
    static void Record(Hook<Workflow::CContextTransferFunction> hook,
                       const Workflow::CContextTransferFunction& context);
};
