// The pool task of a VoTaskFinalizer that wraps a function: calls it, then
// posts VoTaskFinalizer::VoMessageTaskDone to the finalizer's handler.
//
//   BxSmartPointer<BxTask> wrapper(new VoTaskFinalizerTaskLF([] { work(); }, handler, &finalizer));
//   BxThreadPool::GetInstance().AddTask(wrapper, 1);
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/vobaseapi.h>

#include <bxbase/threading/bxtask.h>

#include <functional>

class VoTaskFinalizer;

/// The pool task of a VoTaskFinalizer that wraps a function: calls it, then posts
/// VoTaskFinalizer::VoMessageTaskDone to the finalizer's handler.
class VOBASE_API VoTaskFinalizerTaskLF : public BxTask
{
public:
    /// A task that calls `work` and then posts the done message for `finalizer`
    /// to `handler`; the message is posted even when `work` throws. Neither the
    /// handler nor the finalizer is owned.
    VoTaskFinalizerTaskLF(std::function<void()> work, const VoMessageHandlerBase& handler, VoTaskFinalizer* finalizer);

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override;

private:
    std::function<void()> m_work;
    const VoMessageHandlerBase* m_handler; ///< not owned; the finalizer waits for this task before it goes
    VoTaskFinalizer* m_finalizer;
};
