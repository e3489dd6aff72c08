#include <vobase/messaging/vomessagestring.h>

BX_IMPLEMENT_RTTI_CLONABLE(VoMessageString, &VoMessage::RTTI)

VoMessageString::VoMessageString(HWND hwnd, const CStringW& text) : m_hwnd(hwnd), m_text(text) {}
