#include "uihandler.h"

#include "msganswer.h"
#include "msgprogress.h"

#include <bxbase/bxexception.h>
#include <bxbase/windows/bxmessageloop.h>

#include <algorithm>

CUiHandler::CUiHandler() : VoMessageHandler(L"DemoUserInterface") {}

CUiHandler::~CUiHandler()
{
    Close();
}

void CUiHandler::Open()
{
    if (!initMessageHandler())
        BX_THROW(BxException, "CUiHandler::Open", L"the handler's window could not be created");
}

void CUiHandler::Close()
{
    if (GetHWND() == nullptr)
        return;
    UnsubscribeAll();
    destroyMessageHandler().Ignore();
}

bool CUiHandler::PumpUntil(const std::function<bool()>& done, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return done();
        BxMessageLoop::ProcessPending(static_cast<DWORD>(std::min<long long>(left.count(), 20)));
    }
    return true;
}

void CUiHandler::onSubscribeMessages()
{
    VoMessageHandler::onSubscribeMessages();
    Subscribe(CMsgAnswer::RTTI);
    Subscribe(CMsgProgress::RTTI);
}

LRESULT CUiHandler::handleMessage(const VoMessage& message)
{
    if (message.IsKindOf(CMsgAnswer::RTTI)) {
        const auto& answer = static_cast<const CMsgAnswer&>(message);
        m_answers.push_back({answer.GetValue(), answer.GetResult(), answer.GetThreadID()});
        return 1;
    }
    if (message.IsKindOf(CMsgProgress::RTTI)) {
        const auto& progress = static_cast<const CMsgProgress&>(message);
        m_progress.push_back({progress.GetItem(), progress.GetThreadID(), progress.IsSucceeded()});
        return 1;
    }
    return VoMessageHandler::handleMessage(message);
}
