#include "messenger.h"

#include <vobase/messaging/vomessagedispatcher.h>

#include <atomic>

namespace {
std::atomic<std::uint64_t> routedCount{0};
}

LRESULT CMessenger::Send(const VoMessage& message)
{
    ++routedCount;
    return VoMessageDispatcher::SendMessageW(message);
}

LRESULT CMessenger::Send(const VoMessage& message, const VoMessageHandlerBase& target)
{
    ++routedCount;
    return VoMessageDispatcher::SendMessageW(message, target);
}

void CMessenger::Post(BxSmartPointer<const VoMessage> message)
{
    ++routedCount;
    VoMessageDispatcher::PostMessageW(std::move(message));
}

void CMessenger::Post(BxSmartPointer<const VoMessage> message, const VoMessageHandlerBase& target)
{
    ++routedCount;
    VoMessageDispatcher::PostMessageW(std::move(message), target);
}

std::uint64_t CMessenger::GetRoutedCount() noexcept
{
    return routedCount.load();
}
