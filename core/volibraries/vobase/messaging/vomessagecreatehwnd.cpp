#include <vobase/messaging/vomessagecreatehwnd.h>

BX_IMPLEMENT_RTTI_ABSTRACT(VoMessageCreateHWND, &VoMessage::RTTI)

VoMessageCreateHWND::VoMessageCreateHWND(VoMessageHandler& handler, const CStringW& windowName)
    : m_handler(handler), m_windowName(windowName)
{
}
