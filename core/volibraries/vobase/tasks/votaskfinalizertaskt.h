// The pool task of a VoTaskFinalizer that wraps a BxTask: runs it, then
// posts VoTaskFinalizer::VoMessageTaskDone to the finalizer's handler.
//
//   BxSmartPointer<BxTask> wrapper(new VoTaskFinalizerTaskT(work, handler, &finalizer));
//   BxThreadPool::GetInstance().AddTask(wrapper, 1);
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxtask.h>

class VoTaskFinalizer;

/// The pool task of a VoTaskFinalizer that wraps a BxTask: runs it, then posts VoTaskFinalizer::VoMessageTaskDone
/// to the finalizer's handler.
class VOBASE_API VoTaskFinalizerTaskT : public BxTask
{
public:
    /// A task that runs `work` (its failures are handled by its own
    /// onException) and then posts the done message for `finalizer` to
    /// `handler`. Neither the handler nor the finalizer is owned.
    VoTaskFinalizerTaskT(BxSmartPointer<BxTask> work, const VoMessageHandlerBase& handler, VoTaskFinalizer* finalizer);

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override;

private:
    BxSmartPointer<BxTask> m_work;
    const VoMessageHandlerBase* m_handler; ///< not owned; the finalizer waits for this task before it goes
    VoTaskFinalizer* m_finalizer;
};
