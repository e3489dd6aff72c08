#include <vobase/tasks/votaskfinalizertasklf.h>

#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/tasks/votaskfinalizer.h>

VoTaskFinalizerTaskLF::VoTaskFinalizerTaskLF(std::function<void()> work, const VoMessageHandlerBase& handler,
                                             VoTaskFinalizer* finalizer)
    : m_work(std::move(work)), m_handler(&handler), m_finalizer(finalizer)
{
}

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoTaskFinalizerTaskLF::run()
{
    // The completion is reported also when the work throws, so that the
    // finalizer always finishes; the exception then reaches onException.
    struct SReport
    {
        VoTaskFinalizerTaskLF& task;
        ~SReport()
        {
            try
            {
                VoMessageDispatcher::PostMessageW(
                    BxSmartPointer<const VoMessage>(new VoTaskFinalizer::VoMessageTaskDone(task.m_finalizer)),
                    *task.m_handler);
            }
            catch (...)
            {
                // Nothing can be reported from here.
            }
        }
    } report{*this};
    m_work();
    return true;
}
