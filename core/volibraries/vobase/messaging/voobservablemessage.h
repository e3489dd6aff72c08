// The notification an observable hands to its observers: one of 23 types and
// the user data the observer registered with.
//
//   VoObservableMessage message(VoObservableMessage::eMT_3, &context);
//   message.GetType();       // eMT_3
//   message.GetUserData();   // &context
#pragma once

#include <vobase/vobaseapi.h>

#include <cstdint>

/// The notification an observable hands to its observers: one of 23 types and the user data the observer
/// registered with.
class VOBASE_API VoObservableMessage
{
public:
    /// The notification types, numbered 0 to 22; their meaning belongs to the observable.
    enum EMessageType : std::int32_t
    {
        eMT_0, eMT_1, eMT_2, eMT_3, eMT_4, eMT_5, eMT_6, eMT_7, eMT_8, eMT_9, eMT_10, eMT_11,
        eMT_12, eMT_13, eMT_14, eMT_15, eMT_16, eMT_17, eMT_18, eMT_19, eMT_20, eMT_21, eMT_22
    };
    /// How many types there are.
    static constexpr int eMessageTypeCount = 23;

    /// A notification of `type` carrying `userData` (not owned).
    VoObservableMessage(EMessageType type, void* userData) noexcept : m_type(type), m_userData(userData) {}

    /// The notification type.
    EMessageType GetType() const noexcept { return m_type; }
    /// The user data the observer registered with (or, through SendMessageW, whatever the sender put in).
    void* GetUserData() const noexcept { return m_userData; }

private:
    EMessageType m_type;
    void* m_userData;
};
