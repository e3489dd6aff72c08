// A text for a window. The dispatcher does not deliver it to subscribers: it
// copies the text into a buffer and posts it to the window as
// WM_VO_MESSAGE_STRING; the window's handler turns it back into a
// VoMessageString and handles it on its own thread.
//
//   VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageString(hwnd, L"Ready")));
//   // in the handler of hwnd:
//   if (m.IsKindOf(VoMessageString::RTTI)) status = static_cast<const VoMessageString&>(m).GetMessageString();
//
// Clonable through the type registry.
#pragma once

#include <vobase/messaging/vomessage.h>

#include <bxbase/windows/bxwindowtypes.h>

/// A text for a window.
class VOBASE_API VoMessageString : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    VoMessageString() = default;
    /// A text for the window `hwnd` (not owned; when the window is gone by the time the dispatcher posts the
    /// text, the text is dropped).
    VoMessageString(HWND hwnd, const CStringW& text);
    /// Copies the window handle and the text; the copy is a new message with a fresh ID.
    VoMessageString(const VoMessageString&) = default;
    /// Moves the window handle and the text; the new message gets a fresh ID.
    VoMessageString(VoMessageString&&) noexcept = default;
    /// Copies the window handle and the text; this message takes a fresh ID.
    VoMessageString& operator=(const VoMessageString&) = default;
    /// Moves the window handle and the text; this message takes a fresh ID.
    VoMessageString& operator=(VoMessageString&&) noexcept = default;
    ~VoMessageString() override = default;

    /// The window the text is for.
    HWND GetHWND() const noexcept { return m_hwnd; }
    /// The text.
    const CStringW& GetMessageString() const noexcept { return m_text; }

private:
    HWND m_hwnd = nullptr;
    CStringW m_text;
};
