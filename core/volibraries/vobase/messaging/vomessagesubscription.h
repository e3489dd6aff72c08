// A subscription request: a handler asks the dispatcher to add or remove it
// as a subscriber of a message class or a command id. The handler's
// Subscribe* / Unsubscribe* calls build it and send it privately to the
// dispatcher, so that the subscription tables change only on the
// dispatcher's thread.
//
//   VoMessageSubscription request(&handler, VoMessageSubscription::eA_Unsubscribe, VoMessageCommand::RTTI);
//   request.IsInvalidating(VoMessageCommand(3));   // true: a queued command is purged
//   request.ToString();   // L"VoMessageSubscription(eA_Unsubscribe: 0x00005581A2C3D4E0, VoMessageCommand)"
//
// Pointers are dumped as 16 upper-case hex digits, command ids with "%X"
// (their low 32 bits), as the original platform's printf wrote them.
#pragma once

#include <vobase/messaging/vomessage.h>

#include <cstdint>

class VoMessageHandlerBase;

/// A subscription request: a handler asks the dispatcher to add or remove it as a subscriber of a message class
/// or a command id.
class VOBASE_API VoMessageSubscription : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    /// What the handler asks for (values fixed).
    enum EAction : std::int32_t
    {
        eA_Subscribe = 0,
        eA_SubscribeCommand = 1,
        eA_Unsubscribe = 2,
        eA_UnsubscribeCommand = 3,
        eA_UnsubscribeAll = 4
    };

    /// A request about a message class (eA_Subscribe, eA_Unsubscribe) or
    /// about nothing in particular (eA_UnsubscribeAll).
    VoMessageSubscription(VoMessageHandlerBase* handler, EAction action, const BxRTTI* rtti = nullptr);
    /// A request about the message class `rtti` (eA_Subscribe, eA_Unsubscribe); the record is kept by address.
    VoMessageSubscription(VoMessageHandlerBase* handler, EAction action, const BxRTTI& rtti);
    /// A request about a command id; the type record becomes VoMessageCommand::RTTI.
    VoMessageSubscription(VoMessageHandlerBase* handler, EAction action, std::uint64_t commandID);
    /// Copies the handler, the action, the type record and the command id; the copy is a new message with a fresh ID.
    VoMessageSubscription(const VoMessageSubscription&) = default;
    /// Moves the handler, the action, the type record and the command id; the new message gets a fresh ID.
    VoMessageSubscription(VoMessageSubscription&&) noexcept = default;
    /// Copies the handler, the action, the type record and the command id; this message takes a fresh ID.
    VoMessageSubscription& operator=(const VoMessageSubscription&) = default;
    /// Moves the handler, the action, the type record and the command id; this message takes a fresh ID.
    VoMessageSubscription& operator=(VoMessageSubscription&&) noexcept = default;
    ~VoMessageSubscription() override = default;

    /// What the handler asks for.
    EAction GetAction() const noexcept { return m_action; }
    /// The handler that asks (not owned).
    VoMessageHandlerBase* GetMessageHandler() const noexcept { return m_handler; }
    /// The class record; VoMessageCommand::RTTI for command requests; may be null for eA_UnsubscribeAll.
    const BxRTTI* GetSubscriberRTTI() const noexcept { return m_rtti; }
    /// The command id of eA_SubscribeCommand and eA_UnsubscribeCommand requests; 0 for the others.
    std::uint64_t GetCommandID() const noexcept { return m_commandID; }

    /// True when a message already queued for the handler must be purged once
    /// this request is done: for eA_Unsubscribe when the message is kind of
    /// the class, for eA_UnsubscribeCommand when it is a command with this id.
    /// Subscribing purges nothing, and neither does eA_UnsubscribeAll (on purpose).
    bool IsInvalidating(const VoMessage& message) const;

    /// Appends "(eA_<action>: 0x<handler>, <class or command>)".
    void Dump(BxStreamWriteASCIIT<CStringW>& stream) const override;
    using VoMessage::Dump;

private:
    VoMessageHandlerBase* m_handler;
    EAction m_action;
    const BxRTTI* m_rtti;
    std::uint64_t m_commandID;
};
