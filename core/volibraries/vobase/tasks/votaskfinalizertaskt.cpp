#include <vobase/tasks/votaskfinalizertaskt.h>

#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/tasks/votaskfinalizer.h>

VoTaskFinalizerTaskT::VoTaskFinalizerTaskT(BxSmartPointer<BxTask> work, const VoMessageHandlerBase& handler,
                                           VoTaskFinalizer* finalizer)
    : m_work(std::move(work)), m_handler(&handler), m_finalizer(finalizer)
{
}

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoTaskFinalizerTaskT::run()
{
    m_work->Run();  // handles the work's own failures (its onException)
    VoMessageDispatcher::PostMessageW(
        BxSmartPointer<const VoMessage>(new VoTaskFinalizer::VoMessageTaskDone(m_finalizer)), *m_handler);
    return true;
}
