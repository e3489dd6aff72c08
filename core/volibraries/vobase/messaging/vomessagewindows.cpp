#include <vobase/messaging/vomessagewindows.h>

BX_IMPLEMENT_RTTI_CLONABLE(VoMessageWindows, &VoMessageWorkflowAction::RTTI)

VoMessageWindows::VoMessageWindows(std::uint32_t messageID, std::uint64_t wParam, std::int64_t lParam)
    : m_messageID(messageID), m_wParam(wParam), m_lParam(lParam)
{
}

void VoMessageWindows::Dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    VoMessage::Dump(stream);
    stream << L" (Message " << m_messageID << L" [" << m_wParam << L", " << m_lParam << L"])";
}

bool VoMessageWindows::operator==(const VoMessage& other) const
{
    if (!other.IsKindOf(VoMessageWindows::RTTI))
        return false;
    const auto& windows = static_cast<const VoMessageWindows&>(other);
    return m_messageID == windows.m_messageID && m_wParam == windows.m_wParam && m_lParam == windows.m_lParam;
}
