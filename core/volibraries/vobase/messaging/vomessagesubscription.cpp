#include <vobase/messaging/vomessagesubscription.h>

#include <vobase/messaging/vomessagecommand.h>

#include <bxbase/bxformat.h>

BX_IMPLEMENT_RTTI_ABSTRACT(VoMessageSubscription, &VoMessage::RTTI)

VoMessageSubscription::VoMessageSubscription(VoMessageHandlerBase* handler, EAction action, const BxRTTI* rtti)
    : m_handler(handler), m_action(action), m_rtti(rtti), m_commandID(0)
{
}

VoMessageSubscription::VoMessageSubscription(VoMessageHandlerBase* handler, EAction action, const BxRTTI& rtti)
    : VoMessageSubscription(handler, action, &rtti)
{
}

VoMessageSubscription::VoMessageSubscription(VoMessageHandlerBase* handler, EAction action, std::uint64_t commandID)
    : m_handler(handler), m_action(action), m_rtti(&VoMessageCommand::RTTI), m_commandID(commandID)
{
}

bool VoMessageSubscription::IsInvalidating(const VoMessage& message) const
{
    switch (m_action)
    {
    case eA_Unsubscribe:
        return m_rtti != nullptr && message.IsKindOf(*m_rtti);
    case eA_UnsubscribeCommand:
        return message.IsKindOf(VoMessageCommand::RTTI) &&
               static_cast<const VoMessageCommand&>(message).GetWParam() == m_commandID;
    default:  // subscribing purges nothing; eA_UnsubscribeAll deliberately purges nothing either
        return false;
    }
}

void VoMessageSubscription::Dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    VoMessage::Dump(stream);
    // "0x%p" as the original platform printed it: 16 upper-case hex digits.
    const auto handler = static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(m_handler));
    const wchar_t* className = m_rtti ? m_rtti->GetName() : L"(null)";
    const auto command = static_cast<unsigned int>(m_commandID);
    switch (m_action)
    {
    case eA_Subscribe:
        stream << BxFormat::Wide(L"(eA_Subscribe: 0x%016llX, %s)", handler, className);
        break;
    case eA_SubscribeCommand:
        stream << BxFormat::Wide(L"(eA_SubscribeCommand: 0x%016llX, 0x%X)", handler, command);
        break;
    case eA_Unsubscribe:
        stream << BxFormat::Wide(L"(eA_Unsubscribe: 0x%016llX, %s)", handler, className);
        break;
    case eA_UnsubscribeCommand:
        stream << BxFormat::Wide(L"(eA_UnsubscribeCommand: 0x%016llX, 0x%X)", handler, command);
        break;
    case eA_UnsubscribeAll:
        stream << BxFormat::Wide(L"(eA_UnsubscribeAll: 0x%016llX)", handler);
        break;
    }
}
