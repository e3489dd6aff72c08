// A command: the system's command window message (0x111) with the command id
// as wParam and lParam 0. Handlers subscribe to all commands (the class) or
// to one command id (VoMessageHandlerBase::SubscribeCommand).
//
//   handler.SubscribeCommand(ID_FILE_OPEN);
//   VoMessageDispatcher::SendMessageW(VoMessageCommand(ID_FILE_OPEN));
//
// Clonable through the type registry.
#pragma once

#include <vobase/messaging/vomessagewindows.h>

/// A command: the system's command window message (0x111) with the command id as wParam and lParam 0.
class VOBASE_API VoMessageCommand : public VoMessageWindows
{
    BX_DECLARE_RTTI();

public:
    /// The system's command message number.
    static constexpr std::uint32_t eCommandMessageID = 0x111;

    VoMessageCommand() : VoMessageCommand(0) {}
    /// Message 0x111, wParam = commandID, lParam = 0.
    explicit VoMessageCommand(std::uint64_t commandID);
    /// Copies the command (message number, wParam, lParam); the copy is a new message with a fresh ID.
    VoMessageCommand(const VoMessageCommand&) = default;
    /// Moves the command (message number, wParam, lParam); the new message gets a fresh ID.
    VoMessageCommand(VoMessageCommand&&) noexcept = default;
    /// Copies the command (message number, wParam, lParam); this message takes a fresh ID.
    VoMessageCommand& operator=(const VoMessageCommand&) = default;
    /// Moves the command (message number, wParam, lParam); this message takes a fresh ID.
    VoMessageCommand& operator=(VoMessageCommand&&) noexcept = default;
    ~VoMessageCommand() override = default;
};
