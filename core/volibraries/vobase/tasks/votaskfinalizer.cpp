#include <vobase/tasks/votaskfinalizer.h>

#include <vobase/tasks/votaskfinalizertasklf.h>
#include <vobase/tasks/votaskfinalizertaskt.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/threading/bxthreadpool.h>

#include <string>

BX_IMPLEMENT_RTTI(VoTaskFinalizer::VoMessageTaskDone, &VoMessage::RTTI)

namespace {

/// Handler names are unique in the dispatcher's registry: one per finalizer.
CStringW nextHandlerName()
{
    static std::atomic<unsigned long long> counter{0};
    return L"VoTaskFinalizer" + std::to_wstring(++counter);
}

}  // namespace

VoTaskFinalizer::VoMessageHandlerTaskFinalizer::VoMessageHandlerTaskFinalizer(VoTaskFinalizer& finalizer)
    : VoMessageHandler(nextHandlerName()), m_finalizer(finalizer)
{
}

LRESULT VoTaskFinalizer::VoMessageHandlerTaskFinalizer::handleMessage(const VoMessage& message)
{
    if (!message.IsKindOf(VoMessageTaskDone::RTTI))
        return VoMessageHandler::handleMessage(message);
    try
    {
        m_finalizer.complete();  // may delete the finalizer and this handler: nothing touches them after
    }
    catch (...)
    {
        return static_cast<LRESULT>(E_FAIL);
    }
    return 0;
}

VoTaskFinalizer::VoTaskFinalizer(bool deleteWhenDone, BxSmartPointer<BxTask> work, std::function<void()> onDone)
    : m_onDone(std::move(onDone)), m_deleteWhenDone(deleteWhenDone)
{
    if (!work)
        BX_THROW(BxExceptionPreconditionViolation, "VoTaskFinalizer::VoTaskFinalizer", "null work task");
    start();
    m_task = BxSmartPointer<BxTask>(new VoTaskFinalizerTaskT(std::move(work), *m_handler, this));
    BxThreadPool::GetInstance().AddTask(m_task, BxThreadPool::ePriorityNormal);
}

VoTaskFinalizer::VoTaskFinalizer(bool deleteWhenDone, std::function<void()> work, std::function<void()> onDone)
    : m_onDone(std::move(onDone)), m_deleteWhenDone(deleteWhenDone)
{
    if (!work)
        BX_THROW(BxExceptionPreconditionViolation, "VoTaskFinalizer::VoTaskFinalizer", "empty work function");
    start();
    m_task = BxSmartPointer<BxTask>(new VoTaskFinalizerTaskLF(std::move(work), *m_handler, this));
    BxThreadPool::GetInstance().AddTask(m_task, BxThreadPool::ePriorityNormal);
}

VoTaskFinalizer::~VoTaskFinalizer()
{
    if (m_task && !IsDone())
        m_task->WaitUntilTerminate(INFINITE);
    tearDownHandler();
}

// The handler is made and subscribed on the constructing thread, which
// becomes the thread the completion runs on.
void VoTaskFinalizer::start()
{
    m_handler = std::make_unique<VoMessageHandlerTaskFinalizer>(*this);
    if (!m_handler->initMessageHandler())
    {
        m_handler.reset();
        BX_THROW(BxException, "VoTaskFinalizer::VoTaskFinalizer", "the message handler could not be created");
    }
    m_handler->Subscribe(VoMessageTaskDone::RTTI);
}

void VoTaskFinalizer::tearDownHandler()
{
    if (!m_handler)
        return;
    m_handler->UnsubscribeAll();
    m_handler->destroyMessageHandler().Ignore();
}

void VoTaskFinalizer::complete()
{
    if (IsDone())
        return;
    struct SFinish
    {
        VoTaskFinalizer& finalizer;
        ~SFinish()
        {
            finalizer.m_done.store(true, std::memory_order_release);
            finalizer.tearDownHandler();
            if (finalizer.m_deleteWhenDone)
                delete &finalizer;
        }
    } finish{*this};
    if (m_onDone)
        m_onDone();
}
