#include "workerhandler.h"

#include "messenger.h"
#include "msganswer.h"
#include "msgrequest.h"

#include <bxbase/threading/bxthreadapi.h>

CWorkerHandler::CWorkerHandler() : VoMessageHandlerThreaded(L"DemoWorker", BxThreadCore::eTP_Normal) {}

CWorkerHandler::~CWorkerHandler()
{
    UnsubscribeAll();
}

void CWorkerHandler::onSubscribeMessages()
{
    VoMessageHandlerThreaded::onSubscribeMessages();
    Subscribe(CMsgRequest::RTTI);
}

LRESULT CWorkerHandler::handleMessage(const VoMessage& message)
{
    if (!message.IsKindOf(CMsgRequest::RTTI))
        return VoMessageHandlerThreaded::handleMessage(message);
    const auto& request = static_cast<const CMsgRequest&>(message);
    const std::int64_t result = static_cast<std::int64_t>(request.GetValue()) * request.GetValue();
    if (request.IsAnswerByPost())
        CMessenger::Post(BxSmartPointer<const VoMessage>(new CMsgAnswer(request.GetValue(), result, GetCurrentThreadId())));
    ++m_handled;
    return static_cast<LRESULT>(result);
}
