// A window message carried as a dispatcher message: message number, wParam
// and lParam.
//
//   VoMessageWindows move(0x200, 0, 0x00140020);
//   move.GetMessageID();                              // 0x200
//   move == VoMessageWindows(0x200, 0, 0x00140020);   // true: same three fields
//   move.ToString();                                  // L"VoMessageWindows (Message 512 [0, 1310752])"
//
// Two window messages are equal when the other one is kind of
// VoMessageWindows and all three fields match (the IDs do not matter).
// Clonable through the type registry.
#pragma once

#include <vobase/messaging/vomessageworkflowaction.h>

#include <cstdint>

/// A window message carried as a dispatcher message: message number, wParam and lParam.
class VOBASE_API VoMessageWindows : public VoMessageWorkflowAction
{
    BX_DECLARE_RTTI();

public:
    VoMessageWindows() = default;
    /// The window message `messageID` with its two parameters.
    VoMessageWindows(std::uint32_t messageID, std::uint64_t wParam, std::int64_t lParam);
    /// Copies the message number, wParam and lParam; the copy is a new message with a fresh ID.
    VoMessageWindows(const VoMessageWindows&) = default;
    /// Moves the message number, wParam and lParam; the new message gets a fresh ID.
    VoMessageWindows(VoMessageWindows&&) noexcept = default;
    /// Copies the message number, wParam and lParam; this message takes a fresh ID.
    VoMessageWindows& operator=(const VoMessageWindows&) = default;
    /// Moves the message number, wParam and lParam; this message takes a fresh ID.
    VoMessageWindows& operator=(VoMessageWindows&&) noexcept = default;
    ~VoMessageWindows() override = default;

    /// The window message number.
    std::uint32_t GetMessageID() const noexcept { return m_messageID; }
    /// The first parameter (for a VoMessageCommand, the command id).
    std::uint64_t GetWParam() const noexcept { return m_wParam; }
    /// The second parameter.
    std::int64_t GetLParam() const noexcept { return m_lParam; }

    /// Appends " (Message <number> [<wParam>, <lParam>])" to the class name.
    void Dump(BxStreamWriteASCIIT<CStringW>& stream) const override;
    using VoMessage::Dump;

    /// True when `other` is kind of VoMessageWindows with the same three fields.
    bool operator==(const VoMessage& other) const override;

private:
    std::uint32_t m_messageID = 0;
    std::uint64_t m_wParam = 0;
    std::int64_t m_lParam = 0;
};
